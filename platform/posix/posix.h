#ifndef POSIX_H
#define POSIX_H

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

/// Files as POSIX gives them. Functions that fail throw std::system_error; its what() is one line with the action,
/// the path in quotes and the reason. Paths are bytes and are taken as they are: resolving a root prefix is up to
/// the caller.
namespace Posix {

/// An owned file descriptor, -1 when there is none.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : number(number) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor &&other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept;
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int get() const { return number; }
    explicit operator bool() const { return number >= 0; }
    void reset();

private:
    int number;
};

/// Throws std::system_error for errno: "cannot ACTION "PATH": REASON".
[[noreturn]] void fail(const char *action, const std::string &path);

/// What is left to read, until the end or until `limit` bytes were read.
std::string readAll(int descriptor, std::size_t limit, const std::string &path);
/// The whole of a regular file; nothing if it does not exist. A file that is larger than `limit`, a pipe, a device
/// and a directory are errors, and none of them is waited for.
std::optional<std::string> readFile(const std::string &path, std::size_t limit);

void writeAll(int descriptor, std::string_view content, const std::string &path);

/// Everything before the last slash; "/" for a name directly below the root, "." where there is no slash.
std::string parentOf(const std::string &path);

/// Makes the directory and the missing ones above it, mode 0755 whatever the umask, each flushed to disk. What exists
/// stays as it is.
void makeDirectories(const std::string &path);

/// Flushes the directory's entries to disk, so that a rename in it lasts.
void flushDirectory(const std::string &path);

enum class Replacement {
    Durable, ///< keeps mode, owner and ACL of the file that was there (else 0644 and the caller's), flushes to disk
    Cached   ///< mode 0644 and the caller's, not flushed: for what can be made again
};

/// Puts the content in the file's place by one rename: a reader sees the old content or the new, whole. The new file
/// is prepared beside it under a hidden name, which one caller at a time may use. `isWanted` is asked last, with the
/// path of the prepared file: if it returns false or throws, that file is removed and nothing is replaced.
void replaceFile(const std::string &path, std::string_view content, Replacement kind,
                 const std::function<bool(const std::string &prepared)> &isWanted = {});

/// Device, inode, size and time of the last change of what stands at a path; all 0 where nothing does. Two that differ
/// show that another program has changed or replaced the file.
using FileState = std::tuple<dev_t, ino_t, off_t, time_t, long>;
FileState stateOf(const std::string &path);

/// Opens /dev/null for each standard stream that is closed: a file that is opened later would get its number, and
/// what is meant for the stream.
void keepStandardStreams();

} // namespace Posix

#endif
