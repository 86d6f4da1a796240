#ifndef WINDOWTEST_H
#define WINDOWTEST_H

#include "dhcpoption.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "trial.h"

#include <QApplication>
#include <QComboBox>

#include <memory>

constexpr char NotRequested[] = "<default>No</default>";
constexpr char Predefined[] = "<linux-predefined>Yes</linux-predefined>";
constexpr char Hidden[] = "<hide-option>Yes</hide-option>";

/// The name shown is the name in capitals.
struct Definition
{
    QString name;
    int code;
    QByteArray elements = {};
};

/// A test with a window over definitions, in a root whose tool and client only record how they were called.
class WindowTest : public QObject
{
protected:
    void forgetChoicesAndValues()
    {
        root.registry().exec("DELETE FROM entry");
        QDir(root.path("/var/lib/dhcp3")).removeRecursively();
    }

    void open(const QList<Definition> &definitions, bool force = false)
    {
        window.reset();
        options.clear();
        for (const auto &[name, code, elements] : definitions)
            options << new DhcpOption(root.define(name, code, elements), this);
        root.record("/usr/sbin/kiro-dhclient-edit");
        root.record("/usr/sbin/dhclient");
        root.forgetCalls();
        window = std::make_unique<MainWindow>(options, force);
        table = window->optionTable();
        window->resize(780, 500);
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        table->setFocus();
    }

    int row(const QString &name) const { return table->findItems(name, Qt::MatchExactly).last()->row(); }

    QTableWidgetItem *cell(const QString &name, int column) const { return table->item(row(name), column); }

    QString currentName() const { return table->item(table->currentRow(), KeyColumn)->text(); }

    void click(const QString &name, int column) const
    {
        const QPoint corner = table->visualItemRect(cell(name, column)).topLeft();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, corner + QPoint(10, 12)); // where a box is
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(window->windowHandle(), key, modifiers);
    }

    void type(const QByteArray &text) const
    {
        for (const char letter : text)
            QTest::keyClick(window->windowHandle(), letter);
    }

    const TrialRoot root;
    QList<DhcpOption *> options;
    std::unique_ptr<MainWindow> window;
    DhcpTable *table = nullptr;
};

#endif
