// The application object and what the GUI library gives it.

#include "dhcpapp.h"
#include "dhcptable.h"
#include "instancelock.h"
#include "mainwindow.h"
#include "sighup.h"
#include "trial.h"
#include "vapplication.h"

#include <QComboBox>
#include <QSignalSpy>
#include <QSocketNotifier>

#include <csignal>

#include <sys/socket.h>

class TestApp : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        root.define("shown.xml", "<code>200</code><linux-name>shown</linux-name><name>Shown</name>" + Custom);
        std::signal(SIGHUP, sighupHandler);
    }

    void oneRefreshPerSignal()
    {
        // Before there is a pair the handler must not write anywhere, least of all to descriptor 0.
        const DhcpApp update(true, true);
        int input[2];
        QVERIFY(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input) == 0 && ::dup2(input[0], 0) == 0);
        std::raise(SIGHUP);
        QVERIFY(!update.findChild<QSocketNotifier *>() && ::recv(input[1], input, 1, MSG_DONTWAIT) < 0);

        const DhcpApp app(false, true);
        QCOMPARE(app.mainWindow()->findChild<QComboBox *>()->currentIndex(), int(ShowAll));
        const QSignalSpy refreshes(app.findChild<QSocketNotifier *>(), &QSocketNotifier::activated);
        root.setValue("shown", "x=1");
        for (int i = 0; i < 3; ++i)
            std::raise(SIGHUP);
        char byte = 0;
        QVERIFY(eventually([&] { return ::recv(sighupSockets[1], &byte, 1, MSG_DONTWAIT | MSG_PEEK) < 0; }));
        QCOMPARE(refreshes.count(), 3);
        QCOMPARE(app.mainWindow()->optionTable()->item(0, ValueColumn)->text(), "1");
        // More signals than the socket holds, while nothing reads it: the handler must come back.
        for (int i = 0; i < 2000; ++i)
            std::raise(SIGHUP);
    }

    /// A second start shows the window, unless nobody started it to see one.
    void broughtToFront()
    {
        const DhcpApp app(false, false);
        app.mainWindow()->showMinimized();
        for (const bool asksToShow : {false, true}) {
            InstanceLock second("kiro-dhcp-mgr");
            QCOMPARE(second.acquire(asksToShow), InstanceLock::State::Held);
            QCOMPARE(second.holder(), ::getpid());
            QVERIFY(QTest::qWaitFor([&] { return !app.mainWindow()->isMinimized(); }, asksToShow ? 60000 : 50)
                    == asksToShow);
        }
        // The tool inherits neither this socket nor the signals'.
        root.installRecorder("/usr/sbin/kiro-dhclient-edit", "set -- $(ls -l /proc/$$/fd | grep -c socket)");
        app.mainWindow()->optionTable()->applyOptions(true);
        QCOMPARE(root.recorded(1), QStringList("kiro-dhclient-edit|0"));
    }

private:
    TrialRoot root;
};

int main(int argc, char **argv)
{
    TestApp test;
    VApplication application(argc, argv, true, true, true);
    application.exitIfRunning();
    return QTest::qExec(&test, argc, argv);
}

#include "tst_app.moc"
