#include "report.h"

#include "paths.h"

#include <syslog.h>

#include <iostream>

void report(const char *error)
{
    std::cerr << "record-lease: " << error << std::endl;
    if (!Paths::hasRoot())
        ::syslog(LOG_DAEMON | LOG_ERR, "%s", error);
}
