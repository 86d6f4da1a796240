// The client's exit hook: whose events count, which clients it ends, and when it makes the window refresh.

#include "hooktest.h"

#include <signal.h>
#include <unistd.h>

namespace {

/// A process of the stand-in, under any name and arguments; killed at the end.
class StandIn
{
public:
    StandIn(const QByteArray &name, const QStringList &arguments, const Variables &variables = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const auto &[variable, value] : variables)
            environment.insert(QString::fromUtf8(variable), QString::fromUtf8(value));
        m_process.setProcessEnvironment(environment);
        m_process.start(u("bash"),
                        QStringList({u("-c"), u("name=$1; shift 1; exec -a \"$name\" \"$0\" \"$@\""),
                                     u(STAND_IN_PATH), QString::fromUtf8(name)})
                            + arguments);
        if (!m_process.waitForStarted() || !m_process.waitForReadyRead())
            qFatal("the stand-in does not start");
        QTest::qWait(25); // start times are counted in steps of 10 ms
    }
    explicit StandIn(const QByteArray &name = "dhclient")
        : StandIn(name, {u("-1")})
    {
    }
    ~StandIn()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    QByteArray pid() const { return QByteArray::number(m_process.processId()); }
    bool wasKilled() { return ends(2000) && m_process.exitCode() == SIGKILL; }
    bool lives() { return !ends(50); }
    QByteArray said()
    {
        while (m_process.waitForReadyRead(100)) { }
        return m_process.readAllStandardOutput();
    }

private:
    Q_DISABLE_COPY(StandIn)
    bool ends(int milliseconds)
    {
        // Its end may have been seen while something else was waited for.
        return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(milliseconds);
    }

    QProcess m_process;
};

} // namespace

class TestHookClients : public HookTest
{
    Q_OBJECT

private slots:
    void event_data()
    {
        QTest::addColumn<QByteArray>("reason");
        QTest::addColumn<bool>("byOther");
        QTest::addColumn<bool>("ownerLives");
        QTest::addColumn<QByteArray>("value"); // null: no files
        const QByteArray old("old");
        const QByteArray fresh("fresh");
        for (const QByteArray reason : {"BOUND", "REBOOT", "TIMEOUT"}) {
            QTest::newRow(reason) << reason << false << true << fresh;
            QTest::newRow(QByteArray(reason + " of another").constData()) << reason << true << true << fresh;
        }
        for (const QByteArray reason : {"RENEW", "REBIND"}) {
            QTest::newRow(reason) << reason << false << true << fresh;
            QTest::newRow(QByteArray(reason + " of another").constData()) << reason << true << true << old;
            QTest::newRow(QByteArray(reason + " of another, owner gone").constData())
                << reason << true << false << fresh;
        }
        for (const QByteArray reason : {"EXPIRE", "FAIL", "RELEASE", "STOP", "V6ONLY"}) {
            QTest::newRow(reason) << reason << false << true << QByteArray();
            QTest::newRow(QByteArray(reason + " of another").constData()) << reason << true << true << old;
            QTest::newRow(QByteArray(reason + " of another, owner gone").constData())
                << reason << true << false << QByteArray();
        }
        for (const QByteArray reason : {"PREINIT", "MEDIUM", "NBI", "BOUND6", "RENEW6", "REBIND6", "EXPIRE6",
                                        "RELEASE6", "STOP6", "PREINIT6", "DEPREF6", "", "bound", "BOUND "})
            QTest::newRow(QByteArray("'" + reason + "'").constData()) << reason << false << true << old;
    }

    void event()
    {
        QFETCH(QByteArray, reason);
        QFETCH(bool, byOther);
        QFETCH(bool, ownerLives);
        QFETCH(QByteArray, value);
        auto owner = std::make_unique<StandIn>("dhclient", QStringList({u("-pf"), u("x")}));
        const StandIn other("dhclient", {u("-v")});
        const QByteArray pid = byOther ? other.pid() : owner->pid();
        run("BOUND", "eth0", owner->pid(), {{"new_host_name", "old"}, {"new_no_longer_sent", "old"}});
        if (!ownerLives)
            owner.reset();
        run(reason, "eth0", pid, {{"new_host_name", "fresh"}});
        Files expected;
        if (!value.isNull())
            expected.insert(u("host-name"), "new_host_name='" + value + "'\n");
        if (value == "old")
            expected.insert(u("no-longer-sent"), "new_no_longer_sent='old'\n");
        QCOMPARE(files(interfaceFolder("eth0")), expected);
    }

