// A process that the exit hook takes for a DHCP client or for the running program, whatever its name and arguments.
// Variables say what it does: FAKE_LOCK is a file to hold the program's lock on, FAKE_CATCH the milliseconds until it
// catches SIGHUP; with FAKE_FORK it works in a child, and the parent waits as a client's does. It prints its number,
// and "hangup" for each signal.

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

int main()
{
    if (const char *path = std::getenv("FAKE_LOCK")) {
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        if (::fcntl(::open(path, O_RDWR | O_CREAT, 0600), F_SETLK, &lock) != 0)
            return 2;
    }
    if (std::getenv("FAKE_FORK") && ::fork() > 0)
        ::pause();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::printf("%d\n", ::getpid());
    std::fflush(stdout);
    if (const char *delay = std::getenv("FAKE_CATCH")) {
        ::usleep(static_cast<useconds_t>(std::atoi(delay)) * 1000);
        ::signal(SIGHUP, [](int) {
            if (::write(STDOUT_FILENO, "hangup\n", 7) < 0)
                ::_exit(3);
        });
    }
    for (;;)
        ::pause();
}
