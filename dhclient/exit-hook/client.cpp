#include "client.h"

#include "clientfacts.h"
#include "procfs.h"

#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

Client::Client(pid_t pid) : pid(pid)
{
    startTime = Procfs::stat(pid).startTime;
}

bool Client::isOfThisMachine(pid_t pid)
{
    const std::string program = Procfs::linkTarget(pid, "exe");
    const std::string_view path = std::string_view(program).substr(0, program.find(" (deleted)")); // by an upgrade
    if (path != ClientFacts::Program && path != "/sbin/dhclient")
        return false;
    for (const char *kind : {"net", "pid", "mnt", "user"}) {
        if (!Procfs::sharesNamespace(pid, kind))
            return false;
    }
    std::error_code hasEnded;
    return Procfs::read(pid, "status").find("\nUid:\t0\t0\t0\t0\n") != std::string::npos
           && std::filesystem::equivalent("/proc/" + std::to_string(pid) + "/root", "/", hasEnded);
}

bool Client::isFromApply(const std::vector<std::string> &arguments)
{
    // What the program found on the search path became the client's own name; what has clients ask again is no client.
    return arguments.size() >= 2
           && arguments[0].substr(arguments[0].rfind('/') + 1) == ClientFacts::Name // npos + 1 is 0
           && arguments[0] != ClientFacts::Restarter && arguments[1] == ClientFacts::OnceArgument
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

bool Client::anApplysAsksOn(const std::string &interface)
{
    const std::vector<pid_t> processes = Procfs::processes();
    return std::any_of(processes.begin(), processes.end(), [&](pid_t pid) {
        const std::vector<std::string> arguments = Procfs::arguments(pid);
        return isFromApply(arguments) && isOfThisMachine(pid)
               && (arguments.size() == 2
                   || std::find(arguments.begin(), arguments.end(), interface) != arguments.end());
    });
}
