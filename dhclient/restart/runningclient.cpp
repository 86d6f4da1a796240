#include "runningclient.h"

#include "clientfacts.h"
#include "procfs.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>

namespace {

// dhclient(8)
const std::string OptionsWithValue = " -4o6 -D -cf -df -e -g -lf -p -pf -s -sf --address-prefix-len --dad-wait-time"
                                     " --decline-wait-time --prefix-len-hint ";
const std::map<std::string, std::string> ReasonsToLeave = {{"-cf", "it has a configuration of its own"},
                                                           {"-sf", "it has a script of its own"},
                                                           {"-d", "another program supervises it"},
                                                           {"-r", "it releases a lease"},
                                                           {"-x", "it stops a client"},
                                                           {"-6", RunningClient::ForIPv6},
                                                           {"-4o6", RunningClient::ForIPv6},
                                                           {"-N", RunningClient::ForIPv6},
                                                           {"-P", RunningClient::ForIPv6},
                                                           {"-S", RunningClient::ForIPv6},
                                                           {"-T", RunningClient::ForIPv6}};

bool isClientOfThisMachine(pid_t pid)
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

/// Takes the words of the command line as the client does.
void readCommandLine(RunningClient &running)
{
    running.pidFile = "/run/dhclient.pid";
    for (std::size_t i = 1; i < running.commandLine.size(); ++i) {
        const std::string &word = running.commandLine[i];
        if (word.compare(0, 1, "-") != 0) {
            running.interfaces.push_back(word);
            continue;
        }
        if (const auto found = ReasonsToLeave.find(word); found != ReasonsToLeave.end() && running.isForIPv4())
            running.reasonToLeaveIt = found->second;
        if (word == "--no-pid")
            running.pidFile.clear();
        if (OptionsWithValue.find(' ' + word + ' ') == std::string::npos || ++i == running.commandLine.size())
            continue;
        if (word == "-pf")
            running.pidFile = running.commandLine[i];
    }
}

} // namespace

std::vector<RunningClient> runningClients()
{
    std::vector<pid_t> all = Procfs::processes();
    all.erase(std::remove_if(all.begin(), all.end(), [](pid_t pid) { return !isClientOfThisMachine(pid); }), all.end());

    std::vector<RunningClient> clients;
    for (const pid_t pid : all) {
        const Procfs::Stat stat = Procfs::stat(pid);
        if (std::find(all.begin(), all.end(), stat.parent) != all.end())
            continue; // its parent stands for both
        RunningClient running;
        running.client = Client(pid);
        running.commandLine = Procfs::arguments(pid);
        running.processes = {running.client};
        readCommandLine(running);
        if (('\0' + Procfs::read(pid, "environ")).find(std::string("\0PATH_DHCLIENT_", 15)) != std::string::npos)
            running.reasonToLeaveIt = "its environment names files of its own";

        // Until it has bound, a client is the child of one that only waits, in the session of whoever started that.
        for (const pid_t other : all) {
            if (Procfs::stat(other).parent == pid)
                running.processes.emplace_back(other);
        }
        const bool isInBackground = running.processes.size() == 1 && stat.session == pid;
        if (Procfs::linkTarget(stat.parent, "exe") == Procfs::linkTarget(::getpid(), "exe"))
            running.processes.emplace(running.processes.begin(), stat.parent); // an earlier run that waits for it
        else if (!isInBackground && !running.isFromApply() && running.reasonToLeaveIt.empty())
            running.reasonToLeaveIt = "it has not gone to the background yet";
        clients.push_back(running);
    }
    return clients;
}
