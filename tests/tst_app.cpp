// The application object: signals, and what a second start does to the window.

#include "dhcpapp.h"
#include "dhcptable.h"
#include "instancelock.h"
#include "mainwindow.h"
#include "sighup.h"
#include "trial.h"
#include "vapplication.h"

#include <QComboBox>

#include <csignal>

class TestApp : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        root.define("shown", 200);
        std::signal(SIGHUP, sighupHandler);
    }

    void showsAllAndRefreshesTheValuesAtASignal()
    {
        const DhcpApp app(false, true);
        QCOMPARE(app.mainWindow()->findChild<QComboBox *>()->currentText(), "Show All Options");
        root.setValue("shown", "new");
        for (int i = 0; i < 2000; ++i) // more than the socket holds: the handler must not wait
            std::raise(SIGHUP);
        const QTableWidgetItem *value = app.mainWindow()->optionTable()->item(0, ValueColumn);
        QTRY_COMPARE(value->text(), "new");
    }

    void secondStartRaisesTheWindow()
    {
        const DhcpApp app(false, false);
        app.mainWindow()->showMinimized();
        InstanceLock unseen("kiro-dhcp-mgr");
        QCOMPARE(unseen.acquire(false), InstanceLock::State::Held); // nobody started it to see a window
        QCoreApplication::processEvents();
        QVERIFY(app.mainWindow()->isMinimized());
        InstanceLock second("kiro-dhcp-mgr");
        QCOMPARE(second.acquire(true), InstanceLock::State::Held);
        QTRY_VERIFY(!app.mainWindow()->isMinimized());
    }

private:
    const TrialRoot root;
};

int main(int argc, char **argv)
{
    TestApp test;
    VApplication application(argc, argv, true, true, true);
    application.exitIfRunning();
    return QTest::qExec(&test, argc, argv);
}

#include "tst_app.moc"
