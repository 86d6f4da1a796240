#ifndef WINDOWTRIAL_H
#define WINDOWTRIAL_H

#include "dhcpoption.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "trial.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <memory>
#include <vector>

/// How a recorded call of the edit tool begins.
inline const QString ToolName = QStringLiteral("kiro-dhclient-edit|");

/// A window over definitions, with everything that a test reaches into.
class WindowTrial
{
public:
    /// Each definition: client name, code, further elements.
    struct Definition
    {
        QString name;
        int code;
        QByteArray more;
    };

    WindowTrial(const TrialRoot &root, const QList<Definition> &definitions, bool force = false)
    {
        int number = 0;
        for (const Definition &definition : definitions) {
            const QString file = QStringLiteral("%1.xml").arg(number++);
            m_records.emplace_back(new DhcpOption(
                root.define(file, "<code>" + QByteArray::number(definition.code) + "</code><linux-name>"
                                + definition.name.toUtf8() + "</linux-name><name>Name of "
                                + definition.name.toUtf8() + "</name>" + definition.more),
                nullptr));
            options.append(m_records.back().get());
        }
        window = std::make_unique<MainWindow>(options, force);
        table = window->optionTable();
        selector = window->findChild<QComboBox *>();
    }

    void show()
    {
        window->resize(900, 700);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }

    /// -1 when no row has the name as its key.
    int row(const QString &linuxName) const
    {
        for (int row = 0; row < table->rowCount(); ++row) {
            const QTableWidgetItem *key = table->item(row, KeyColumn);
            if (key && key->text() == linuxName)
                return row;
        }
        return -1;
    }

    QTableWidgetItem *cell(const QString &linuxName, int column) const
    {
        return table->item(row(linuxName), column);
    }

    void click(int row, int column) const
    {
        const QRect cellRect = table->visualRect(table->model()->index(row, column));
        const QPoint box = cellRect.topLeft() + QPoint(10, cellRect.height() / 2);
        const QPoint position = column == RequestedColumn ? box : cellRect.center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, position);
    }

    void tick(const QString &linuxName) const { click(row(linuxName), RequestedColumn); }

    /// Types into the code cell as a user does; false when it cannot be edited.
    bool typeCode(const QString &linuxName, const QString &text) const
    {
        table->setCurrentCell(row(linuxName), CodeColumn);
        QTest::keyClick(table, Qt::Key_F2);
        auto *editor = table->viewport()->findChild<QLineEdit *>();
        if (!editor)
            return false;
        editor->selectAll();
        if (text.isEmpty())
            QTest::keyClick(editor, Qt::Key_Delete);
        else
            QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        QApplication::processEvents(); // the editor hands its text over from the event loop
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return true;
    }

    QStringList visibleNames() const
    {
        QStringList names;
        for (int row = 0; row < table->rowCount(); ++row) {
            if (!table->isRowHidden(row) && table->item(row, KeyColumn))
                names << table->item(row, KeyColumn)->text();
        }
        return names;
    }

    QPushButton *button(const QString &text) const
    {
        for (QPushButton *candidate : window->findChildren<QPushButton *>()) {
            if (candidate->text().remove(QLatin1Char('&')) == text)
                return candidate;
        }
        return nullptr;
    }

private:
    std::vector<std::unique_ptr<DhcpOption>> m_records;

public:
    QList<DhcpOption *> options;
    std::unique_ptr<MainWindow> window;
    DhcpTable *table = nullptr;
    QComboBox *selector = nullptr;
};

/// What the details box says that opens while `act` runs; null when none opens.
template <typename Act>
QString detailsShownBy(Act act, int *boxes = nullptr)
{
    QString text;
    int count = 0;
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            ++count;
            text = box->text() + QLatin1Char('\n') + box->informativeText();
            box->accept();
        }
    });
    closer.start(10);
    act();
    QTest::qWait(50);
    if (boxes)
        *boxes = count;
    return text;
}

/// The edit tool and the client of the root from here on only record how they were called, from nothing on.
inline void installRecorders(const TrialRoot &root)
{
    root.installRecorder(QStringLiteral("/usr/sbin/kiro-dhclient-edit"));
    root.installRecorder(QStringLiteral("/usr/sbin/dhclient"));
    root.forgetRecorded();
}

inline QByteArray classOf(const char *word)
{
    return QByteArray("<dhcp-class>") + word + "</dhcp-class>";
}

#endif
