#ifndef DEFINITIONS_H
#define DEFINITIONS_H

#include <QList>
#include <QString>
#include <QStringList>

class DhcpOption;
class QObject;

/// The option definitions that are installed on this machine.
struct Definitions
{
    /// Reads all of them, in the order of their names, whose case does not matter. A definition that cannot be used is
    /// reported on standard error and left out; so is a missing directory.
    /// The options become children of `owner`; without one they belong to whoever called.
    static Definitions load(QObject *owner);

    bool isDirectoryMissing = false;
    QList<DhcpOption *> options;
    QStringList leftOut; ///< the paths of those that cannot be used
};

#endif
