#include "window.h"

#include "files.h"
#include "paths.h"
#include "procfs.h"

#include <fcntl.h>
#include <signal.h>
#include <time.h>

#include <cstdlib>

namespace {

/// The process that holds the program's lock on being its only instance; 0 when nobody does.
pid_t lockHolder(int lockFile)
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    // Of a holder in another process namespace there is no number.
    if (::fcntl(lockFile, F_GETLK, &lock) != 0 || lock.l_type == F_UNLCK || lock.l_pid <= 1)
        return 0;
    return lock.l_pid;
}

bool catchesHangup(pid_t pid)
{
    const unsigned long long caught = std::strtoull(Procfs::status(pid, "SigCgt").c_str(), nullptr, 16);
    return (caught >> (SIGHUP - 1)) & 1U;
}

} // namespace

void Window::refresh()
{
    const Descriptor lockFile(::open(Paths::resolve("/run/kiro-dhcp-mgr.lock").c_str(),
                                     O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (lockFile.get() < 0 || !Procfs::isOurs())
        return;
    // While it loads, the signal would end it; yet it may have read the old values already, so it gets a
    // moment.
    constexpr int Attempts = 50;
    constexpr timespec Pause = {0, 20'000'000};
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        const pid_t pid = lockHolder(lockFile.get());
        if (pid == 0 || !Procfs::isOfOurUser(pid))
            return;
        if (Procfs::signalIf(pid, SIGHUP,
                             [&] { return lockHolder(lockFile.get()) == pid && catchesHangup(pid); }))
            return;
        ::nanosleep(&Pause, nullptr);
    }
}
