#ifndef HOOKTEST_H
#define HOOKTEST_H

#include "trial.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QTest>

#include <map>
#include <memory>

using Variables = std::map<QByteArray, QByteArray>;
/// File names and contents of a folder.
using Files = QMap<QString, QByteArray>;

inline QString u(const char *text)
{
    return QString::fromUtf8(text);
}

inline const QString Values = QStringLiteral("/var/lib/dhcp3/vars");

inline QString interfaceFolder(const char *name)
{
    return Values + QLatin1Char('/') + u(name);
}

/// The base of the exit hook's tests: each runs the hook in a root of its own, sourced by the shell as the
/// client's script does it, with the program behind it.
class HookTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

protected:
    static QProcessEnvironment environmentFor(const QByteArray &reason, const QByteArray &interface,
                                              const QByteArray &pid, const Variables &variables);
    /// One event of the client. What the hook said on standard error is in m_errors then.
    void run(const QByteArray &reason, const QByteArray &interface, const QByteArray &pid, const Variables &variables);

    Files files(const QString &folder) const;
    /// Empty when there is no such file.
    QByteArray content(const QString &fixedPath) const;
    /// 0 when there is no such file.
    unsigned mode(const QString &fixedPath) const;

    std::unique_ptr<TrialRoot> m_root;
    QByteArray m_errors;
};

#endif
