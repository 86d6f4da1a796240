// The real program as a process: run modes, displays, single instance, signals, exit statuses.

#include "trial.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <signal.h>
#include <unistd.h>

#include <functional>
#include <memory>

namespace {

constexpr int AlreadyRunning = 3;

QString u(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

class TestProgram : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<TrialRoot>();
        m_root->installRecorder(u("/usr/sbin/kiro-dhclient-edit"));
        m_root->installRecorder(u("/usr/sbin/dhclient"));
        m_root->define(u("shown"), 200, Custom);
    }

    void updateRun_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("platform");
        QTest::newRow("--apply") << QStringList(u("--apply")) << QString();
        QTest::newRow("--update") << QStringList(u("--update")) << QString();
        QTest::newRow("among others")
            << QStringList({u("--show-all"), u("x"), u("--apply"), u("--update")}) << QString();
        QTest::newRow("platform variable") << QStringList(u("--apply")) << u("xcb");
    }

    void updateRun()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, platform);
        Run run(*this);
        run.environment.insert(u("DISPLAY"), u(":4711")); // refused, if it were opened
        run.environment.remove(u("QT_QPA_PLATFORM"));
        run.environment.insert(u("QT_QPA_PLATFORMTHEME"), u("gtk3"));
        run.environment.insert(u("QT_STYLE_OVERRIDE"), u("none"));
        if (!platform.isEmpty())
            run.environment.insert(u("QT_QPA_PLATFORM"), platform);
        run.start(arguments);
        QCOMPARE(run.finish(), 0);
        QCOMPARE(run.errors(), QString());
        QTRY_COMPARE(m_root->recorded(),
                     QStringList({u("kiro-dhclient-edit|--add-new-option|shown 200 text|--add-request|shown"),
                                  u("dhclient|-1")}));
        QCOMPARE(m_root->sql(u("SELECT * FROM entry")), QStringList(u("root/DHCP/Req_shown|10|1")));
    }

    void bareEnvironment()
    {
        Run run(*this);
        const QString root = run.environment.value(u("KIRO_DHCP_MGR_ROOT"));
        run.environment.clear();
        run.environment.insert(u("KIRO_DHCP_MGR_ROOT"), root);
        run.environment.insert(u("PATH"), u("/nonexistent"));
        run.start({u("--apply")});
        QCOMPARE(run.finish(), 0);
        QCOMPARE(run.errors(), QString());
    }

    void displayRefused_data()
    {
        QTest::addColumn<QString>("display");
        QTest::addColumn<QString>("platform");
        QTest::addColumn<QString>("line");
        QTest::newRow("none") << QString() << QString() << u("Cannot open the display: could not connect to display\n");
        QTest::newRow("refused") << u(":4711") << QString()
                                 << u("Cannot open the display: could not connect to display :4711\n");
        QTest::newRow("no such platform") << QString() << u("none")
                                          << u("Cannot open the display: Could not find the Qt platform plugin"
                                               " \"none\" in \"\"\n");
    }

    void displayRefused()
    {
        QFETCH(QString, display);
        QFETCH(QString, platform);
        Run run(*this);
        for (const char *name : {"DISPLAY", "QT_QPA_PLATFORM", "WAYLAND_DISPLAY"})
            run.environment.remove(u(name));
        if (!display.isEmpty())
            run.environment.insert(u("DISPLAY"), display);
        if (!platform.isEmpty())
            run.environment.insert(u("QT_QPA_PLATFORM"), platform);
        run.start({u("--Apply"), u("--apply=yes"), u("-apply")}); // none of them is an option
        QCOMPARE(run.finish(), 1);
        QTEST(run.errors(), "line");
        QCOMPARE(m_root->recorded(), QStringList());
    }

    void definitionsReported()
    {
        const QString folder = m_root->path(u("/usr/share/kiro-dhcp-mgr/"));
        m_root->define(u("B.xml"), "<code>x</code>");
        m_root->define(u("a.XML"), "<code>0</code><linux-name>a</linux-name>" + Predefined);
        m_root->define(u("c.xml"), "<code>3</code><linux-name>c</linux-name><name lang='fr'>c</name>" + Predefined);
        m_root->define(u(".hidden.xml"), "");
        m_root->define(u("notes.txt"), "");
        m_root->define(u("d.xml/inner"), "");
        m_root->define(u("zero"), 200, Custom);
        m_root->define(u("zz.xml"), "<code>200</code><linux-name>shown</linux-name><name>again</name>" + Custom);
        m_root->presetRegistry(u("('root/DHCP/Code_zero', 7, '0')"));
        Run run(*this);
        run.start({u("--apply")});
        QCOMPARE(run.finish(), 0);
        QCOMPARE(run.errors(), u("Error:  No code specified in %1a.XML\n"
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
                                 "Parse error, file ignored: %1zero.xml\n"
                                 "Error: linux-name repeated: 'shown'\n").arg(folder));
        QTRY_COMPARE(m_root->recorded().count(), 2);
    }

    void noDefinitionDirectory()
    {
        QVERIFY(QFile::rename(m_root->path(u("/usr/share/kiro-dhcp-mgr")), m_root->path(u("/usr/share/elsewhere"))));
        const QString line = u("Cannot read config directory %1\n").arg(m_root->path(u("/usr/share/kiro-dhcp-mgr")));
        for (const bool isFile : {false, true}) {
            if (isFile)
                m_root->write(u("/usr/share/kiro-dhcp-mgr"), "");
            for (const QStringList &arguments : {QStringList(u("--apply")), QStringList()}) {
                Run run(*this);
                run.start(arguments);
                QCOMPARE(run.finish(), 1);
                QCOMPARE(run.errors(), line);
            }
        }
    }

    void singleInstance()
    {
        Run first(*this);
        first.start({});
        QVERIFY(first.isUp());
        for (const QStringList &arguments : {QStringList(), QStringList(u("--apply"))}) {
            Run second(*this);
            second.start(arguments);
            QCOMPARE(second.finish(), AlreadyRunning);
            QCOMPARE(second.errors(),
                     u("kiro-dhcp-mgr is already running (process %1)\n").arg(first.process.processId()));
        }
        QCOMPARE(m_root->recorded(), QStringList());
        first.process.kill(); // whatever it leaves behind must not stop the next one
        first.process.waitForFinished();
        Run third(*this);
        third.start({u("--apply")});
        QCOMPARE(third.finish(), 0);
    }

    void signalInInteractiveRun()
    {
        Run run(*this);
        run.start({});
        QVERIFY(run.isUp());
        const auto pid = static_cast<pid_t>(run.process.processId());
        for (int i = 0; i < 2000; ++i)
            ::kill(pid, SIGHUP);
        QTest::qWait(100);
        QCOMPARE(run.process.state(), QProcess::Running);
        ::kill(pid, SIGTERM);
        run.process.waitForFinished();
        QCOMPARE(run.errors(), QString());
    }

    void signalInUpdateRun()
    {
        m_root->installRecorder(u("/usr/sbin/kiro-dhclient-edit"), "kill -HUP $PPID");
        Run run(*this);
        run.start({u("--apply")});
        QCOMPARE(run.finish(), 0);
        QCOMPARE(run.errors(), QString());
        QTRY_COMPARE(m_root->recorded().count(), 2);
    }

    void slowTool()
    {
        m_root->installRecorder(u("/usr/sbin/kiro-dhclient-edit"), "sleep 4; echo done; echo done >&2");
        Run run(*this);
        QElapsedTimer timer;
        timer.start();
        run.start({u("--apply")});
        QCOMPARE(run.finish(), 0);
        QVERIFY(timer.elapsed() < 4000); // it waits for 2 s, and a busy machine takes its time to start it
        QCOMPARE(run.errors(), QString());
        QTRY_COMPARE(m_root->recorded().count(), 2); // the client, and then the tool that was left to finish
    }

    void registryUnwritable()
    {
        if (::geteuid() != 0)
            QSKIP("needs root, to run the program as somebody else");
        m_root->presetRegistry(u("('root/DHCP/Code_none', 7, '0')"));
        for (const char *folder : {"", "/usr", "/usr/sbin", "/usr/share", "/usr/share/kiro-dhcp-mgr", "/var",
                                   "/var/lib", "/var/lib/vorkan"})
            QFile::setPermissions(m_root->path(u(folder)), QFile::Permissions(0x7755));
        m_root->define(u("coded"), 201, Custom); // whose stored code has to be written too, by a second commit
        m_root->sql(u("INSERT INTO entry VALUES('root/DHCP/Code_coded', 7, '210')"));
        m_root->remove(u("/usr/sbin/dhclient")); // it would fail to record, aloud
        Run run(*this);
        run.asNobody = true;
        run.start({u("--apply")});
        QCOMPARE(run.finish(), 0);
        QCOMPARE(run.errors(), u("Cannot write registry %1: attempt to write a readonly database\n")
                                   .arg(m_root->path(u("/var/lib/vorkan/registry.db"))));
    }

