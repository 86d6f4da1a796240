// kiro-dhclient-edit: edits /etc/dhcp/dhclient.conf so that the client requests and declares options.
// Statuses: 0 done, perhaps with notes on standard error; 1 the file can't be read, written or understood;
// 2 a wrong argument. With 1 and 2 nothing was written.

#include "edit.h"
#include "error.h"
#include "paths.h"
#include "posix.h"

#include <cerrno>
#include <csignal>
#include <exception>

#include <fcntl.h>
#include <sys/file.h>
#include <syslog.h>
#include <unistd.h>

using namespace DhclientConf;

namespace {

constexpr char ConfPath[] = "/etc/dhcp/dhclient.conf";

constexpr char Help[] = "Usage: kiro-dhclient-edit [COMMAND ARGUMENT]...\n"
                        "Edits /etc/dhcp/dhclient.conf, below KIRO_DHCP_MGR_ROOT where that is set.\n"
                        "The commands are carried out in order, all of them or none.\n"
                        "\n"
                        "  --add-request NAME                  make the client request an option\n"
                        "  --del-request NAME                  make it stop, and no longer require the option\n"
                        "  --add-new-option \"NAME CODE TYPE\"   declare an option, types as in dhcp-options(5)\n"
                        "  --del-new-option \"NAME CODE TYPE\"   remove the declaration with that code\n"
                        "  --help                              show this text\n"
                        "  --version                           show the version\n"
                        "\n"
                        "Statuses: 0 done, 1 the file cannot be read, written or understood, 2 wrong arguments.\n";

constexpr std::size_t LargestFile = std::size_t{16} * 1024 * 1024;

// Standard streams of C++ would cost more than the whole edit.
void print(int descriptor, const std::string &text)
{
    try {
        Posix::writeAll(descriptor, text, "output");
    } catch (const std::exception &) {
        // Nobody reads it any more.
    }
}

// The program that calls the tool reads neither its output nor its status, so the system log has it too, but
// not from below a trial root.
void report(int priority, const std::string &line)
{
    print(STDERR_FILENO, "kiro-dhclient-edit: " + line + '\n');
    if (!Paths::hasRoot())
        ::syslog(priority, "%s", line.c_str());
}

int fail(int status, const std::string &line)
{
    report(LOG_ERR, line);
    return status;
}

/// Where the path leads when symbolic links at its end are followed; the last may dangle. Under a root prefix, links
/// to absolute paths stay below it.
std::string followed(std::string path)
{
    const std::string root = Paths::resolve("/");
    for (int links = 0; links < 40; ++links) {
        char target[4096];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length <= 0 || length == sizeof target)
            return path;
        const std::string next(target, static_cast<std::size_t>(length));
        if (next.front() != '/')
            path = Posix::parentOf(path) + '/' + next;
        else if (Paths::hasRoot() && next.compare(0, root.size(), root) != 0)
            path = Paths::resolve(next);
        else
            path = next;
    }
    errno = ELOOP;
    Posix::fail("read", path);
}

std::optional<std::string> readIncluded(const std::string &path)
{
    // Relative paths are relative to wherever the client starts, which is unknown.
    if (path.empty() || path.front() != '/' || path.find('\0') != std::string::npos)
        return std::nullopt;
    try {
        return Posix::readFile(followed(Paths::resolve(path)), LargestFile);
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

/// Waits until no other run edits the file. The lock is a file beside it, since the file itself is replaced. The lock
/// stays there: removing it could let two runs in. Only its owner may open it, so that nobody else can hold it.
Posix::Descriptor locked(const std::string &target)
{
    const std::size_t name = target.rfind('/') + 1;
    const std::string path = target.substr(0, name) + '.' + target.substr(name) + ".lock";
    Posix::Descriptor lock(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
    while (!lock || ::flock(lock.get(), LOCK_EX) != 0) {
        if (!lock || errno != EINTR)
            Posix::fail("lock", path);
    }
    return lock;
}

Result editFile(const std::string &path, const std::vector<Command> &commands, bool &changed)
{
    const std::string content = Posix::readFile(path, LargestFile).value_or(std::string());
    Result result = edit(content, commands, readIncluded);
    changed = result.text != content;
    return result;
}

int run(const std::vector<Command> &commands)
{
    const std::string path = Paths::resolve(ConfPath);
    try {
        const std::string target = followed(path);
        bool changed = false;
        Result result = editFile(target, commands, changed);
        if (changed) {
            const Posix::Descriptor lock = locked(target);
            // Another run may have edited it first.
            result = editFile(target, commands, changed);
            if (changed)
                Posix::replaceFile(target, result.text, Posix::Replacement::Durable);
        }
        for (const std::string &note : result.notes)
            report(LOG_NOTICE, "note: " + note);
        return 0;
    } catch (const Error &error) {
        return fail(error.fault, (error.line > 0 ? path + ", line " + std::to_string(error.line) + ": " : std::string())
                                     + error.what());
    } catch (const std::exception &error) {
        return fail(Error::File, error.what());
    }
}

} // namespace

int main(int argc, char *argv[])
{
    // The caller may exit before everything is written.
    std::signal(SIGPIPE, SIG_IGN);
    static constexpr std::pair<std::string_view, Command::Kind> kinds[] = {{"--add-request", Command::AddRequest},
                                                                           {"--del-request", Command::DelRequest},
                                                                           {"--add-new-option", Command::AddNewOption},
                                                                           {"--del-new-option", Command::DelNewOption}};
    ::openlog("kiro-dhclient-edit", 0, LOG_DAEMON);
    std::vector<Command> commands;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help") {
            print(STDOUT_FILENO, Help);
            return 0;
        }
        if (argument == "--version") {
            print(STDOUT_FILENO, "kiro-dhclient-edit " PROGRAM_VERSION "\n");
            return 0;
        }
        bool found = false;
        for (const auto &[word, kind] : kinds) {
            if (argument != word)
                continue;
            found = true;
            if (++i == argc)
                return fail(Error::Command, std::string(word) + " needs an argument");
            commands.push_back({kind, argv[i]});
        }
        if (!found)
            return fail(Error::Command, "unknown argument " + quoted(argument) + ", see --help");
    }
    return run(commands);
}
