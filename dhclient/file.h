#ifndef FILE_H
#define FILE_H

#include <string>
#include <string_view>

/// The files below the editor. Functions that fail throw std::string: what failed, the path and the reason.
namespace ConfFile {

/// Where the path leads when symbolic links at its end are followed; the last may dangle. Under a root prefix,
/// links to absolute paths stay below it.
std::string followed(std::string path);

/// The whole content of a regular file, up to 16 MiB; false if there is none.
bool read(const std::string &path, std::string &content);

/// Held by one process at a time from construction until destruction; the constructor waits.
///
/// It stands beside the file that it guards, since that one is replaced, and only its owner may open it, so
/// that nobody else can hold it. It is left behind: to take it away would let two processes in.
class Lock
{
public:
    explicit Lock(const std::string &guarded);
    ~Lock();
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;

private:
    int m_descriptor;
};

/// Puts the content in the file's place by one rename, flushed to disk. Mode and owner stay those of the file
/// that was there, else they are 0644 and the caller's. The caller holds the lock.
void replace(const std::string &path, std::string_view content);

} // namespace ConfFile

#endif
