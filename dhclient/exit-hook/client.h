#ifndef CLIENT_H
#define CLIENT_H

#include <sys/types.h>

#include <string>
#include <vector>

/// One running DHCP client, told apart from every other process of any time that has the same number.
class Client
{
public:
    Client() = default;
    /// The running process of that number; nobody when there is none.
    static Client running(pid_t pid);
    /// The reverse of toString(); nobody when it is none.
    static Client fromString(const std::string &text);

    bool isNobody() const { return m_identity.empty(); }
    bool isAlive() const;
    bool isInOurNetwork() const;
    /// One word; "-" for nobody.
    std::string toString() const { return isNobody() ? "-" : m_identity; }
    bool operator==(const Client &other) const { return m_identity == other.m_identity; }
    bool operator!=(const Client &other) const { return !(*this == other); }

    /// Ends the clients that were started as "dhclient -1", not after this one and beside it, and that are
    /// none of `spared`. Only our own user's, and only in our network and process namespaces; from a trial
    /// root, only those that run with the same root.
    ///
    /// They are killed: at any milder signal the client gives its lease back to the server.
    void endEarlierOnes(const std::vector<Client> &spared) const;

private:
    bool isEarlier(pid_t other, const std::vector<Client> &spared) const;
    bool descendsFrom(pid_t ancestor) const;

    pid_t m_pid = 0;
    std::string m_identity;
};

#endif
