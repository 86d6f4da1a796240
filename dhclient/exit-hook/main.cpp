// Records what a DHCP client received. The client's exit hook starts it with the process number of the script that
// sources the hook; that process's initial environment describes the event.

#include "bindings.h"
#include "client.h"
#include "clientfacts.h"
#include "leaseevent.h"
#include "lockfile.h"
#include "paths.h"
#include "posix.h"
#include "procfs.h"
#include "refreshwindow.h"
#include "report.h"
#include "valuefiles.h"

#include <spawn.h>
#include <sys/wait.h>
#include <syslog.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace {

constexpr std::chrono::seconds LongestLock(300); // many hooks at once take a minute on a busy machine

/// False when the event changes nothing.
bool record(const LeaseEvent &event, const std::string &directory)
{
    Bindings bindings(directory + "/.interfaces");
    Binding &binding = bindings[event.interface];
    const Client client(event.pid);
    // Another client's interface is only taken by one that binds it. That client must still run, or it has lost a
    // race; and the owner must not be in another network, which has another interface of the same name.
    if (!binding.owner.isNobody() && binding.owner != client
        && (event.kind != LeaseEvent::Kind::Bound || client.isNobody() || !binding.owner.isInOurNetwork()))
        return false;

    if (event.kind == LeaseEvent::Kind::Lost) {
        binding.owner = Client();
    } else {
        binding.owner = client;
        bindings.assignDirectory(event.interface);
    }
    try {
        bindings.save();
    } catch (const std::system_error &error) {
        Posix::report("record-lease", LOG_ERR, error.what()); // the values can still be written
    }
    if (binding.directory.empty())
        return false;
    // A renewal may be of a client with an older list: what it did not ask for stays.
    const bool keepsOthers = event.kind == LeaseEvent::Kind::Renewed;
    writeValueFiles(directory + '/' + binding.directory, event.options,
                    [&](const std::string &name) { return !keepsOthers || event.requested.count(name) != 0; });
    return true;
}

/// Where an apply found no client it started one. When another binds an interface of that one, it has to give the
/// interface up: it would hold a second address, also after ifdown(8).
void dislodgeClientOfApply(const LeaseEvent &event)
{
    if (event.kind != LeaseEvent::Kind::Bound || Client::isFromApply(Procfs::arguments(event.pid))
        || !Client::anApplysAsksOn(event.interface))
        return;
    std::string program = Paths::resolve(ClientFacts::Restarter);
    std::string once = ClientFacts::OnceArgument;
    char *const arguments[] = {program.data(), once.data(), nullptr};
    pid_t pid = 0;
    if (::posix_spawn(&pid, program.c_str(), nullptr, nullptr, arguments, nullptr) == 0)
        ::waitpid(pid, nullptr, 0);
}

void run(const char *script)
{
    if (!Procfs::isOurs())
        throw std::runtime_error("/proc is not mounted, or shows another process namespace");
    const auto event = LeaseEvent::fromEnvironment(Procfs::read(Procfs::parsePid(script), "environ"));
    const std::string directory = Paths::resolve(ClientFacts::ValuesDirectory);
    Posix::makeDirectories(directory);
    Posix::Descriptor lock = Posix::lock(directory + "/.lock", LongestLock);
    const bool isRecorded = record(event, directory);
    lock.reset();
    dislodgeClientOfApply(event);
    if (isRecorded)
        refreshWindow();
}

} // namespace

int main(int argc, char *argv[])
{
    Posix::keepStandardStreams();
    try {
        run(argc > 1 ? argv[1] : "");
        return EXIT_SUCCESS;
    } catch (const std::exception &error) {
        Posix::report("record-lease", LOG_ERR, error.what());
        return EXIT_FAILURE;
    }
}
