#ifndef WINDOWTEST_H
#define WINDOWTEST_H

#include "dhcpoption.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "trial.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>

#include <memory>

/// A test with a window over definitions, and with everything in it that a test reaches into.
class WindowTest : public QObject
{
protected:
    /// Shows a window over definitions. Each is a client name, a code, then elements such as "default=no". The name
    /// shown is the client name in capitals. From here on, the edit tool and the client of the root only record how
    /// they were called.
    void open(const QStringList &definitions, bool force = false)
    {
        window.reset();
        options.clear();
        for (const QString &definition : definitions) {
            const QString name = definition.section(' ', 0, 0);
            QString elements = "linux-name=" + name + " name=" + name.toUpper() + " code=" + definition.section(' ', 1);
            elements.replace(QRegularExpression("(\\S+)=(\\S+)"), "<\\1>\\2</\\1>");
            options << new DhcpOption(root.define(name, elements.toUtf8() + Custom), this);
        }
        for (const char *icon : {"pixmaps/kiro-dhcp", "icons/kiro-icons/16x16/pencil"})
            root.write(QString("/usr/share/%1.png").arg(icon), "P1 1 1 1"); // one dot
        root.installRecorder("/usr/sbin/kiro-dhclient-edit");
        root.installRecorder("/usr/sbin/dhclient");
        root.forgetRecorded();
        window = std::make_unique<MainWindow>(options, force);
        table = window->optionTable();
        selector = window->findChild<QComboBox *>();
        window->resize(780, 500);
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        table->setFocus();
    }

    /// The row with the name as its key.
    int row(const QString &linuxName) const { return table->findItems(linuxName, Qt::MatchExactly).last()->row(); }

    QTableWidgetItem *cell(const QString &linuxName, int column) const { return table->item(row(linuxName), column); }

    void click(int row, int column) const
    {
        const QPoint corner = table->visualRect(table->model()->index(row, column)).topLeft();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, corner + QPoint(10, 12)); // where a box is
    }

    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(window->windowHandle(), Qt::Key(key), modifiers);
    }

    const TrialRoot root;
    QList<DhcpOption *> options;
    std::unique_ptr<MainWindow> window;
    DhcpTable *table = nullptr;
    QComboBox *selector = nullptr;
};

#endif
