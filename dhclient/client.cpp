#include "client.h"

#include "clientfacts.h"
#include "paths.h"
#include "posix.h"
#include "wish.h"

#include <fcntl.h>
#include <poll.h>
#include <seccomp.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace DhclientConf {

namespace {

// Two runs and the edit fit into the two seconds for which the window waits.
constexpr std::chrono::milliseconds Patience(800);
constexpr std::size_t MostOutput = std::size_t{64} * 1024;

/// False if the kernel does not take the filter. It stays in force over execve(2).
bool refuseAllButReading()
{
    void *const filter = ::seccomp_init(SCMP_ACT_ALLOW);
    const std::uint32_t refusal = SCMP_ACT_ERRNO(EPERM);
    // It learns by AF_NETLINK which interfaces there are.
    bool isSet = ::seccomp_rule_add(filter, refusal, SCMP_SYS(socket), 1, SCMP_A0(SCMP_CMP_NE, AF_NETLINK)) == 0;
    for (const int call : {SCMP_SYS(clone), SCMP_SYS(clone3), SCMP_SYS(fork), SCMP_SYS(vfork)})
        isSet = isSet && ::seccomp_rule_add(filter, refusal, call, 0) == 0;
    return isSet && ::seccomp_load(filter) == 0;
}

[[noreturn]] void becomeClient(const std::string &file)
{
    const std::string usual = Paths::resolve(ClientFacts::Program);
    const std::string other = Paths::resolve("/sbin/dhclient");
    const std::string &program = ::access(usual.c_str(), F_OK) == 0 ? usual : other;
    const char *const arguments[] = {program.c_str(), "-q",        "-d",  "-1",        "-4",  "-cf",       file.c_str(),
                                     "-lf",           "/dev/null", "-pf", "/dev/null", "-sf", "/bin/true", nullptr};
    const char *const environment[] = {nullptr};
    ::prctl(PR_SET_PDEATHSIG, SIGKILL); // over some files it reads for ever (C8)
    if (refuseAllButReading())
        ::execve(program.c_str(), const_cast<char *const *>(arguments), const_cast<char *const *>(environment));
    ::dprintf(STDOUT_FILENO, "cannot run \"%s\": %s\n", program.c_str(), std::strerror(errno));
    ::_exit(EXIT_FAILURE);
}

/// Until the end, the time or the size that the client may have.
std::string readOutput(int descriptor)
{
    const auto end = std::chrono::steady_clock::now() + Patience;
    std::string output;
    char buffer[4096];
    while (output.size() < MostOutput) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd ready = {descriptor, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&ready, 1, static_cast<int>(left.count())) == 0)
            break;
        const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        if (count == 0)
            break;
        if (count > 0)
            output.append(buffer, static_cast<std::size_t>(count));
    }
    return output;
}

/// A complaint is a line "FILE line N: REASON", or that an interface's name is too long, over which the client gives up
/// (C9). All else is about the network, or shows the text.
std::vector<Complaint> complaintsIn(const std::string &output, const std::string &file)
{
    const std::string beginning = file + " line ";
    std::vector<Complaint> complaints;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(": ", beginning.size());
        if (line.compare(0, beginning.size(), beginning) == 0 && colon != std::string::npos)
            complaints.push_back({printable(line.substr(colon + 2)), std::atoi(&line[beginning.size()])});
        else if (line.find("Can't allocate interface ") == 0)
            complaints.push_back({printable(line), 0});
    }
    return complaints;
}

} // namespace

Answer askClient(const std::string &file)
{
    // What it says is the same whether it can open the file or not (C3).
    const Posix::Descriptor watch(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    const bool isWatched = ::inotify_add_watch(watch.get(), file.c_str(), IN_OPEN) >= 0;
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        Posix::fail("read from", "dhclient");
    const Posix::Descriptor reading(ends[0]);
    Posix::Descriptor writing(ends[1]);
    const pid_t client = ::fork();
    if (client < 0)
        Posix::fail("start", "dhclient");
    if (client == 0) {
        ::dup2(writing.get(), STDOUT_FILENO);
        ::dup2(writing.get(), STDERR_FILENO);
        becomeClient(file);
    }
    writing.reset();
    const std::string output = readOutput(reading.get());
    // One that has ended keeps the status that it ended with.
    ::kill(client, SIGKILL);
    int status = 0;
    while (::waitpid(client, &status, 0) < 0 && errno == EINTR) {}
    Answer answer{complaintsIn(output, file), {}};
    inotify_event opened = {};
    if (WIFSIGNALED(status))
        answer.complaints.push_back({WTERMSIG(status) == SIGKILL ? "dhclient did not end" : "dhclient crashed", 0});
    else if (answer.complaints.empty() && !isWatched)
        answer.obstacle = "inotify(7) cannot tell whether it opens the file";
    else if (answer.complaints.empty() && ::read(watch.get(), &opened, sizeof opened) <= 0)
        answer.obstacle = "it did not open the file, and said: " + printable(output.substr(0, output.find('\n')));
    return answer;
}

} // namespace DhclientConf
