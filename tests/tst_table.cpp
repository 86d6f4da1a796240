// The option table and the window around it, driven through Qt's events.

#include "dhcpoption.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "trial.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

const QString ToolName = QStringLiteral("kiro-dhclient-edit|");

/// A window over definitions, with everything that a test reaches into.
class Trial
{
public:
    /// Each definition: client name, code, further elements.
    struct Definition
    {
        QString name;
        int code;
        QByteArray more;
    };

    Trial(const TrialRoot &root, const QList<Definition> &definitions, bool force = false)
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
            const QTableWidgetItem *key = table->item(row, DhcpTable::KeyColumn);
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
        const QPoint position = column == DhcpTable::RequestedColumn ? cellRect.topLeft() + QPoint(10, cellRect.height() / 2)
                                                                     : cellRect.center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, position);
    }

    void tick(const QString &linuxName) const { click(row(linuxName), DhcpTable::RequestedColumn); }

    /// Types into the code cell as a user does; false when it cannot be edited.
    bool typeCode(const QString &linuxName, const QString &text) const
    {
        table->setCurrentCell(row(linuxName), DhcpTable::CodeColumn);
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
            if (!table->isRowHidden(row) && table->item(row, DhcpTable::KeyColumn))
                names << table->item(row, DhcpTable::KeyColumn)->text();
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

QByteArray classOf(const char *word)
{
    return QByteArray("<dhcp-class>") + word + "</dhcp-class>";
}

} // namespace

