#include "dhclient.h"

#include "qtpaths.h"

#include <QProcess>
#include <QStandardPaths>

namespace {

constexpr char ToolPath[] = "/usr/sbin/kiro-dhclient-edit";
constexpr char ClientConfiguration[] = "/etc/dhcp/dhclient.conf";
constexpr int PatienceMsecs = 2000;

/// Below a root prefix it is that root's client, or none: an image build or a test must not start the machine's own.
QString clientProgram()
{
    const QString client = QStringLiteral("dhclient");
    if (!Paths::hasRoot())
        return client;
    QStringList directories;
    for (const char *directory : {"/usr/sbin", "/sbin", "/usr/bin", "/bin"})
        directories << Paths::resolved(directory);
    return QStandardPaths::findExecutable(client, directories);
}

} // namespace

bool Dhclient::mayEdit()
{
    return Paths::isWritable(Paths::resolve(ClientConfiguration));
}

void Dhclient::edit(const QStringList &commands, QObject *owner)
{
    // Not a subclass of QProcess: Qt forks more slowly for those, which might do something in the child.
    auto *process = new QProcess(owner);
    // Nobody reads the tool's output, and a tool that outlives this process must not die of a closed pipe.
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(Paths::resolved(ToolPath), commands, QIODevice::ReadWrite);
    process->waitForFinished(PatienceMsecs);
    process->deleteLater();
}

void Dhclient::start()
{
    const QString client = clientProgram();
    if (!client.isEmpty())
        QProcess::startDetached(client, {QStringLiteral("-1")});
}
