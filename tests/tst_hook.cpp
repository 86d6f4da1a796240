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
            // Line ends, direction, invisible; not Unicode, overlong, not UTF-8.
            {"\\302\\205\\342\\200\\250\\342\\200\\256\\357\\273\\277", "\\302\\205\\342\\200\\250\\342\\200\\256\\357\\273\\277"},
            {"\\355\\240\\200\\364\\220\\200\\200\\360\\237\\277\\277", "\\355\\240\\200\\364\\220\\200\\200\\360\\237\\277\\277"},
            {"\\300\\257\\340\\200\\257\\370\\220\\200\\200\\303x\\303\\303", "\\300\\257\\340\\200\\257\\370\\220\\200\\200\\303x\\303\\303"}};
        // clang-format on
        for (const auto &[passed, shown] : rows)
            QCOMPARE(run("BOUND", "eth0", {QString("new_v=") + passed}), QByteArray("eth0/v:new_v='") + shown + "'\n");
        QVERIFY(!QFile::exists(root->path("/ran")));
    }

    void names()
    {
        const QString names =
            "new_interface_mtu=500|new_domain_search=d|new_host_name=h|new_unknown_228=u|new_expiry=1|"
            "new_ip_address=a|new_network_number=1|new_filename=f|new_server_name=s|new_next_server=n|"
            "old_routers=o|requested_routers=1|new_=x|new_.interfaces=x|new_/../x=x|new__x=x|new_a b=x";
        QCOMPARE(run("BOUND", "eth0", names.split('|')),
                 QByteArray("eth0/domain-search:new_domain_search='d'\neth0/host-name:new_host_name='h'\n"
                            "eth0/interface-mtu:new_interface_mtu='500'\neth0/unknown-228:new_unknown_228='u'\n"));
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

    void interfaces()
    {
        // An event, and whose values are in the directories after it.
        const QString steps = "EXPIRE wlan0 |BOUND enp3s0 eth0=enp3s0 |BOUND eth0 eth0=eth0 |"
                              "BOUND enp3s0 eth0=eth0 eth1=enp3s0 |EXPIRE enp3s0 eth0=eth0 |BOUND wlan0 eth0=eth0 |"
                              "EXPIRE eth0 |BOUND wlan0 |BOUND enp3s0 eth1=enp3s0 ";
        for (const QString &step : steps.split('|')) {
            const QStringList words = step.split(' ');
            const QString shown = run(words[0], words[1], {"new_from=" + words[1]});
            QCOMPARE(QString(shown).replace("/from:new_from='", "=").replace("'\n", " "), step.section(' ', 2));
        }
    }

    void spoiledRecord()
    {
        root->write(Values + "/.interfaces", "\n\nwlan0\nwlan0 ../../x -\nbr0 /etc x\neth0 eth1 -1,2\neth1 eth1 -\n"
                                             "wlan1 eth1 -\neth0 - 1,1,x\n\xFF \xFE \xFF\n");
        for (const QString interface : {"eth0", "wlan0", "wlan1"})
            QCOMPARE(run("BOUND", interface, {"new_from=" + interface}), QByteArray("eth0/from:new_from='eth0'\n"));
        QVERIFY(!QFile::exists(root->path("/var/lib/x")));
    }

    void obstacles()
    {
        QDir().mkpath(path(""));
        QVERIFY(QFile::link("x", path(".lock")));
        QCOMPARE(run("BOUND", "eth0", {"new_a=1"}).count('\n'), 1); // a report and no value
        QVERIFY(QFile::remove(path(".lock")));
        output({"sh", "-c",
                "cd \"$0\"; mkdir -p .interfaces eth0/a/x; ln -s /dev/full eth0/b; umask 077;"
                "echo unfinished >eth0/.b.new; echo \"new_c='1'\" >eth0/c",
                path("")});
        const QByteArray shown = run("BOUND", "eth0", {"new_a=1", "new_b=2", "new_c=1"});
        QCOMPARE(shown.count("record-lease: "), 3); // the record is read and written
        QVERIFY(shown.endsWith("\neth0/b:new_b='2'\neth0/c:new_c='1'\n"));
        root->write("/script", "exec 2>&-\n. \"" HOOK_PATH "\"\n");
        run("BOUND", "eth0", {"new_a=2"});
        QCOMPARE(QFileInfo(path(".lock")).size(), 0); // no report is in it
    }

    void renewal()
    {
        run("BOUND", "eth0", {"new_other=1", "new_same=1"});
        QFile other(path("eth0/other"));
        QFile same(path("eth0/same"));
        QVERIFY(other.open(QIODevice::ReadOnly) && same.open(QIODevice::Append | QIODevice::Unbuffered));
        run("RENEW", "eth0", {"new_other=2", "new_same=1"});
        QCOMPARE(other.readAll(), QByteArray("new_other='1'\n"));            // a reader gets all of what it has opened
        QVERIFY(same.write("#") == 1 && shownValues().endsWith("same:#\n")); // not written again
    }

    void lock()
    {
        run("BOUND", "eth0", {"new_a=1"});
        QFile lock(path(".lock"));
        QVERIFY(lock.open(QIODevice::ReadWrite) && ::flock(lock.handle(), LOCK_SH) == 0);
        FakeClient script("script", {"reason=BOUND", "interface=eth0", "new_a=2"});
        Process timedOut({RECORDER_PATH, script.pid});
        Process waiting({RECORDER_PATH, script.pid});
        QVERIFY(!waiting.ends(6000));                              // so long may other hooks take on a busy machine
        ::kill(static_cast<pid_t>(timedOut.processId()), SIGALRM); // as its own alarm does, later
        QVERIFY(timedOut.ends() && timedOut.readAllStandardError().endsWith("/.lock\": Connection timed out\n"));
        lock.close();
        QVERIFY(waiting.ends());
        QCOMPARE(shownValues(), QByteArray("eth0/a:new_a='2'\n"));
    }

    void events()
    {
        const FakeClient owner("owner");
        const FakeClient stranger("stranger");
        // The value after an event of the client that holds the lease, and after another client's.
        const QString rows = "BOUND/new/new REBOOT/new/new TIMEOUT/new/new RENEW/new/old REBIND/new/old EXPIRE//old "
                             "FAIL//old RELEASE//old STOP//old V6ONLY//old PREINIT/old/old TIMEOUT//old/192.0.2.9";
        for (const QString &row : rows.split(' ')) {
            const QStringList cells = row.split('/');
            QByteArray shown;
            for (const QString &pid : {owner.pid, stranger.pid}) {
                run("BOUND", "eth0", {"new_a=old"}, owner.pid);
                const QStringList event{"new_a=new", "new_ip_address=" + cells.value(3, "127.0.0.1")};
                shown += '/' + run(cells[0], "eth0", event, pid).split('\'').value(1);
            }
            QCOMPARE(cells[0] + shown, row.section('/', 0, 2));
        }
    }

    void endedClients()
    {
        const FakeClient stranger("stranger");
        const FakeClient owner("owner", {"FAKE_FORK=1"});
        const QString ended = FakeClient().pid;
        run("BOUND", "eth0", {"new_a=1"}, owner.pid);
        QVERIFY(run("BOUND", "eth0", {"new_a=2"}, ended).contains("'1'")); // the owner's hook was just faster
        run("EXPIRE", "eth0", {}, owner.pid);
        QVERIFY(run("RENEW", "eth0", {"new_a=3"}, stranger.pid).contains("'3'"));
        run("BOUND", "eth0", {"new_a=4"}, owner.pid);
        ::kill(owner.pid.toInt(), SIGKILL); // nobody waits for it
        QVERIFY(eventually([&] { return run("RENEW", "eth0", {"new_a=5"}, stranger.pid).contains("'5'"); }));
    }

    void earlierClients()
    {
        // clang-format off
        FakeClient others[] = {{"dhclient|-1|-v"}, {"dhclient|-1 "}, {"dhclient|-1|"}, {"dhclient"}, {"xdhclient|-1"},
                               {"dhclient/x|-1"}, {"sh|/dhclient|-1"}, {"dhclient|-1", {"KIRO_DHCP_MGR_ROOT=/x"}}};
        // clang-format on
        FakeClient plain;
        FakeClient withPath("/usr/sbin/dhclient|-1");
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
            // Another network has another interface of that name.
            QCOMPARE(run("BOUND", "eth0", {"new_a=ours"}, ours.pid).contains("theirs"), options == "--net");
            QVERIFY(theirs.lives());
        }
    }

    void refresh()
    {
        FakeClient window("window", {"FAKE_WINDOW=1"});
        for (const char *reason : {"BOUND", "EXPIRE"}) {
            run(reason, "eth0", {});
            QVERIFY(window.waitForReadyRead(Patience) && window.readAll() == "hangup\n");
        }
        QVERIFY(window.lives());
    }

private:
    static QByteArray output(const QStringList &command)
    {
        Process process(command);
        process.write("input\n");
        process.closeWriteChannel();
        process.ends();
        return process.readAllStandardOutput() + process.readAllStandardError();
    }

    /// One event of the client. Returns what the hook writes, and then the values.
    QByteArray run(const QString &reason, const QString &interface, const QStringList &variables,
                   const QString &pid = "") const
    {
        const QStringList event{"reason=" + reason, "interface=" + interface, "pid=" + pid};
        const QByteArray said = output(event + variables + QStringList{"dash", root->path("/script")});
        return said + shownValues();
    }

    /// The lines of the files that everybody may read, each as "eth0/FILE:LINE".
    QByteArray shownValues() const
    {
        return output({"sh", "-c",
                       "exec 2>&-; cd \"$0\"; find eth? -type f -perm -4 -print0 | sort -z | xargs -0r grep -aH ''",
                       path("")});
    }

    QString path(const QString &file) const { return root->path(Values + "/" + file); }

    const QString Values = QStringLiteral("/var/lib/dhcp3/vars");
    std::unique_ptr<TrialRoot> root;
};

QTEST_GUILESS_MAIN(TestHook)
#include "tst_hook.moc"
