#ifndef LOCKFILE_H
#define LOCKFILE_H

#include "posix.h"

#include <chrono>
#include <string>

namespace Posix {

/// Waits until no other process holds the lock, for that long at most, and returns the file that is locked as long as
/// it is open. Makes the file where it is missing, for its owner only, so that nobody else can hold the lock. It is
/// never removed: that could let two in. Throws std::system_error.
Descriptor lock(const std::string &path, std::chrono::seconds limit);

} // namespace Posix

#endif
