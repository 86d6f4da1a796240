#ifndef PROCFS_H
#define PROCFS_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

/// Facts about other processes from proc(5). A process that has ended, or that may not be asked, gives empty answers.
namespace Procfs {

/// Whether /proc is mounted and belongs to our process namespace. Nothing below may be used otherwise.
bool isOurs();

/// Changes at each boot.
std::string bootId();

/// The number that the whole text is; 0 if it is none.
pid_t parsePid(std::string_view text);

/// A file of the process's directory.
std::string read(pid_t pid, const char *file);

struct Stat
{
    pid_t parent = 0;
    unsigned long long startTime = 0; ///< clock ticks from the boot to the process's start; 0 when it has ended
};
Stat stat(pid_t pid);

bool catchesSignal(pid_t pid, int signalNumber);
/// Whether the process is in our namespace of that kind, such as "net".
bool sharesNamespace(pid_t pid, const char *kind);

/// Sends the signal if `check` accepts the process. The signal cannot reach a later process of the same number.
bool signalIf(pid_t pid, int signalNumber, const std::function<bool()> &check);

} // namespace Procfs

#endif
