#include "instancelock.h"

#include "paths.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

/// Where this user's lock files belong.
std::string lockDirectory()
{
    if (Paths::hasRoot() || ::geteuid() == 0)
        return Paths::resolve("/run");
    // After su the variable still names the folder of the user before.
    const char *runtime = secure_getenv("XDG_RUNTIME_DIR");
    struct stat status = {};
    if (runtime && ::stat(runtime, &status) == 0 && status.st_uid == ::geteuid())
        return runtime;
    return "/run/user/" + std::to_string(::geteuid());
}

} // namespace

InstanceLock::InstanceLock(const std::string &programName)
    : m_programName(programName)
{
}

InstanceLock::~InstanceLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

InstanceLock::State InstanceLock::fail(const std::string &what, int errorNumber)
{
    m_error = what + ": " + std::strerror(errorNumber);
    return State::Failed;
}

InstanceLock::State InstanceLock::acquire()
{
    const std::string directory = lockDirectory();
    if (Paths::hasRoot()) { // a bare trial root has none yet
        const mode_t previous = ::umask(022);
        ::mkdir(directory.c_str(), 0755);
        ::umask(previous);
    }

    // In a folder that others may write, the file could be somebody else's.
    struct stat status = {};
    if (::stat(directory.c_str(), &status) != 0) {
        // Where there is no such folder, nobody holds a lock in it.
        return errno == ENOENT ? State::Acquired : fail(directory, errno);
    }
    if ((status.st_uid != ::geteuid() && status.st_uid != 0) || (status.st_mode & S_IWOTH))
        return fail(directory, EPERM);

    const std::string path = directory + "/" + m_programName + ".lock";
    m_descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (m_descriptor < 0)
        return fail(path, errno);

    for (;;) {
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        if (::fcntl(m_descriptor, F_SETLK, &lock) == 0)
            return State::Acquired;
        if (errno != EACCES && errno != EAGAIN)
            return fail(path, errno);
        if (::fcntl(m_descriptor, F_GETLK, &lock) != 0)
            return fail(path, errno);
        if (lock.l_type != F_UNLCK) { // else its holder has ended in between
            m_holder = lock.l_pid;
            return State::Held;
        }
    }
}
