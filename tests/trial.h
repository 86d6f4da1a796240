#ifndef TRIAL_H
#define TRIAL_H

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <iostream>
#include <sstream>

/// A root directory of the test's own, below which the code under test finds every fixed path.
class TrialRoot
{
public:
    TrialRoot();

    QString path(const QString &fixedPath) const { return directory.path() + fixedPath; }
    /// Writes a file, with the directories above it; returns its path.
    QString write(const QString &fixedPath, const QByteArray &content) const;
    void remove(const QString &fixedPath) const { QFile::remove(path(fixedPath)); }

    /// Writes a definition file of the directory that the program scans; returns its path.
    QString define(const QString &fileName, const QByteArray &elements) const;
    void setValue(const QString &file, const QByteArray &text) const
    {
        write("/var/lib/dhcp3/vars/eth0/" + file, text);
    }

    /// Puts a program at the path that only records its arguments, after `before` ran as shell code.
    void installRecorder(const QString &fixedPath, const QByteArray &before = QByteArray()) const;
    /// What the recorders noted, one line per call: the program's name and its arguments, separated by "|". Waits for
    /// that many calls, without an event loop, which would end a tool that is slow.
    QStringList recorded(int atLeast = 0) const;
    void forgetRecorded() const { remove("/recorded"); }

    /// Runs SQL on the registry through the sqlite3 shell, as an administrator would, who may be the first to make it.
    /// Returns the lines of its output.
    QStringList sql(const QString &statement) const;

private:
    QTemporaryDir directory;
};

/// Elements that make a definition one of a custom option, or of one that the client knows.
inline const QByteArray Custom = "<linux-type>text</linux-type>";
inline const QByteArray Predefined = "<linux-predefined>yes</linux-predefined>";

/// Adds a data row for each line of the table; the test fetches its "cells", which stand between " ; ". "\n" is a line
/// break in a cell.
void addRows(const char *table);

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
