#ifndef PROCFS_H
#define PROCFS_H

#include "posix.h"

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Facts about other processes from proc(5). A process that has ended, or that may not be asked, gives empty answers.
namespace Procfs {

/// Whether /proc is mounted and belongs to our process namespace. Nothing below may be used otherwise.
bool isOurs();

/// All processes that can be seen.
std::vector<pid_t> processes();

/// Changes at each boot.
std::string bootId();

/// The number that the whole text is; 0 if it is none.
pid_t parsePid(std::string_view text);

/// A file of the process's directory.
std::string read(pid_t pid, const char *file);
/// What a link in the process's directory points at.
std::string linkTarget(pid_t pid, const char *link);
std::vector<std::string> arguments(pid_t pid);

struct Stat
{
    pid_t parent = 0;
    pid_t session = 0;
    unsigned long long startTime = 0; ///< clock ticks from the boot to the process's start; 0 when it has ended
};
Stat stat(pid_t pid);

bool catchesSignal(pid_t pid, int signalNumber);
/// Whether the process is in our namespace of that kind, such as "net".
bool sharesNamespace(pid_t pid, const char *kind);

/// A handle of the process, for kill(): the signal cannot reach a later process of the same number. See pidfd_open(2).
Posix::Descriptor open(pid_t pid);
bool kill(const Posix::Descriptor &process, int signalNumber);
/// Sends the signal if `check` accepts the process.
bool signalIf(pid_t pid, int signalNumber, const std::function<bool()> &check);

} // namespace Procfs

#endif
