// Stands in for a running DHCP client or for the running program. Its arguments are the test's affair; what
// it does comes through the environment. STAND_IN_LOCK names a file to hold the program's lock on.
// STAND_IN_CATCH has it catch SIGHUP, after so many milliseconds. With STAND_IN_CHILD it has a child of the
// same arguments, as a client that has not bound yet, and tells its number. Says "ready", then a line for
// each caught signal.

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

void say(const char *line, std::size_t length)
{
    if (::write(STDOUT_FILENO, line, length) < 0)
        ::_exit(3);
}

void caught(int /*signalNumber*/)
{
    say("hangup\n", 7);
}

} // namespace

int main()
{
    if (const char *path = std::getenv("STAND_IN_LOCK")) {
        const int file = ::open(path, O_RDWR | O_CREAT, 0600);
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        if (file < 0 || ::fcntl(file, F_SETLK, &lock) != 0)
            return 2;
    }
    if (std::getenv("STAND_IN_CHILD")) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            for (;;)
                ::pause();
        }
        std::printf("%d\n", child);
        std::fflush(stdout);
    }
    const char *delay = std::getenv("STAND_IN_CATCH");
    if (delay && std::atoi(delay) == 0)
        ::signal(SIGHUP, caught);
    say("ready\n", 6);
    if (delay && std::atoi(delay) > 0) {
        ::usleep(static_cast<useconds_t>(std::atoi(delay)) * 1000);
        ::signal(SIGHUP, caught);
    }
    for (;;)
        ::pause();
}
