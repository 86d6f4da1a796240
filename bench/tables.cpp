// How long the shown table takes to refresh all its values and to switch its view; that no value is an old one.

#include "dhcpapp.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "paths.h"

#include <QFile>
#include <QTest>

#include <fcntl.h>

class Tables : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        app.mainWindow()->show();
        QVERIFY(QTest::qWaitForWindowExposed(app.mainWindow()));
    }

    void refresh()
    {
        table.changeViewMode(ShowAll);
        table.sortByColumn(ValueColumn, Qt::AscendingOrder);
        const std::string values = Paths::resolve("/var/lib/dhcp3/vars/eth0");
        QBENCHMARK
        {
            QCOMPARE(::renameat2(AT_FDCWD, values.c_str(), AT_FDCWD, (values + ".next").c_str(), RENAME_EXCHANGE), 0);
            table.refreshValues();
            QCoreApplication::processEvents();
        }
        for (int row = 0; row < table.rowCount(); ++row) {
            QFile file(QFile::decodeName(values.c_str()) + QLatin1Char('/') + table.item(row, KeyColumn)->text());
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(file.readAll(), "value='" + table.item(row, ValueColumn)->text().toUtf8() + "'\n");
        }
    }

    void switchView()
    {
        int mode = 0;
        QBENCHMARK
        {
            table.changeViewMode(static_cast<ViewMode_t>(mode++ % 3));
            QCoreApplication::processEvents();
        }
    }

private:
    const DhcpApp app{false, false};
    DhcpTable &table = *app.mainWindow()->optionTable();
};

QTEST_MAIN(Tables)
#include "tables.moc"
