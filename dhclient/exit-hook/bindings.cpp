#include "bindings.h"

#include "files.h"
#include "valuefolder.h"

#include <net/if.h>

#include <algorithm>
#include <array>
#include <sstream>

namespace {

constexpr char FileName[] = ".interfaces";
constexpr char Heading[] = "# interface, folder of its values, lease, client that last bound it\n";
constexpr std::array<const char *, 2> Folders = {"eth0", "eth1"};
constexpr char None[] = "-";

bool isFolder(const std::string &name)
{
    return std::find(Folders.begin(), Folders.end(), name) != Folders.end();
}

} // namespace

Bindings::Bindings(const std::string &directory, int descriptor)
    : m_directory(directory)
    , m_descriptor(descriptor)
{
    Files::readRegular(descriptor, FileName, m_stored);
    std::istringstream lines(m_stored);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string folder;
        std::string lease;
        std::string owner;
        Binding binding;
        if (line[0] == '#' || !(words >> binding.interface >> folder >> lease >> owner) || find(binding.interface))
            continue;
        // A line that an editor's hand has spoiled counts as far as it makes sense.
        if (isFolder(folder) && isFree(folder) && (!isFolder(binding.interface) || folder == binding.interface))
            binding.folder = folder;
        binding.isBound = lease == "bound";
        binding.owner = Client::fromString(owner);
        m_bindings.push_back(binding);
    }
}

Bindings::Binding *Bindings::find(const std::string &interface)
{
    const auto found = std::find_if(m_bindings.begin(), m_bindings.end(),
                                    [&](const Binding &binding) { return binding.interface == interface; });
    return found == m_bindings.end() ? nullptr : &*found;
}

bool Bindings::isFree(const std::string &folder) const
{
    return std::none_of(m_bindings.begin(), m_bindings.end(),
                        [&](const Binding &binding) { return binding.folder == folder; });
}

Bindings::Binding &Bindings::take(const std::string &interface)
{
    Binding *binding = find(interface);
    if (!binding) {
        m_bindings.push_back({interface, {}, false, {}});
        binding = &m_bindings.back();
    }
    if (!binding->folder.empty())
        return *binding;

    if (isFolder(interface)) {
        for (Binding &guest : m_bindings) {
            if (guest.folder != interface)
                continue;
            const std::string other = Folders[interface == Folders[0] ? 1 : 0];
            const std::string previous = m_directory + "/" + guest.folder;
            guest.folder = isFree(other) ? other : std::string();
            if (!guest.folder.empty())
                ValueFolder::move(previous, m_directory + "/" + guest.folder);
        }
        binding->folder = interface;
    } else {
        for (const std::string folder : Folders) {
            if (binding->folder.empty() && isFree(folder))
                binding->folder = folder;
        }
    }
    return *binding;
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
    std::string text = Heading;
    for (const Binding &binding : m_bindings) {
        if (binding.folder.empty() && !binding.owner.isAlive())
            continue;
        text += binding.interface + " " + (binding.folder.empty() ? None : binding.folder) + " "
            + (binding.isBound ? "bound" : "lost") + " " + binding.owner.toString() + "\n";
    }
    return text == m_stored || Files::replace(m_descriptor, FileName, text, true);
}
