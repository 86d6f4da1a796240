#ifndef REALCLIENT_H
#define REALCLIENT_H

#include "posix.h"

#include <map>
#include <string>
#include <vector>

/// The DHCP client of this machine, run from a copy under another path, where its AppArmor profile does not hold, on
/// interfaces that only the calling thread sees. No address is taken and no script is run.
class RealClient
{
public:
    struct Heard
    {
        std::string complaints; ///< about lines of the configuration and of what it includes
        /// The parameter request list of the first packet on each interface: eth0, eth1, wlan0. Nothing where the
        /// client ended before it sent.
        std::map<std::string, std::vector<int>> requested;
    };

    /// Takes the calling thread into a network namespace of its own, for good.
    RealClient();
    ~RealClient();
    RealClient(const RealClient &) = delete;
    RealClient &operator=(const RealClient &) = delete;

    const std::string directory; ///< for the configuration and what it includes; removed with the object
    std::string obstacle;        ///< why the client can't be run here; empty if it can

    /// Runs the client under a configuration until it has sent a packet on each interface. Throws std::runtime_error
    /// if it neither does so nor ends.
    Heard run(const std::string &configuration) const;

private:
    Posix::Descriptor wire;
};

#endif
