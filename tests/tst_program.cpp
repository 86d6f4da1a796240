// The real program as a process: run modes, displays, single instance, signals, exit statuses.

#include "trial.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <signal.h>
#include <unistd.h>

#include <memory>

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

    void starts_data()
    {
        QTest::addColumn<QString>("display");
        QTest::addColumn<QString>("line");
        QTest::newRow("--apply") << "DISPLAY=:4711 QT_QPA_PLATFORMTHEME=gtk3 QT_STYLE_OVERRIDE=none" << QString();
        QTest::newRow("--show-all x --update --apply") << "QT_QPA_PLATFORM=xcb" << QString();
        QTest::newRow("--Apply --apply=yes -apply") << "DISPLAY=:4711"
                                                    << "could not connect to display :4711";
        QTest::newRow("") << "QT_QPA_PLATFORM=none"
                          << "Could not find the Qt platform plugin \"none\" in \"\"";
    }

    void starts()
    {
        QFETCH(QString, display);
        QFETCH(QString, line);
        const bool isUpdate = line.isEmpty();
        Run run(QTest::currentDataTag(), display);
        QCOMPARE(run.finish(), isUpdate ? 0 : 1);
        QCOMPARE(run.errors(), isUpdate ? QString() : "Cannot open the display: " + line + '\n');
        const QStringList calls = {"kiro-dhclient-edit|--add-new-option|shown 200 text|--add-request|shown",
                                   "dhclient|-1"};
        QVERIFY(eventually([&] { return !isUpdate || root->recorded().count() == 2; }));
        QCOMPARE(root->recorded(), isUpdate ? calls : QStringList());
        if (isUpdate)
            QCOMPARE(root->sql("SELECT * FROM entry"), QStringList("root/DHCP/Req_shown|10|1"));
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
        QCOMPARE(run.errors(), QString("Error:  No code specified in %1a.XML\n"
                                       "DhcpOption: File parse failed for %1a.XML\n"
                                       "Parse error, file ignored: %1a.XML\n"
                                       "Bad <code> element: 'x'\n"
                                       "Error:  No code specified in %1B.xml\n"
                                       "Error:  No <linux-name> specified in %1B.xml\n"
                                       "Error:  No <linux-type> specified in %1B.xml\n"
                                       "DhcpOption: File parse failed for %1B.xml\n"
                                       "Parse error, file ignored: %1B.xml\n"
                                       "Parse error, file ignored: %1c.xml\n"
                                       "DhcpOption: File not readable for %1d.xml\n"
                                       "Parse error, file ignored: %1d.xml\n"
                                       "DhcpOption: File parse failed for %1e.xml\n"
                                       "Parse error, file ignored: %1e.xml\n"
                                       "Parse error, file ignored: %1zero.xml\n"
                                       "Error: linux-name repeated: 'shown'\n")
                                   .arg(root->path("/usr/share/kiro-dhcp-mgr/")));
    }

    void noDefinitionDirectory()
    {
        const QString directory = root->path("/usr/share/kiro-dhcp-mgr");
        QFile::rename(directory, directory + "-elsewhere");
        root->write("/usr/share/kiro-dhcp-mgr", "a file");
        for (const QString arguments : {"--apply", ""}) {
            Run run(arguments);
            QCOMPARE(run.finish(), 1);
            QCOMPARE(run.errors(), "Cannot read config directory " + directory + '\n');
        }
    }

    void interactiveRun()
    {
        Run first("", "QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES=qt.widgets.painting=true");
        QVERIFY(eventually([&] { return first.errors().contains("Drawing QRegion(0,0 "); }));
        for (int i = 0; i < 2000; ++i)
            ::kill(static_cast<pid_t>(first.processId()), SIGHUP);
        for (const QString arguments : {"", "--apply"}) {
            Run second(arguments);
            QCOMPARE(second.finish(), 3);
            QCOMPARE(second.errors(),
                     QString("kiro-dhcp-mgr is already running (process %1)\n").arg(first.processId()));
        }
        QCOMPARE(root->recorded(), QStringList());
        QCOMPARE(first.state(), QProcess::Running);
        first.kill(); // whatever it leaves behind must not stop the next one
        first.waitForFinished(-1);
        Run third("--apply");
        QCOMPARE(third.finish(), 0);
    }

    void slowTool()
    {
        root->installRecorder(tool, "sleep 4; echo done; echo done >&2");
        Run run("--apply");
        QCOMPARE(run.finish(), 0);
        QCOMPARE(run.errors(), QString());
        QVERIFY(!root->recorded().contains("kiro-dhclient-edit"));
        QVERIFY(eventually([&] { return root->recorded().count() == 2; })); // it was left to finish
    }

    /// Defaults must not take the place of choices that are locked for longer than a window would wait.
    void registryLocked()
    {
        root->presetRegistry("('root/DHCP/Req_shown', 10, '0')");
        QProcess holder;
        holder.start("sqlite3", {root->path("/var/lib/vorkan/registry.db"), "BEGIN EXCLUSIVE", ".print locked",
                                 ".shell sleep 11", "COMMIT"});
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
    /// One start of the program below the test's root, with nothing in its environment but what is given.
    class Run : public QProcess
    {
    public:
        explicit Run(const QString &arguments, const QString &variables = "QT_QPA_PLATFORM=offscreen")
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
        QString said;
    };

    const QString tool = "/usr/sbin/kiro-dhclient-edit";
    std::unique_ptr<TrialRoot> root;
};

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
