// The real program as a process: run modes, displays, single instance, signals, exit statuses.

#include "trial.h"

#include <QProcess>

#include <signal.h>
#include <unistd.h>

#include <memory>

namespace {

/// One start of the program below the test's root, with nothing in its environment but what is given. That may end with
/// a command that starts the program.
class Run : public QProcess
{
public:
    explicit Run(const QString &arguments, const QString &environment = "QT_QPA_PLATFORM=offscreen")
    {
        const QString root = "KIRO_DHCP_MGR_ROOT=" + qEnvironmentVariable("KIRO_DHCP_MGR_ROOT");
        start("env", QStringList{"-i", "PATH=/usr/bin:/bin", root} + environment.split(' ') + QStringList(PROGRAM_PATH)
                         + arguments.split(' ', Qt::SkipEmptyParts));
    }

    /// The exit status and what it wrote to standard error.
    QString outcome()
    {
        const bool isNormal = waitForFinished(60000) && exitStatus() == NormalExit;
        return QString("%1 %2").arg(isNormal ? exitCode() : -1).arg(QString::fromUtf8(readAllStandardError()));
    }
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

    /// Arguments, environment, and why the program stops. An update run needs no display.
    void starts_data()
    {
        addRows(R"(
            --apply ; DISPLAY=:4711 QT_QPA_PLATFORMTHEME=gtk3 QT_STYLE_OVERRIDE=none ;
            --show-all x --update ; QT_QPA_PLATFORM=xcb ;
            --Apply --apply=yes -apply ; DISPLAY=:4711 ; Cannot open the display: could not connect to display :4711
             ; QT_QPA_PLATFORM=none ; Cannot open the display: Could not find the Qt platform plugin 'none' in ''
            --apply ; KIRO_DHCP_MGR_ROOT=/none ; Cannot read config directory /none/usr/share/kiro-dhcp-mgr)");
    }

    void starts()
    {
        QFETCH(QStringList, cells);
        const bool isUpdate = cells.at(2).isEmpty();
        Run run(cells.at(0), cells.at(1));
        QCOMPARE(run.outcome().replace('"', '\''), isUpdate ? QString("0 ") : "1 " + cells.at(2) + '\n');
        QStringList calls = root->recorded(isUpdate ? 2 : 0);
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
        root->define("notes.txt", "");
        root->define("d.xml/inner", "");
        root->write("/usr/share/kiro-dhcp-mgr/e.xml", "<dhcp-option><code>1</code><linux-name>n</linux-name>" + Custom);
        root->define("zero", 200, Custom);
        root->define("zz.xml", "<code>200</code><linux-name>shown</linux-name><name>again</name>" + Custom);
        root->presetRegistry("('root/DHCP/Code_zero', 7, '0')");
        QCOMPARE(Run("--apply").outcome().replace(root->path("/usr/share/kiro-dhcp-mgr/"), "/"),
                 R"(0 Error:  No code specified in /a.XML
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
)");
    }

    void interactiveRun()
    {
        Run first("", "QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES=qt.widgets.painting=true");
        first.setReadChannel(QProcess::StandardError);
        QVERIFY2(first.waitForReadyRead(60000), "it draws its window");
        ::kill(static_cast<pid_t>(first.processId()), SIGHUP);
        QCOMPARE(Run("--apply").outcome(),
                 QString("3 kiro-dhcp-mgr is already running (process %1)\n").arg(first.processId()));
        QCOMPARE(root->recorded(), QStringList());
        if (::geteuid() == 0) { // another user's start, for whom the registry cannot be written
            QFile::setPermissions(root->path(""), QFile::Permissions(0x7755));
            root->define("late", 201, Custom);
            root->remove("/usr/sbin/dhclient"); // it could not record either
            QCOMPARE(Run("--apply", "setpriv --reuid=65534").outcome(),
                     QString("0 Cannot write registry %1: attempt to write a readonly database\n")
                         .arg(root->path("/var/lib/vorkan/registry.db")));
        }
        QCOMPARE(first.state(), QProcess::Running);
        first.kill(); // whatever it leaves must not stop the next one
        first.waitForFinished(-1);
        QCOMPARE(Run("--apply").outcome(), "0 ");
    }

    /// Defaults must not take the place of choices that are locked for longer than a window would wait. A tool that is
    /// slow is left to finish.
    void registryLocked()
    {
        root->presetRegistry("('root/DHCP/Req_shown', 10, '0')");
        root->installRecorder(tool,
                              "until grep -q dhclient $KIRO_DHCP_MGR_ROOT/recorded; do sleep 0.1; done; echo done >&2");
        QProcess holder;
        holder.start("sqlite3", {root->path("/var/lib/vorkan/registry.db"), "BEGIN EXCLUSIVE",
                                 ".shell echo locked; sleep 11", "COMMIT"});
        holder.waitForReadyRead(-1);
        QCOMPARE(Run("--apply").outcome(), "0 ");
        QVERIFY(root->recorded(2).at(1).endsWith("--del-request|shown"));
        holder.waitForFinished(-1);
        root->forgetRecorded();
        root->write("/var/lib/vorkan/registry.db", QByteArray(2000, '#'));
        QVERIFY(Run("--apply").outcome().startsWith("0 Cannot read registry "));
        QCOMPARE(root->recorded(), QStringList());
    }

private:
    std::unique_ptr<TrialRoot> root;
};

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
