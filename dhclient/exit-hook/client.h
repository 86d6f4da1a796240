#ifndef CLIENT_H
#define CLIENT_H

#include <sys/types.h>

#include <string>
#include <vector>

/// A running DHCP client, distinct from every other process that ever has the same number; or nobody.
class Client
{
public:
    Client() = default;
    /// Nobody when no such process is running.
    explicit Client(pid_t pid);
    /// The reverse of toString(); nobody when the client has ended.
    static Client fromString(const std::string &text);
    /// One word; "-" for nobody.
    std::string toString() const;

    /// Whether it is run by root, from the client's own path, in our network, process, mount and user namespaces and
    /// with our root directory.
    static bool isOfThisMachine(pid_t pid);
    /// Whether an apply starts clients so: as "dhclient -1", alone or with the names of interfaces.
    static bool isFromApply(const std::vector<std::string> &arguments);

    pid_t number() const { return pid; }
    bool isNobody() const { return startTime == 0; }
    bool isInOurNetwork() const;
    bool operator==(const Client &other) const { return pid == other.pid && startTime == other.startTime; }
    bool operator!=(const Client &other) const { return !(*this == other); }

    /// Kills it: any milder signal makes a client release its lease.
    void end() const;
    /// Whether this machine runs a client of an apply that asks on the interface.
    static bool anApplysAsksOn(const std::string &interface);

private:
    pid_t pid = 0;
    unsigned long long startTime = 0;
};

#endif
