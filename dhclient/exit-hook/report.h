#ifndef REPORT_H
#define REPORT_H

/// Writes the error as one line to standard error and, unless a root prefix is in force, to the system log: the
/// client runs without a terminal.
void report(const char *error);

#endif
