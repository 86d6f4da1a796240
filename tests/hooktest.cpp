#include "hooktest.h"

#include <sys/stat.h>

void HookTest::init()
{
    m_root = std::make_unique<TrialRoot>();
    QDir().mkpath(m_root->path(u("/usr/libexec/kiro-dhcp-mgr")));
    QVERIFY(QFile::link(u(RECORDER_PATH), m_root->path(u("/usr/libexec/kiro-dhcp-mgr/record-lease"))));
    m_root->write(u("/script"), "#!/bin/sh\n. \"" HOOK_PATH "\"\n");
}

QProcessEnvironment HookTest::environmentFor(const QByteArray &reason, const QByteArray &interface,
                                             const QByteArray &pid, const Variables &variables)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u("reason"), QString::fromUtf8(reason));
    environment.insert(u("interface"), QString::fromUtf8(interface));
    environment.insert(u("pid"), QString::fromUtf8(pid));
    for (const auto &[name, value] : variables)
        environment.insert(QFile::decodeName(name), QFile::decodeName(value));
    return environment;
}

void HookTest::run(const QByteArray &reason, const QByteArray &interface, const QByteArray &pid,
                   const Variables &variables)
{
    QProcess shell;
    shell.setProcessEnvironment(environmentFor(reason, interface, pid, variables));
    shell.setWorkingDirectory(m_root->path(QString()));
    shell.start(u("dash"), {m_root->path(u("/script"))});
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.exitStatus(), QProcess::NormalExit);
    QCOMPARE(shell.exitCode(), 0);
    QCOMPARE(shell.readAllStandardOutput(), QByteArray());
    m_errors = shell.readAllStandardError();
}

Files HookTest::files(const QString &folder) const
{
    Files found;
    const QDir directory(m_root->path(folder));
    for (const QString &name :
         directory.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        found.insert(name, content(folder + QLatin1Char('/') + name));
    return found;
}

QByteArray HookTest::content(const QString &fixedPath) const
{
    QFile file(m_root->path(fixedPath));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

unsigned HookTest::mode(const QString &fixedPath) const
{
    struct stat status = {};
    return ::stat(QFile::encodeName(m_root->path(fixedPath)).constData(), &status) == 0
        ? status.st_mode & 07777u
        : 0;
}
