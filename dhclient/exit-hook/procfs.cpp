#include "procfs.h"

#include "files.h"

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <vector>

namespace {

std::string pathOf(pid_t pid, const char *file)
{
    return "/proc/" + std::to_string(pid) + "/" + file;
}

} // namespace

bool Procfs::isOurs()
{
    return Files::linkTarget("/proc/self") == std::to_string(::getpid());
}

std::string Procfs::read(pid_t pid, const char *file)
{
    return Files::read(pathOf(pid, file));
}

std::string Procfs::status(pid_t pid, std::string_view name)
{
    std::istringstream lines(read(pid, "status"));
    std::string line;
    while (std::getline(lines, line)) {
        if (line.size() > name.size() && line.compare(0, name.size(), name) == 0
            && line[name.size()] == ':') {
            const std::size_t begin = line.find_first_not_of(" \t", name.size() + 1);
            return begin == std::string::npos ? std::string() : line.substr(begin);
        }
    }
    return {};
}

std::string Procfs::stat(pid_t pid, int field)
{
    // The second field is the program's name between parentheses, blanks and parentheses of its own included.
    const std::string line = read(pid, "stat");
    const std::size_t end = line.rfind(')');
    if (end == std::string::npos)
        return {};
    std::istringstream fields(line.substr(end + 1));
    std::string text;
    for (int i = 3; i <= field; ++i) {
        if (!(fields >> text))
            return {};
    }
    return text;
}

bool Procfs::isOfOurUser(pid_t pid)
{
    std::istringstream users(status(pid, "Uid"));
    uid_t real = 0;
    uid_t effective = 0;
    return users >> real >> effective && real == ::geteuid() && effective == ::geteuid();
}

bool Procfs::sharesNamespace(pid_t pid, const char *kind)
{
    const std::string file = std::string("ns/") + kind;
    const std::string target = Files::linkTarget(pathOf(pid, file.c_str()));
    return !target.empty() && target == Files::linkTarget("/proc/self/" + file);
}

bool Procfs::signalIf(pid_t pid, int signalNumber, const std::function<bool()> &check)
{
    // The number alone could belong to another process between the check and the signal.
    const Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    if (handle.get() < 0 && errno != ENOSYS)
        return false;
    if (!check())
        return false;
    if (handle.get() < 0)
        return ::kill(pid, signalNumber) == 0;
    return ::syscall(SYS_pidfd_send_signal, handle.get(), signalNumber, nullptr, 0) == 0;
}
