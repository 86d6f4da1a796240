#ifndef CHECK_H
#define CHECK_H

#include <QStringList>

struct Definitions;

/// What is not in place, a line for each fault: the registry, the definitions, the codes, another network manager, the
/// client's configuration, and what notInConfiguration() finds.
QStringList faults(const Definitions &definitions);

/// The choices that an apply has not brought to the client's configuration, or why that cannot be known.
QStringList notInConfiguration(const Definitions &definitions);

#endif
