#include "runningclient.h"

#include "procfs.h"

#include <unistd.h>

#include <algorithm>
#include <map>

namespace {

// dhclient(8)
const std::string OptionsWithValue = " -4o6 -D -cf -df -e -g -lf -p -pf -s -sf --address-prefix-len --dad-wait-time"
                                     " --decline-wait-time --prefix-len-hint ";
const std::map<std::string, std::string> ReasonsToLeave = {{"-cf", "it has a configuration of its own"},
                                                           {"-sf", "it has a script of its own"},
                                                           {"-d", "another program supervises it"},
                                                           {"-r", "it releases a lease"},
                                                           {"-x", "it stops a client"},
                                                           {"-nw", "it does not wait for a lease"},
                                                           {"-6", RunningClient::ForIPv6},
                                                           {"-4o6", RunningClient::ForIPv6},
                                                           {"-N", RunningClient::ForIPv6},
                                                           {"-P", RunningClient::ForIPv6},
                                                           {"-S", RunningClient::ForIPv6},
                                                           {"-T", RunningClient::ForIPv6}};

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
        const std::string &value = running.commandLine[i];
        if (word == "-pf")
            running.pidFile = value;
        if ((word == "-pf" || word == "-lf" || word == "-df") && value.compare(0, 1, "/") != 0 && running.isForIPv4())
            running.reasonToLeaveIt = "its files are named relative to a directory that is not known any more";
    }
}

} // namespace

std::vector<RunningClient> runningClients()
{
    std::vector<pid_t> all = Procfs::processes();
    all.erase(std::remove_if(all.begin(), all.end(), [](pid_t pid) { return !Client::isOfThisMachine(pid); }),
              all.end());

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
        if (stat.startTime == 0 || running.commandLine.empty())
            continue; // it has just ended
        if (running.reasonToLeaveIt.empty()
            && ('\0' + Procfs::read(pid, "environ")).find(std::string("\0PATH_DHCLIENT_", 15)) != std::string::npos)
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
