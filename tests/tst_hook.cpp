// The client's exit hook, sourced by a shell as the client's script does it: what it makes of an event, where it writes
// that, whose events count, which clients it ends, and when it makes the window refresh.

#include "trial.h"

#include <QDir>
#include <QProcess>
#include <QTest>

#include <signal.h>
#include <sys/file.h>

#include <memory>

namespace {

constexpr int Patience = 60000; // milliseconds that a busy machine may take for anything

/// Runs what env(1) is given: variables, then a program and its arguments. Killed at the end.
class Process : public QProcess
{
public:
    explicit Process(const QStringList &command) { start("env", command); }
    ~Process() override
    {
        kill();
        waitForFinished();
    }
    bool ends(int milliseconds = Patience) { return state() == NotRunning || waitForFinished(milliseconds); }
};

/// A process with that name and those arguments, separated by "|", started by what env(1) is given before.
class FakeClient : public Process
{
public:
    FakeClient(const QString &command = "dhclient|-1", const QStringList &before = {})
        : Process(before + QStringList{"bash", "-c", "exec -a \"$1\" \"$0\" \"${@:2}\"", FAKE_CLIENT_PATH}
                  + command.split('|'))
    {
        waitForReadyRead(Patience);
        pid = QString(readLine()).trimmed();
        QTest::qWait(25); // the start times of two clients differ by a step of 10 ms
    }
    bool lives() { return !ends(50); }
    bool wasKilled() { return ends() && exitCode() == SIGKILL; }

    QString pid;
};

} // namespace

