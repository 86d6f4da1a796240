#ifndef BINDINGS_H
#define BINDINGS_H

#include "client.h"

#include <map>
#include <string>
#include <vector>

struct Binding
{
    std::string directory; ///< of the interface's values: "eth0", "eth1" or empty
    Client owner;          ///< the running client that holds the interface's lease; nobody when there is none
};

/// Which interface's values are in which of the two directories, and which client holds each interface's lease. Kept
/// in one file, which only one process at a time may use.
///
/// eth0 and eth1 have the directories of their names. Another interface is a guest: it gets the first directory that
/// nobody has and keeps it, also over restarts, until its line is deleted by hand or the directory's own interface
/// gets a lease. An interface without a directory tries again at each of its leases.
class Bindings
{
public:
    /// Reads the file, which may be missing. Lines that make no sense are skipped.
    explicit Bindings(const std::string &path);

    /// Made when the interface is not known yet.
    Binding &operator[](const std::string &interface) { return bindings[interface]; }
    /// Gives the interface the directory that is due to it, if there is one.
    void assignDirectory(const std::string &interface);
    std::vector<std::string> interfacesOf(const Client &owner) const;

    /// Writes the file where anything has changed. Throws std::system_error. It is not flushed to disk: when it is
    /// lost, the next leases assign the directories again.
    void save() const;

private:
    bool isFree(const std::string &directory) const;

    std::string path;
    std::string stored;
    std::map<std::string, Binding> bindings;
};

#endif
