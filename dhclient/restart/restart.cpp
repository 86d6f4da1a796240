#include "restart.h"

#include "addresses.h"
#include "clientfacts.h"
#include "procfs.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

/// When the kernel drops the last address that a client has set.
Clock::time_point endOfAddresses(const std::vector<std::string> &interfaces)
{
    Clock::time_point end = Clock::now();
    for (const Address &address : addresses()) {
        const auto found = std::find(interfaces.begin(), interfaces.end(), address.interface);
        if (!address.isFixed && (interfaces.empty() || found != interfaces.end()))
            end = std::max(end, Clock::now() + address.remainingLifetime);
    }
    return end;
}

/// Does nothing where control groups are not those of cgroups(7), version 2.
void enterControlGroupOf(const Client &client)
{
    const std::string groups = '\n' + Procfs::read(client.number(), "cgroup");
    const std::size_t begin = groups.find("\n0::");
    if (begin == std::string::npos)
        return;
    const std::string group = groups.substr(begin + 4, groups.find('\n', begin + 1) - begin - 4);
    const Posix::Descriptor members(::open(("/sys/fs/cgroup" + group + "/cgroup.procs").c_str(), O_WRONLY | O_CLOEXEC));
    [[maybe_unused]] const ssize_t ignored = ::write(members.get(), "0", 1);
}

/// The number of the new process; 0 when the client that it was to replace has ended by itself.
pid_t startInPlaceOf(const std::vector<Client> &processes, const std::vector<std::string> &commandLine)
{
    std::vector<Posix::Descriptor> handles;
    for (const Client &process : processes)
        handles.push_back(Procfs::open(process.number()));
    if (Client(processes.back().number()) != processes.back())
        return 0;
    const pid_t pid = ::fork();
    if (pid != 0)
        return pid;
    ::setsid();
    ::umask(022);
    enterControlGroupOf(processes.back()); // or the new client would end with the service that we come from
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    bool isEnded = false;
    for (const Posix::Descriptor &handle : handles)
        isEnded = Procfs::kill(handle, SIGKILL);
    // Here no client runs. Where the last had ended by itself, as by ifdown(8), none is wanted.
    if (isEnded)
        becomeClient(commandLine);
    ::_exit(EXIT_FAILURE);
}

pid_t childOf(pid_t parent)
{
    for (const pid_t pid : Procfs::processes()) {
        if (Procfs::stat(pid).parent == parent)
            return pid;
    }
    return 0;
}

/// As the client does when it has bound, so that ifdown(8) finds it before that, too.
void writePidFile(const std::string &path, pid_t client)
{
    try {
        // A device, or a link, is not to be replaced.
        const auto type = std::filesystem::symlink_status(path).type();
        if (type == std::filesystem::file_type::not_found || type == std::filesystem::file_type::regular)
            Posix::replaceFile(path, std::to_string(client) + '\n', Posix::Replacement::Cached);
    } catch (const std::system_error &error) {
        ::syslog(LOG_WARNING, "%s", error.what());
    }
}

} // namespace

void restart(const Restart &restart, Posix::Descriptor lock)
{
    const Clock::time_point end = endOfAddresses(restart.interfaces);
    std::vector<Client> processes = restart.processes;
    while (!processes.back().isNobody()) {
        const pid_t old = processes.back().number();
        const pid_t parent = startInPlaceOf(processes, restart.commandLine);
        if (parent <= 0)
            return;
        pid_t client = 0;
        const Clock::time_point patience = Clock::now() + 8s;
        int status = 0;
        while (::waitpid(parent, &status, WNOHANG) == 0 && Clock::now() < patience) {
            if (client == 0 && (client = childOf(parent)) != 0) {
                writePidFile(restart.pidFile, client);
                ::syslog(LOG_INFO, "%s: restarted %d as %d", joined(restart.interfaces).c_str(), old, client);
            }
            std::this_thread::sleep_for(20ms);
        }
        if (status != 0)
            ::syslog(LOG_WARNING, "%s: the client has ended without a lease", joined(restart.interfaces).c_str());
        lock.reset();
        processes = {Client(parent), Client(client)};
        if (processes.front().isNobody() || Clock::now() >= end)
            return;
    }
}

void becomeClient(const std::vector<std::string> &commandLine)
{
    for (int number = 1; number < NSIG; ++number)
        ::signal(number, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    std::vector<char *> arguments;
    for (const std::string &argument : commandLine)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    char path[] = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
    char *const environment[] = {path, nullptr};
    ::execve(ClientFacts::Program, arguments.data(), environment);
}

std::string joined(const std::vector<std::string> &interfaces)
{
    std::string names;
    for (const std::string &interface : interfaces)
        names += (names.empty() ? "" : " ") + interface;
    return names.empty() ? "all interfaces" : names;
}