    // Two hooks are asked in turn; the one who bound last is heard, the earlier one no more.
    void ownerChanges()
    {
        const StandIn first("dhclient", {u("-v")});
        const StandIn second("dhclient", {u("-v")});
        run("BOUND", "eth0", first.pid(), {{"new_a", "1"}});
        run("BOUND", "eth0", second.pid(), {{"new_a", "2"}});
        run("RENEW", "eth0", first.pid(), {{"new_a", "3"}});
        run("EXPIRE", "eth0", first.pid(), {});
        QCOMPARE(files(interfaceFolder("eth0")).value(u("a")), QByteArray("new_a='2'\n"));
        run("RENEW", "eth0", second.pid(), {{"new_a", "4"}});
        QCOMPARE(files(interfaceFolder("eth0")).value(u("a")), QByteArray("new_a='4'\n"));
    }

    // Two clients bind at nearly the same time, and the later one's hook is the first to end the other.
    void endedClient()
    {
        QByteArray ended;
        {
            const StandIn other("dhclient", {u("-v")});
            ended = other.pid();
        }
        auto owner = std::make_unique<StandIn>("dhclient", QStringList(u("-v")));
        run("BOUND", "eth0", owner->pid(), {{"new_a", "1"}});
        run("BOUND", "eth0", ended, {{"new_a", "2"}});
        QCOMPARE(files(interfaceFolder("eth0")).value(u("a")), QByteArray("new_a='1'\n"));
        owner.reset();
        run("BOUND", "eth0", ended, {{"new_a", "3"}});
        QCOMPARE(files(interfaceFolder("eth0")).value(u("a")), QByteArray("new_a='3'\n"));
    }

