#ifndef TRIAL_H
#define TRIAL_H

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <iostream>
#include <sstream>

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
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qUtf8Printable(file.fileName()));
        return file.fileName();
    }

    void remove(const QString &fixedPath) const { QFile::remove(path(fixedPath)); }

    /// Writes a definition file of the directory that the program scans; returns its path.
    QString define(const QString &fileName, const QByteArray &elements) const
    {
        return write("/usr/share/kiro-dhcp-mgr/" + fileName, "<dhcp-option>\n" + elements + "\n</dhcp-option>\n");
    }

    void setValue(const QString &key, const QByteArray &text) const { write("/var/lib/dhcp3/vars/eth0/" + key, text); }

    /// Puts a program at the path that only records its arguments, after `before` ran as shell code.
    void installRecorder(const QString &fixedPath, const QByteArray &before = QByteArray()) const
    {
        const QByteArray note = "\nIFS='|'\nprintf '%s\\n' \"${0##*/}|$*\" >>\"$KIRO_DHCP_MGR_ROOT/recorded\"\n";
        QFile::setPermissions(write(fixedPath, "#!/bin/sh\n" + before + note), QFile::Permissions(0x7755));
    }

    /// What the recorders noted, one line per call: the program's name and its arguments, separated by "|". Waits for
    /// that many calls, without an event loop, which would end a tool that is slow.
    QStringList recorded(int atLeast = 0) const
    {
        for (;; QTest::qSleep(10)) {
            QFile file(path("/recorded"));
            const QByteArray notes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
            if (notes.count('\n') >= atLeast)
                return QString::fromUtf8(notes).split('\n', Qt::SkipEmptyParts);
        }
    }

    void forgetRecorded() const { remove("/recorded"); }

    /// Runs SQL on the registry through the sqlite3 shell, as an administrator would, who may be the first to make it.
    /// Returns the lines of its output.
    QStringList sql(const QString &statement) const
    {
        const QString table =
            "CREATE TABLE IF NOT EXISTS entry(key TEXT PRIMARY KEY, type INTEGER NOT NULL, value TEXT);";
        QDir().mkpath(path("/var/lib/vorkan"));
        QProcess shell;
        shell.setProcessChannelMode(QProcess::MergedChannels);
        shell.start("sqlite3", {path("/var/lib/vorkan/registry.db"), table + statement});
        if (!shell.waitForFinished(-1))
            qFatal("the sqlite3 shell does not run");
        return QString::fromUtf8(shell.readAll()).split('\n', Qt::SkipEmptyParts);
    }

private:
    QTemporaryDir directory;
};

/// An element that makes a definition one of a custom option.
inline const QByteArray Custom = "<linux-type>text</linux-type>";

/// Adds a data row for each line of the table; the test fetches its "cells", which stand between " ; ". "\n" is a line
/// break in a cell.
inline void addRows(const char *table)
{
    QTest::addColumn<QStringList>("cells");
    const QRegularExpression separator("(^| );( |$)");
    for (const QString &line : QString::fromUtf8(table).split('\n', Qt::SkipEmptyParts))
        QTest::newRow(qUtf8Printable(line.trimmed())) << line.trimmed().replace("\\n", "\n").split(separator);
}

/// Waits, for as long as a busy machine may need, until the condition holds.
template <typename Condition>
bool eventually(Condition condition)
{
    return QTest::qWaitFor(condition, 60000);
}

/// What goes to standard error while it lives.
struct CapturedErrors : std::ostringstream
{
    CapturedErrors() : previous(std::cerr.rdbuf(rdbuf())) {}
    ~CapturedErrors() override { std::cerr.rdbuf(previous); }
    QString text() const { return QString::fromStdString(str()); }

    std::streambuf *const previous;
};

#endif
