#include "lockfile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <thread>

namespace Posix {

Descriptor lock(const std::string &path, std::chrono::seconds limit)
{
    using namespace std::chrono_literals;
    const auto end = std::chrono::steady_clock::now() + limit;
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
    while (!file || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (file && errno == EWOULDBLOCK && std::chrono::steady_clock::now() > end)
            errno = ETIMEDOUT;
        if (!file || (errno != EWOULDBLOCK && errno != EINTR))
            fail("lock", path);
        std::this_thread::sleep_for(10ms);
    }
    return file;
}

} // namespace Posix
