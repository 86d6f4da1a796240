#include "valuefolder.h"

#include "files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

Descriptor opened(const std::string &path)
{
    return Descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

Descriptor made(const std::string &path)
{
    if (!Files::makeFolders(path))
        Files::complain(path, errno);
    Descriptor folder = opened(path);
    if (folder.get() >= 0)
        ::fchmod(folder.get(), 0755);
    return folder;
}

/// One assignment, between quotes whatever the value: the reader takes away one pair, so that quotes of the
/// value's own, also at both its ends, stay. Not for a shell.
std::string assignment(const std::string &fileName, const std::string &value)
{
    std::string variable = fileName;
    std::replace(variable.begin(), variable.end(), '-', '_');
    return "new_" + variable + "='" + value + "'\n";
}

} // namespace

void ValueFolder::fill(const std::string &path, const std::map<std::string, std::string> &values)
{
    const Descriptor folder = made(path);
    if (folder.get() < 0) {
        Files::complain(path, errno);
        return;
    }
    for (const std::string &name : Files::names(folder.get())) {
        if (values.count(name) == 0)
            ::unlinkat(folder.get(), name.c_str(), 0);
    }
    for (const auto &[name, value] : values) {
        const std::string content = assignment(name, value);
        std::string previous;
        if (Files::readRegular(folder.get(), name, previous) && previous == content)
            continue;
        if (!Files::replace(folder.get(), name, content)) {
            Files::complain(path + "/" + name, errno);
            ::unlinkat(folder.get(), name.c_str(), 0);
        }
    }
}

void ValueFolder::clear(const std::string &path)
{
    const Descriptor folder = opened(path);
    if (folder.get() < 0)
        return;
    for (const std::string &name : Files::names(folder.get())) {
        if (::unlinkat(folder.get(), name.c_str(), 0) != 0 && errno != EISDIR && errno != ENOENT)
            Files::complain(path + "/" + name, errno);
    }
}

void ValueFolder::move(const std::string &from, const std::string &to)
{
    clear(to);
    const Descriptor source = opened(from);
    const Descriptor target = made(to);
    if (source.get() < 0 || target.get() < 0)
        return;
    for (const std::string &name : Files::names(source.get()))
        ::renameat(source.get(), name.c_str(), target.get(), name.c_str());
    clear(from);
}
