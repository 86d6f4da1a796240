#ifndef BINDINGS_H
#define BINDINGS_H

#include "client.h"

#include <string>
#include <utility>
#include <vector>

/// Which interface's values are in which of the two folders, and which client last bound each interface. Kept
/// in two files beside the folders.
///
/// eth0 and eth1 have the folders of their names. Another interface is a guest: it takes the first folder
/// that nobody has and stays there, over restarts too, until its line is deleted by hand. When the folder's
/// own interface gets a lease later, the guest moves to the other folder, values and all, or has none if that
/// is taken. An interface without a folder looks for one again at each of its leases.
class Bindings
{
public:
    struct Binding
    {
        std::string interface;
        std::string folder; ///< "eth0", "eth1" or empty
        bool isBound = false;
        Client owner;
    };

    /// `directory` is that of the two folders, open as `descriptor`. Must be used under the lock only.
    Bindings(const std::string &directory, int descriptor);

    /// Null when the interface is not known.
    Binding *find(const std::string &interface);
    /// The interface's entry, made when there is none, with the folder that is due to it.
    Binding &take(const std::string &interface);
    /// Where the interface's values are; empty when it has no folder.
    std::string folderOf(const std::string &interface) const;
    /// The clients that hold a lease on an interface that is there.
    std::vector<Client> owners() const;

    /// Writes the files where anything has changed, and brings the values of guests that have to move. In this
    /// order: values may be missing until the next lease when it is cut short, but never stay where nobody renews
    /// them.
    bool save();

private:
    Binding &findOrAdd(const std::string &interface);
    bool isFree(const std::string &folder) const;

    std::string m_directory;
    int m_descriptor;
    std::string m_storedFolders;
    std::string m_storedClients;
    std::vector<Binding> m_bindings;
    std::vector<std::pair<std::string, std::string>> m_moves; ///< from one folder to the other
};

#endif
