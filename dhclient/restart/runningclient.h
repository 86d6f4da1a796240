#ifndef RUNNINGCLIENT_H
#define RUNNINGCLIENT_H

#include "client.h"

#include <string>
#include <vector>

/// A DHCP client of this machine: run by root, from the client's own path, in our network, process, mount and user
/// namespaces and with our root directory.
struct RunningClient
{
    static constexpr const char *ForIPv6 = "it is for IPv6";

    Client client;
    std::vector<std::string> commandLine;
    std::vector<std::string> interfaces; ///< named on the command line; none when it takes all that it finds
    std::string pidFile;                 ///< empty if it writes none
    std::string reasonToLeaveIt;         ///< empty if it may be ended and started again
    /// All that have to be ended with it, itself last.
    std::vector<Client> processes;

    bool isForIPv4() const { return reasonToLeaveIt != ForIPv6; }
    bool isFromApply() const { return Client::isFromApply(commandLine); }
};

std::vector<RunningClient> runningClients();

#endif
