#include "refreshwindow.h"

#include "instancelock.h"
#include "procfs.h"

#include <signal.h>
#include <unistd.h>

void refreshWindow()
{
    const InstanceLock instance("kiro-dhcp-mgr");
    // A program that is still loading would die of the signal, but may have read the old values already.
    for (int attempt = 0; attempt < 150; ++attempt) {
        const pid_t pid = instance.currentHolder();
        if (pid == 0 || Procfs::signalIf(pid, SIGHUP, [&] {
                return instance.currentHolder() == pid && Procfs::catchesSignal(pid, SIGHUP);
            }))
            return;
        ::usleep(20'000);
    }
}
