#include "client.h"

#include "paths.h"
#include "procfs.h"

#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace {

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
    startTime = Procfs::stat(pid).startTime;
}

bool Client::isFromApply(const std::vector<std::string> &arguments)
{
    // What the program found on the search path became the client's own name; what has clients ask again is no client.
    return arguments.size() >= 2 && arguments[0].substr(arguments[0].rfind('/') + 1) == "dhclient" // npos + 1 is 0
           && arguments[0] != "/usr/libexec/kiro-dhcp-mgr/dhclient" && arguments[1] == "-1"
           && std::none_of(arguments.begin() + 2, arguments.end(),
                           [](const std::string &name) { return name.empty() || name[0] == '-'; });
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

void Client::end() const
{
    Procfs::signalIf(pid, SIGKILL, [&] { return Client(pid) == *this; });
}

void Client::endThoseOfApplies(const std::string &interface, const std::vector<Client> &spared)
{
    for (const pid_t pid : Procfs::processes()) {
        const std::vector<std::string> arguments = Procfs::arguments(pid);
        const Client client(pid);
        if (isFromApply(arguments) && std::find(spared.begin(), spared.end(), client) == spared.end()
            && (arguments.size() == 2 || std::find(arguments.begin(), arguments.end(), interface) != arguments.end())
            && Procfs::sharesNamespace(pid, "net") && Procfs::sharesNamespace(pid, "pid") && hasOurRoot(pid))
            client.end();
    }
}
