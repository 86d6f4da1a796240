#include "procfs.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>

namespace {

std::string readFile(const std::string &path)
{
    constexpr std::size_t Limit = 16 << 20; // more than an environment can have
    try {
        return Posix::readFile(path, Limit).value_or(std::string());
    } catch (const std::system_error &) {
        return {};
    }
}

std::string targetOf(const std::string &link)
{
    std::error_code ignored;
    return std::filesystem::read_symlink(link, ignored);
}

} // namespace

bool Procfs::isOurs()
{
    return targetOf("/proc/self") == std::to_string(::getpid());
}

std::vector<pid_t> Procfs::processes()
{
    std::vector<pid_t> processes;
    for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
        if (const pid_t pid = parsePid(entry.path().filename().string()); pid != 0)
            processes.push_back(pid);
    }
    return processes;
}

std::string Procfs::bootId()
{
    const std::string id = readFile("/proc/sys/kernel/random/boot_id");
    return id.substr(0, id.find('\n'));
}

pid_t Procfs::parsePid(std::string_view text)
{
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), pid);
    return error == std::errc() && end == text.data() + text.size() ? pid : 0;
}

std::string Procfs::read(pid_t pid, const char *file)
{
    return readFile("/proc/" + std::to_string(pid) + '/' + file);
}

std::string Procfs::linkTarget(pid_t pid, const char *link)
{
    return targetOf("/proc/" + std::to_string(pid) + '/' + link);
}

std::vector<std::string> Procfs::arguments(pid_t pid)
{
    std::vector<std::string> arguments;
    std::istringstream words(read(pid, "cmdline"));
    for (std::string word; std::getline(words, word, '\0');)
        arguments.push_back(word);
    return arguments;
}

Procfs::Stat Procfs::stat(pid_t pid)
{
    // The second field is the program's name in parentheses, and may contain blanks and parentheses itself.
    const std::string line = read(pid, "stat");
    std::istringstream fields(line.substr(line.rfind(')') + 1));
    char state = 0;
    Stat stat;
    std::string field;
    fields >> state >> stat.parent >> field >> stat.session;
    for (int number = 7; number < 22; ++number)
        fields >> field;
    fields >> stat.startTime;
    const bool hasEnded = state == 'Z' || state == 'X'; // but nobody has waited for it yet
    return fields && !hasEnded ? stat : Stat();
}

bool Procfs::catchesSignal(pid_t pid, int signalNumber)
{
    const std::string status = read(pid, "status");
    const std::string name = "\nSigCgt:";
    const std::size_t begin = status.find(name);
    return begin != std::string::npos
           && (std::strtoull(status.c_str() + begin + name.size(), nullptr, 16) >> (signalNumber - 1)) & 1U;
}

bool Procfs::sharesNamespace(pid_t pid, const char *kind)
{
    const std::string file = std::string("ns/") + kind;
    const std::string target = linkTarget(pid, file.c_str());
    return !target.empty() && target == linkTarget(::getpid(), file.c_str());
}

Posix::Descriptor Procfs::open(pid_t pid)
{
    return Posix::Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
}

bool Procfs::kill(const Posix::Descriptor &process, int signalNumber)
{
    return ::syscall(SYS_pidfd_send_signal, process.get(), signalNumber, nullptr, 0) == 0;
}

bool Procfs::signalIf(pid_t pid, int signalNumber, const std::function<bool()> &check)
{
    const Posix::Descriptor process = open(pid);
    return process && check() && kill(process, signalNumber);
}
