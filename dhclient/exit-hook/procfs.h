#ifndef PROCFS_H
#define PROCFS_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

/// What proc(5) tells about other processes. Every answer is empty when the process is gone or may not be
/// asked.
namespace Procfs {

/// Whether /proc is there and numbers the processes as the system calls do; nothing below is of use
/// otherwise.
bool isOurs();

std::string read(pid_t pid, const char *file);
/// The value of "NAME:" in the process's status file, without the white space before it.
std::string status(pid_t pid, std::string_view name);
/// A field of the process's stat file, numbered as in proc(5); for fields 3 and later.
std::string stat(pid_t pid, int field);
/// Whether both the real and the effective user are ours.
bool isOfOurUser(pid_t pid);
/// Whether the process lives in our namespace of that kind, such as "net".
bool sharesNamespace(pid_t pid, const char *kind);

/// Sends the signal to the process that `check` accepts, and to no later one of the same number.
bool signalIf(pid_t pid, int signalNumber, const std::function<bool()> &check);

} // namespace Procfs

#endif
