#include "paths.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace {

std::string_view root()
{
    const char *value = secure_getenv("KIRO_DHCP_MGR_ROOT");
    return value ? value : std::string_view();
}

bool isPermitted(const std::string &path, int rights)
{
    return ::faccessat(AT_FDCWD, path.c_str(), rights, AT_EACCESS) == 0;
}

} // namespace

bool Paths::hasRoot()
{
    return !root().empty();
}

std::string Paths::resolve(std::string_view fixedPath)
{
    std::string_view prefix = root();
    while (!prefix.empty() && prefix.back() == '/')
        prefix.remove_suffix(1);
    std::string path;
    path.reserve(prefix.size() + fixedPath.size());
    return path.append(prefix).append(fixedPath);
}

bool Paths::isWritable(const std::string &path)
{
    if (!isPermitted(path, W_OK) && errno != ENOENT)
        return false;
    std::string directory = path;
    do {
        const std::string::size_type slash = directory.find_last_of('/');
        directory = slash == std::string::npos ? "." : directory.substr(0, std::max(slash, std::string::size_type{1}));
    } while (directory != "/" && directory != "." && !isPermitted(directory, F_OK) && errno == ENOENT);
    return isPermitted(directory, W_OK | X_OK);
}
