// A process that the exit hook takes for a DHCP client or for the running program, by its name and arguments. It prints
// its number, soon catches SIGHUP, and prints "hangup" for each. With FAKE_WINDOW it is the program's running instance.

#include "instancelock.h"

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

int main()
{
    ::prctl(PR_SET_NAME, "fake) Z (1 2)");
    InstanceLock instance("kiro-dhcp-mgr");
    if (std::getenv("FAKE_WINDOW"))
        instance.acquire(false);
    ::dprintf(STDOUT_FILENO, "%d\n", ::getpid());
    ::usleep(200'000);
    ::signal(SIGHUP, [](int) { ::dprintf(STDOUT_FILENO, "hangup\n"); });
    for (;;)
        ::pause();
}
