#include "files.h"

#include "paths.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

namespace {

bool readAll(int descriptor, std::string &content)
{
    char buffer[16384];
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        if (count > 0)
            content.append(buffer, static_cast<std::size_t>(count));
        else if (count == 0 || errno != EINTR)
            return count == 0;
    }
}

bool writeAll(int descriptor, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t count = ::write(descriptor, content.data(), content.size());
        if (count >= 0)
            content.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return false;
    }
    return true;
}

} // namespace

const char *const Files::Unfinished = ".unfinished";

Descriptor::~Descriptor()
{
    if (m_number >= 0)
        ::close(m_number);
}

void Files::complain(const std::string &what, int errorNumber)
{
    const std::string line = what + ": " + std::strerror(errorNumber);
    std::cerr << "record-lease: " << line << std::endl;
    if (!Paths::hasRoot())
        ::syslog(LOG_DAEMON | LOG_ERR, "record-lease: %s", line.c_str());
}

std::string Files::read(const std::string &path)
{
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    std::string content;
    return file.get() >= 0 && readAll(file.get(), content) ? content : std::string();
}

bool Files::readRegular(int folder, const std::string &name, std::string &content)
{
    const Descriptor file(::openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status = {};
    content.clear();
    return file.get() >= 0 && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)
        && (status.st_mode & 07777) == 0644 && readAll(file.get(), content);
}

std::vector<std::string> Files::names(int folder)
{
    std::vector<std::string> names;
    const int descriptor = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR *listing = descriptor >= 0 ? ::fdopendir(descriptor) : nullptr;
    if (!listing)
        return names;
    while (const dirent *entry = ::readdir(listing)) {
        if (entry->d_name[0] != '.')
            names.emplace_back(entry->d_name);
    }
    ::closedir(listing);
    return names;
}

std::string Files::linkTarget(const std::string &path)
{
    char target[256];
    const ssize_t size = ::readlink(path.c_str(), target, sizeof target);
    return size > 0 ? std::string(target, static_cast<std::size_t>(size)) : std::string();
}

bool Files::makeFolders(const std::string &path)
{
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string folder = path.substr(0, end);
        if (::mkdir(folder.c_str(), 0755) == 0)
            ::chmod(folder.c_str(), 0755);
        else if (errno != EEXIST)
            return false;
        if (end == std::string::npos)
            return true;
    }
}

bool Files::replace(int folder, const std::string &name, std::string_view content)
{
    ::unlinkat(folder, Unfinished, 0);
    int saved = 0;
    {
        const Descriptor file(
            ::openat(folder, Unfinished, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (file.get() < 0)
            return false;
        if (!writeAll(file.get(), content) || ::fchmod(file.get(), 0644) != 0)
            saved = errno;
    }
    if (saved == 0 && ::renameat(folder, Unfinished, folder, name.c_str()) == 0)
        return true;
    if (saved == 0)
        saved = errno;
    ::unlinkat(folder, Unfinished, 0);
    errno = saved;
    return false;
}
