// The built tool against a root of its own: statuses, every byte of output, and what happens to the file.

#include "trial.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <memory>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString u(const char *text)
{
    return QString::fromUtf8(text);
}

const QString Conf = u("/etc/dhcp/dhclient.conf");

} // namespace

class TestDhclientEdit : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_root = std::make_unique<TrialRoot>(); }

    void statuses_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<QString>("errors"); // "FILE" stands for the path
        QTest::addColumn<int>("status");
        const QByteArray routers = "request routers;\n";
        const auto row = [](const char *name, const QStringList &arguments, const QByteArray &before,
                            const QByteArray &after, const char *errors, int status) {
            QTest::newRow(name) << arguments << before << after << u(errors) << status;
        };
        row("nothing asked", {}, routers, routers, "", 0);
        row("done", {u("--add-request"), u("ntp-servers")}, routers, "request routers, ntp-servers;\n", "", 0);
        row("several commands land together", {u("--add-new-option"), u("foo 200 text"), u("--add-request"), u("foo"),
                                               u("--del-request"), u("routers")},
            routers, "option foo code 200 = text;\nrequest foo;\n", "", 0);
        row("a note", {u("--add-new-option"), u("foo 3 text")}, routers, routers + "option foo code 3 = text;\n",
            "kiro-dhclient-edit: note: code 3 of \"foo\" is also the code of \"routers\"\n", 0);
        row("one command of several is wrong",
            {u("--add-request"), u("ntp-servers"), u("--add-new-option"), u("foo 0 text")}, routers, routers,
            "kiro-dhclient-edit: \"0\" is no option code from 1 to 254 in \"foo 0 text\"\n", 2);
        row("unknown option", {u("--add-request"), u("foo\n")}, routers, routers,
            "kiro-dhclient-edit: \"foo?\" is no option name\n", 2);
        row("no argument", {u("--add-request")}, routers, routers,
            "kiro-dhclient-edit: --add-request needs an argument\n", 2);
        row("unknown command", {u("routers")}, routers, routers,
            "kiro-dhclient-edit: unknown argument \"routers\", see --help\n", 2);
        row("broken file", {u("--add-request"), u("ntp-servers")}, "request routers\nrequest;\n",
            "request routers\nrequest;\n", "kiro-dhclient-edit: FILE, line 1: \";\" expected\n", 1);
        row("--version", {u("--version"), u("--add-request"), u("x")}, routers, routers, "", 0);
    }

    void statuses()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, before);
        QFETCH(QString, errors);
        m_root->write(Conf, before);
        QFETCH(int, status);
        QCOMPARE(run(arguments), status);
        QCOMPARE(m_errors, errors.replace(u("FILE"), m_root->path(Conf)).toUtf8());
        QTEST(content(), "after");
        QVERIFY(m_output.isEmpty() || m_output.startsWith("kiro-dhclient-edit 0."));
    }

    void help()
    {
        QCOMPARE(run({u("--help")}), 0);
        QVERIFY(m_output.startsWith("Usage: kiro-dhclient-edit [COMMAND ARGUMENT]...\n"));
        for (const char *command : {"--add-request", "--del-request", "--add-new-option", "--del-new-option"})
            QVERIFY(m_output.contains(command));
        QCOMPARE(m_errors, QByteArray());
    }

    void missingFile()
    {
        QVERIFY(QDir().mkpath(m_root->path(u("/etc/dhcp"))));
        QCOMPARE(run({u("--del-request"), u("ntp-servers")}), 0);
        QVERIFY(!QFile::exists(m_root->path(Conf)));
        QCOMPARE(run({u("--add-request"), u("ntp-servers")}), 0);
        QCOMPARE(content(), QByteArray("also request ntp-servers;\n"));
        QCOMPARE(int(fileStatus().st_mode & 07777), 0644);
    }

    void missingFolder()
    {
        QCOMPARE(run({u("--add-request"), u("ntp-servers")}), 1);
        QVERIFY2(m_errors.endsWith("No such file or directory\n") && m_errors.count('\n') == 1, m_errors.constData());
    }

    void unreadable()
    {
        QVERIFY(QDir().mkpath(m_root->path(Conf)));
        QCOMPARE(run({u("--add-request"), u("ntp-servers")}), 1);
        QCOMPARE(m_errors, "kiro-dhclient-edit: cannot read \"" + m_root->path(Conf).toUtf8() + "\": Is a directory\n");
        QVERIFY(QDir().rmdir(m_root->path(Conf)));
        QCOMPARE(::mkfifo(QFile::encodeName(m_root->path(Conf)).constData(), 0600), 0);
        QCOMPARE(run({u("--add-request"), u("ntp-servers")}), 1);
    }

    void unchanged()
    {
        m_root->write(Conf, "request routers;");
        const struct stat before = fileStatus();
        QCOMPARE(run({u("--add-request"), u("routers")}), 0);
        QCOMPARE(fileStatus().st_ino, before.st_ino);
        QCOMPARE(QDir(m_root->path(u("/etc/dhcp"))).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList(u("dhclient.conf")));
    }

    void modeAndOwner()
    {
        m_root->write(Conf, "request routers;");
        const QByteArray path = QFile::encodeName(m_root->path(Conf));
        QCOMPARE(::chmod(path.constData(), 0640), 0);
        const bool root = ::geteuid() == 0;
        if (root)
            QCOMPARE(::chown(path.constData(), 12, 34), 0);
        QCOMPARE(run({u("--add-request"), u("ntp-servers")}), 0);
        QCOMPARE(content(), QByteArray("request routers, ntp-servers;"));
        QCOMPARE(int(fileStatus().st_mode & 07777), 0640);
        if (!root)
            QSKIP("only root may give files away");
        QCOMPARE(int(fileStatus().st_uid), 12);
        QCOMPARE(int(fileStatus().st_gid), 34);
    }

    void links_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("relative") << u("../elsewhere/real.conf");
        QTest::newRow("absolute, below the root") << u("/etc/elsewhere/real.conf");
    }

    void links()
    {
        QFETCH(QString, target);
        m_root->write(u("/etc/elsewhere/real.conf"), "request routers;\n");
        QVERIFY(QDir().mkpath(m_root->path(u("/etc/dhcp"))));
        QVERIFY(QFile::link(target, m_root->path(Conf)));
        QCOMPARE(run({u("--add-request"), u("ntp-servers")}), 0);
        QVERIFY(QFileInfo(m_root->path(Conf)).isSymLink());
        QCOMPARE(content(u("/etc/elsewhere/real.conf")), QByteArray("request routers, ntp-servers;\n"));
    }

    void includedBelowTheRoot()
    {
        m_root->write(Conf, "include \"/etc/dhcp/more.conf\";\n");
        m_root->write(u("/etc/dhcp/more.conf"), "request routers;\noption foo code 200 = text;\n");
        QCOMPARE(run({u("--add-request"), u("foo")}), 0);
        QCOMPARE(content(), QByteArray("include \"/etc/dhcp/more.conf\";\nalso request foo;\n"));
        QCOMPARE(m_errors, QByteArray());
        m_root->write(u("/etc/dhcp/more.conf"), "request routers\n");
        QCOMPARE(run({u("--add-request"), u("routers")}), 1);
        QVERIFY(m_errors.contains("/etc/dhcp/dhclient.conf, line 1: in \"/etc/dhcp/more.conf\", line 1: "));
    }

    void twoAtOnce()
    {
        m_root->write(Conf, "request routers;\n");
        const QStringList names({u("ntp-servers"), u("log-servers"), u("time-servers"), u("smtp-server"),
                                 u("domain-search"), u("nis-servers"), u("lpr-servers"), u("pop-server")});
        std::vector<std::unique_ptr<QProcess>> tools;
        for (const QString &name : names) {
            tools.push_back(std::make_unique<QProcess>());
            tools.back()->start(u(TOOL_PATH), {u("--add-request"), name});
        }
        for (const auto &tool : tools) {
            QVERIFY(tool->waitForFinished());
            QCOMPARE(tool->exitCode(), 0);
        }
        for (const QString &name : names)
            QCOMPARE(content().count(name.toUtf8()), 1);
    }

    void waitsForTheLock()
    {
        m_root->write(Conf, "request routers;\n");
        const QByteArray lock = QFile::encodeName(m_root->path(u("/etc/dhcp/.dhclient.conf.lock")));
        const int descriptor = ::open(lock.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        QCOMPARE(::flock(descriptor, LOCK_EX), 0);
        QProcess tool;
        tool.start(u(TOOL_PATH), {u("--add-request"), u("ntp-servers")});
        QVERIFY(!tool.waitForFinished(300));
        QCOMPARE(content(), QByteArray("request routers;\n"));
        m_root->write(Conf, "request subnet-mask;\n"); // what the other tool did meanwhile
        ::close(descriptor);
        QVERIFY(tool.waitForFinished());
        QCOMPARE(content(), QByteArray("request subnet-mask, ntp-servers;\n"));
        QCOMPARE(QFileInfo(QFile::decodeName(lock)).permissions() & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
    }

    void killed()
    {
        QByteArray old = "request routers;\n";
        while (old.size() < 200000)
            old += "# filler\n";
        const QByteArray changed = "request routers, ntp-servers;\n" + old.mid(17);
        int replaced = 0;
        for (int i = 0; i < 60; ++i) {
            m_root->write(Conf, old);
            QProcess tool;
            tool.start(u(TOOL_PATH), {u("--add-request"), u("ntp-servers")});
            QVERIFY(tool.waitForStarted());
            ::usleep(static_cast<useconds_t>(i * 400));
            tool.kill();
            QVERIFY(tool.waitForFinished());
            const QByteArray now = content();
            QVERIFY(now == old || now == changed);
            replaced += now == changed;
        }
        qDebug("%d of 60 came to the rename", replaced);
        QCOMPARE(run({u("--add-request"), u("ntp-servers")}), 0); // over whatever was left behind
        QCOMPARE(content(), changed);
        QVERIFY(!QFile::exists(m_root->path(u("/etc/dhcp/.dhclient.conf.new"))));
    }

    void closedPipe()
    {
        m_root->write(Conf, "request routers;\n");
        QProcess shell;
        shell.start(u("/bin/sh"),
                    {u("-c"), u("(sleep 0.2; \"$0\" --add-new-option 'foo 3 text'; echo $? >\"$1\") 2>&1 | :"),
                     u(TOOL_PATH), m_root->path(u("/status"))});
        QVERIFY(shell.waitForFinished());
        QTRY_COMPARE(content(u("/status")), QByteArray("0\n"));
    }

private:
    int run(const QStringList &arguments)
    {
        QProcess process;
        process.start(u(TOOL_PATH), arguments);
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            return -1;
        m_output = process.readAllStandardOutput();
        m_errors = process.readAllStandardError();
        return process.exitCode();
    }

    QByteArray content(const QString &path = Conf) const
    {
        QFile file(m_root->path(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    struct stat fileStatus() const
    {
        struct stat result = {};
        ::stat(QFile::encodeName(m_root->path(Conf)).constData(), &result);
        return result;
    }

    std::unique_ptr<TrialRoot> m_root;
    QByteArray m_output;
    QByteArray m_errors;
};

QTEST_GUILESS_MAIN(TestDhclientEdit)
#include "tst_dhclientedit.moc"
