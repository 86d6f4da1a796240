#ifndef RESTART_H
#define RESTART_H

#include "client.h"
#include "posix.h"

#include <string>
#include <vector>

/// A client to start in the place of another.
struct Restart
{
    std::vector<Client> processes;        ///< ended first, without releasing a lease
    std::vector<std::string> commandLine; ///< of the new client
    std::string pidFile;                  ///< of the new client; empty if it writes none
    std::vector<std::string> interfaces;  ///< whose addresses are at stake; none stands for all
};

/// Ends and starts the client, and stays until it has bound. A client that gets no answer gives up after 75 seconds,
/// and its script removes the address although the lease may have hours left. So as long as the kernel has the address,
/// a client that has not bound after 8 seconds is ended and started again: for 10 seconds ("reboot" in
/// dhclient.conf(5)) it only asks for its lease.
///
/// Releases the lock when the client has bound, or before its second start.
void restart(const Restart &restart, Posix::Descriptor lock);

/// Becomes the machine's client. Returns only if that cannot be executed.
void becomeClient(const std::vector<std::string> &commandLine);

/// The interfaces' names, for a message.
std::string joined(const std::vector<std::string> &interfaces);

#endif
