// The client's exit hook, sourced by a shell as the client's script does it: what it makes of an event, where it writes
// that, whose events count, which clients it ends, and when it makes the window refresh.

#include "trial.h"

#include <QDir>
#include <QProcess>
#include <QTest>

#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <memory>
#include <vector>

namespace {

constexpr int Patience = 60000; // milliseconds that a busy machine may take for anything

QString u(const QByteArray &text)
{
    return QString::fromUtf8(text);
}

/// Runs what env(1) is given: variables, then a program and its arguments. Killed at the end.
class Process : public QProcess
{
public:
    explicit Process(const QByteArrayList &command)
    {
        QStringList arguments;
        for (const QByteArray &argument : command)
            arguments += u(argument);
        start(u("env"), arguments);
    }
    ~Process() override
    {
        kill();
        waitForFinished();
    }
    bool ends(int milliseconds = Patience) { return state() == NotRunning || waitForFinished(milliseconds); }
};

/// A process with that name and those arguments.
class FakeClient : public Process
{
public:
    explicit FakeClient(const QByteArray &name = "dhclient", const QByteArrayList &arguments = {"-1"},
                        const QByteArrayList &before = {})
        : Process(before + QByteArrayList{"bash", "-c", "exec -a \"$0\" \"$@\"", name, FAKE_CLIENT_PATH} + arguments)
    {
        waitForReadyRead(Patience);
        pid = readLine().trimmed();
        QTest::qWait(25); // the start times of two clients differ by a step of 10 ms
    }
    bool lives() { return !ends(50); }
    bool wasKilled() { return ends() && exitCode() == SIGKILL; }

    QByteArray pid;
};

} // namespace

