#include "edittool.h"

#include "qtpaths.h"

#include <QCoreApplication>
#include <QEvent>
#include <QProcess>

namespace {

constexpr char ToolPath[] = "/usr/sbin/kiro-dhclient-edit";
constexpr char ClientConfiguration[] = "/etc/dhcp/dhclient.conf";
constexpr int PatienceMsecs = 2000;

/// Makes the object take its run for ended, so that its deletion neither kills the tool half way through its
/// edit nor grumbles about it on standard error.
void letGo(QProcess *process)
{
    struct Opened : QProcess
    {
        using QProcess::setProcessState;
    };
    (process->*&Opened::setProcessState)(QProcess::NotRunning);
}

} // namespace

bool EditTool::mayEdit()
{
    return Paths::isWritable(Paths::resolve(ClientConfiguration));
}

void EditTool::run(const QStringList &arguments, QObject *owner)
{
    // No subclass of QProcess: for one, Qt takes a slower way to fork (it might do something in the child).
    auto *process = new QProcess(owner);
    // Nobody reads what the tool says, and one that is left to finish must not die of a closed pipe.
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(Paths::resolved(ToolPath), arguments, QIODevice::ReadWrite);
    process->waitForFinished(PatienceMsecs);
    if (process->state() != QProcess::NotRunning) {
        QObject::connect(process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), process,
                         &QObject::deleteLater);
        QObject::connect(owner, &QObject::destroyed, process, [process] { letGo(process); });
        return;
    }
    process->deleteLater();
    // In an update run there is no event loop that would do it before the end.
    QCoreApplication::sendPostedEvents(process, QEvent::DeferredDelete);
}
