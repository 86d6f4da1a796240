// A process that the exit hook takes for a DHCP client or for the running program, by its name and arguments. It prints
// its number. With the variable FAKE_FORK it is a child whose parent waits, as a client's does until it has bound. With
// FAKE_LOCK it is the program: it holds a lock on that file, soon catches SIGHUP, and prints "hangup" for each.

#include <fcntl.h>
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
    const char *lockFile = std::getenv("FAKE_LOCK");
    if (lockFile) {
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        ::fcntl(::open(lockFile, O_RDWR), F_SETLK, &lock);
    }
    std::printf("%d\n", ::getpid());
    std::fflush(stdout);
    if (lockFile) {
        ::usleep(200'000);
        ::signal(SIGHUP, [](int) {
            if (::write(STDOUT_FILENO, "hangup\n", 7) < 0)
                ::_exit(1);
        });
    }
    for (;;)
        ::pause();
}
