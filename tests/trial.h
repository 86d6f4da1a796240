#ifndef TRIAL_H
#define TRIAL_H

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <SQLiteCpp/SQLiteCpp.h>

/// A root directory of the test's own, below which the code under test finds every fixed path.
class TrialRoot
{
public:
    TrialRoot() { qputenv("KIRO_DHCP_MGR_ROOT", QFile::encodeName(directory.path())); }

    QString path(const QString &fixedPath) const { return directory.path() + fixedPath; }

    /// Writes a file, with the directories above it; returns its path.
    QString write(const QString &fixedPath, const QByteArray &content) const
    {
        QFile file(path(fixedPath));
        QDir().mkpath(QFileInfo(file).path());
        file.open(QIODevice::WriteOnly);
        file.write(content);
        return file.fileName();
    }

    void remove(const QString &fixedPath) const { QFile::remove(path(fixedPath)); }

    QString define(const QString &name, int code, const QByteArray &elements = QByteArray()) const
    {
        return write("/usr/share/kiro-dhcp-mgr/" + name + ".xml",
                     "<dhcp-option><linux-name>" + name.toUtf8() + "</linux-name><name>" + name.toUpper().toUtf8()
                         + "</name><code>" + QByteArray::number(code) + "</code><linux-type>text</linux-type>"
                         + elements + "\n</dhcp-option>");
    }

    void setValue(const QString &name, const QByteArray &text) const
    {
        write("/var/lib/dhcp3/vars/eth0/" + name, "x='" + text + "'\n");
    }

    void program(const QString &fixedPath, const QByteArray &script) const
    {
        QFile::setPermissions(write(fixedPath, "#!/bin/bash\n" + script), QFile::Permissions(0x7755));
    }

    /// Lets a program that only records how it was called take the place of one.
    void record(const QString &fixedPath) const
    {
        write(fixedPath, "");
        remove(fixedPath);
        QFile::copy(SOURCE_DIRECTORY "/scripts/record-call", path(fixedPath));
    }

    /// What was recorded, a line per call, once that many have come. Without an event loop, which would end a tool
    /// that is slow.
    QStringList calls(int count) const
    {
        QElapsedTimer timer;
        timer.start();
        for (;; QTest::qSleep(10)) {
            QFile file(path("/record.log"));
            const QByteArray lines = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
            if (lines.count('\n') >= count)
                return QString::fromUtf8(lines).split('\n', Qt::SkipEmptyParts);
            if (timer.hasExpired(60000))
                qFatal("not %d calls but: %s", count, lines.constData());
        }
    }

    void forgetCalls() const { remove("/record.log"); }

    /// The registry as an administrator sees it, who may be the first to make it.
    SQLite::Database registry() const
    {
        QDir().mkpath(path("/var/lib/vorkan"));
        SQLite::Database database(path("/var/lib/vorkan/registry.db").toStdString(),
                                  SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        database.exec("CREATE TABLE IF NOT EXISTS entry(key TEXT PRIMARY KEY, type INTEGER NOT NULL, value TEXT)");
        return database;
    }

    void store(const QString &key, int type, const QString &value) const
    {
        registry().exec(
            QString("REPLACE INTO entry VALUES('%1', %2, '%3')").arg(key).arg(type).arg(value).toStdString());
    }

    /// The entry's value; "none" without an entry.
    QString stored(const QString &key) const
    {
        const SQLite::Database database = registry();
        SQLite::Statement query(database, "SELECT value FROM entry WHERE key = ?");
        query.bind(1, key.toStdString());
        return query.executeStep() ? QString::fromStdString(query.getColumn(0).getString()) : "none";
    }

private:
    QTemporaryDir directory;
};

#endif
