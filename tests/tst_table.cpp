// The option table and the window around it, driven through Qt's events.

#include "configurationpageheader.h"
#include "dhcpoption.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "trial.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QMetaEnum>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <QtEndian>

#include <functional>
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
        const QPoint box = cellRect.topLeft() + QPoint(10, cellRect.height() / 2);
        const QPoint position = column == DhcpTable::RequestedColumn ? box : cellRect.center();
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

/// What a screen reader learns of the widget and all that is visible in it, cells aside.
QStringList spokenBy(QWidget *widget)
{
    QStringList spoken;
    std::function<void(QAccessibleInterface *)> ask = [&](QAccessibleInterface *asked) {
        if (asked->state().invisible || asked->role() == QAccessible::Cell)
            return;
        const QString role = QString::fromLatin1(QMetaEnum::fromType<QAccessible::Role>().valueToKey(asked->role()));
        const QString focusable = asked->state().focusable ? QStringLiteral("focusable") : QString();
        // Tables say their name to whatever they are asked for.
        const QString keys = asked->tableInterface() ? QString() : asked->text(QAccessible::Accelerator);
        spoken << QStringList({role, asked->text(QAccessible::Name), keys, focusable})
                      .join(QLatin1Char('|'));
        for (int child = 0; child < asked->childCount(); ++child)
            ask(asked->child(child));
    };
    ask(QAccessible::queryAccessibleInterface(widget));
    return spoken;
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
                                   {u("cells-on"), 250,
                                    Predefined + classOf("always-on") + "<standard-option>yes</standard-option>"},
                                   {u("cells-yes"), 9, Custom},
                                   {u("cells-no"), 300, Custom + "<default>no</default>"}});
        struct Expected { const char *name; const char *requested; const char *code; bool enabled; bool editable;
                          bool italic; const char *tip; };
        const Expected rows[] = {
            {"cells-off", "Never", "007", false, true, true,
             "This option is <i>never</i> requested from the DHCP server"},
            {"cells-managed", "*", "043", true, false, true,
             "This option is managed by another control panel (e.g. Networking)"},
            {"cells-on", "Always", "250", true, false, false,
             "This option is <i>always</i> requested from the DHCP server"},
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

    /// The entry of a Normal option wins over its default; the other classes win over theirs, at the next apply.
    void storedState_data()
    {
        QTest::addColumn<QByteArray>("more");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("requested");
        QTest::newRow("normal off") << Custom << u("0") << u("") << false;
        QTest::newRow("normal on") << Custom + "<default>no</default>" << u("1") << u("") << true;
        QTest::newRow("always on") << Custom + classOf("always-on") << u("0") << u("Always") << true;
        QTest::newRow("always off") << Custom + classOf("always-off") << u("1") << u("Never") << false;
        QTest::newRow("managed") << Custom + classOf("managed") << u("0") << u("*") << true;
    }

    void storedState()
    {
        QFETCH(QByteArray, more);
        QFETCH(QString, stored);
        QFETCH(bool, requested);
        const QString name = u("stored-%1").arg(QString::fromUtf8(QTest::currentDataTag()).replace(QLatin1Char(' '),
                                                                                                   QLatin1Char('-')));
        const QList<Trial::Definition> definitions = {{name, 200, more}, {name + u("-2"), 201, more}};
        { // the first run makes both entries, by one commit
            const quint32 before = changeCounter();
            const Trial first(m_root, definitions);
            QCOMPARE(changeCounter(), before + 1);
        }
        m_root.sql(u("UPDATE entry SET value = '%1' WHERE key = 'root/DHCP/Req_%2'").arg(stored, name));
        const quint32 before = changeCounter();
        const Trial trial(m_root, definitions);
        QCOMPARE(changeCounter(), before);
        QTEST(trial.cell(name, 0)->text(), "text");
        QCOMPARE(trial.cell(name, 4)->flags().testFlag(Qt::ItemIsEnabled), requested);
        QCOMPARE(trial.options.at(0)->appliedRequested, requested);
        trial.window->apply();
        QCOMPARE(m_root.sql(u("SELECT value FROM entry WHERE key = 'root/DHCP/Req_%1'").arg(name)),
                 QStringList(requested ? u("1") : u("0")));
        QTRY_COMPARE(m_root.recorded(), QStringList(u("dhclient|-1")));
    }

    void texts()
    {
        const Trial trial(m_root, {});
        struct Header { const char *text; const char *tip; };
        const Header headers[] = {{"Requested", "Checked if the DHCP option is to be requested from the DHCP server"},
                                  {"DHCP\nCode", "DHCP code.  This is modifiable for non-predefined options"},
                                  {"Name", ""},
                                  {"Info", "Click for detailed option information"},
                                  {"Current\nValue", "Current value returned from the DHCP server"},
                                  {"Option\nName", ""}};
        for (int column = 0; column < 6; ++column) {
            QCOMPARE(trial.table->horizontalHeaderItem(column)->text(), u(headers[column].text));
            QCOMPARE(trial.table->horizontalHeaderItem(column)->toolTip(), u(headers[column].tip));
        }
        QVERIFY(!trial.table->verticalHeader()->isVisibleTo(trial.table));
        QCOMPARE(trial.window->windowTitle(), u("DHCP Option Manager"));
        QStringList views;
        for (int i = 0; i < trial.selector->count(); ++i)
            views << trial.selector->itemText(i);
        QCOMPARE(views, QStringList({u("Show Custom Options"), u("Show Common Options"), u("Show All Options")}));
        // From top to bottom the header, the table and the row; in the row the selector left of the buttons.
        trial.window->resize(700, 500);
        trial.window->grab();
        const auto position = [&](const QWidget *widget) { return widget->mapTo(trial.window.get(), QPoint(0, 0)); };
        QVERIFY(position(trial.window->findChild<ConfigurationPageHeader *>()).y() < position(trial.table).y());
        QVERIFY(position(trial.table).y() < position(trial.selector).y());
        const QList<QWidget *> row = {trial.selector, trial.button(u("Apply")), trial.button(u("OK")),
                                      trial.button(u("Cancel"))};
        for (int i = 1; i < row.count(); ++i)
            QVERIFY(position(row.at(i - 1)).x() + row.at(i - 1)->width() <= position(row.at(i)).x());
        QVERIFY(position(row.at(1)).x() - row.at(0)->width() > 200); // the stretch
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

        // The order follows the new values.
        QVERIFY(trial.table->isSortingEnabled());
        for (int row = 1; row < 12; ++row) {
            const QTableWidgetItem *upper = trial.table->item(row - 1, column);
            const QTableWidgetItem *lower = trial.table->item(row, column);
            QVERIFY(order == Qt::AscendingOrder ? !(*lower < *upper) : !(*upper < *lower));
        }

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
        QVERIFY(trial.typeCode(u("edit"), u("999")));
        QCOMPARE(trial.cell(u("edit"), 1)->text(), u("12"));
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
                             {u("f-off"), 3, Predefined + classOf("always-off")}, {u("f-normal"), 4, Predefined}},
                    true);
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
        trial.table->sortByColumn(DhcpTable::KeyColumn, Qt::AscendingOrder);
        trial.window->apply();
        QTRY_COMPARE(m_root.recorded().count(), 3);
        QCOMPARE(m_root.recorded(), QStringList({ToolName + u("--add-new-option|once 30 text|--add-request|once"),
                                                 ToolName + u("--add-new-option|twice 20 text|--add-request|twice"),
                                                 u("dhclient|-1")}));
    }

    void details_data()
    {
        QTest::addColumn<QByteArray>("more");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<quint32>("applied");
        QTest::addColumn<quint32>("shown");
        QTest::newRow("all") << Custom + "<windows-name>W</windows-name><windows-type>Byte</windows-type>"
                                         "<description>D</description><example>E</example>"
                                         "<standard-option>yes</standard-option>"
                             << u("Standard DHCP Code: <b>250</b><br />Last Applied DHCP Code: <b>224</b><br />"
                                  "Name: <b>Name of %1</b><br />Windows DHCP Option Name: <b>W</b><br />"
                                  "Windows DHCP Option Type: <b>Byte</b><br />Linux DHCP Option Name: <b>%1</b><br />"
                                  "Linux DHCP Option Type: <b>text</b><br />Description: <b>D</b><br />"
                                  "Example: <b>E</b><br />Standard DHCP Option?  <b>Yes<b><br />") << 224u << 210u;
        QTest::newRow("custom") << Custom
                                << u("Standard DHCP Code: <b>250</b><br />Name: <b>Name of %1</b><br />"
                                     "Windows DHCP Option Type: <b>Unknown</b><br />"
                                     "Linux DHCP Option Name: <b>%1</b><br />Linux DHCP Option Type: <b>text</b><br />"
                                     "Standard DHCP Option?  <b>Ostrel Extension<b><br />") << 250u << 210u;
        QTest::newRow("predefined") << Predefined
                                    << u("Fixed DHCP Code: <b>250</b><br />Name: <b>Name of %1</b><br />"
                                         "Windows DHCP Option Type: <b>Unknown</b><br />"
                                         "Linux DHCP Option Name: <b>%1</b><br />"
                                         "Standard DHCP Option?  <b>Ostrel Extension<b><br />") << 224u << 250u;
    }

    void details()
    {
        QFETCH(QByteArray, more);
        QFETCH(QString, expected);
        const QString name = u("info-%1").arg(QString::fromUtf8(QTest::currentDataTag()));
        Trial trial(m_root, {{name, 250, more}});
        QFETCH(quint32, applied);
        QFETCH(quint32, shown);
        trial.options.at(0)->appliedCode = applied;
        trial.table->changeViewMode(ShowAll);
        trial.show();
        if (shown != 250)
            QVERIFY(trial.typeCode(name, QString::number(shown)));
        const QString whole = u("<i>Details on DHCP Option %1 -- Name of %2:</i>\n").arg(shown).arg(name)
            + expected.arg(name);
        int boxes = 0;
        for (int column = 1; column < 5; ++column) {
            const QString text = detailsShownBy([&] { trial.click(0, column); }, &boxes);
            QCOMPARE(text, column == DhcpTable::InfoColumn ? whole : QString());
            QCOMPARE(boxes, column == DhcpTable::InfoColumn ? 1 : 0);
        }
        struct Key
        {
            Qt::Key key = Qt::Key_unknown;
            Qt::KeyboardModifiers modifiers;
            int column = 0;
            bool opens = false;
        };
        const Key keys[] = {{Qt::Key_Return, Qt::NoModifier, 3, true}, {Qt::Key_Enter, Qt::KeypadModifier, 3, true},
                            {Qt::Key_Space, Qt::NoModifier, 3, true}, {Qt::Key_F1, Qt::NoModifier, 0, true},
                            {Qt::Key_Return, Qt::ControlModifier, 3, false},
                            {Qt::Key_Return, Qt::NoModifier, 2, false}};
        for (const Key &key : keys) {
            trial.table->setCurrentCell(0, key.column);
            QCOMPARE(detailsShownBy([&] { QTest::keyClick(trial.table, key.key, key.modifiers); }, &boxes),
                     key.opens ? whole : QString());
            QCOMPARE(boxes, key.opens ? 1 : 0);
            QVERIFY(!key.opens || !trial.table->item(0, DhcpTable::InfoColumn)->isSelected());
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
        // By the time the tool runs, the requested state is in the registry.
        m_root.installRecorder(u("/usr/sbin/kiro-dhclient-edit"),
                               "[ \"$(sqlite3 \"$KIRO_DHCP_MGR_ROOT/var/lib/vorkan/registry.db\""
                               " \"SELECT value FROM entry WHERE key = 'root/DHCP/Req_button'\")\" = 0 ] || exit");
        QTest::mouseClick(trial.button(u("Apply")), Qt::LeftButton);
        QTRY_COMPARE(m_root.recorded(),
                     QStringList({ToolName + u("--del-new-option|button 200 text|--del-request|button"),
                                  u("dhclient|-1")}));
        m_root.installRecorder(u("/usr/sbin/kiro-dhclient-edit"));
        m_root.forgetRecorded();
        trial.tick(u("button"));
        QTimer::singleShot(0, [&] { QTest::mouseClick(trial.button(u("OK")), Qt::LeftButton); });
        QCOMPARE(QApplication::exec(), 0);
        QTRY_COMPARE(m_root.recorded(),
                     QStringList({ToolName + u("--add-new-option|button 200 text|--add-request|button"),
                                  u("dhclient|-1")}));
        m_root.forgetRecorded();
        trial.tick(u("button"));
        QTimer::singleShot(0, [&] { trial.window->close(); });
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(m_root.recorded(), QStringList());
    }

    /// A button's letter works while a code is being typed, and takes the code along.
    void applyWhileEditing()
    {
        Trial trial(m_root, {{u("typing"), 200, Custom}});
        trial.show();
        QApplication::setActiveWindow(trial.window.get());
        trial.table->setFocus();
        trial.table->setCurrentCell(0, DhcpTable::CodeColumn);
        QTest::keyClick(trial.table, Qt::Key_F2);
        auto *editor = trial.table->viewport()->findChild<QLineEdit *>();
        QVERIFY(editor);
        QTest::keyClicks(editor, u("240"));
        QTest::keyClick(editor, Qt::Key_A, Qt::AltModifier);
        QTRY_COMPARE(m_root.recorded().count(), 2);
        QVERIFY(m_root.recorded().at(0).contains(u("--add-new-option|typing 240 text")));
    }

    /// Tab must reach every control in the order of the layout, and leave the table again.
    void tabOrder()
    {
        Trial trial(m_root, {{u("key"), 200, Custom}});
        trial.show();
        QApplication::setActiveWindow(trial.window.get());
        trial.table->setFocus();
        const QList<QWidget *> order = {trial.table, trial.selector, trial.button(u("Apply")), trial.button(u("OK")),
                                        trial.button(u("Cancel"))};
        for (QWidget *widget : order) {
            QCOMPARE(QApplication::focusWidget(), widget);
            QTest::keyClick(widget, Qt::Key_Tab);
        }
    }

    /// The keyboard always has a cell to start from, and never one that is not shown.
    void keyboardCell()
    {
        Trial trial(m_root, {{u("key-fixed"), 1, Predefined + classOf("always-on")},
                             {u("key-known"), 2, Predefined}, {u("key-custom"), 200, Custom}});
        trial.selector->setCurrentIndex(ShowAll);
        trial.show();
        QApplication::setActiveWindow(trial.window.get());
        trial.table->setFocus();
        QCOMPARE(trial.table->currentRow(), 0); // although its first cell is disabled
        QVERIFY(trial.table->currentItem()->flags().testFlag(Qt::ItemIsEnabled));
        trial.table->setCurrentCell(1, DhcpTable::RequestedColumn);
        trial.selector->setCurrentIndex(ShowCustom);
        QCOMPARE(trial.table->currentRow(), 2);
        QTest::keyClick(trial.table, Qt::Key_Space);
        QCOMPARE(trial.cell(u("key-known"), 0)->checkState(), Qt::Checked);
        QCOMPARE(trial.cell(u("key-custom"), 0)->checkState(), Qt::Unchecked);

        trial.table->setCurrentCell(2, DhcpTable::RequestedColumn);
        QTest::keyClick(trial.table, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(trial.table->horizontalHeader()->sortIndicatorSection(), 0);
        QCOMPARE(trial.table->horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
        QTest::keyClick(trial.table, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(trial.table->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    }

    /// The cells as a screen reader asks for them: name, description, whether checkable and whether checked.
    void accessibleCells()
    {
        Trial trial(m_root, {{u("spoken"), 200, Custom}, {u("fixed"), 201, Custom + classOf("always-on")},
                             {u("idle"), 202, Custom + "<default>no</default>"}, {u("known"), 203, Predefined},
                             {u("spoken"), 204, Custom}});
        trial.selector->setCurrentIndex(ShowAll);
        QAccessibleInterface *table = QAccessible::queryAccessibleInterface(trial.table);
        QCOMPARE(table->text(QAccessible::Name), u("DHCP options"));
        QCOMPARE(table->role(), QAccessible::Table);
        const char *expected[][5] = {
            {"Requested: Name of spoken||checkable|checked", "DHCP Code: 200|Editable||", "Name: Name of spoken|||",
             "Info: Name of spoken|||", "Current Value: N/A|||"},
            {"Requested: Always|Disabled||", "DHCP Code: 201|Editable||", "Name: Name of fixed|||",
             "Info: Name of fixed|||", "Current Value: N/A|||"},
            {"Requested: Name of idle||checkable|", "DHCP Code: 202|Disabled||", "Name: Name of idle|Disabled||",
             "Info: Name of idle|||", "Current Value: N/A|Disabled||"},
            {"Requested: Name of known||checkable|checked", "DHCP Code: 203|||", "Name: Name of known|||",
             "Info: Name of known|||", "Current Value: N/A|||"},
            {"|||", "|||", "|||", "|||", "|||"}};
        for (int row = 0; row < 5; ++row) {
            for (int column = 0; column < 5; ++column) {
                QAccessibleInterface *cell = table->tableInterface()->cellAt(row, column);
                QCOMPARE(cell->role(), QAccessible::Cell);
                const QString checkable = cell->state().checkable ? u("checkable") : QString();
                const QString checked = cell->state().checked ? u("checked") : QString();
                const QStringList told{cell->text(QAccessible::Name), cell->text(QAccessible::Description), checkable,
                                       checked};
                QCOMPARE(told.join(QLatin1Char('|')), u(expected[row][column]));
            }
        }
        trial.cell(u("idle"), DhcpTable::RequestedColumn)->setCheckState(Qt::Checked);
        QVERIFY(table->tableInterface()->cellAt(2, 0)->state().checked);
        QCOMPARE(table->tableInterface()->cellAt(2, 1)->text(QAccessible::Description), QString());
    }

    /// All that is not a cell: role, name, keys, and what the keyboard can reach.
    void accessibleControls()
    {
        Trial trial(m_root, {{u("spoken"), 200, Custom}});
        trial.show();
        const QStringList window = spokenBy(trial.window.get());
        for (const char *control : {"Window|DHCP Option Manager||", "StaticText|DHCP Option Manager||",
                                    "Table|DHCP options||", "ColumnHeader|Requested||", "ColumnHeader|DHCP Code||",
                                    "ColumnHeader|Name||", "ColumnHeader|Info||", "ColumnHeader|Current Value||",
                                    "Button|Apply|Alt+A|focusable", "Button|OK|Alt+O|focusable",
                                    "Button|Cancel|Alt+C|focusable", "ComboBox|Show Custom Options|Down|focusable",
                                    "ListItem|Show Custom Options||focusable",
                                    "ListItem|Show Common Options||focusable", "ListItem|Show All Options||focusable"})
            QVERIFY2(window.count(u(control)) == 1, control);
        // Whatever the keyboard reaches has a name.
        QVERIFY(window.filter(QRegularExpression(u("^[A-Za-z]+\\|\\|.*focusable$"))).isEmpty());

        const auto labels = QAccessible::queryAccessibleInterface(trial.selector)->relations(QAccessible::Label);
        QCOMPARE(labels.count(), 1);
        QCOMPARE(labels.at(0).first->text(QAccessible::Name), u("Options to show"));

        QStringList box;
        QTimer::singleShot(0, [&box] {
            QWidget *shown = QApplication::activeModalWidget();
            box = spokenBy(shown);
            shown->close();
        });
        trial.click(0, DhcpTable::InfoColumn);
        QVERIFY(box.contains(u("AlertMessage|Details on DHCP Option 200 -- Name of spoken:||")));
        QVERIFY(box.contains(u("Button|OK|Enter|focusable")));
        QCOMPARE(box.filter(QRegularExpression(u("^StaticText\\|Standard DHCP Code: 200\n.*\\|focusable$"),
                                               QRegularExpression::DotMatchesEverythingOption)).count(), 1);
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

    /// Grows with each transaction that writes (SQLite database file format, file change counter).
    quint32 changeCounter() const
    {
        QFile file(m_root.path(u("/var/lib/vorkan/registry.db")));
        if (!file.open(QIODevice::ReadOnly) || !file.seek(24))
            return 0;
        return qFromBigEndian<quint32>(file.read(4).constData());
    }

    TrialRoot m_root;
};

QTEST_MAIN(TestTable)
#include "tst_table.moc"
