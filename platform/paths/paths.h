#ifndef PATHS_H
#define PATHS_H

#include <string>
#include <string_view>

/// The root prefix before the fixed paths of the system.
///
/// Tests, trial runs and image builders point the environment variable KIRO_DHCP_MGR_ROOT at a directory;
/// every fixed path is then looked up below it. The variable is read with secure_getenv(3) on each call: a
/// program that runs with raised rights ignores it.
namespace Paths {

/// Whether a root prefix is in force. An empty variable counts as none.
bool hasRoot();

/// The path to use for `fixedPath`, which must be absolute: unchanged without a prefix, else below it.
/// Bytes as the file system takes them.
std::string resolve(std::string_view fixedPath);

/// Whether this process has the right to write the file, which may be missing, as may directories above it. Asks for
/// the right to write its directory too: what is worth storing is written beside and renamed, or journalled.
bool isWritable(const std::string &path);

} // namespace Paths

#endif
