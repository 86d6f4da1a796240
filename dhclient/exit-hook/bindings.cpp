#include "bindings.h"

#include "files.h"
#include "valuefolder.h"

#include <net/if.h>

#include <algorithm>
#include <array>
#include <sstream>

namespace {

// Two files: the first changes hardly ever, so that it is whole whenever the machine loses its power.
constexpr char FoldersFile[] = ".interfaces";
constexpr char ClientsFile[] = ".clients";
constexpr char FoldersHeading[] = "# interface, folder of its values\n";
constexpr char ClientsHeading[] = "# interface, lease, client that last bound it\n";
constexpr std::array<const char *, 2> Folders = {"eth0", "eth1"};

/// A blank must follow: an interface may be called "#1".
bool isComment(const std::string &line)
{
    return line.compare(0, 2, "# ") == 0;
}

bool isFolder(const std::string &name)
{
    return std::find(Folders.begin(), Folders.end(), name) != Folders.end();
}

} // namespace

Bindings::Bindings(const std::string &directory, int descriptor)
    : m_directory(directory)
    , m_descriptor(descriptor)
{
    // A line that an editor's hand has spoiled counts as far as it makes sense.
    Files::readRegular(descriptor, FoldersFile, m_storedFolders);
    std::istringstream folderLines(m_storedFolders);
    std::string line;
    while (std::getline(folderLines, line)) {
        std::istringstream words(line);
        std::string interface;
        std::string folder;
        if (!isComment(line) && words >> interface >> folder && !find(interface) && isFolder(folder)
            && isFree(folder) && (!isFolder(interface) || folder == interface))
            m_bindings.push_back({interface, folder, false, {}});
    }

    Files::readRegular(descriptor, ClientsFile, m_storedClients);
    std::istringstream clientLines(m_storedClients);
    while (std::getline(clientLines, line)) {
        std::istringstream words(line);
        std::string interface;
        std::string lease;
        std::string owner;
        if (isComment(line) || !(words >> interface >> lease >> owner))
            continue;
        Binding &binding = findOrAdd(interface);
        binding.isBound = lease == "bound";
        binding.owner = Client::fromString(owner);
    }
}

Bindings::Binding *Bindings::find(const std::string &interface)
{
    const auto found = std::find_if(m_bindings.begin(), m_bindings.end(),
                                    [&](const Binding &binding) { return binding.interface == interface; });
    return found == m_bindings.end() ? nullptr : &*found;
}

Bindings::Binding &Bindings::findOrAdd(const std::string &interface)
{
    if (Binding *binding = find(interface))
        return *binding;
    m_bindings.push_back({interface, {}, false, {}});
    return m_bindings.back();
}

bool Bindings::isFree(const std::string &folder) const
{
    return std::none_of(m_bindings.begin(), m_bindings.end(),
                        [&](const Binding &binding) { return binding.folder == folder; });
}

Bindings::Binding &Bindings::take(const std::string &interface)
{
    Binding &binding = findOrAdd(interface);
    if (!binding.folder.empty())
        return binding;

    if (isFolder(interface)) {
        for (Binding &guest : m_bindings) {
            if (guest.folder != interface)
                continue;
            const std::string other = Folders[interface == Folders[0] ? 1 : 0];
            const std::string previous = m_directory + "/" + guest.folder;
            guest.folder = isFree(other) ? other : std::string();
            if (!guest.folder.empty())
                m_moves.emplace_back(previous, m_directory + "/" + guest.folder);
        }
        binding.folder = interface;
    } else {
        for (const std::string folder : Folders) {
            if (binding.folder.empty() && isFree(folder))
                binding.folder = folder;
        }
    }
    return binding;
}

std::string Bindings::folderOf(const std::string &interface) const
{
    for (const Binding &binding : m_bindings) {
        if (binding.interface == interface)
            return binding.folder.empty() ? std::string() : m_directory + "/" + binding.folder;
    }
    // Files from before the record began.
    return isFolder(interface) && isFree(interface) ? m_directory + "/" + interface : std::string();
}

std::vector<Client> Bindings::owners() const
{
    std::vector<Client> clients;
    for (const Binding &binding : m_bindings) {
        if (binding.isBound && ::if_nametoindex(binding.interface.c_str()) != 0)
            clients.push_back(binding.owner);
    }
    return clients;
}

bool Bindings::save()
{
    std::string folders = FoldersHeading;
    std::string clients = ClientsHeading;
    for (const Binding &binding : m_bindings) {
        if (!binding.folder.empty())
            folders += binding.interface + " " + binding.folder + "\n";
        if (binding.owner.isAlive())
            clients += binding.interface + (binding.isBound ? " bound " : " lost ") + binding.owner.toString()
                + "\n";
    }
    if ((folders != m_storedFolders && !Files::replace(m_descriptor, FoldersFile, folders))
        || (clients != m_storedClients && !Files::replace(m_descriptor, ClientsFile, clients)))
        return false;
    for (const auto &[from, to] : m_moves)
        ValueFolder::move(from, to);
    m_moves.clear();
    return true;
}
