#include "trial.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

TrialRoot::TrialRoot()
{
    qputenv("KIRO_DHCP_MGR_ROOT", QFile::encodeName(directory.path()));
}

QString TrialRoot::write(const QString &fixedPath, const QByteArray &content) const
{
    QFile file(path(fixedPath));
    QDir().mkpath(QFileInfo(file).path());
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qUtf8Printable(file.fileName()));
    return file.fileName();
}

QString TrialRoot::define(const QString &fileName, const QByteArray &elements) const
{
    return write("/usr/share/kiro-dhcp-mgr/" + fileName, "<dhcp-option>\n" + elements + "\n</dhcp-option>\n");
}

void TrialRoot::installRecorder(const QString &fixedPath, const QByteArray &before) const
{
    const QByteArray note = "\nIFS='|'\nprintf '%s\\n' \"${0##*/}|$*\" >>\"$KIRO_DHCP_MGR_ROOT/recorded\"\n";
    QFile::setPermissions(write(fixedPath, "#!/bin/sh\n" + before + note), QFile::Permissions(0x7755));
}

QStringList TrialRoot::recorded(int atLeast) const
{
    for (;; QTest::qSleep(10)) {
        QFile file(path("/recorded"));
        const QByteArray notes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        if (notes.count('\n') >= atLeast)
            return QString::fromUtf8(notes).split('\n', Qt::SkipEmptyParts);
    }
}

QStringList TrialRoot::sql(const QString &statement) const
{
    QDir().mkpath(path("/var/lib/vorkan"));
    QProcess shell;
    shell.setProcessChannelMode(QProcess::MergedChannels);
    const QString columns = "key TEXT PRIMARY KEY, type INTEGER NOT NULL, value TEXT NOT NULL";
    shell.start("sqlite3", {path("/var/lib/vorkan/registry.db"),
                            "CREATE TABLE IF NOT EXISTS entry(" + columns + "); " + statement});
    if (!shell.waitForFinished(-1))
        qFatal("the sqlite3 shell does not run");
    return QString::fromUtf8(shell.readAll()).split('\n', Qt::SkipEmptyParts);
}

void addRows(const char *table)
{
    QTest::addColumn<QStringList>("cells");
    const QRegularExpression separator("(^| );( |$)");
    for (const QString &line : QString::fromUtf8(table).split('\n', Qt::SkipEmptyParts))
        QTest::newRow(qUtf8Printable(line.trimmed())) << line.trimmed().replace("\\n", "\n").split(separator);
}
