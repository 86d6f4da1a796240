#ifndef NETWORKMANAGERS_H
#define NETWORKMANAGERS_H

#include <QStringList>

/// The network managers that have DHCP clients of their own.
namespace NetworkManagers {

/// A sentence for each that manages interfaces of this machine, in the user's language; empty if there is none. Asks
/// nobody: the managers' own files say so, and /proc. One that runs but leaves every interface alone is none.
QStringList atWork();

} // namespace NetworkManagers

#endif
