#include "networkmanagers.h"

#include "qtpaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSet>

#include <net/if.h>
#include <sys/stat.h>

#include <algorithm>

namespace {

struct Manager
{
    const char *name;
    const char *process;        ///< as in /proc/PID/comm, which holds 15 characters
    const char *stateDirectory; ///< has a file for each interface, by its index; none for one that takes them all
    const char *managing;       ///< stands in that file if it manages the interface
};

/// networkctl(1) lists what the second one writes; "configuring" and "configured" mean that it manages the interface.
constexpr Manager managers[] = {
    {"NetworkManager", "NetworkManager", "/run/NetworkManager/devices/", "managed=true"},
    {"systemd-networkd", "systemd-network", "/run/systemd/netif/links/", "ADMIN_STATE=config"},
    {"dhcpcd", "dhcpcd", nullptr, nullptr},
    {"ConnMan", "connmand", nullptr, nullptr},
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// False for a process of a container that has a network of its own. Only root learns that of others' processes.
bool sharesNetwork(const QString &process)
{
    struct stat own = {};
    struct stat other = {};
    return ::stat("/proc/self/ns/net", &own) != 0
           || ::stat(QFile::encodeName(process + QLatin1String("/ns/net")), &other) != 0 || own.st_ino == other.st_ino;
}

QSet<QByteArray> runningPrograms()
{
    QSet<QByteArray> programs;
    const QDir directory(Paths::resolved("/proc"));
    const QStringList pids = directory.entryList({QStringLiteral("[1-9]*")}, QDir::Dirs);
    for (const QString &pid : pids) {
        const QString process = directory.filePath(pid);
        if (sharesNetwork(process))
            programs << contentOf(process + QLatin1String("/comm")).trimmed();
    }
    return programs;
}

/// The interfaces that are up, and on which a DHCP client can ask.
QStringList managedBy(const Manager &manager)
{
    const QDir interfaces(Paths::resolved("/sys/class/net"));
    QStringList managed = interfaces.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    const auto isNotManaged = [&](const QString &name) {
        const QString directory = interfaces.filePath(name);
        const uint flags = contentOf(directory + QLatin1String("/flags")).trimmed().toUInt(nullptr, 16);
        // NetworkManager counts a bridge as managed that a container's or a virtual machine's host has made. If a
        // bridge is really its own, so are the interfaces in it.
        if (!(flags & IFF_UP) || !(flags & IFF_BROADCAST) || QFile::exists(directory + QLatin1String("/bridge")))
            return true;
        const QByteArray index = contentOf(directory + QLatin1String("/ifindex")).trimmed();
        const QByteArray state = contentOf(Paths::resolved(manager.stateDirectory) + QString::fromLatin1(index));
        return !state.contains(manager.managing);
    };
    managed.erase(std::remove_if(managed.begin(), managed.end(), isNotManaged), managed.end());
    return managed;
}

} // namespace

QStringList NetworkManagers::atWork()
{
    QStringList sentences;
    const QSet<QByteArray> programs = runningPrograms();
    for (const Manager &manager : managers) {
        // The files of some outlive them.
        if (!programs.contains(manager.process))
            continue;
        const QString name = QLatin1String(manager.name);
        if (!manager.stateDirectory) {
            sentences << QCoreApplication::translate(
                             "NetworkManagers",
                             "%1 is running: choices have no effect on the interfaces that it manages.")
                             .arg(name);
            continue;
        }
        const QStringList interfaces = managedBy(manager);
        if (!interfaces.isEmpty())
            sentences << QCoreApplication::translate(
                             "NetworkManagers",
                             "%1 manages %2 with a DHCP client of its own: choices have no effect there.")
                             .arg(name, interfaces.join(QStringLiteral(", ")));
    }
    return sentences;
}
