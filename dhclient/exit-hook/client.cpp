#include "client.h"

#include "paths.h"
#include "procfs.h"

#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace {

/// Whether the program started it. What it found on the search path became the client's own name.
bool isOurs(pid_t pid)
{
    const std::string arguments = Procfs::read(pid, "cmdline");
    std::string_view name = arguments;
    name = name.substr(0, name.find('\0'));
    if (std::string_view(arguments).substr(name.size()) != std::string_view("\0-1\0", 4))
        return false;
    name.remove_prefix(name.rfind('/') + 1); // npos + 1 is 0
    return name == "dhclient";
}

bool hasOurRoot(pid_t pid)
{
    if (!Paths::hasRoot())
        return true;
    const std::string variable = std::string("KIRO_DHCP_MGR_ROOT=") + std::getenv("KIRO_DHCP_MGR_ROOT");
    return ('\0' + Procfs::read(pid, "environ")).find('\0' + variable + '\0') != std::string::npos;
}

} // namespace

Client::Client(pid_t pid) : pid(pid)
{
    const Procfs::Stat stat = Procfs::stat(pid);
    parent = stat.parent;
    startTime = stat.startTime;
}

Client Client::fromString(const std::string &text)
{
    const Client client(Procfs::parsePid(std::string_view(text).substr(0, text.find(','))));
    return client.toString() == text ? client : Client();
}

std::string Client::toString() const
{
    return isNobody() ? "-" : std::to_string(pid) + ',' + std::to_string(startTime) + ',' + Procfs::bootId();
}

bool Client::isInOurNetwork() const
{
    return Procfs::sharesNamespace(pid, "net");
}

void Client::endEarlierOnes(const std::vector<Client> &spared) const
{
    const auto isEarlier = [&](const Client &other) {
        // Until a client has bound, its parent waits for it and has the same arguments.
        return isOurs(other.pid) && other != *this && other.startTime <= startTime && other.pid != parent
               && std::find(spared.begin(), spared.end(), other) == spared.end()
               && Procfs::sharesNamespace(other.pid, "net") && Procfs::sharesNamespace(other.pid, "pid")
               && hasOurRoot(other.pid);
    };
    for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
        const pid_t other = Procfs::parsePid(entry.path().filename().string());
        if (other != 0 && isOurs(other))
            Procfs::signalIf(other, SIGKILL, [&] { return isEarlier(Client(other)); });
    }
}
