#include "client.h"

#include "clientfacts.h"
#include "procfs.h"

#include <signal.h>

#include <algorithm>
#include <string_view>

Client::Client(pid_t pid) : pid(pid)
{
    startTime = Procfs::stat(pid).startTime;
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
        return isFromApply(arguments) && Procfs::sharesNamespace(pid, "net")
               && (arguments.size() == 2
                   || std::find(arguments.begin(), arguments.end(), interface) != arguments.end());
    });
}
