#include "file.h"

#include "paths.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ConfFile {

namespace {

constexpr std::size_t LargestFile = std::size_t{16} * 1024 * 1024;

[[noreturn]] void fail(const char *what, const std::string &path)
{
    const std::string reason = std::strerror(errno);
    throw std::string("cannot ") + what + " \"" + path + "\": " + reason;
}

class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

private:
    int m_number;
};

std::string folderOf(const std::string &path)
{
    return path.substr(0, path.rfind('/'));
}

/// A file's name with something before and behind it, in the same folder: hidden there from those who look.
std::string beside(const std::string &path, const char *suffix)
{
    const std::size_t name = path.rfind('/') + 1;
    return path.substr(0, name) + '.' + path.substr(name) + suffix;
}

void writeAll(int descriptor, std::string_view content, const std::string &path)
{
    while (!content.empty()) {
        const ssize_t count = ::write(descriptor, content.data(), content.size());
        if (count < 0 && errno != EINTR)
            fail("write", path);
        if (count > 0)
            content.remove_prefix(static_cast<std::size_t>(count));
    }
}

} // namespace

std::string followed(std::string path)
{
    const std::string root = Paths::resolve("/");
    for (int links = 0; links < 40; ++links) {
        char target[4096];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length <= 0 || length == sizeof target)
            return path;
        const std::string next(target, static_cast<std::size_t>(length));
        if (next.front() != '/')
            path = folderOf(path) + '/' + next;
        else if (Paths::hasRoot() && next.compare(0, root.size(), root) != 0)
            path = Paths::resolve(next);
        else
            path = next;
    }
    errno = ELOOP;
    fail("read", path);
}

bool read(const std::string &path, std::string &content)
{
    content.clear();
    // A pipe in the file's place must not hold the tool up.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen()) {
        if (errno == ENOENT)
            return false;
        fail("read", path);
    }
    struct stat status = {};
    if (::fstat(file.number(), &status) != 0)
        fail("read", path);
    if (!S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        fail("read", path);
    }
    std::size_t used = 0;
    content.resize(static_cast<std::size_t>(status.st_size) + 1);
    for (;;) {
        if (used > LargestFile) {
            errno = EFBIG;
            fail("read", path);
        }
        if (used == content.size())
            content.resize(2 * used);
        const ssize_t count = ::read(file.number(), content.data() + used, content.size() - used);
        if (count < 0 && errno != EINTR)
            fail("read", path);
        if (count == 0)
            break;
        if (count > 0)
            used += static_cast<std::size_t>(count);
    }
    content.resize(used);
    return true;
}

Lock::Lock(const std::string &guarded)
{
    const std::string path = beside(guarded, ".lock");
    m_descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600);
    if (m_descriptor < 0)
        fail("lock", path);
    while (::flock(m_descriptor, LOCK_EX) != 0) {
        if (errno == EINTR)
            continue;
        ::close(m_descriptor);
        fail("lock", path);
    }
}

Lock::~Lock()
{
    ::close(m_descriptor);
}

void replace(const std::string &path, std::string_view content)
{
    struct stat old = {};
    const bool existed = ::stat(path.c_str(), &old) == 0;
    const std::string next = beside(path, ".new");
    ::unlink(next.c_str()); // one that was killed left it
    const Descriptor file(::open(next.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.isOpen())
        fail("write", next);
    try {
        writeAll(file.number(), content, next);
        // The owner first: a change of owner takes mode bits away.
        if (existed && (old.st_uid != ::geteuid() || old.st_gid != ::getegid())
            && ::fchown(file.number(), old.st_uid, old.st_gid) != 0)
            fail("keep the owner of", path);
        if (::fchmod(file.number(), existed ? old.st_mode & 07777 : 0644) != 0)
            fail("keep the mode of", path);
        if (::fsync(file.number()) != 0)
            fail("write", next);
        if (::rename(next.c_str(), path.c_str()) != 0)
            fail("replace", path);
    } catch (...) {
        ::unlink(next.c_str());
        throw;
    }
    const Descriptor folder(::open(folderOf(path).append("/").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen() || ::fsync(folder.number()) != 0)
        fail("flush the folder of", path);
}

} // namespace ConfFile
