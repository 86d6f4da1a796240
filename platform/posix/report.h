#ifndef REPORT_H
#define REPORT_H

#include <string>

namespace Posix {

/// Writes "PROGRAM: LINE" to standard error and, unless a root prefix is in force, LINE to the system log under the
/// program's name: what runs without a terminal is heard there only. The priority is one of syslog(3). A stream that
/// nobody reads any more is no error.
void report(const char *program, int priority, const std::string &line);

} // namespace Posix

#endif
