// kiro-dhclient-edit: edits /etc/dhcp/dhclient.conf so that the client requests and declares options.
// Statuses: 0 done, perhaps with notes on standard error; 1 the file can't be read, written or understood;
// 2 a wrong argument. With 1 and 2 nothing was written.

#include "edit.h"
#include "file.h"
#include "paths.h"

#include <csignal>
#include <new>

#include <unistd.h>

using namespace DhclientConf;

namespace {

constexpr char ConfPath[] = "/etc/dhcp/dhclient.conf";

constexpr char Help[] =
    "Usage: kiro-dhclient-edit [COMMAND ARGUMENT]...\n"
    "Edits /etc/dhcp/dhclient.conf, below KIRO_DHCP_MGR_ROOT where that is set.\n"
    "All commands are carried out in order and land together or not at all.\n"
    "\n"
    "  --add-request NAME                  make the client request an option\n"
    "  --del-request NAME                  make it stop, and no longer require the option\n"
    "  --add-new-option \"NAME CODE TYPE\"   declare an option, types as in dhcp-options(5)\n"
    "  --del-new-option \"NAME CODE TYPE\"   take the declaration with that code away\n"
    "  --help                              show this text\n"
    "  --version                           show the version\n"
    "\n"
    "Statuses: 0 done, 1 the file cannot be read, written or understood, 2 wrong arguments.\n";

// Standard streams of C++ would cost more than the whole edit.
void say(int descriptor, const std::string &text)
{
    std::string_view rest = text;
    while (!rest.empty()) {
        const ssize_t count = ::write(descriptor, rest.data(), rest.size());
        if (count <= 0)
            return;
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
}

int complain(const std::string &line, int status)
{
    say(STDERR_FILENO, "kiro-dhclient-edit: " + line + '\n');
    return status;
}

std::optional<std::string> readIncluded(const std::string &path)
{
    std::string content;
    try {
        // Relative paths are relative to wherever the client starts; nobody can know.
        if (path.empty() || path.front() != '/' || path.find('\0') != std::string::npos
            || !ConfFile::read(ConfFile::followed(Paths::resolve(path)), content))
            return std::nullopt;
    } catch (const std::string &) {
        return std::nullopt;
    }
    return content;
}

Result editFile(const std::string &path, const std::vector<Command> &commands, bool &changed)
{
    std::string content;
    ConfFile::read(path, content);
    Result result = edit(content, commands, readIncluded);
    changed = result.status == Result::Done && result.text != content;
    return result;
}

int run(const std::vector<Command> &commands)
{
    const std::string path = Paths::resolve(ConfPath);
    try {
        const std::string target = ConfFile::followed(path);
        bool changed = false;
        Result result = editFile(target, commands, changed);
        if (changed) {
            const ConfFile::Lock lock(target);
            // Another tool may have been faster.
            result = editFile(target, commands, changed);
            if (changed)
                ConfFile::replace(target, result.text);
        }
        if (result.status == Result::Broken)
            return complain(path + ", line " + std::to_string(result.line) + ": " + result.error, 1);
        if (result.status == Result::Refused)
            return complain(result.error, 2);
        for (const std::string &note : result.notes)
            complain("note: " + note, 0);
        return 0;
    } catch (const std::string &error) {
        return complain(error, 1);
    } catch (const std::bad_alloc &) {
        return complain("out of memory", 1);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    // Its caller may be gone before it has said all.
    std::signal(SIGPIPE, SIG_IGN);
    static constexpr std::pair<std::string_view, Command::Kind> kinds[] = {
        {"--add-request", Command::AddRequest}, {"--del-request", Command::DelRequest},
        {"--add-new-option", Command::AddNewOption}, {"--del-new-option", Command::DelNewOption}};
    std::vector<Command> commands;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--help") {
            say(STDOUT_FILENO, Help);
            return 0;
        }
        if (argument == "--version") {
            say(STDOUT_FILENO, "kiro-dhclient-edit " PROGRAM_VERSION "\n");
            return 0;
        }
        bool found = false;
        for (const auto &[word, kind] : kinds) {
            if (argument != word)
                continue;
            found = true;
            if (++i == argc)
                return complain(std::string(word) + " needs an argument", 2);
            commands.push_back({kind, argv[i]});
        }
        if (!found)
            return complain("unknown argument " + quoted(argument) + ", see --help", 2);
    }
    return run(commands);
}
