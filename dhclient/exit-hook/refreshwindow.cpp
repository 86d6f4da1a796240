#include "refreshwindow.h"

#include "paths.h"
#include "posix.h"
#include "procfs.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace {

/// The process that holds the lock of the program's only instance; 0 if there is none.
pid_t lockHolder(const Posix::Descriptor &lockFile)
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    // The kernel gives no number for a holder in another process namespace.
    if (::fcntl(lockFile.get(), F_GETLK, &lock) != 0 || lock.l_pid < 0)
        return 0;
    return lock.l_pid; // left as it was if there is no lock
}

} // namespace

void refreshWindow()
{
    const Posix::Descriptor lockFile(
        ::open(Paths::resolve("/run/kiro-dhcp-mgr.lock").c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    // A program that is still loading would die of the signal, but may have read the old values already.
    for (int attempt = 0; attempt < 150; ++attempt) {
        const pid_t pid = lockHolder(lockFile);
        if (pid == 0 || Procfs::signalIf(pid, SIGHUP, [&] {
                return lockHolder(lockFile) == pid && Procfs::catchesSignal(pid, SIGHUP);
            }))
            return;
        ::usleep(20'000);
    }
}
