#include "paths.h"

#include <cstdlib>

namespace {

std::string_view root()
{
    const char *value = secure_getenv("KIRO_DHCP_MGR_ROOT");
    return value ? value : std::string_view();
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
