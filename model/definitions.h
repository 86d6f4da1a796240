#ifndef DEFINITIONS_H
#define DEFINITIONS_H

#include <QList>
#include <QString>
#include <QStringList>

class DhcpOption;

/// The option definitions that are installed on this machine.
struct Definitions
{
    /// Reads all of them, in the order of their names, whose case does not matter. A definition that cannot be used is
    /// reported on standard error and left out; so is a missing directory.
    static Definitions load();

    bool isDirectoryMissing = false;
    QList<DhcpOption *> options; ///< owned by whoever called; without a parent
    QStringList leftOut;         ///< the paths of those that cannot be used
};

#endif
