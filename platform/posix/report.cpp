#include "report.h"

#include "paths.h"

#include <syslog.h>

#include <iostream>

void Posix::report(const char *program, int priority, const std::string &line)
{
    std::cerr << std::string(program) + ": " + line + '\n';
    if (Paths::hasRoot())
        return;
    ::openlog(program, 0, LOG_DAEMON);
    ::syslog(priority, "%s", line.c_str());
}
