#include "client.h"

#include "files.h"
#include "paths.h"
#include "procfs.h"

#include <fcntl.h>
#include <signal.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace {

constexpr int StateField = 3;
constexpr int ParentField = 4;
constexpr int StartTimeField = 22;

template<typename Number>
Number number(std::string_view text)
{
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? value : 0;
}

/// Clock ticks from the boot to the process's start; 0 when it has ended.
unsigned long long startTime(pid_t pid)
{
    const std::string state = Procfs::stat(pid, StateField);
    if (state.empty() || state == "Z" || state == "X") // ended, only not yet waited for
        return 0;
    return number<unsigned long long>(Procfs::stat(pid, StartTimeField));
}

/// The arguments as the program starts the client. It finds the client on the search path and hands on the
/// path that it found as the client's own name.
bool isOurCommandLine(const std::string &arguments)
{
    using std::string_view_literals::operator""sv;
    constexpr std::string_view Exact = "dhclient\0-1\0"sv;
    const std::size_t nameEnd = arguments.find('\0');
    if (nameEnd == std::string::npos || nameEnd == 0)
        return false;
    const std::size_t slash = arguments.rfind('/', nameEnd);
    return std::string_view(arguments).substr(slash == std::string::npos ? 0 : slash + 1) == Exact;
}

bool isOfOurTrial(pid_t pid)
{
    if (!Paths::hasRoot())
        return true;
    const std::string variable = std::string("KIRO_DHCP_MGR_ROOT=") + std::getenv("KIRO_DHCP_MGR_ROOT");
    return (std::string(1, '\0') + Procfs::read(pid, "environ")).find('\0' + variable + '\0')
        != std::string::npos;
}

} // namespace

Client Client::running(pid_t pid)
{
    Client client;
    const unsigned long long start = pid > 1 && Procfs::isOurs() ? startTime(pid) : 0;
    if (start == 0)
        return client;
    std::string boot = Files::read("/proc/sys/kernel/random/boot_id");
    boot.erase(std::remove(boot.begin(), boot.end(), '\n'), boot.end());
    client.m_pid = pid;
    client.m_identity = std::to_string(pid) + "," + std::to_string(start) + "," + boot + ","
        + Files::linkTarget("/proc/self/ns/pid");
    return client;
}

Client Client::fromString(const std::string &text)
{
    Client client;
    client.m_pid = number<pid_t>(std::string_view(text).substr(0, text.find(',')));
    if (client.m_pid > 1)
        client.m_identity = text;
    return client;
}

bool Client::isAlive() const
{
    return !isNobody() && running(m_pid) == *this;
}

bool Client::isInOurNetwork() const
{
    return Procfs::sharesNamespace(m_pid, "net");
}

bool Client::descendsFrom(pid_t ancestor) const
{
    pid_t pid = m_pid;
    for (int generation = 0; pid > 1 && generation < 64; ++generation) {
        if (pid == ancestor)
            return true;
        pid = number<pid_t>(Procfs::stat(pid, ParentField));
    }
    return false;
}

bool Client::isEarlier(pid_t other, const std::vector<Client> &spared) const
{
    // Until it has bound, a client has a parent with the same arguments that waits for it.
    const unsigned long long start = startTime(other);
    return start > 0 && start <= startTime(m_pid) && !descendsFrom(other)
        && std::find(spared.begin(), spared.end(), running(other)) == spared.end()
        && isOurCommandLine(Procfs::read(other, "cmdline")) && Procfs::isOfOurUser(other)
        && Procfs::sharesNamespace(other, "net") && Procfs::sharesNamespace(other, "pid")
        && isOfOurTrial(other);
}

void Client::endEarlierOnes(const std::vector<Client> &spared) const
{
    if (!isAlive())
        return;
    const Descriptor folder(::open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (const std::string &name : Files::names(folder.get())) {
        const auto pid = number<pid_t>(name);
        if (pid > 1 && isOurCommandLine(Procfs::read(pid, "cmdline")))
            Procfs::signalIf(pid, SIGKILL, [&] { return isEarlier(pid, spared); });
    }
}
