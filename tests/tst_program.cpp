// The real program as a process: run modes, displays, single instance, signals, exit statuses.

#include "trial.h"

#include <QProcess>

#include <signal.h>
#include <unistd.h>

#include <memory>

namespace {

/// One start of the program below the test's root, with nothing in its environment but what is given.
class Run : public QProcess
{
public:
    explicit Run(const QString &arguments, const QString &variables = "QT_QPA_PLATFORM=offscreen",
                 uid_t user = ::getuid())
        : user(user)
    {
        setEnvironment(variables.split(' ') << "PATH=/usr/bin:/bin"
                                            << "KIRO_DHCP_MGR_ROOT=" + qEnvironmentVariable("KIRO_DHCP_MGR_ROOT"));
        start(PROGRAM_PATH, arguments.split(' ', Qt::SkipEmptyParts));
    }
    ~Run() override
    {
        kill();
        waitForFinished(-1);
    }

    int finish() { return waitForFinished(60000) && exitStatus() == NormalExit ? exitCode() : -1; }
    QString errors() { return said += QString::fromUtf8(readAllStandardError()); }

private:
    void setupChildProcess() override { ::setuid(user); }

    uid_t user;
    QString said;
};

const QString tool = "/usr/sbin/kiro-dhclient-edit";

} // namespace