class TestHook : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        root = std::make_unique<TrialRoot>();
        QDir().mkpath(root->path("/usr/libexec/kiro-dhcp-mgr"));
        QVERIFY(QFile::link(RECORDER_PATH, root->path("/usr/libexec/kiro-dhcp-mgr/record-lease")));
        // Debian's script too has changed some values before it sources the hooks.
        root->write("/script", "umask 077\ncd \"$KIRO_DHCP_MGR_ROOT\"\nunset new_host_name\nnew_interface_mtu=''\n"
                               "new_domain_search=\"x $new_domain_search\"\n. \"" HOOK_PATH "\"\n");
    }

    void values()
    {
        // clang-format off
        const char *const rows[][2] = { // as the client passes it, as it is shown
            {"  gr\xC3\xBC\xC3\x9F=b ", "  gr\xC3\xBC\xC3\x9F=b "},
            {"\\$(>ran)\\`>ran\\`\\';>ran;\\' \\| >ran \\& \\\"", "$(>ran)`>ran`';>ran;' | >ran & \""},
            {"$(>ran)`>ran`';>ran;'", "$(>ran)`>ran`';>ran;'"},
            {"C:\\\\x\\\\012\\q\\12\\400\\378\\", "C:\\x\\012\\q\\12\\400\\378\\"},
            {"a\\012b\\015c\nnew_x='y'\r", "a\\012b\\015c\\012new_x='y'\\015"},
            {"\\011\\033[2J\\177\\000 ", "\\011\\033[2J\\177\\000 "},
            {"\\303\\244\\342\\200\\214\\360\\237\\230\\200", "\u00E4\u200C\U0001F600"}, // the second joins others
            {"\\302\\205\\342\\200\\250", "\\302\\205\\342\\200\\250"}, // line ends
            {"\\342\\200\\256\\357\\273\\277", "\\342\\200\\256\\357\\273\\277"}, // direction, invisible
            {"\\200\\303x\\303\\303\\303", "\\200\\303x\\303\\303\\303"}, // not UTF-8
            {"\\300\\257\\340\\200\\257", "\\300\\257\\340\\200\\257"}, // overlong
            {"\\355\\240\\200\\364\\220\\200\\200", "\\355\\240\\200\\364\\220\\200\\200"}, // not Unicode
            {"\\360\\237\\277\\277\\370\\220\\200\\200", "\\360\\237\\277\\277\\370\\220\\200\\200"}};
        // clang-format on
        QStringList variables;
        for (const auto &row : rows)
            variables += QString("new_v%1=").arg(variables.size()) + row[0];
        QCOMPARE(run("BOUND", "eth0", variables), QByteArray());
        for (int i = 0; i < variables.size(); ++i)
            QCOMPARE(content(QString("eth0/v%1").arg(i)), QString("new_v%1='").arg(i).toUtf8() + rows[i][1] + "'\n");
        QVERIFY(!QFile::exists(root->path("/ran")));
    }

    void names()
    {
        const QString names =
            "new_interface_mtu=500|new_domain_search=d|new_host_name=h|new_unknown_228=u|new_expiry=1|"
            "new_ip_address=a|new_network_number=1|new_filename=f|new_server_name=s|new_next_server=n|"
            "old_routers=o|requested_routers=1|new_=x|new_.interfaces=x|new_/../x=x|new__x=x|new_a b=x";
        run("BOUND", "eth0", names.split('|'));
        QCOMPARE(files("eth0"),
                 QByteArray("domain-search: new_domain_search='d'\nhost-name: new_host_name='h'\n"
                            "interface-mtu: new_interface_mtu='500'\nunknown-228: new_unknown_228='u'\n"));
        QVERIFY(QFileInfo(path("eth0")).permission(QFile::ReadOther | QFile::ExeOther));
    }

    // A strict shell notices what the client's own script would not.
    void caller()
    {
        root->write("/script",
                    "set -euf\ntrap 'echo trapped' EXIT\nIFS=e/\ncd \"$KIRO_DHCP_MGR_ROOT\"\nset -- one 'two x'\n"
                    "state() { set; set -o; trap; umask; pwd; echo \"$# $*\"; }\nrecorder=\nstate >before\n"
                    "for recorder in \"" RECORDER_PATH "\" /nonexistent /bin/false /usr/bin/tee /bin/echo; do\n"
                    "    ln -sf \"$recorder\" usr/libexec/kiro-dhcp-mgr/record-lease\n"
                    "    . \"" HOOK_PATH "\"\n    echo \"status $?\"\ndone\n"
                    "recorder=\nstate >after\ncmp before after\n"
                    "unset reason KIRO_DHCP_MGR_ROOT\n. \"" HOOK_PATH "\"\nreason=BOUND\n. \"" HOOK_PATH "\"\ncat\n");
        QCOMPARE(run("BOUND", "eth0", {}), QByteArray("status 0\n").repeated(5) + "input\ntrapped\n");
    }

    void interfaces_data()
    {
        QTest::addColumn<QString>("eth0"); // whose values are there after these events, "-" being a lost lease
        QTest::addColumn<QString>("eth1");
        row("enp3s0 wlan0 br0", "enp3s0", "wlan0");
        row("eth0 -eth0 enp3s0", "", "enp3s0");
        row("-eth0 -wlan0 enp3s0", "enp3s0", "");
        row("enp3s0 eth0 enp3s0", "eth0", "enp3s0");
        row("enp3s0 wlan0 eth0 enp3s0 -eth0", "", "wlan0");
        row("# #1 eth0 #1", "eth0", "#1");
    }

    void interfaces()
    {
        QFETCH(QString, eth0);
        QFETCH(QString, eth1);
        for (const QString &word : QString(QTest::currentDataTag()).split(' ')) {
            const bool lost = word.startsWith('-');
            const QString interface = word.mid(lost ? 1 : 0);
            QCOMPARE(run(lost ? "EXPIRE" : "BOUND", interface, {"new_from=" + interface}), QByteArray());
        }
        QCOMPARE(files("eth0").split('\'').value(1), eth0.toUtf8());
        QCOMPARE(files("eth1").split('\'').value(1), eth1.toUtf8());
    }

    void spoiledRecord()
    {
        root->write(Values + "/.interfaces", "\n\nwlan0\nwlan0 ../../x -\nbr0 /etc x\neth0 eth1 -1,2\neth1 eth1 -\n"
                                             "wlan1 eth1 -\neth0 - 1,1,x\n\xFF \xFE \xFF\n");
        QCOMPARE(run("BOUND", "eth0", {"new_a=1"}) + run("BOUND", "wlan1", {"new_a=2"}), QByteArray());
        QCOMPARE(files("eth0"), QByteArray("a: new_a='1'\n"));
        QVERIFY(content(".interfaces").endsWith("\neth0 eth0 -\neth1 eth1 -\n"));
    }

    void obstacles_data()
    {
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("reports");
        row("cd ..; rmdir vars; touch vars", "", "1");
        row("ln -s /x .lock", "", "1");
        row("mkdir .interfaces", "ab", "2");
        row("mkdir -p eth0/a/x", "b", "1");
        row("mkdir -p eth0/x; ln -s /dev/full eth0/a; echo unfinished >eth0/.a.new", "ab", "0");
        row("mkdir eth0; umask 077; echo \"new_a='1'\" >eth0/a", "ab", "0");
    }

    void obstacles()
    {
        QFETCH(QString, written);
        QFETCH(QString, reports);
        const QString command = QString("mkdir -p \"$0\"; cd \"$0\"; ") + QTest::currentDataTag();
        QCOMPARE(QProcess::execute("sh", {"-c", command, path("")}), 0);
        QCOMPARE(run("BOUND", "eth0", {"new_a=1", "new_b=2"}).count("record-lease: "), reports.toInt());
        QCOMPARE(content("eth0/a") == "new_a='1'\n", written.contains("a"));
        QCOMPARE(content("eth0/b") == "new_b='2'\n", written.contains("b"));
        root->write("/script", "exec 2>&-\n. \"" HOOK_PATH "\"\n");
        run("BOUND", "eth0", {"new_a=2"});
        QCOMPARE(QFileInfo(path(".lock")).isFile() ? QFileInfo(path(".lock")).size() : 0, 0); // no report is in it
    }

    void renewal()
    {
        run("BOUND", "eth0", {"new_same=1", "new_other=1"});
        QFile same(path("eth0/same"));
        QFile other(path("eth0/other"));
        QVERIFY(same.open(QIODevice::Append | QIODevice::Unbuffered) && other.open(QIODevice::ReadOnly));
        run("RENEW", "eth0", {"new_same=1", "new_other=2"});
        QCOMPARE(other.readAll(), QByteArray("new_other='1'\n"));            // a reader gets all of what it has opened
        QVERIFY(same.write("#") == 1 && content("eth0/same").endsWith('#')); // not written again
    }

    void lock()
    {
        run("BOUND", "eth0", {"new_a=1"});
        QFile lock(path(".lock"));
        QVERIFY(lock.open(QIODevice::ReadWrite) && ::flock(lock.handle(), LOCK_SH) == 0);
        FakeClient script("script", {"reason=BOUND", "interface=eth0", "new_a=2"});
        Process timedOut({RECORDER_PATH, script.pid});
        Process waiting({RECORDER_PATH, script.pid});
        QTest::qWait(6000); // so long may other hooks take on a busy machine
        QVERIFY(timedOut.state() == QProcess::Running && waiting.state() == QProcess::Running);
        ::kill(static_cast<pid_t>(timedOut.processId()), SIGALRM); // as its own alarm does, later
        QVERIFY(timedOut.ends());
        QVERIFY(timedOut.readAllStandardError().endsWith("/.lock\": Connection timed out\n"));
        lock.close();
        QVERIFY(waiting.ends());
        QCOMPARE(content("eth0/a"), QByteArray("new_a='2'\n"));
    }

    void events_data()
    {
        QTest::addColumn<QString>("own");   // the files after an event of the client that holds the lease
        QTest::addColumn<QString>("other"); // after another client's
        const char *const old = "a: new_a='old'\nnot-sent-again: new_not_sent_again='old'\n";
        for (const char *reason : {"BOUND", "REBOOT", "TIMEOUT"})
            row(reason, "a: new_a='new'\n", "a: new_a='new'\n");
        for (const char *reason : {"RENEW", "REBIND"})
            row(reason, "a: new_a='new'\n", old);
        for (const char *reason : {"TIMEOUT without address", "EXPIRE", "FAIL", "RELEASE", "STOP", "V6ONLY"})
            row(reason, "", old);
        row("PREINIT", old, old);
    }

    void events()
    {
        QFETCH(QString, own);
        QFETCH(QString, other);
        const FakeClient owner("owner");
        const FakeClient stranger("stranger");
        const QStringList tag = QString(QTest::currentDataTag()).split(' ');
        const QString address = tag.size() == 1 ? "127.0.0.1" : "192.0.2.9";
        for (const auto &[pid, expected] : {std::pair(stranger.pid, other), std::pair(owner.pid, own)}) {
            run("BOUND", "eth0", {"new_a=old", "new_not_sent_again=old"}, owner.pid);
            QCOMPARE(run(tag[0], "eth0", {"new_a=new", "new_ip_address=" + address}, pid), QByteArray());
            QCOMPARE(files("eth0"), expected.toUtf8());
        }
    }

    void endedClients()
    {
        const FakeClient stranger("stranger");
        const FakeClient owner("owner", {"FAKE_FORK=1"});
        const QString ended = FakeClient().pid;
        run("BOUND", "eth0", {"new_a=1"}, owner.pid);
        run("BOUND", "eth0", {"new_a=2"}, ended);
        QCOMPARE(content("eth0/a"), QByteArray("new_a='1'\n")); // the owner's hook was just faster
        run("EXPIRE", "eth0", {}, owner.pid);
        run("RENEW", "eth0", {"new_a=3"}, stranger.pid);
        QCOMPARE(content("eth0/a"), QByteArray("new_a='3'\n"));
        run("BOUND", "eth0", {"new_a=4"}, owner.pid);
        ::kill(owner.pid.toInt(), SIGKILL); // nobody waits for it
        QVERIFY(eventually([&] {
            run("RENEW", "eth0", {"new_a=5"}, stranger.pid);
            return content("eth0/a") == "new_a='5'\n";
        }));
    }

    void earlierClients()
    {
        FakeClient plain;
        FakeClient withPath("/usr/sbin/dhclient|-1");
        FakeClient others[] = {{"dhclient|-1|-v"},  {"dhclient|-1 "},
                               {"dhclient|-1|"},    {"dhclient"},
                               {"xdhclient|-1"},    {"dhclient/x|-1"},
                               {"sh|/dhclient|-1"}, {"dhclient|-1", {"KIRO_DHCP_MGR_ROOT=/x"}}};
        FakeClient holder;
        run("BOUND", "eth0", {});
        run("BOUND", "eth1", {});
        run("BOUND", "lo", {}, holder.pid); // has no directory
        QVERIFY(plain.wasKilled() && withPath.wasKilled());
        FakeClient earlier;
        run("BOUND", "nosuch0", {}, earlier.pid); // an interface that is not there
        // Until a client has bound, its parent waits for it.
        FakeClient parent("dhclient|-1", {"FAKE_FORK=1"});
        FakeClient later;
        run("FAIL", "nosuch1", {}, parent.pid);
        QVERIFY(earlier.lives());
        run("BOUND", "nosuch1", {}, parent.pid);
        QVERIFY(earlier.wasKilled() && holder.lives() && parent.lives() && later.lives());
        for (FakeClient &other : others)
            QVERIFY2(other.lives(), qPrintable(other.arguments().join(' ')));
    }

    void otherNamespaces()
    {
        for (const QString options : {"--net", "--pid --fork --kill-child"}) {
            FakeClient theirs("dhclient|-1", QStringList{"unshare", "--map-root-user"} + options.split(' '));
            if (theirs.pid.isEmpty())
                QSKIP("namespaces are not allowed here");
            const FakeClient ours;
            run("BOUND", "eth1", {}, ours.pid);
            run("BOUND", "eth0", {"new_a=theirs"}, QString::number(theirs.processId()));
            run("BOUND", "eth0", {"new_a=ours"}, ours.pid);
            QVERIFY(theirs.lives());
            // Another network has another interface of that name.
            QCOMPARE(content("eth0/a").contains("theirs"), options.contains("--net"));
        }
    }

    void refresh()
    {
        FakeClient window("window", {"FAKE_WINDOW=1"});
        for (const char *reason : {"BOUND", "EXPIRE"}) {
            run(reason, "eth0", {});
            QVERIFY(window.waitForReadyRead(Patience));
            QCOMPARE(window.readAll(), QByteArray("hangup\n"));
        }
        QVERIFY(window.lives());
    }