private:
    /// One start of the program below the test's root.
    struct Run
    {
        explicit Run(const TestProgram & /*test*/)
            : environment(QProcessEnvironment::systemEnvironment())
        {
        }
        ~Run()
        {
            process.kill();
            process.waitForFinished();
        }

        void start(const QStringList &arguments)
        {
            process.setProcessEnvironment(environment);
            if (asNobody)
                process.start(u("setpriv"), QStringList({u("--reuid=65534"), u("--regid=65534"), u("--clear-groups"),
                                                         u(PROGRAM_PATH)}) + arguments);
            else
                process.start(u(PROGRAM_PATH), arguments);
            process.waitForStarted();
        }

        /// Whether the program has come so far that its SIGHUP handler is installed.
        bool isUp()
        {
            return QTest::qWaitFor([this] {
                QFile status(u("/proc/%1/status").arg(process.processId()));
                if (!status.open(QIODevice::ReadOnly))
                    return false;
                const QByteArray text = status.readAll();
                const int caught = text.indexOf("SigCgt:");
                const quint64 signalSet = text.mid(caught + 7, 17).trimmed().toULongLong(nullptr, 16);
                return caught >= 0 && (signalSet & (1U << (SIGHUP - 1))) != 0;
            });
        }

        int finish()
        {
            return process.waitForFinished(20000) && process.exitStatus() == QProcess::NormalExit ? process.exitCode()
                                                                                                 : -1;
        }

        QString errors() { return m_errors += QString::fromUtf8(process.readAllStandardError()); }

        QProcessEnvironment environment;
        QProcess process;
        bool asNobody = false;

    private:
        QString m_errors;
    };

    std::unique_ptr<TrialRoot> m_root;
};

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
