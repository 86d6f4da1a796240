#ifndef WINDOWTRIAL_H
#define WINDOWTRIAL_H

#include "dhcpoption.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "trial.h"
#include "vapplyokcancelpanel.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>

#include <memory>

/// Elements of a definition besides Custom and Predefined.
inline const QByteArray Hidden = "<hide-option>yes</hide-option>";
inline const QByteArray Off = "<default>no</default>";
inline QByteArray classOf(const char *word)
{
    return QByteArray("<dhcp-class>") + word + "</dhcp-class>";
}

/// A window over definitions, with everything that a test reaches into.
class WindowTrial
{
public:
    /// Client name, code, further elements. The name shown is the client name's with a capital letter.
    struct Definition
    {
        QString name;
        int code;
        QByteArray more;
    };

    /// From here on, the edit tool and the client of the root only record how they were called.
    WindowTrial(const TrialRoot &root, const QList<Definition> &definitions, bool force = false) : root(root)
    {
        root.installRecorder("/usr/sbin/kiro-dhclient-edit");
        root.installRecorder("/usr/sbin/dhclient");
        root.forgetRecorded();
        for (const Definition &definition : definitions) {
            const QByteArray name = definition.name.toUtf8();
            const QByteArray elements = "<code>" + QByteArray::number(definition.code) + "</code><linux-name>" + name
                                        + "</linux-name><name>" + name.left(1).toUpper() + name.mid(1) + "</name>"
                                        + definition.more;
            options << new DhcpOption(root.define(QString::number(options.count()), elements), &records);
        }
        window = std::make_unique<MainWindow>(options, force);
        table = window->optionTable();
        selector = window->findChild<QComboBox *>();
        panel = window->findChild<VApplyOkCancelPanel *>();
    }

    void show()
    {
        window->resize(780, 500);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QApplication::setActiveWindow(window.get());
        table->setFocus();
    }

    /// -1 when no row has the name as its key.
    int row(const QString &linuxName) const
    {
        int row = table->rowCount() - 1;
        while (row >= 0 && !(table->item(row, KeyColumn) && table->item(row, KeyColumn)->text() == linuxName))
            --row;
        return row;
    }

    QTableWidgetItem *cell(const QString &linuxName, int column) const { return table->item(row(linuxName), column); }

    void click(int row, int column) const
    {
        const QRect cell = table->visualRect(table->model()->index(row, column));
        const QPoint box = cell.topLeft() + QPoint(10, cell.height() / 2);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, column == RequestedColumn ? box : cell.center());
    }

    void tick(const QString &linuxName) const { click(row(linuxName), RequestedColumn); }

    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QWidget *focus = QApplication::focusWidget(); // none once a box was closed, where nobody manages windows
        QTest::keyClick(focus ? focus : table, Qt::Key(key), modifiers);
    }

    /// Types into the code cell as a user does; false when it cannot be edited.
    bool typeCode(const QString &linuxName, const QString &text) const
    {
        table->setCurrentCell(row(linuxName), CodeColumn);
        QTest::keyClick(table, Qt::Key_F2);
        auto *editor = table->viewport()->findChild<QLineEdit *>();
        if (!editor)
            return false;
        editor->setText(text);
        QTest::keyClick(editor, Qt::Key_Return);
        QApplication::processEvents(); // the editor hands its text over from the event loop
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return true;
    }

    /// Waits for so many calls of the tool and the client.
    QStringList recorded(int count) const
    {
        eventually([&] { return root.recorded().count() >= count; });
        return root.recorded();
    }

private:
    const TrialRoot &root;
    QObject records;

public:
    QList<DhcpOption *> options;
    std::unique_ptr<MainWindow> window;
    DhcpTable *table = nullptr;
    QComboBox *selector = nullptr;
    VApplyOkCancelPanel *panel = nullptr;
};

#endif