class TestProgram : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        root = std::make_unique<TrialRoot>();
        root->installRecorder(tool, "test \"$DBUS_SESSION_BUS_ADDRESS\" = disabled: || exit\nkill -HUP $PPID");
        root->installRecorder("/usr/sbin/dhclient");
        root->define("shown", 200, Custom);
    }

    /// Arguments, environment, and why the display cannot be opened, of which an update run has no need.
    void starts_data()
    {
        addRows(R"(
            --apply ; DISPLAY=:4711 QT_QPA_PLATFORMTHEME=gtk3 QT_STYLE_OVERRIDE=none ;
            --show-all x --update ; QT_QPA_PLATFORM=xcb ;
            --Apply --apply=yes -apply ; DISPLAY=:4711 ; could not connect to display :4711
             ; QT_QPA_PLATFORM=none ; Could not find the Qt platform plugin 'none' in '')");
    }

    void starts()
    {
        QFETCH(QStringList, cells);
        const QString reason = cells.at(2);
        const bool isUpdate = reason.isEmpty();
        Run run(cells.at(0), cells.at(1));
        QCOMPARE(run.finish(), isUpdate ? 0 : 1);
        QCOMPARE(run.errors().replace('"', '\''), isUpdate ? QString() : "Cannot open the display: " + reason + '\n');
        QVERIFY(eventually([&] { return !isUpdate || root->recorded().count() == 2; }));
        QStringList calls = root->recorded();
        calls.sort(); // a tool that is slow on a busy machine comes last
        const QString edit = "kiro-dhclient-edit|--add-new-option|shown 200 text|--add-request|shown";
        QCOMPARE(calls, isUpdate ? QStringList({"dhclient|-1", edit}) : QStringList());
        QCOMPARE(root->sql("SELECT * FROM entry").value(0).startsWith("root/DHCP/Req_shown|10|1"), isUpdate);
    }

    void definitionsReported()
    {
        root->define("B.xml", "<code>x</code>");
        root->define("a.XML", "<code>0</code><linux-name>a</linux-name>" + Predefined);
        root->define("c.xml", "<code>3</code><linux-name>c</linux-name><name lang='fr'>c</name>" + Predefined);
        root->define(".hidden.xml", "");
        root->define("notes.txt", "");
        root->define("d.xml/inner", "");
        root->write("/usr/share/kiro-dhcp-mgr/e.xml", "<dhcp-option><code>1</code><linux-name>n</linux-name>" + Custom);
        root->define("zero", 200, Custom);
        root->define("zz.xml", "<code>200</code><linux-name>shown</linux-name><name>again</name>" + Custom);
        root->presetRegistry("('root/DHCP/Code_zero', 7, '0')");
        Run run("--apply");
        QCOMPARE(run.finish(), 0);
        QCOMPARE(run.errors().replace(root->path("/usr/share/kiro-dhcp-mgr/"), "/"), R"(
Error:  No code specified in /a.XML
DhcpOption: File parse failed for /a.XML
Parse error, file ignored: /a.XML
Bad <code> element: 'x'
Error:  No code specified in /B.xml
Error:  No <linux-name> specified in /B.xml
Error:  No <linux-type> specified in /B.xml
DhcpOption: File parse failed for /B.xml
Parse error, file ignored: /B.xml
Parse error, file ignored: /c.xml
DhcpOption: File not readable for /d.xml
Parse error, file ignored: /d.xml
DhcpOption: File parse failed for /e.xml
Parse error, file ignored: /e.xml
Parse error, file ignored: /zero.xml
Error: linux-name repeated: 'shown'
)" + 1);
    }

    void noDefinitionDirectory()
    {
        const QString directory = root->path("/usr/share/kiro-dhcp-mgr");
        QFile::rename(directory, directory + "-elsewhere");
        root->write("/usr/share/kiro-dhcp-mgr", "a file");
        Run run("");
        QCOMPARE(run.finish(), 1);
        QCOMPARE(run.errors(), "Cannot read config directory " + directory + '\n');
    }

    void interactiveRun()
    {
        Run first("", "QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES=qt.widgets.painting=true");
        QVERIFY(eventually([&] { return first.errors().contains("Drawing QRegion(0,0 "); }));
        ::kill(static_cast<pid_t>(first.processId()), SIGHUP);
        Run second("--apply");
        QCOMPARE(second.finish(), 3);
        QCOMPARE(second.errors(), QString("kiro-dhcp-mgr is already running (process %1)\n").arg(first.processId()));
        QCOMPARE(root->recorded(), QStringList());
        if (::geteuid() == 0) { // another user's start, for whom the registry cannot be written
            QFile::setPermissions(root->path(""), QFile::Permissions(0x7755));
            root->define("late", 201, Custom);
            root->remove("/usr/sbin/dhclient"); // it could not record either
            Run other("--apply", "QT_QPA_PLATFORM=offscreen", 65534);
            QCOMPARE(other.finish(), 0);
            QCOMPARE(other.errors(), QString("Cannot write registry %1: attempt to write a readonly database\n")
                                         .arg(root->path("/var/lib/vorkan/registry.db")));
        }
        QCOMPARE(first.state(), QProcess::Running);
        first.kill(); // whatever it leaves must not stop the next one
        first.waitForFinished(-1);
        Run third("--apply");
        QCOMPARE(third.finish(), 0);
    }

    void slowTool()
    {
        root->installRecorder(tool,
                              "until grep -q dhclient $KIRO_DHCP_MGR_ROOT/recorded; do sleep 0.1; done; echo done >&2");
        Run run("--apply");
        QCOMPARE(run.finish(), 0);
        QCOMPARE(run.errors(), QString());
        QVERIFY2(eventually([&] { return root->recorded().count() == 2; }), "the tool was left to finish");
    }

    /// Defaults must not take the place of choices that are locked for longer than a window would wait.
    void registryLocked()
    {
        root->presetRegistry("('root/DHCP/Req_shown', 10, '0')");
        QProcess holder;
        holder.start("sqlite3", {root->path("/var/lib/vorkan/registry.db"), "BEGIN EXCLUSIVE",
                                 ".shell echo locked; sleep 11", "COMMIT"});
        holder.waitForReadyRead(-1);
        Run run("--apply");
        QCOMPARE(run.finish(), 0);
        QVERIFY(root->recorded().value(0).endsWith("--del-request|shown"));
        holder.waitForFinished(-1);
        root->write("/var/lib/vorkan/registry.db", QByteArray(2000, '#'));
        root->forgetRecorded();
        Run second("--apply");
        QCOMPARE(second.finish(), 0);
        QVERIFY(second.errors().startsWith("Cannot read registry "));
        QCOMPARE(root->recorded(), QStringList());
    }

private:
    std::unique_ptr<TrialRoot> root;
};

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