private:
    static void row(const char *tag, const char *first, const char *second) { QTest::newRow(tag) << first << second; }

    /// One event of the client; returns what the hook writes.
    QByteArray run(const QString &reason, const QString &interface, const QStringList &variables,
                   const QString &pid = "") const
    {
        const QStringList event{"reason=" + reason, "interface=" + interface, "pid=" + pid};
        Process shell(event + variables + QStringList{"dash", root->path("/script")});
        shell.write("input\n");
        shell.closeWriteChannel();
        shell.ends();
        return shell.readAllStandardOutput() + shell.readAllStandardError();
    }

    QString path(const QString &file) const { return root->path(Values + "/" + file); }

    /// Empty unless everybody may read it.
    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.permissions() & QFile::ReadOther && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Names and contents of all files, hidden ones too.
    QByteArray files(const QString &directory) const
    {
        QByteArray found;
        for (const QString &name : QDir(path(directory)).entryList(QDir::Files | QDir::Hidden))
            found += name.toUtf8() + ": " + content(directory + '/' + name);
        return found;
    }

    const QString Values = QStringLiteral("/var/lib/dhcp3/vars");
    std::unique_ptr<TrialRoot> root;
};

QTEST_GUILESS_MAIN(TestHook)
#include "tst_hook.moc"
