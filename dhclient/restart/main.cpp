// What the program finds as "dhclient" when it has applied choices. It has the clients that the machine runs read their
// configuration and ask their servers again, and changes nothing else: one more client beside them would take a second
// address, and would ask on interfaces that have a fixed one.

#include "addresses.h"
#include "bindings.h"
#include "clientfacts.h"
#include "lockfile.h"
#include "paths.h"
#include "posix.h"
#include "procfs.h"
#include "restart.h"
#include "runningclient.h"

#include <net/if.h>
#include <signal.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Names = std::set<std::string>;

Names fixedInterfaces()
{
    Names fixed;
    for (const Address &address : addresses()) {
        if (address.isFixed)
            fixed.insert(address.interface);
    }
    return fixed;
}

/// Those on which a client without names would ask, except what belongs to a bridge or a bond.
Names clientsInterfaces()
{
    Names names;
    for (const auto &entry : std::filesystem::directory_iterator("/sys/class/net")) {
        unsigned flags = 0;
        std::ifstream(entry.path() / "flags") >> std::hex >> flags;
        if ((flags & (IFF_BROADCAST | IFF_LOOPBACK)) == IFF_BROADCAST
            && !std::filesystem::exists(entry.path() / "brport")
            && !std::filesystem::exists(entry.path() / "bonding_slave"))
            names.insert(entry.path().filename());
    }
    return names;
}

Names without(const Names &names, const Names &others)
{
    Names rest;
    std::set_difference(names.begin(), names.end(), others.begin(), others.end(), std::inserter(rest, rest.end()));
    return rest;
}

/// Those that the client of an earlier apply serves and that no other client takes.
Names interfacesToServe(const RunningClient &earlier, const std::vector<RunningClient> &others)
{
    const auto held =
        Bindings(Paths::resolve(ClientFacts::ValuesDirectory) + "/.interfaces").interfacesOf(earlier.client);
    Names served(held.begin(), held.end());
    const bool hasBound = earlier.processes.size() == 1;
    if (served.empty() || (others.empty() && !hasBound)) {
        const Names all = others.empty() && earlier.interfaces.empty() ? clientsInterfaces() : Names();
        served.insert(all.begin(), all.end());
        served.insert(earlier.interfaces.begin(), earlier.interfaces.end());
    }
    Names taken = fixedInterfaces();
    for (const RunningClient &other : others) {
        if (other.interfaces.empty())
            return {};
        taken.insert(other.interfaces.begin(), other.interfaces.end());
    }
    return without(served, taken);
}

std::vector<std::string> commandLine(const Names &interfaces)
{
    std::vector<std::string> words = {ClientFacts::Name, ClientFacts::OnceArgument};
    words.insert(words.end(), interfaces.begin(), interfaces.end());
    return words;
}

void startClient()
{
    const Names all = clientsInterfaces();
    const Names rest = without(all, fixedInterfaces());
    if (rest.empty())
        ::syslog(LOG_INFO, "started no client: each interface has a fixed address");
    else
        becomeClient(commandLine(rest == all ? Names() : rest));
}

void askAgain()
{
    if (::access(ClientFacts::Program, X_OK) != 0)
        Posix::fail("execute", ClientFacts::Program);
    Posix::Descriptor lock = Posix::lock("/run/kiro-dhcp-mgr.lock", std::chrono::seconds(10));
    std::vector<RunningClient> others = runningClients();
    const auto isOther = [](const RunningClient &running) { return !running.isFromApply(); };
    const auto border = std::stable_partition(others.begin(), others.end(), isOther);
    const std::vector<RunningClient> earlier(border, others.end());
    others.erase(border, others.end());

    std::vector<Restart> restarts;
    for (const RunningClient &running : others) {
        if (running.reasonToLeaveIt.empty())
            restarts.push_back({running.processes, running.commandLine, running.pidFile, running.interfaces});
        else
            ::syslog(LOG_INFO, "%s: left %d alone: %s", joined(running.interfaces).c_str(), running.client.number(),
                     running.reasonToLeaveIt.c_str());
    }
    // From here on only those count that ask for IPv4.
    others.erase(std::remove_if(others.begin(), others.end(), std::not_fn(std::mem_fn(&RunningClient::isForIPv4))),
                 others.end());
    for (const RunningClient &running : earlier) {
        const Names interfaces = interfacesToServe(running, others);
        if (interfaces.empty())
            std::for_each(running.processes.begin(), running.processes.end(), [](const Client &c) { c.end(); });
        else
            restarts.push_back(
                {running.processes, commandLine(interfaces), running.pidFile, {interfaces.begin(), interfaces.end()}});
    }
    if (restarts.empty() && others.empty())
        startClient();
    for (const Restart &next : restarts) {
        if (::fork() == 0) {
            restart(next, std::move(lock));
            return;
        }
    }
}

} // namespace

int main(int /*argc*/, char *argv[])
{
    ::openlog("kiro-dhcp-mgr", 0, LOG_DAEMON);
    if (::geteuid() != 0)
        ::execv(ClientFacts::Program, argv);
    try {
        if (!Procfs::isOurs())
            throw std::runtime_error("/proc is not mounted, or shows another process namespace");
        if (::daemon(0, 0) != 0) // it may run for as long as a lease
            Posix::fail("run", "in the background");
        ::signal(SIGCHLD, SIG_DFL);
        askAgain();
        return EXIT_SUCCESS;
    } catch (const std::exception &error) {
        ::syslog(LOG_ERR, "the DHCP clients do not ask again: %s", error.what());
        return EXIT_FAILURE;
    }
}
