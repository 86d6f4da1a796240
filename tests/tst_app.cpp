// The application object and what the GUI library gives it.

#include "dhcpapp.h"
#include "dhcptable.h"
#include "instancelock.h"
#include "mainwindow.h"
#include "sighup.h"
#include "trial.h"
#include "vapplication.h"
#include "vcheckbox.h"
#include "vgui.h"
#include "vwidgetcontainer.h"

#include <QComboBox>
#include <QSignalSpy>
#include <QSocketNotifier>

#include <csignal>

#include <sys/socket.h>

class TestApp : public QObject
{
    Q_OBJECT

public:
    TestApp()
    {
        root.define("shown", 200, Custom);
        root.setValue("shown", "x=0");
        std::signal(SIGHUP, sighupHandler);
    }

private slots:
    /// Before there is a pair the handler must not write anywhere, least of all to descriptor 0.
    void signalWithoutSockets()
    {
        const DhcpApp update(true, true);
        std::raise(SIGHUP);
        QVERIFY(!update.findChild<QSocketNotifier *>());
        QCOMPARE(sighupSockets[0], 0);
    }

    void oneRefreshPerSignal()
    {
        const DhcpApp app(false, true);
        QCOMPARE(app.mainWindow()->findChild<QComboBox *>()->currentIndex(), int(ShowAll));
        const QSignalSpy refreshes(app.findChild<QSocketNotifier *>(), &QSocketNotifier::activated);
        root.setValue("shown", "x=1");
        for (int i = 0; i < 3; ++i)
            std::raise(SIGHUP);
        const auto isDrained = [] {
            char byte = 0;
            return ::recv(sighupSockets[1], &byte, 1, MSG_DONTWAIT | MSG_PEEK) < 0;
        };
        QVERIFY(eventually(isDrained));
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
        MainWindow *window = app.mainWindow();
        window->showMinimized();
        for (const bool asksToShow : {false, true}) {
            InstanceLock second("kiro-dhcp-mgr");
            QCOMPARE(second.acquire(asksToShow), InstanceLock::State::Held);
            QCOMPARE(second.holder(), ::getpid());
            QTest::qWait(asksToShow ? 0 : 50);
            QCOMPARE(window->isMinimized(), !asksToShow || !eventually([&] { return !window->isMinimized(); }));
        }
        // The tool inherits neither this socket nor the signals'.
        root.installRecorder("/usr/sbin/kiro-dhclient-edit", "set -- $(ls -l /proc/$$/fd | grep -c socket)");
        window->optionTable()->applyOptions(true);
        QCOMPARE(root.recorded(), QStringList("kiro-dhclient-edit|0"));
    }

    void boundCheckBoxes()
    {
        root.sql("INSERT INTO entry VALUES('p/on', 10, '1'), ('p/off', 10, '0'), ('p/odd', 10, 'x')");
        QWidget window;
        VWidgetContainer container(&window);
        VGui page("p", &window);
        for (const QString name : {"on", "off", "odd", "missing"}) {
            auto *box = new VCheckBox(&page, "p/" + name);
            container.addWidget(box);
            QCOMPARE(box->fieldWidget()->isChecked(), name == "on");
            box->fieldWidget()->setChecked(name == "off");
        }
        QVERIFY2(window.findChildren<QAbstractButton *>().isEmpty(), "the boxes must not appear in the window");
        QVERIFY(container.validate());
        QCOMPARE(root.sql("SELECT key, type, value FROM entry WHERE key LIKE 'p/%' ORDER BY key"),
                 QStringList({"p/missing|10|0", "p/odd|10|0", "p/off|10|1", "p/on|10|0"}));
        root.sql("CREATE TRIGGER refuse BEFORE UPDATE ON entry BEGIN SELECT RAISE(ABORT, 'written'); END");
        QVERIFY2(container.validate(), "nothing differs, so nothing is written");
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