    void earlierClient_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("arguments"); // separated by "|"
        QTest::addColumn<QByteArray>("reason");
        QTest::addColumn<bool>("ended");
        const auto row = [](const char *tag, const char *name, const char *arguments, const char *reason, bool ended) {
            QTest::newRow(tag) << QByteArray(name) << u(arguments) << QByteArray(reason) << ended;
        };
        row("bound", "dhclient", "-1", "BOUND", true);
        row("bound again", "dhclient", "-1", "REBOOT", true);
        row("with its path", "/usr/sbin/dhclient", "-1", "BOUND", true);
        row("lost", "dhclient", "-1", "FAIL", false);
        row("starting", "dhclient", "-1", "PREINIT", false);
        row("other arguments", "dhclient", "-1|-v", "BOUND", false);
        row("one argument with a blank", "dhclient", "-1 ", "BOUND", false);
        row("an empty argument more", "dhclient", "-1|", "BOUND", false);
        row("no arguments", "dhclient", nullptr, "BOUND", false);
        row("network scripts' own", "dhclient", "-4|-pf|/run/x|eth0", "BOUND", false);
        row("other name", "xdhclient", "-1", "BOUND", false);
        row("folder's name", "dhclient/x", "-1", "BOUND", false);
        row("slash in the argument", "sh", "/dhclient|-1", "BOUND", false);
    }

    void earlierClient()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, arguments);
        QFETCH(QByteArray, reason);
        QFETCH(bool, ended);
        StandIn earlier(name, arguments.isNull() ? QStringList() : arguments.split(QLatin1Char('|')));
        StandIn fresh;
        StandIn later;
        run(reason, "eth0", fresh.pid(), {{"new_a", "1"}});
        if (ended)
            QVERIFY(earlier.wasKilled());
        else
            QVERIFY(earlier.lives());
        QVERIFY(fresh.lives());
        QVERIFY(later.lives());
    }

    void sparedClients()
    {
        StandIn elsewhere("dhclient", {u("-1")}, {{"KIRO_DHCP_MGR_ROOT", "/elsewhere"}});
        StandIn earlier;
        run("BOUND", "lo", earlier.pid(), {});
        run("BOUND", "eth1", earlier.pid(), {}); // not there
        StandIn fresh;
        run("BOUND", "eth0", fresh.pid(), {});
        QVERIFY2(earlier.lives(), "it holds the lease of another interface");
        run("BOUND", "lo", fresh.pid(), {});
        QVERIFY(earlier.wasKilled());
        QVERIFY2(elsewhere.lives(), "it belongs to another root");
        // An unknown client ends nobody.
        run("BOUND", "lo", "999999999", {});
        run("BOUND", "lo", "-5", {});
        run("BOUND", "lo", "", {});
        QVERIFY(fresh.lives());
    }

    // Until a client has bound, the one who started it waits for it in a process of the same arguments.
    void waitingParent()
    {
        StandIn parent("dhclient", {u("-1")}, {{"STAND_IN_CHILD", "1"}});
        const QByteArray child = parent.said().split('\n').first();
        QVERIFY(child.toInt() > 1);
        run("BOUND", "eth0", child, {});
        QVERIFY(parent.lives());
        QCOMPARE(::kill(child.toInt(), 0), 0);
    }

    void otherNetwork()
    {
        if (::geteuid() != 0)
            QSKIP("needs the right to make a network namespace");
        QProcess earlier;
        earlier.setProgram(u("unshare"));
        earlier.setArguments(
            {u("-n"), u("bash"), u("-c"), u("exec -a dhclient \"$0\" -1"), u(STAND_IN_PATH)});
        earlier.start();
        if (!earlier.waitForReadyRead() || earlier.readAllStandardOutput() != "ready\n")
            QSKIP("no network namespace can be made here");
        QTest::qWait(25);
        const StandIn fresh;
        run("BOUND", "eth0", fresh.pid(), {});
        QVERIFY(earlier.state() == QProcess::Running && !earlier.waitForFinished(50));
        // Its interface of that name is not ours.
        run("BOUND", "eth1", QByteArray::number(earlier.processId()), {{"new_a", "theirs"}});
        run("BOUND", "eth1", fresh.pid(), {{"new_a", "ours"}});
        QCOMPARE(files(interfaceFolder("eth1")).value(u("a")), QByteArray("new_a='theirs'\n"));
        earlier.kill();
        earlier.waitForFinished();
    }

    void refresh_data()
    {
        QTest::addColumn<QByteArray>("reason");
        QTest::addColumn<QByteArray>("catches"); // null: never
        QTest::addColumn<QByteArray>("said");
        QTest::newRow("bound") << QByteArray("BOUND") << QByteArray("0") << QByteArray("ready\nhangup\n");
        QTest::newRow("lost") << QByteArray("EXPIRE") << QByteArray("0") << QByteArray("ready\nhangup\n");
        QTest::newRow("other event") << QByteArray("PREINIT") << QByteArray("0") << QByteArray("ready\n");
        QTest::newRow("soon ready") << QByteArray("BOUND") << QByteArray("100")
                                    << QByteArray("ready\nhangup\n");
        QTest::newRow("not ready") << QByteArray("BOUND") << QByteArray() << QByteArray("ready\n");
    }

    void refresh()
    {
        QFETCH(QByteArray, reason);
        QFETCH(QByteArray, catches);
        QDir().mkpath(m_root->path(u("/run")));
        Variables variables
            = {{"STAND_IN_LOCK", QFile::encodeName(m_root->path(u("/run/kiro-dhcp-mgr.lock")))}};
        if (!catches.isNull())
            variables["STAND_IN_CATCH"] = catches;
        StandIn window("kiro-dhcp-mgr", {}, variables);
        StandIn bystander("kiro-dhcp-mgr", {}, {{"STAND_IN_CATCH", "0"}});
        run(reason, "eth0", "2", {{"new_a", "1"}});
        QTEST(window.said(), "said");
        QVERIFY(window.lives());
        QCOMPARE(bystander.said(), QByteArray("ready\n"));
    }

    void staleLockFile()
    {
        m_root->write(u("/run/kiro-dhcp-mgr.lock"), QByteArray());
        run("BOUND", "eth0", "2", {{"new_a", "1"}});
        QCOMPARE(m_errors, QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestHookClients)
#include "tst_hookclients.moc"
