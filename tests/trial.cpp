#include "trial.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

const QByteArray Custom = "<linux-type>text</linux-type>";
const QByteArray Predefined = "<linux-predefined>yes</linux-predefined>";

TrialRoot::TrialRoot()
{
    qputenv("KIRO_DHCP_MGR_ROOT", QFile::encodeName(directory.path()));
    QDir().mkpath(path("/usr/share/kiro-dhcp-mgr"));
}

void TrialRoot::write(const QString &fixedPath, const QByteArray &content) const
{
    QFile file(path(fixedPath));
    QDir().mkpath(QFileInfo(file).path());
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qUtf8Printable(file.fileName()));
}

QString TrialRoot::define(const QString &fileName, const QByteArray &elements) const
{
    const QString fixedPath = "/usr/share/kiro-dhcp-mgr/" + fileName;
    write(fixedPath, "<dhcp-option>\n" + elements + "\n</dhcp-option>\n");
    return path(fixedPath);
}

QString TrialRoot::define(const QString &linuxName, int code, const QByteArray &more) const
{
    const QString elements = "<code>%2</code><linux-name>%1</linux-name><name>Name of %1</name>";
    return define(linuxName + ".xml", elements.arg(linuxName).arg(code).toUtf8() + more);
}

void TrialRoot::setValue(const QString &fileName, const QByteArray &content) const
{
    write("/var/lib/dhcp3/vars/eth0/" + fileName, content);
}

void TrialRoot::installRecorder(const QString &fixedPath, const QByteArray &before) const
{
    write(fixedPath,
          "#!/bin/sh\n" + before + "\nIFS='|'\nprintf '%s\\n' \"${0##*/}|$*\" >>\"$KIRO_DHCP_MGR_ROOT/recorded\"\n");
    QFile::setPermissions(path(fixedPath), QFile::Permissions(0x7755));
}

QStringList TrialRoot::recorded() const
{
    QFile file(path("/recorded"));
    return QString::fromUtf8(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray())
        .split('\n', Qt::SkipEmptyParts);
}

QStringList TrialRoot::sql(const QString &statement) const
{
    QDir().mkpath(path("/var/lib/vorkan"));
    QProcess shell;
    shell.setProcessChannelMode(QProcess::MergedChannels);
    shell.start("sqlite3", {path("/var/lib/vorkan/registry.db"), statement});
    if (!shell.waitForFinished(-1))
        qFatal("the sqlite3 shell does not run");
    return QString::fromUtf8(shell.readAll()).split('\n', Qt::SkipEmptyParts);
}

void TrialRoot::presetRegistry(const QString &entries) const
{
    sql("CREATE TABLE entry(key TEXT PRIMARY KEY, type INTEGER NOT NULL, value TEXT NOT NULL);"
        "INSERT INTO entry VALUES"
        + entries);
}

void addRows(const char *table)
{
    QTest::addColumn<QStringList>("cells");
    for (const QString &line : QString::fromUtf8(table).split('\n', Qt::SkipEmptyParts)) {
        QStringList cells = QString(' ' + line.trimmed().replace("\\n", "\n") + ' ').split(" ; ");
        cells.first().remove(0, 1);
        cells.last().chop(1);
        QTest::newRow(qUtf8Printable(line.trimmed())) << cells;
    }
}
