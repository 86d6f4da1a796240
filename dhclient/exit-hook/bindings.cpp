#include "bindings.h"

#include "clientfacts.h"
#include "posix.h"
#include "report.h"

#include <net/if.h>
#include <syslog.h>

#include <algorithm>
#include <sstream>
#include <system_error>

namespace {

constexpr char Heading[] = "# interface, directory of its values, client that holds its lease\n";

bool isDirectory(const std::string &name)
{
    return std::find(std::begin(ClientFacts::ValueDirectories), std::end(ClientFacts::ValueDirectories), name)
           != std::end(ClientFacts::ValueDirectories);
}

} // namespace

Bindings::Bindings(const std::string &path) : path(path)
{
    try {
        stored = Posix::readFile(path, 1 << 20).value_or(std::string());
    } catch (const std::system_error &error) {
        Posix::report("record-lease", LOG_ERR, error.what());
    }
    std::istringstream lines(stored);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string interface;
        std::string directory;
        std::string owner;
        if (!(words >> interface >> directory >> owner))
            continue;
        Binding &binding = bindings[interface];
        if (isDirectory(directory) && isFree(directory) && (!isDirectory(interface) || interface == directory))
            binding.directory = directory;
        binding.owner = Client::fromString(owner);
    }
}

bool Bindings::isFree(const std::string &directory) const
{
    return std::none_of(bindings.begin(), bindings.end(),
                        [&](const auto &binding) { return binding.second.directory == directory; });
}

void Bindings::assignDirectory(const std::string &interface)
{
    std::string &due = bindings[interface].directory;
    if (isDirectory(interface)) {
        for (auto &[guest, binding] : bindings) {
            if (binding.directory == interface)
                binding.directory.clear();
        }
        due = interface;
    }
    for (const char *directory : ClientFacts::ValueDirectories) {
        if (due.empty() && isFree(directory))
            due = directory;
    }
}

std::vector<std::string> Bindings::interfacesOf(const Client &owner) const
{
    std::vector<std::string> interfaces;
    for (const auto &[interface, binding] : bindings) {
        if (binding.owner == owner && ::if_nametoindex(interface.c_str()) != 0)
            interfaces.push_back(interface);
    }
    return interfaces;
}

void Bindings::save() const
{
    std::string content = Heading;
    for (const auto &[interface, binding] : bindings) {
        if (!binding.directory.empty() || !binding.owner.isNobody())
            content += interface + ' ' + (binding.directory.empty() ? "-" : binding.directory) + ' '
                       + binding.owner.toString() + '\n';
    }
    if (content != stored)
        Posix::replaceFile(path, content, Posix::Replacement::Cached);
}
