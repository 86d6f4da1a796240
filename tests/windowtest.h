#ifndef WINDOWTEST_H
#define WINDOWTEST_H

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

/// A test with a window over definitions, and with everything in it that a test reaches into.
class WindowTest : public QObject
{
protected:
    WindowTest()
    {
        for (const char *icon : {"pixmaps/kiro-dhcp", "icons/kiro-icons/16x16/pencil"})
            root.write(QString("/usr/share/%1.png").arg(icon), "P1 1 1 1"); // one dot
    }

    /// Shows a window over definitions. Each is a client name, a code, then elements or words for them: "known" (to the
    /// client), "off" (by default), "hidden", or a class such as "always-on". The name shown is the client name's with
    /// a capital letter. From here on, the edit tool and the client of the root only record how they were called.
    void open(const QStringList &definitions, bool force = false)
    {
        static const QHash<QString, QString> words = {{"known", Predefined},
                                                      {"off", "<default>no</default>"},
                                                      {"hidden", "<hide-option>yes</hide-option>"}};
        window.reset();
        options.clear();
        for (const QString &definition : definitions) {
            const QStringList parts = definition.split(' ', Qt::SkipEmptyParts);
            const QString &name = parts.at(0);
            QString elements = QString("<linux-name>%1</linux-name><code>%2</code>").arg(name, parts.at(1));
            elements += "<name>" + name.left(1).toUpper() + name.mid(1) + "</name>";
            elements += parts.contains("known") ? QString() : Custom;
            for (const QString &word : parts.mid(2))
                elements += words.value(word, word.startsWith('<') ? word : "<dhcp-class>" + word + "</dhcp-class>");
            options << new DhcpOption(root.define(name, elements.toUtf8()), this);
        }
        root.installRecorder("/usr/sbin/kiro-dhclient-edit");
        root.installRecorder("/usr/sbin/dhclient");
        root.forgetRecorded();
        window = std::make_unique<MainWindow>(options, force);
        table = window->optionTable();
        selector = window->findChild<QComboBox *>();
        panel = window->findChild<VApplyOkCancelPanel *>();
        window->resize(780, 500);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        QApplication::setActiveWindow(window.get());
        table->setFocus();
    }

    /// The row with the name as its key.
    int row(const QString &linuxName) const { return table->findItems(linuxName, Qt::MatchExactly).last()->row(); }

    QTableWidgetItem *cell(const QString &linuxName, int column) const { return table->item(row(linuxName), column); }

    void click(int row, int column) const
    {
        const QRect cell = table->visualRect(table->model()->index(row, column));
        const QPoint box = cell.topLeft() + QPoint(10, cell.height() / 2);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, column == RequestedColumn ? box : cell.center());
    }

    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QWidget *focus = QApplication::focusWidget(); // none once a box was closed, where nobody manages windows
        QTest::keyClick(focus ? focus : table, Qt::Key(key), modifiers);
    }

    /// Waits for so many calls of the tool and the client; sorted, since a busy machine may delay any of them.
    QStringList recorded(int count) const
    {
        eventually([&] { return root.recorded().count() >= count; });
        QStringList calls = root.recorded();
        calls.sort();
        return calls;
    }

    const TrialRoot root;
    QList<DhcpOption *> options;
    std::unique_ptr<MainWindow> window;
    DhcpTable *table = nullptr;
    QComboBox *selector = nullptr;
    VApplyOkCancelPanel *panel = nullptr;
};

#endif
