// A process that the exit hook takes for a DHCP client or for the running program, by its name and arguments. It prints
// its number. With the variable FAKE_FORK it is a child whose parent waits, as a client's does until it has bound. With
// FAKE_WINDOW it is the program: it is its running instance, soon catches SIGHUP, and prints "hangup" for each.

#include "instancelock.h"

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

int main()
{
    if (std::getenv("FAKE_FORK") && ::fork() > 0)
        ::pause();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::prctl(PR_SET_NAME, "fake) Z (1 2)");
    const bool isWindow = std::getenv("FAKE_WINDOW");
    InstanceLock instance("kiro-dhcp-mgr");
    if (isWindow)
        instance.acquire(false);
    std::printf("%d\n", ::getpid());
    std::fflush(stdout);
    if (isWindow) {
        ::usleep(200'000);
        ::signal(SIGHUP, [](int) {
            if (::write(STDOUT_FILENO, "hangup\n", 7) < 0)
                ::_exit(1);
        });
    }
    for (;;)
        ::pause();
}
