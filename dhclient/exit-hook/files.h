#ifndef FILES_H
#define FILES_H

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

/// A file descriptor that is closed at the end.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor();
    Descriptor(Descriptor &&other) noexcept : m_number(other.m_number) { other.m_number = -1; }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    Descriptor &operator=(Descriptor &&) = delete;

    int get() const { return m_number; }

private:
    int m_number;
};

namespace Files {

/// A line on standard error and, outside of trial roots, in the system log: the client runs without a
/// terminal.
void complain(const std::string &what, int errorNumber);

/// The whole file; empty when it cannot be read.
std::string read(const std::string &path);
/// The same below an open folder, for a regular file that is no link; false when there is none.
bool readRegular(int folder, const std::string &name, std::string &content);
/// What is in an open folder, but for names that begin with a dot.
std::vector<std::string> names(int folder);
std::string linkTarget(const std::string &path);

/// Makes the folder and those above it, mode 0755 whatever the umask; what exists stays as it is.
bool makeFolders(const std::string &path);
/// Replaces a file of an open folder by one of mode 0644; a reader sees the old one or the new one. Not
/// flushed to disk: the client waits, and the next lease brings all of it again. On failure errno tells why.
bool replace(int folder, const std::string &name, std::string_view content);
/// The name under which replace() prepares a file. No option is called so.
extern const char *const Unfinished;

} // namespace Files

#endif
