// kiro-dhclient-edit: edits /etc/dhcp/dhclient.conf so that the client requests and declares options.

#include "client.h"
#include "clientfacts.h"
#include "draft.h"
#include "error.h"
#include "lockfile.h"
#include "paths.h"
#include "posix.h"
#include "report.h"

#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>

using namespace DhclientConf;

namespace {

constexpr char Program[] = "kiro-dhclient-edit";

constexpr char Help[] =
    "Usage: kiro-dhclient-edit [--dry-run] [COMMAND ARGUMENT]...\n"
    "Edits /etc/dhcp/dhclient.conf, below KIRO_DHCP_MGR_ROOT where that is set.\n"
    "The commands are carried out in order, all of them or none; without any the file is checked.\n"
    "\n"
    "  --add-request NAME                  make the client request an option\n"
    "  --del-request NAME                  make it neither request nor require the option\n"
    "  --add-new-option \"NAME CODE TYPE\"   declare an option, types as in dhcp-options(5)\n"
    "  --del-new-option \"NAME CODE TYPE\"   remove the declaration with that code\n"
    "  --dry-run                           leave the file as it is\n"
    "  --help, --version                   show this text, the version\n"
    "\n"
    "Exit status: 0 done or nothing to do, 1 the file cannot be read, written or understood, 2 wrong\n"
    "arguments or an edit that dhclient would not accept, 3 --dry-run would have changed the file.\n";

constexpr std::size_t LargestFile = std::size_t{1024} * 1024;
constexpr std::chrono::seconds LongestLock(60);

enum Status { Done = 0, WouldChange = 3 }; ///< and those of Error

int fail(const Error &error)
{
    std::string place;
    if (error.fault == Error::File)
        place = Paths::resolve(ClientFacts::Configuration)
                + (error.line > 0 ? ", line " + std::to_string(error.line) : "") + ": ";
    Posix::report(Program, LOG_ERR, place + error.what());
    return error.fault;
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

std::string contentOf(const std::string &target)
{
    return Posix::readFile(target, LargestFile).value_or(std::string());
}

int check(const std::string &target)
{
    const std::string content = contentOf(target);
    const Answer answer = content.empty() ? Answer() : askClient(target);
    if (!answer.obstacle.empty())
        throw Error(Error::Command, "cannot ask dhclient: " + answer.obstacle);
    for (const Complaint &complaint : answer.complaints)
        fail(Error(Error::File, complaint.reason, complaint.line));
    if (!answer.complaints.empty())
        return Error::File;
    Draft draft(content); // there is more that this program does not edit
    return Done;
}

/// The exit status; nothing if the file is to be changed but may not be, or another program has changed it meanwhile.
std::optional<int> attempt(const std::string &target, const std::vector<Wish> &wishes, bool isDryRun, bool mayChange)
{
    const Posix::FileState state = Posix::stateOf(target);
    const std::string content = contentOf(target);
    Draft draft(content);
    draft.carryOut(wishes);
    const bool changes = draft.text() != content;
    if (changes && !mayChange)
        return std::nullopt;
    Answer answer;
    bool isCurrent = true;
    if (changes)
        Posix::replaceFile(target, draft.text(), Posix::Replacement::Durable, [&](const std::string &prepared) {
            isCurrent = Posix::stateOf(target) == state;
            if (!isCurrent)
                return false;
            // The old text first: also an edit that mends a mistake would apply more than it was asked to.
            const Answer old = content.empty() ? Answer() : askClient(target);
            if (old.complaints.empty())
                answer = askClient(prepared);
            isCurrent = Posix::stateOf(target) == state;
            if (isCurrent && !old.complaints.empty())
                throw Error(Error::File, old.complaints.front().reason, old.complaints.front().line);
            if (isCurrent && !answer.complaints.empty())
                throw Error(Error::Command, "dhclient would not accept the edit: " + answer.complaints.front().reason);
            return isCurrent && !isDryRun;
        });
    if (!isCurrent)
        return std::nullopt;
    if (!answer.obstacle.empty())
        Posix::report(Program, LOG_NOTICE, "note: dhclient could not check the edit: " + answer.obstacle);
    for (const std::string &line : draft.notes())
        Posix::report(Program, LOG_NOTICE, "note: " + line);
    return changes && isDryRun ? WouldChange : Done;
}

int run(const std::vector<Wish> &wishes, bool isDryRun)
{
    const std::string target = followed(Paths::resolve(ClientFacts::Configuration));
    if (wishes.empty())
        return check(target);
    std::optional<int> status = attempt(target, wishes, isDryRun, false);
    if (status)
        return *status;
    // A file beside it, since the file itself is replaced.
    const std::size_t name = target.rfind('/') + 1;
    const Posix::Descriptor lock = Posix::lock(target.substr(0, name) + '.' + target.substr(name) + ".lock",
                                               LongestLock);
    for (int left = 3; left > 0 && !status; --left)
        status = attempt(target, wishes, isDryRun, true);
    if (!status)
        throw Error(Error::File, "another program keeps changing it");
    return *status;
}

/// The exit status of the process, which is waited for.
int statusOf(pid_t process)
{
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {}
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    Posix::report(Program, LOG_ERR, "ended by signal " + std::to_string(WTERMSIG(status)));
    return Error::File;
}

} // namespace

int main(int argc, char *argv[])
{
    Posix::keepStandardStreams();
    std::signal(SIGPIPE, SIG_IGN); // the caller may be gone before everything is written
    std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    const std::string first = arguments.empty() ? std::string() : arguments.front();
    if (first == "--help" || first == "--version") {
        std::cout << (first == "--help" ? Help : "kiro-dhclient-edit " PROGRAM_VERSION "\n");
        return Done;
    }
    const bool isDryRun = first == "--dry-run";
    arguments.erase(arguments.begin(), arguments.begin() + (isDryRun ? 1 : 0));
    try {
        const std::vector<Wish> wishes = readWishes(arguments);
        // What has begun is finished in a process that no signal to the caller's reaches: the window kills a tool
        // that takes longer than two seconds.
        const pid_t worker = ::fork();
        if (worker > 0)
            return statusOf(worker);
        ::setsid();
        return run(wishes, isDryRun);
    } catch (const Error &error) {
        return fail(error);
    } catch (const std::exception &error) {
        Posix::report(Program, LOG_ERR, error.what());
        return Error::File;
    }
}
