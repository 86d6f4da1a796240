#include "clienttools.h"

#include "clientfacts.h"
#include "qtpaths.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace {

constexpr char ToolPath[] = "/usr/sbin/kiro-dhclient-edit";
constexpr int PatienceMsecs = 2000;

/// Where the client is looked up. Just before the machine's own stands a program of ours by its name, which has the
/// clients that run ask again. Below a root prefix it is that root's client, or none: an image build or a test must not
/// start the machine's own.
QStringList clientDirectories()
{
    QStringList directories;
    if (Paths::hasRoot()) {
        for (const char *directory : {"/usr/sbin", "/sbin", "/usr/bin", "/bin"})
            directories << Paths::resolved(directory);
        return directories;
    }
    directories = qEnvironmentVariable("PATH").split(QLatin1Char(':'), Qt::SkipEmptyParts);
    for (int i = 0; i < directories.size(); ++i) {
        const QFileInfo client(directories[i] + QLatin1Char('/') + QLatin1String(ClientFacts::Name));
        if (client.canonicalFilePath() == QLatin1String(ClientFacts::Program)) {
            directories.insert(i, QLatin1String(ClientFacts::RestarterDirectory));
            break;
        }
    }
    return directories;
}

} // namespace

bool ClientTools::mayEdit()
{
    return Paths::isWritable(Paths::resolve(ClientFacts::Configuration));
}

void ClientTools::edit(const QStringList &commands, QObject *owner)
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

void ClientTools::check(QObject *owner, const std::function<void(const QString &)> &report)
{
    auto *process = new QProcess(owner);
    process->setStandardOutputFile(QProcess::nullDevice());
    QObject::connect(process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), owner,
                     [process, report](int status, QProcess::ExitStatus kind) {
                         if (kind == QProcess::NormalExit && status == 1)
                             report(
                                 QString::fromUtf8(process->readAllStandardError()).section(QLatin1Char('\n'), 0, 0));
                         process->deleteLater();
                     });
    process->start(Paths::resolved(ToolPath), {}, QIODevice::ReadOnly);
}

void ClientTools::start()
{
    const QString client = QStandardPaths::findExecutable(QLatin1String(ClientFacts::Name), clientDirectories());
    if (!client.isEmpty())
        QProcess::startDetached(client, {QLatin1String(ClientFacts::OnceArgument)});
}
