#include "trial.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

const QByteArray Custom = "<linux-type>text</linux-type>";
const QByteArray Predefined = "<linux-predefined>yes</linux-predefined>";

TrialRoot::TrialRoot()
{
    qputenv("KIRO_DHCP_MGR_ROOT", QFile::encodeName(m_directory.path()));
    QDir().mkpath(path(QStringLiteral("/usr/share/kiro-dhcp-mgr")));
}

QString TrialRoot::path(const QString &fixedPath) const
{
    return m_directory.path() + fixedPath;
}

void TrialRoot::write(const QString &fixedPath, const QByteArray &content) const
{
    QDir().mkpath(QFileInfo(path(fixedPath)).path());
    QFile file(path(fixedPath));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qUtf8Printable(file.fileName()));
}

void TrialRoot::remove(const QString &fixedPath) const
{
    QFile::remove(path(fixedPath));
}

QString TrialRoot::define(const QString &fileName, const QByteArray &elements) const
{
    const QString fixedPath = QStringLiteral("/usr/share/kiro-dhcp-mgr/") + fileName;
    write(fixedPath, "<dhcp-option>\n" + elements + "\n</dhcp-option>\n");
    return path(fixedPath);
}

QString TrialRoot::define(const QString &linuxName, int code, const QByteArray &more) const
{
    return define(linuxName + QStringLiteral(".xml"),
                  "<code>" + QByteArray::number(code) + "</code><linux-name>" + linuxName.toUtf8()
                      + "</linux-name><name>Name of " + linuxName.toUtf8() + "</name>" + more);
}

void TrialRoot::setValue(const QString &fileName, const QByteArray &content) const
{
    write(QStringLiteral("/var/lib/dhcp3/vars/eth0/") + fileName, content);
}

void TrialRoot::installRecorder(const QString &fixedPath, const QByteArray &before) const
{
    write(fixedPath, "#!/bin/sh\n" + before + "\nIFS='|'\n"
              "printf '%s\\n' \"${0##*/}|$*\" >>\"$KIRO_DHCP_MGR_ROOT/recorded\"\n");
    QFile::setPermissions(path(fixedPath), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther
                              | QFile::ExeOther);
}

QStringList TrialRoot::recorded() const
{
    QFile file(path(QStringLiteral("/recorded")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void TrialRoot::forgetRecorded() const
{
    remove(QStringLiteral("/recorded"));
}

QStringList TrialRoot::sql(const QString &statement) const
{
    QDir().mkpath(path(QStringLiteral("/var/lib/vorkan")));
    QProcess shell;
    shell.setProcessChannelMode(QProcess::MergedChannels);
    shell.start(QStringLiteral("sqlite3"), {path(QStringLiteral("/var/lib/vorkan/registry.db")), statement});
    if (!shell.waitForFinished())
        qFatal("the sqlite3 shell does not run");
    return QString::fromUtf8(shell.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void TrialRoot::presetRegistry(const QString &entries) const
{
    sql(QStringLiteral("CREATE TABLE entry(key TEXT PRIMARY KEY, type INTEGER NOT NULL, value TEXT NOT NULL);"
                       "INSERT INTO entry VALUES")
        + entries);
}
