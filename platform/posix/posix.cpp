#include "posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace Posix {

namespace {

Descriptor openDirectory(const std::string &path)
{
    return Descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// The owner first: a change of owner clears mode bits. The ACL last: a change of mode changes its mask.
void copyAttributes(const std::string &from, const struct stat &status, int to)
{
    constexpr char Acl[] = "system.posix_acl_access";
    if ((status.st_uid != ::geteuid() || status.st_gid != ::getegid())
        && ::fchown(to, status.st_uid, status.st_gid) != 0)
        fail("keep the owner of", from);
    char acl[65536]; // as large as the kernel lets an attribute be
    const ssize_t size = ::getxattr(from.c_str(), Acl, acl, sizeof acl);
    if (size < 0)
        ::fremovexattr(to, Acl); // the directory's default
    if (::fchmod(to, status.st_mode & 07777) != 0)
        fail("keep the mode of", from);
    if (size > 0 && ::fsetxattr(to, Acl, acl, static_cast<std::size_t>(size), 0) != 0)
        fail("keep the ACL of", from);
}

} // namespace

Descriptor &Descriptor::operator=(Descriptor &&other) noexcept
{
    std::swap(number, other.number);
    return *this;
}

void Descriptor::reset()
{
    if (number >= 0)
        ::close(std::exchange(number, -1));
}

void fail(const char *action, const std::string &path)
{
    throw std::system_error(errno, std::generic_category(), std::string("cannot ") + action + " \"" + path + '"');
}

std::string readAll(int descriptor, std::size_t limit, const std::string &path)
{
    std::string content;
    std::size_t used = 0;
    while (used < limit) {
        content.resize(std::min(limit, std::max<std::size_t>(2 * used, 16384)));
        const ssize_t count = ::read(descriptor, content.data() + used, content.size() - used);
        if (count < 0 && errno != EINTR)
            fail("read", path);
        if (count == 0)
            break;
        if (count > 0)
            used += static_cast<std::size_t>(count);
    }
    content.resize(used);
    return content;
}

std::optional<std::string> readFile(const std::string &path, std::size_t limit)
{
    // Without waiting for the other end of a pipe.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file && errno == ENOENT)
        return std::nullopt;
    struct stat status = {};
    if (!file || ::fstat(file.get(), &status) != 0)
        fail("read", path);
    if (!S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        fail("read", path);
    }
    std::string content = readAll(file.get(), limit + 1, path);
    if (content.size() > limit) {
        errno = EFBIG;
        fail("read", path);
    }
    return content;
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

std::string parentOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, std::max<std::size_t>(slash, 1));
}

void makeDirectories(const std::string &path)
{
    if (::access(path.c_str(), F_OK) == 0)
        return;
    const std::string parent = parentOf(path);
    makeDirectories(parent);
    if (::mkdir(path.c_str(), 0755) == 0)
        ::chmod(path.c_str(), 0755); // despite the umask
    else if (errno != EEXIST)
        fail("make", path);
    flushDirectory(parent);
}

void flushDirectory(const std::string &path)
{
    const Descriptor directory = openDirectory(path);
    if (!directory || ::fsync(directory.get()) != 0)
        fail("flush", path);
}

void replaceFile(const std::string &path, std::string_view content, Replacement kind,
                 const std::function<bool(const std::string &)> &isWanted)
{
    const bool durable = kind == Replacement::Durable;
    struct stat old = {};
    const bool keep = durable && ::stat(path.c_str(), &old) == 0;
    const std::size_t name = path.rfind('/') + 1; // npos + 1 is 0
    const std::string next = path.substr(0, name) + '.' + path.substr(name) + ".new";
    ::unlink(next.c_str()); // a killed process may have left it
    const Descriptor file(::open(next.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file)
        fail("write", next);
    try {
        writeAll(file.get(), content, next);
        if (keep)
            copyAttributes(path, old, file.get());
        else if (::fchmod(file.get(), 0644) != 0)
            fail("set the mode of", path);
        if (durable && ::fsync(file.get()) != 0)
            fail("write", next);
        if (isWanted && !isWanted(next)) {
            ::unlink(next.c_str());
            return;
        }
        if (::rename(next.c_str(), path.c_str()) != 0)
            fail("replace", path);
    } catch (...) {
        ::unlink(next.c_str());
        throw;
    }
    if (durable)
        flushDirectory(parentOf(path));
}

FileState stateOf(const std::string &path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return {};
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

void keepStandardStreams()
{
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        if (::fcntl(number, F_GETFD) < 0)
            ::open("/dev/null", O_RDWR); // takes the lowest free number
    }
}

} // namespace Posix
