#include "refreshwindow.h"

#include "paths.h"
#include "posix.h"
#include "procfs.h"

#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// The process that is the user's running instance of the program; 0 if there is none, or none that can be known, as in
/// another process namespace.
pid_t runningInstance()
{
    const Paths::InstanceSocket instance = Paths::instanceSocket("kiro-dhcp-mgr");
    const Posix::Descriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    ucred peer = {};
    socklen_t size = sizeof(peer);
    const bool isOurs =
        ::connect(connection.get(), reinterpret_cast<const sockaddr *>(&instance.address), instance.size) == 0
        && ::getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0
        && peer.uid == ::geteuid(); // anybody may take any name
    return isOurs ? peer.pid : 0;
}

} // namespace

void refreshWindow()
{
    // A program that is still loading would die of the signal, but may have read the old values already.
    for (int attempt = 0; attempt < 150; ++attempt) {
        const pid_t pid = runningInstance();
        if (pid == 0 || Procfs::signalIf(pid, SIGHUP, [&] {
                return runningInstance() == pid && Procfs::catchesSignal(pid, SIGHUP);
            }))
            return;
        ::usleep(20'000);
    }
}
