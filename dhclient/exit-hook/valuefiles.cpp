#include "valuefiles.h"

#include "clientfacts.h"
#include "posix.h"
#include "report.h"

#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace {

bool isUpToDate(const std::string &path, const std::string &content)
{
    try {
        return Posix::readFile(path, content.size()) == content
               && std::filesystem::status(path).permissions() == static_cast<std::filesystem::perms>(0644);
    } catch (const std::system_error &) {
        return false; // longer, or no regular file
    }
}

} // namespace

void writeValueFiles(const std::string &directory, const std::map<std::string, std::string> &values,
                     const std::function<bool(const std::string &)> &isOutdated)
{
    Posix::makeDirectories(directory);
    if (std::filesystem::is_symlink(directory)) {
        errno = ELOOP; // what it leads to may hold other files than values
        Posix::fail("use", directory);
    }
    for (const auto &entry : std::filesystem::directory_iterator(directory)) {
        const std::string name = entry.path().filename();
        if (values.count(name) == 0 && isOutdated(name))
            ::unlink(entry.path().c_str());
    }
    for (const auto &[name, value] : values) {
        const std::string path = directory + '/' + name;
        const std::string content = ClientFacts::assignment(name, value);
        try {
            if (!isUpToDate(path, content))
                Posix::replaceFile(path, content, Posix::Replacement::Cached);
        } catch (const std::system_error &error) {
            Posix::report("record-lease", LOG_ERR, error.what());
            ::unlink(path.c_str());
        }
    }
}