class TestHook : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        root = std::make_unique<TrialRoot>();
        QDir().mkpath(root->path(u("/usr/libexec/kiro-dhcp-mgr")));
        QVERIFY(QFile::link(u(RECORDER_PATH), root->path(u("/usr/libexec/kiro-dhcp-mgr/record-lease"))));
        // Debian's script too has changed some values before it sources the hooks.
        root->write(u("/script"), "new_interface_mtu=''\nnew_domain_search=\"x $new_domain_search\"\nnew_added=y\n"
                                  "export new_added\nunset new_host_name\n. \"" HOOK_PATH "\"\n");
    }

    void values()
    {
        // clang-format off
        const char *const rows[][2] = { // as the client passes it, as it is shown
            {"  a=b ", "  a=b "},
            {"", ""},
            {"gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F"},
            {"\\'a\\'", "'a'"},
            {"\\$(>ran)\\`>ran\\`\\';>ran;\\' \\| >ran \\& \\\"", "$(>ran)`>ran`';>ran;' | >ran & \""},
            {"$(>ran)`>ran`';>ran;'", "$(>ran)`>ran`';>ran;'"},
            {"C:\\\\x\\\\012\\", "C:\\x\\012\\"},
            {"\\q\\12\\400\\378", "\\q\\12\\400\\378"},
            {"\\303\\244\\342\\202\\254\\360\\237\\230\\200", "\u00E4\u20AC\U0001F600"},
            {"a\\012b\\015c\nnew_x='y'\r", "a\\012b\\015c\\012new_x='y'\\015"},
            {"\\302\\205\\342\\200\\250", "\\302\\205\\342\\200\\250"}, // other line ends
            {"\\011\\033[2J\\177\\000 ", "\\011\\033[2J\\177\\000 "},
            {"\\342\\200\\256x\\357\\273\\277", "\\342\\200\\256x\\357\\273\\277"}, // direction, invisible
            {"\\342\\200\\214", "\u200C"}, // joiner
            {"\\200\\303x\\377\\303", "\\200\\303x\\377\\303"},
            {"\\300\\257\\340\\200\\257", "\\300\\257\\340\\200\\257"}, // overlong
            {"\\355\\240\\200\\364\\220\\200\\200", "\\355\\240\\200\\364\\220\\200\\200"}, // not Unicode
            {"\\360\\237\\277\\277\\370\\220\\200\\200", "\\360\\237\\277\\277\\370\\220\\200\\200"}};
        // clang-format on
        QByteArrayList variables;
        for (const auto &row : rows)
            variables += "new_v" + QByteArray::number(variables.size()) + "=" + row[0];
        QCOMPARE(run("BOUND", "eth0", variables), QByteArray());
        for (int i = 0; i < variables.size(); ++i) {
            const QByteArray name = "v" + QByteArray::number(i);
            QCOMPARE(content("eth0/" + name), "new_" + name + "='" + rows[i][1] + "'\n");
        }
        QVERIFY(!QFile::exists(root->path(u("/ran"))));
    }

    void names()
    {
        run("BOUND", "eth0",
            {"new_interface_mtu=500",
             "new_domain_search=d",
             "new_host_name=h",
             "new_x-Y=x",
             "new_unknown_228=u",
             "new_ip_address=a",
             "new_expiry=1",
             "new_network_number=1",
             "new_filename=f",
             "new_server_name=s",
             "new_next_server=n",
             "old_routers=o",
             "requested_routers=1",
             "new_=x",
             "new_.interfaces=x",
             "new_/../x=x",
             "new__x=x",
             "new_a b=x",
             "new_\xC3\xBC=x",
             "new_" + QByteArray(201, 'x') + "=x"});
        QCOMPARE(files("eth0"), QByteArray("domain-search: new_domain_search='d'\nhost-name: new_host_name='h'\n"
                                           "interface-mtu: new_interface_mtu='500'\n"
                                           "unknown-228: new_unknown_228='u'\nx-Y: new_x_Y='x'\n"));
        QCOMPARE(
            QDir(path("")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).join(QLatin1Char(' ')),
            u(".interfaces .lock eth0"));
    }

    void caller_data()
    {
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("recorder"); // null: the real one; empty: none
        QTest::newRow("recorded") << "BOUND" << QString();
        QTest::newRow("no reason") << QString() << QString();
        QTest::newRow("no recorder") << "BOUND"
                                     << "";
        QTest::newRow("failing") << "BOUND"
                                 << "#!/bin/sh\nexit 3\n";
        QTest::newRow("broken") << "BOUND"
                                << "#!/nonexistent\n";
        QTest::newRow("reading, talking") << "BOUND"
                                          << "#!/bin/sh\ncat\necho talk\n";
    }

    // A strict shell notices what the client's own script would not.
    void caller()
    {
        QFETCH(QString, reason);
        QFETCH(QString, recorder);
        if (!recorder.isNull()) {
            const QString file = u("/usr/libexec/kiro-dhcp-mgr/record-lease");
            root->remove(file);
            root->write(file, recorder.toUtf8());
            QFile::setPermissions(root->path(file),
                                  recorder.isEmpty() ? QFile::ReadOwner : QFile::ReadOwner | QFile::ExeOwner);
        }
        root->write(
            u("/script"),
            "set -euf\ntrap 'echo trapped' EXIT\nIFS=e/\numask 077\ncd \"$KIRO_DHCP_MGR_ROOT\"\nset -- one 'two x'\n"
            "state() { set; set -o; trap; umask; pwd; echo \"$# $*\"; }\n"
            "state >before\n. \"" HOOK_PATH "\"\necho status $?\nstate >after\ncmp before after\ncat\n");
        Process shell(event(reason.toUtf8(), "eth0", {"new_a=1"}).mid(reason.isNull() ? 1 : 0)
                      + QByteArrayList{"dash", root->path(u("/script")).toUtf8()});
        shell.write("input");
        shell.closeWriteChannel();
        QVERIFY(shell.ends());
        QCOMPARE(shell.readAllStandardOutput(), QByteArray("status 0\ninputtrapped\n"));
        if (QTest::currentDataTag() == QByteArray("recorded")) {
            QCOMPARE(files("eth0"), QByteArray("a: new_a='1'\n"));
            QVERIFY(QFileInfo(path("eth0")).permission(QFile::ReadOther | QFile::ExeOther));
        }
    }

    void interfaces_data()
    {
        QTest::addColumn<QString>("eth0"); // whose values are there after these events, "-" being a lost lease
        QTest::addColumn<QString>("eth1");
        QTest::newRow("eth1") << ""
                              << "eth1";
        QTest::newRow("enp3s0 wlan0 br0") << "enp3s0"
                                          << "wlan0";
        QTest::newRow("enp3s0 wlan0 -enp3s0 br0") << ""
                                                  << "wlan0";
        QTest::newRow("enp3s0 -enp3s0 wlan0 enp3s0") << "enp3s0"
                                                     << "wlan0";
        QTest::newRow("eth0 -eth0 enp3s0") << ""
                                           << "enp3s0";
        QTest::newRow("-eth0 -wlan0 enp3s0") << "enp3s0"
                                             << "";
        QTest::newRow("enp3s0 eth1") << "enp3s0"
                                     << "eth1";
        QTest::newRow("enp3s0 eth0") << "eth0"
                                     << "";
        QTest::newRow("enp3s0 wlan0 eth0 enp3s0 -eth0") << ""
                                                        << "wlan0";
        QTest::newRow("# #1 eth0 #1") << "eth0"
                                      << "#1";
        QTest::newRow("$(>ran) ';>ran") << "$(>ran)"
                                        << "';>ran";
    }

    void interfaces()
    {
        QFETCH(QString, eth0);
        QFETCH(QString, eth1);
        for (const QByteArray &word : QByteArray(QTest::currentDataTag()).split(' ')) {
            const bool lost = word.startsWith('-');
            const QByteArray interface = word.mid(lost ? 1 : 0);
            QCOMPARE(run(lost ? "EXPIRE" : "BOUND", interface, {"new_from=" + interface}), QByteArray());
        }
        const auto expected = [](const QString &from) {
            return from.isEmpty() ? QByteArray() : QByteArray("from: new_from='" + from.toUtf8() + "'\n");
        };
        QCOMPARE(files("eth0"), expected(eth0));
        QCOMPARE(files("eth1"), expected(eth1));
    }

    void spoiledRecord()
    {
        root->write(Values + u("/.interfaces"), "\n\nwlan0\nwlan0 ../../x -\nbr0 /etc x\neth0 eth1 -1,2\neth1 eth1 -\n"
                                                "wlan1 eth1 -\neth0 - 99999999999999999999,x\n\xFF \xFE \xFF\n");
        QCOMPARE(run("BOUND", "eth0", {"new_a=1"}) + run("BOUND", "wlan1", {"new_a=2"}), QByteArray());
        QCOMPARE(files("eth0"), QByteArray("a: new_a='1'\n"));
        QVERIFY(content(".interfaces").endsWith("\neth0 eth0 -\neth1 eth1 -\n"));
    }

    void obstacles_data()
    {
        QTest::addColumn<QString>("written");
        QTest::addColumn<int>("reports");
        QTest::newRow("touch ../vars") << "" << 1;
        QTest::newRow("mkdir -p ../vars; ln -s /x ../vars/.lock") << "" << 1;
        QTest::newRow("mkdir -p ../vars; touch ../vars/eth0") << "" << 1;
        QTest::newRow("mkdir -p ../vars/.interfaces") << "ab" << 2;
        QTest::newRow("mkdir -p ../vars/eth0/a/x") << "b" << 1;
        QTest::newRow("mkdir -p ../vars/eth0/x; ln -s /dev/full ../vars/eth0/a") << "ab" << 0;
        QTest::newRow("mkdir -p ../vars/eth0; mkfifo ../vars/eth0/a") << "ab" << 0;
        QTest::newRow("mkdir -p ../vars/eth0; echo \"new_a='1' etc\" | tee ../vars/eth0/a >../vars/eth0/.a.new")
            << "ab" << 0;
        QTest::newRow("mkdir -p ../vars/eth0; umask 077; echo \"new_a='1'\" >../vars/eth0/a") << "ab" << 0;
    }

    void obstacles()
    {
        QFETCH(QString, written);
        QFETCH(int, reports);
        QDir().mkpath(root->path(u("/var/lib/dhcp3/x")));
        const QString directory = u("cd \"$KIRO_DHCP_MGR_ROOT/var/lib/dhcp3/x\"; ");
        QCOMPARE(QProcess::execute(u("sh"), {u("-c"), directory + u(QTest::currentDataTag())}), 0);
        const QByteArray errors = run("BOUND", "eth0", {"new_a=1", "new_b=2"});
        QCOMPARE(errors.count("record-lease: "), reports);
        QCOMPARE(errors.count('\n'), reports);
        QCOMPARE(content("eth0/a") == "new_a='1'\n", written.contains(u("a")));
        QCOMPARE(content("eth0/b") == "new_b='2'\n", written.contains(u("b")));
        root->write(u("/script"), "exec 2>&-\n. \"" HOOK_PATH "\"\n");
        run("BOUND", "eth0", {"new_a=2"});
        QCOMPARE(QFileInfo(path(".lock")).isFile() ? QFileInfo(path(".lock")).size() : 0, 0); // no report is in it
    }

    void renewal()
    {
        run("BOUND", "eth0", {"new_same=1", "new_other=1"});
        QFile same(path("eth0/same"));
        QFile other(path("eth0/other"));
        QVERIFY(same.open(QIODevice::ReadOnly) && other.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        run("RENEW", "eth0", {"new_same=1", "new_other=2"});
        QCOMPARE(other.readAll(), QByteArray("new_other='1'\n")); // a reader gets all of what it has opened
        QCOMPARE(content("eth0/other"), QByteArray("new_other='2'\n"));
        struct stat status = {};
        QVERIFY(::fstat(same.handle(), &status) == 0 && status.st_nlink == 1); // not written again
    }

    void lock()
    {
        run("BOUND", "eth0", {"new_a=1"});
        QFile lock(path(".lock"));
        QVERIFY(lock.open(QIODevice::ReadWrite) && ::flock(lock.handle(), LOCK_EX) == 0);
        FakeClient script("script", {}, event("BOUND", "eth0", {"new_a=2"}));
        Process timedOut({RECORDER_PATH, script.pid});
        Process waiting({RECORDER_PATH, script.pid});
        QTest::qWait(6000); // so long may other hooks take on a busy machine
        QVERIFY(timedOut.state() == QProcess::Running && waiting.state() == QProcess::Running);
        ::kill(static_cast<pid_t>(timedOut.processId()), SIGALRM); // as its own alarm does, later
        QVERIFY(timedOut.ends());
        QVERIFY(timedOut.readAllStandardError().endsWith("/.lock\": Connection timed out\n"));
        QCOMPARE(content("eth0/a"), QByteArray("new_a='1'\n"));
        lock.close();
        QVERIFY(waiting.ends());
        QCOMPARE(content("eth0/a"), QByteArray("new_a='2'\n"));
    }

    void events_data()
    {
        QTest::addColumn<QString>("own");   // the value after an event of the client that holds the lease
        QTest::addColumn<QString>("other"); // after another client's
        const auto rows = [](std::initializer_list<const char *> reasons, const char *own, const char *other) {
            for (const char *reason : reasons)
                QTest::newRow(reason) << own << other;
        };
        rows({"BOUND", "REBOOT", "TIMEOUT"}, "new", "new");
        rows({"RENEW", "REBIND"}, "new", "old");
        rows({"TIMEOUT without address", "EXPIRE", "FAIL", "RELEASE", "STOP", "V6ONLY"}, "", "old");
        rows({"PREINIT", "BOUND6", "bound"}, "old", "old");
    }

    void events()
    {
        QFETCH(QString, own);
        QFETCH(QString, other);
        const FakeClient owner("owner"), stranger("stranger");
        const QByteArrayList tag = QByteArray(QTest::currentDataTag()).split(' ');
        for (const auto &[pid, value] : {std::pair(stranger.pid, other), std::pair(owner.pid, own)}) {
            run("BOUND", "eth0", {"new_a=old", "new_no_longer_sent=old"}, owner.pid);
            run(tag[0], "eth0",
                {"new_a=new", tag.size() == 1 ? "new_ip_address=127.0.0.1" : "new_ip_address=192.0.2.9"}, pid);
            QCOMPARE(files("eth0"), value == u("new") ? QByteArray("a: new_a='new'\n")
                                    : value == u("old")
                                        ? QByteArray("a: new_a='old'\nno-longer-sent: new_no_longer_sent='old'\n")
                                        : QByteArray());
        }
    }

    void endedClients()
    {
        const auto value = [&](const char *reason, const QByteArray &pid, const QByteArray &sent) {
            run(reason, "eth0", {"new_a=" + sent}, pid);
            return content("eth0/a");
        };
        const FakeClient stranger("stranger");
        auto owner = std::make_unique<FakeClient>("owner");
        const QByteArray ended = std::make_unique<FakeClient>()->pid;
        value("BOUND", owner->pid, "1");
        QCOMPARE(value("BOUND", ended, "2"), QByteArray("new_a='1'\n")); // the owner's hook was just faster
        value("EXPIRE", owner->pid, "");
        QCOMPARE(value("RENEW", stranger.pid, "3"), QByteArray("new_a='3'\n"));
        value("BOUND", owner->pid, "4");
        owner.reset();
        QCOMPARE(value("RENEW", stranger.pid, "5"), QByteArray("new_a='5'\n"));
    }

    void earlierClients()
    {
        FakeClient plain, withPath("/usr/sbin/dhclient");
        std::vector<std::unique_ptr<FakeClient>> others;
        const auto start = [&](const QByteArray &name, const QByteArrayList &arguments, const QByteArray &variable) {
            others.push_back(std::make_unique<FakeClient>(name, arguments, QByteArrayList{variable}));
        };
        start("dhclient", {"-1", "-v"}, "X=");
        start("dhclient", {"-1 "}, "X=");
        start("dhclient", {"-1", ""}, "X=");
        start("dhclient", {}, "X=");
        start("xdhclient", {"-1"}, "X=");
        start("dhclient/x", {"-1"}, "X=");
        start("sh", {"/dhclient", "-1"}, "X=");
        start("dhclient", {"-1"}, "KIRO_DHCP_MGR_ROOT=/elsewhere");
        FakeClient holder;
        run("BOUND", "lo", {}, holder.pid);
        QVERIFY(plain.wasKilled() && withPath.wasKilled());
        FakeClient earlier;
        run("BOUND", "nosuch0", {}, earlier.pid); // an interface that is not there
        start("dhclient", {"-1"}, "FAKE_FORK=1"); // until a client has bound, its parent waits
        start("dhclient", {"-1"}, "X=");          // later
        const QByteArray child = others[others.size() - 2]->pid;
        run("FAIL", "nosuch1", {}, child);
        QVERIFY(earlier.lives());
        run("BOUND", "nosuch1", {}, child);
        QVERIFY(earlier.wasKilled());
        run("BOUND", "nosuch2", {}, "");
        QVERIFY2(holder.lives(), "it holds another interface's lease");
        for (const auto &other : others)
            QVERIFY2(other->lives(), qPrintable(other->arguments().join(QLatin1Char(' '))));
    }

    void otherNamespaces()
    {
        for (const QByteArrayList &options :
             {QByteArrayList{"--net"}, QByteArrayList{"--pid", "--fork", "--kill-child"}}) {
            FakeClient theirs("dhclient", {"-1"}, QByteArrayList{"unshare", "--map-root-user"} + options);
            if (theirs.pid.isEmpty())
                QSKIP("namespaces are not allowed here");
            const FakeClient ours;
            run("BOUND", "eth0", {"new_a=theirs"}, QByteArray::number(theirs.processId()));
            run("BOUND", "eth0", {"new_a=ours"}, ours.pid);
            QVERIFY(theirs.lives());
            // Another network has another interface of that name.
            QCOMPARE(content("eth0/a").contains("theirs"), options.contains("--net"));
        }
    }

    void refresh()
    {
        const QByteArray lock = "FAKE_LOCK=" + root->path(u("/run/kiro-dhcp-mgr.lock")).toUtf8();
        root->write(u("/run/kiro-dhcp-mgr.lock"), QByteArray());
        QCOMPARE(run("BOUND", "eth0", {}), QByteArray()); // nobody holds the lock
        FakeClient other("window", {}, {"FAKE_CATCH=0"});
        FakeClient window("window", {}, {lock, "FAKE_CATCH=200"}); // still loading
        for (const char *reason : {"BOUND", "EXPIRE"}) {
            run(reason, "eth0", {});
            QVERIFY(window.waitForReadyRead(Patience));
            QCOMPARE(window.readAll(), QByteArray("hangup\n"));
        }
        run("PREINIT", "eth0", {});
        QVERIFY(!window.waitForReadyRead(100) && window.lives());
        QVERIFY(other.readAll().isEmpty());
    }

private:
    static QByteArrayList event(const QByteArray &reason, const QByteArray &interface, const QByteArrayList &variables,
                                const QByteArray &pid = "")
    {
        return QByteArrayList{"reason=" + reason, "interface=" + interface, "pid=" + pid} + variables;
    }

    /// One event of the client; returns what the hook writes.
    QByteArray run(const QByteArray &reason, const QByteArray &interface, const QByteArrayList &variables,
                   const QByteArray &pid = "")
    {
        Process shell(event(reason, interface, variables, pid)
                      + QByteArrayList{"dash", root->path(u("/script")).toUtf8()});
        if (!shell.ends() || shell.exitCode() != 0)
            qFatal("the script fails");
        return shell.readAllStandardOutput() + shell.readAllStandardError();
    }

    QString path(const QByteArray &file) const { return root->path(Values + u("/" + file)); }

    /// Empty unless everybody may read it.
    QByteArray content(const QByteArray &name) const
    {
        QFile file(path(name));
        return file.permissions() & QFile::ReadOther && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Names and contents of all files, hidden ones too.
    QByteArray files(const QByteArray &directory) const
    {
        QByteArray found;
        for (const QString &name : QDir(path(directory)).entryList(QDir::Files | QDir::Hidden))
            found += name.toUtf8() + ": " + content(directory + '/' + name.toUtf8());
        return found;
    }

    const QString Values = QStringLiteral("/var/lib/dhcp3/vars");
    std::unique_ptr<TrialRoot> root;
};

QTEST_GUILESS_MAIN(TestHook)
#include "tst_hook.moc"