class TestTable : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root.installRecorder(QStringLiteral("/usr/sbin/kiro-dhclient-edit"));
        m_root.installRecorder(QStringLiteral("/usr/sbin/dhclient"));
        m_root.forgetRecorded();
    }

    void cells()
    {
        const CapturedErrors errors;
        const Trial trial(m_root, {{u("cells-off"), 7, Custom + classOf("always-off")},
                                   {u("cells-managed"), 43, Predefined + classOf("managed") + "<default>no</default>"},
                                   {u("cells-on"), 250, Predefined + classOf("always-on") + "<standard-option>yes</standard-option>"},
                                   {u("cells-yes"), 9, Custom},
                                   {u("cells-no"), 300, Custom + "<default>no</default>"}});
        struct Expected { const char *name; const char *requested; const char *code; bool enabled; bool editable;
                          bool italic; const char *tip; };
        const Expected rows[] = {
            {"cells-off", "Never", "007", false, true, true, "This option is <i>never</i> requested from the DHCP server"},
            {"cells-managed", "*", "043", true, false, true,
             "This option is managed by another control panel (e.g. Networking)"},
            {"cells-on", "Always", "250", true, false, false, "This option is <i>always</i> requested from the DHCP server"},
            {"cells-yes", "", "009", true, true, true, ""},
            {"cells-no", "", "300", false, true, true, ""},
        };
        for (const Expected &row : rows) {
            const QString name = QString::fromUtf8(row.name);
            const bool isNormal = !*row.requested;
            const Qt::ItemFlags rowFlags = row.enabled ? Qt::ItemIsEnabled : Qt::NoItemFlags;
            const QTableWidgetItem *requested = trial.cell(name, 0);
            QCOMPARE(requested->text(), QString::fromUtf8(row.requested));
            QCOMPARE(requested->flags(), isNormal ? Qt::ItemIsUserCheckable | Qt::ItemIsEnabled : Qt::NoItemFlags);
            QCOMPARE(requested->data(Qt::CheckStateRole),
                     isNormal ? QVariant(row.enabled ? Qt::Checked : Qt::Unchecked) : QVariant());
            QCOMPARE(requested->toolTip(), QString::fromUtf8(row.tip));
            const QTableWidgetItem *code = trial.cell(name, 1);
            QCOMPARE(code->text(), QString::fromUtf8(row.code));
            QCOMPARE(code->flags(), row.editable ? rowFlags | Qt::ItemIsSelectable | Qt::ItemIsEditable : rowFlags);
            QCOMPARE(code->font().weight() == 75, row.editable);
            QCOMPARE(trial.cell(name, 2)->text(), QString(QStringLiteral("Name of ") + name));
            QCOMPARE(trial.cell(name, 2)->font().italic(), row.italic);
            QCOMPARE(trial.cell(name, 3)->flags(), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
            QCOMPARE(trial.cell(name, 4)->text(), QStringLiteral("N/A"));
            QCOMPARE(trial.cell(name, 4)->flags(), rowFlags);
            QCOMPARE(trial.cell(name, 5)->flags(), QTableWidgetItem().flags());
        }
        QCOMPARE(trial.row(u("cells-off")), 0); // sorted by code
        QCOMPARE(trial.row(u("cells-no")), 4);
        QCOMPARE(m_root.sql(u("SELECT key, type, value FROM entry WHERE key LIKE '%cells%' ORDER BY key")),
                 QStringList({u("root/DHCP/Req_cells-managed|10|1"), u("root/DHCP/Req_cells-no|10|0"),
                              u("root/DHCP/Req_cells-off|10|0"), u("root/DHCP/Req_cells-on|10|1"),
                              u("root/DHCP/Req_cells-yes|10|1")}));
        QCOMPARE(errors.text(), QString());
        int width = 46;
        for (int column = 0; column < 5; ++column)
            width += trial.table->columnWidth(column);
        QCOMPARE(trial.table->minimumWidth(), width);
        QVERIFY(trial.table->isColumnHidden(5));
    }

    void storedStateWins()
    {
        Trial(m_root, {{u("stored-yes"), 200, Custom}, {u("stored-off"), 201, Custom + classOf("always-off")}});
        m_root.sql(u("UPDATE entry SET value = '0' WHERE key = 'root/DHCP/Req_stored-yes'"));
        m_root.sql(u("UPDATE entry SET value = '1' WHERE key = 'root/DHCP/Req_stored-off'"));
        const Trial trial(m_root, {{u("stored-yes"), 200, Custom}, {u("stored-off"), 201, Custom + classOf("always-off")}});
        QCOMPARE(trial.cell(u("stored-yes"), 0)->checkState(), Qt::Unchecked);
        const QString query = u("SELECT value FROM entry WHERE key = 'root/DHCP/Req_stored-off'");
        QCOMPARE(m_root.sql(query), QStringList(u("1")));
        trial.window->apply();
        QCOMPARE(m_root.sql(query), QStringList(u("0")));
        QTRY_COMPARE(m_root.recorded(), QStringList(u("dhclient|-1")));
    }

    void views()
    {
        Trial trial(m_root, {{u("v-custom"), 1, Custom}, {u("v-hidden"), 2, Custom + "<hide-option>yes</hide-option>"},
                             {u("v-known"), 3, Predefined},
                             {u("v-known-hidden"), 4, Predefined + "<hide-option>yes</hide-option>"}});
        trial.show();
        QCOMPARE(trial.selector->currentText(), u("Show Custom Options"));
        QCOMPARE(trial.visibleNames(), QStringList(u("v-custom")));
        QTest::keyClick(trial.selector, Qt::Key_Down);
        QCOMPARE(trial.visibleNames(), QStringList({u("v-custom"), u("v-known")}));
        trial.table->sortByColumn(DhcpTable::NameColumn, Qt::DescendingOrder);
        QCOMPARE(trial.visibleNames(), QStringList({u("v-known"), u("v-custom")}));
        QTest::keyClick(trial.selector, Qt::Key_Down);
        QCOMPARE(trial.visibleNames().count(), 4);
        trial.table->changeViewMode(3);
        trial.table->changeViewMode(-1);
        QCOMPARE(trial.visibleNames().count(), 4);
        trial.table->changeViewMode(ShowCustom);
        QCOMPARE(trial.visibleNames(), QStringList(u("v-custom")));
    }

    /// Every operation must reach its option by whatever column the table is sorted, also among equal texts.
    void rightRow_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<Qt::SortOrder>("order");
        for (int column = 0; column < 6; ++column) {
            QTest::addRow("column %d ascending", column) << column << Qt::AscendingOrder;
            QTest::addRow("column %d descending", column) << column << Qt::DescendingOrder;
        }
    }

    void rightRow()
    {
        QFETCH(int, column);
        QFETCH(Qt::SortOrder, order);
        const QString prefix = u("right%1%2-").arg(column).arg(order);
        QList<Trial::Definition> definitions;
        for (int i = 0; i < 12; ++i) {
            const QByteArray hidden = i % 4 == 3 ? "<hide-option>yes</hide-option>" : "";
            definitions.append({prefix + QString::number(i), 150 + 3 * i, Custom + hidden});
            m_root.setValue(definitions.last().name, "x=old");
        }
        Trial trial(m_root, definitions);
        trial.show();
        trial.table->sortByColumn(column, order);
        const QStringList visible = trial.visibleNames();
        QCOMPARE(visible.count(), 9);

        // Refresh: values whose order turns over, some of them equal.
        for (int i = 0; i < 12; ++i)
            m_root.setValue(definitions.at(i).name, "x=new" + QByteArray::number((20 - i) / 2));
        trial.table->refreshValues();
        for (int i = 0; i < 12; ++i)
            QCOMPARE(trial.cell(definitions.at(i).name, 4)->text(), u("new%1").arg((20 - i) / 2));
        QStringList sorted = trial.visibleNames();
        sorted.sort();
        QStringList same = visible;
        same.sort();
        QCOMPARE(sorted, same);

        // Edit, then untick; one edit is refused.
        const QString edited = definitions.at(0).name;
        const QString unticked = definitions.at(5).name;
        QVERIFY(trial.typeCode(edited, u("251")));
        QCOMPARE(trial.cell(edited, 1)->text(), u("251"));
        QVERIFY(trial.typeCode(definitions.at(1).name, u("256")));
        QCOMPARE(trial.cell(definitions.at(1).name, 1)->text(), u("153"));
        trial.tick(unticked);
        for (int i = 0; i < 12; ++i) {
            const QString name = definitions.at(i).name;
            QCOMPARE(trial.options.at(i)->code, name == edited ? 251u : 150u + 3 * static_cast<unsigned>(i));
            QCOMPARE(trial.cell(name, 0)->checkState(), name == unticked ? Qt::Unchecked : Qt::Checked);
            QCOMPARE(trial.cell(name, 2)->flags(), name == unticked ? Qt::NoItemFlags : Qt::ItemIsEnabled);
        }

        trial.window->apply();
        QTRY_COMPARE(m_root.recorded().count(), 3);
        QStringList recorded = m_root.recorded();
        recorded.sort();
        QCOMPARE(recorded, QStringList({u("dhclient|-1"),
                                        ToolName + u("--del-new-option|%1 150 text|--del-new-option|%1 150 text|"
                                                     "--add-new-option|%1 251 text|--add-request|%1").arg(edited),
                                        ToolName + u("--del-new-option|%1 165 text|--del-request|%1").arg(unticked)}));
        QCOMPARE(m_root.sql(u("SELECT value FROM entry WHERE key IN ('root/DHCP/Code_%1', 'root/DHCP/Req_%2')"
                              " ORDER BY key").arg(edited, unticked)), QStringList({u("251"), u("0")}));
        m_root.forgetRecorded();
        trial.window->apply();
        QTRY_COMPARE(m_root.recorded(), QStringList(u("dhclient|-1")));
    }

    void editing()
    {
        Trial trial(m_root, {{u("edit"), 7, Custom}, {u("edit-known"), 8, Predefined}});
        trial.table->changeViewMode(ShowAll);
        trial.show();
        for (const char *text : {"0", "256", "x1", ""}) {
            QVERIFY(trial.typeCode(u("edit"), QString::fromUtf8(text)));
            QCOMPARE(trial.cell(u("edit"), 1)->text(), u("7"));
        }
        QVERIFY(trial.typeCode(u("edit"), u("012")));
        QCOMPARE(trial.cell(u("edit"), 1)->text(), u("012"));
        QCOMPARE(trial.options.at(0)->code, 12u);
        QVERIFY(!trial.typeCode(u("edit-known"), u("9")));

        trial.tick(u("edit"));
        QCOMPARE(trial.cell(u("edit"), 0)->checkState(), Qt::Unchecked);
        for (int column = 1; column < 6; ++column)
            QCOMPARE(trial.cell(u("edit"), column)->flags(), Qt::NoItemFlags);
        trial.table->setCurrentCell(trial.row(u("edit")), 0);
        QTest::keyClick(trial.table, Qt::Key_Space);
        QCOMPARE(trial.cell(u("edit"), 0)->checkState(), Qt::Checked);
        for (int column = 1; column < 6; ++column)
            QCOMPARE(trial.cell(u("edit"), column)->flags(), Qt::ItemIsEnabled);
        QVERIFY(!trial.typeCode(u("edit"), u("9")));
    }

    void forcedApply()
    {
        Trial trial(m_root, {{u("f-managed"), 1, Predefined + classOf("managed")},
                             {u("f-on"), 2, Predefined + classOf("always-on")},
                             {u("f-off"), 3, Predefined + classOf("always-off")}, {u("f-normal"), 4, Predefined}}, true);
        trial.window->apply();
        QTRY_COMPARE(m_root.recorded(), QStringList({ToolName + u("--add-request|f-on"),
                                                     ToolName + u("--add-request|f-normal"), u("dhclient|-1")}));
    }

    void repeatedName()
    {
        const CapturedErrors errors;
        Trial trial(m_root, {{u("twice"), 20, Custom}, {u("once"), 30, Custom}, {u("twice"), 10, Custom}}, true);
        QCOMPARE(errors.text(), u("Error: linux-name repeated: 'twice'\n"));
        trial.show();
        for (int column = 0; column < 6; ++column) {
            trial.table->sortByColumn(column, column % 2 ? Qt::AscendingOrder : Qt::DescendingOrder);
            for (int mode = 0; mode < 3; ++mode)
                trial.table->changeViewMode(mode);
            trial.table->refreshValues();
            int empty = 0;
            while (trial.table->item(empty, DhcpTable::KeyColumn))
                ++empty;
            QCOMPARE(detailsShownBy([&] {
                for (int cell = 0; cell < 5; ++cell)
                    trial.click(empty, cell);
                trial.table->setCurrentCell(empty, DhcpTable::InfoColumn);
                QTest::keyClick(trial.table, Qt::Key_Return);
            }), QString());
        }
        trial.window->apply();
        QTRY_COMPARE(m_root.recorded().count(), 3);
        QVERIFY(m_root.recorded().filter(u("twice 10")).isEmpty());
    }

    void details_data()
    {
        QTest::addColumn<QByteArray>("more");
        QTest::addColumn<QString>("expected");
        QTest::newRow("all") << Custom + "<windows-name>W</windows-name><windows-type>Byte</windows-type>"
                                         "<description>D</description><example>E</example>"
                                         "<standard-option>yes</standard-option>"
                             << u("Standard DHCP Code: <b>250</b><br />Last Applied DHCP Code: <b>224</b><br />"
                                  "Name: <b>Name of %1</b><br />Windows DHCP Option Name: <b>W</b><br />"
                                  "Windows DHCP Option Type: <b>Byte</b><br />Linux DHCP Option Name: <b>%1</b><br />"
                                  "Linux DHCP Option Type: <b>text</b><br />Description: <b>D</b><br />"
                                  "Example: <b>E</b><br />Standard DHCP Option?  <b>Yes<b><br />");
        QTest::newRow("predefined") << Predefined
                                    << u("Fixed DHCP Code: <b>250</b><br />Name: <b>Name of %1</b><br />"
                                         "Windows DHCP Option Type: <b>Unknown</b><br />"
                                         "Linux DHCP Option Name: <b>%1</b><br />"
                                         "Standard DHCP Option?  <b>Ostrel Extension<b><br />");
    }

    void details()
    {
        QFETCH(QByteArray, more);
        QFETCH(QString, expected);
        const QString name = u("info-%1").arg(QString::fromUtf8(QTest::currentDataTag()));
        Trial trial(m_root, {{name, 250, more}});
        if (!trial.options.at(0)->linuxPredefined)
            trial.options.at(0)->appliedCode = 224;
        trial.table->changeViewMode(ShowAll);
        trial.show();
        const QString whole = u("<i>Details on DHCP Option 250 -- Name of %1:</i>\n").arg(name) + expected.arg(name);
        int boxes = 0;
        for (int column = 1; column < 5; ++column) {
            const QString shown = detailsShownBy([&] { trial.click(0, column); }, &boxes);
            QCOMPARE(shown, column == DhcpTable::InfoColumn ? whole : QString());
        }
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) {
            trial.table->setCurrentCell(0, DhcpTable::InfoColumn);
            QCOMPARE(detailsShownBy([&] { QTest::keyClick(trial.table, key); }, &boxes), whole);
            QCOMPARE(boxes, 1);
            QVERIFY(!trial.table->item(0, DhcpTable::InfoColumn)->isSelected());
        }
    }

    void equalCodesShowTheFirst()
    {
        Trial trial(m_root, {{u("equal-b"), 240, Custom}, {u("equal-a"), 240, Custom}});
        trial.show();
        for (int row = 0; row < 2; ++row)
            QVERIFY(detailsShownBy([&] { trial.click(row, DhcpTable::InfoColumn); })
                        .startsWith(u("<i>Details on DHCP Option 240 -- Name of equal-b:</i>")));
    }

    void buttons()
    {
        Trial trial(m_root, {{u("button"), 200, Custom}});
        trial.show();
        trial.tick(u("button"));
        QTimer::singleShot(0, [&] { QTest::mouseClick(trial.button(u("Cancel")), Qt::LeftButton); });
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(m_root.recorded(), QStringList());
        QTest::mouseClick(trial.button(u("Apply")), Qt::LeftButton);
        QTRY_COMPARE(m_root.recorded(), QStringList({ToolName + u("--del-new-option|button 200 text|--del-request|button"),
                                                     u("dhclient|-1")}));
        QTimer::singleShot(0, [&] { QTest::mouseClick(trial.button(u("OK")), Qt::LeftButton); });
        QCOMPARE(QApplication::exec(), 0);
        QTRY_COMPARE(m_root.recorded().count(), 3);
    }

    /// Tab must reach every control, the table included, and leave it again.
    void keyboardReachesAll()
    {
        Trial trial(m_root, {{u("key"), 200, Custom}});
        trial.show();
        QApplication::setActiveWindow(trial.window.get());
        QList<QWidget *> wanted = {trial.table, trial.selector, trial.button(u("Apply")), trial.button(u("OK")),
                                   trial.button(u("Cancel"))};
        for (int i = 0; i < 10 && !wanted.isEmpty(); ++i) {
            wanted.removeAll(QApplication::focusWidget());
            QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : trial.window.get(), Qt::Key_Tab);
        }
        QVERIFY2(wanted.isEmpty(), "a control that Tab does not reach");
    }

    void accessibleNames()
    {
        Trial trial(m_root, {{u("spoken"), 200, Custom}});
        QVERIFY(!trial.table->accessibleName().isEmpty());
        QVERIFY(!trial.selector->accessibleName().isEmpty());
        const QStringList names = {u("Requested: Name of spoken"), u("DHCP Code: 200"), u("Name: Name of spoken"),
                                   u("Info: Name of spoken"), u("Current Value: N/A")};
        for (int column = 0; column < names.count(); ++column)
            QCOMPARE(trial.table->model()->index(0, column).data(Qt::AccessibleTextRole).toString(), names.at(column));
    }

    void emptyList()
    {
        m_root.sql(u("DELETE FROM entry"));
        const Trial trial(m_root, {}, true);
        QCOMPARE(trial.table->columnCount(), 6);
        trial.table->refreshValues();
        trial.window->apply();
        QTRY_COMPARE(m_root.recorded(), QStringList(u("dhclient|-1")));
        QCOMPARE(m_root.sql(u("SELECT count(*) FROM entry")), QStringList(u("0")));
    }

private:
    static QString u(const char *text) { return QString::fromUtf8(text); }

    TrialRoot m_root;
};

QTEST_MAIN(TestTable)
#include "tst_table.moc"
