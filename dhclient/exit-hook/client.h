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

    bool isNobody() const { return startTime == 0; }
    bool isInOurNetwork() const;
    bool operator==(const Client &other) const { return pid == other.pid && startTime == other.startTime; }
    bool operator!=(const Client &other) const { return !(*this == other); }

    /// Ends the clients that were started as "dhclient -1", no later than this one, except those in `spared`. Only
    /// in our network and process namespaces; with a root prefix, only those that run with the same one.
    ///
    /// They are killed: any milder signal makes a client release its lease.
    void endEarlierOnes(const std::vector<Client> &spared) const;

private:
    pid_t pid = 0;
    pid_t parent = 0;
    unsigned long long startTime = 0;
};

#endif
