#include "dhcpapp.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "sighup.h"
#include "trial.h"

#include <QApplication>
#include <QComboBox>
#include <QPointer>
#include <QSignalSpy>
#include <QSocketNotifier>
#include <QTest>

#include <csignal>

#include <sys/socket.h>

class TestApp : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_root.define(QStringLiteral("shown"), 200, Custom);
        m_root.setValue(QStringLiteral("shown"), "x=0");
        std::signal(SIGHUP, sighupHandler);
    }

    /// Before there is a pair the handler must not write anywhere, least of all to descriptor 0.
    void signalWithoutSockets()
    {
        const DhcpApp update(true, true);
        std::raise(SIGHUP);
        QVERIFY(!update.findChild<QSocketNotifier *>());
        QCOMPARE(sighupSockets[0], 0);
        QCOMPARE(update.mainWindow()->findChild<QComboBox *>()->currentIndex(), 0);
    }

    void oneRefreshPerSignal()
    {
        const DhcpApp app(false, true);
        DhcpTable *table = app.mainWindow()->optionTable();
        const auto *notifier = app.findChild<QSocketNotifier *>();
        QVERIFY(notifier);
        QCOMPARE(app.mainWindow()->findChild<QComboBox *>()->currentIndex(), int(ShowAll));
        const QSignalSpy refreshes(notifier, &QSocketNotifier::activated);
        const auto shownValue = [&] { return table->item(0, ValueColumn)->text(); };

        m_root.setValue(QStringLiteral("shown"), "x=1");
        QTest::qWait(20);
        QCOMPARE(shownValue(), QStringLiteral("0"));
        for (int i = 0; i < 3; ++i)
            std::raise(SIGHUP);
        QTRY_COMPARE(refreshes.count(), 3);
        QCOMPARE(shownValue(), QStringLiteral("1"));

        m_root.remove(QStringLiteral("/var/lib/dhcp3/vars/eth0/shown"));
        std::raise(SIGHUP);
        QTRY_COMPARE(shownValue(), QStringLiteral("N/A"));
        QTest::qWait(20);
        QCOMPARE(refreshes.count(), 4);
        char byte = 0;
        QVERIFY(::recv(sighupSockets[1], &byte, 1, MSG_DONTWAIT | MSG_PEEK) < 0);

        // More signals than the socket holds, while nothing reads it: the handler must come back.
        for (int i = 0; i < 2000; ++i)
            std::raise(SIGHUP);
        QTRY_VERIFY(::recv(sighupSockets[1], &byte, 1, MSG_DONTWAIT | MSG_PEEK) < 0);
    }

    void windowOutlivesTheApplicationObject()
    {
        QPointer<MainWindow> window;
        {
            const DhcpApp app(true, false);
            window = app.mainWindow();
        }
        QVERIFY(window);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!window);
    }

private:
    TrialRoot m_root;
};

QTEST_MAIN(TestApp)
#include "tst_app.moc"
