// The window around the option table: details, buttons, keyboard, and what a screen reader learns.

#include "configurationpageheader.h"
#include "windowtrial.h"

#include <QAccessible>
#include <QHeaderView>
#include <QMetaEnum>
#include <QRegularExpression>

#include <functional>

namespace {

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

} // namespace

class TestWindow : public QObject
{
    Q_OBJECT

private slots:
    void init() { installRecorders(root); }

    void texts()
    {
        const WindowTrial trial(root, {});
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
        WindowTrial trial(root, {{name, 250, more}});
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
            QCOMPARE(text, column == InfoColumn ? whole : QString());
            QCOMPARE(boxes, column == InfoColumn ? 1 : 0);
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
            QVERIFY(!key.opens || !trial.table->item(0, InfoColumn)->isSelected());
        }
    }

    void equalCodesShowTheFirst()
    {
        WindowTrial trial(root, {{u("equal-b"), 240, Custom}, {u("equal-a"), 240, Custom}});
        trial.show();
        for (int row = 0; row < 2; ++row)
            QVERIFY(detailsShownBy([&] { trial.click(row, InfoColumn); })
                        .startsWith(u("<i>Details on DHCP Option 240 -- Name of equal-b:</i>")));
    }

    void buttons()
    {
        WindowTrial trial(root, {{u("button"), 200, Custom}});
        trial.show();
        trial.tick(u("button"));
        QTimer::singleShot(0, [&] { QTest::mouseClick(trial.button(u("Cancel")), Qt::LeftButton); });
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(root.recorded(), QStringList());
        // By the time the tool runs, the requested state is in the registry.
        root.installRecorder(u("/usr/sbin/kiro-dhclient-edit"),
                               "[ \"$(sqlite3 \"$KIRO_DHCP_MGR_ROOT/var/lib/vorkan/registry.db\""
                               " \"SELECT value FROM entry WHERE key = 'root/DHCP/Req_button'\")\" = 0 ] || exit");
        QTest::mouseClick(trial.button(u("Apply")), Qt::LeftButton);
        QTRY_COMPARE(root.recorded(),
                     QStringList({ToolName + u("--del-new-option|button 200 text|--del-request|button"),
                                  u("dhclient|-1")}));
        root.installRecorder(u("/usr/sbin/kiro-dhclient-edit"));
        root.forgetRecorded();
        trial.tick(u("button"));
        QTimer::singleShot(0, [&] { QTest::mouseClick(trial.button(u("OK")), Qt::LeftButton); });
        QCOMPARE(QApplication::exec(), 0);
        QTRY_COMPARE(root.recorded(),
                     QStringList({ToolName + u("--add-new-option|button 200 text|--add-request|button"),
                                  u("dhclient|-1")}));
        root.forgetRecorded();
        trial.tick(u("button"));
        QTimer::singleShot(0, [&] { trial.window->close(); });
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(root.recorded(), QStringList());
    }

    /// A button's letter works while a code is being typed, and takes the code along.
    void applyWhileEditing()
    {
        WindowTrial trial(root, {{u("typing"), 200, Custom}});
        trial.show();
        QApplication::setActiveWindow(trial.window.get());
        trial.table->setFocus();
        trial.table->setCurrentCell(0, CodeColumn);
        QTest::keyClick(trial.table, Qt::Key_F2);
        auto *editor = trial.table->viewport()->findChild<QLineEdit *>();
        QVERIFY(editor);
        QTest::keyClicks(editor, u("240"));
        QTest::keyClick(editor, Qt::Key_A, Qt::AltModifier);
        QTRY_COMPARE(root.recorded().count(), 2);
        QVERIFY(root.recorded().at(0).contains(u("--add-new-option|typing 240 text")));
    }

    /// Tab must reach every control in the order of the layout, and leave the table again.
    void tabOrder()
    {
        WindowTrial trial(root, {{u("key"), 200, Custom}});
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
        WindowTrial trial(root, {{u("key-fixed"), 1, Predefined + classOf("always-on")},
                                   {u("key-known"), 2, Predefined}, {u("key-custom"), 200, Custom}});
        trial.selector->setCurrentIndex(ShowAll);
        trial.show();
        QApplication::setActiveWindow(trial.window.get());
        trial.table->setFocus();
        QCOMPARE(trial.table->currentRow(), 0); // although its first cell is disabled
        QVERIFY(trial.table->currentItem()->flags().testFlag(Qt::ItemIsEnabled));
        trial.table->setCurrentCell(1, RequestedColumn);
        trial.selector->setCurrentIndex(ShowCustom);
        QCOMPARE(trial.table->currentRow(), 2);
        QTest::keyClick(trial.table, Qt::Key_Space);
        QCOMPARE(trial.cell(u("key-known"), 0)->checkState(), Qt::Checked);
        QCOMPARE(trial.cell(u("key-custom"), 0)->checkState(), Qt::Unchecked);

        trial.table->setCurrentCell(2, RequestedColumn);
        QTest::keyClick(trial.table, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(trial.table->horizontalHeader()->sortIndicatorSection(), 0);
        QCOMPARE(trial.table->horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
        QTest::keyClick(trial.table, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(trial.table->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    }

    /// The cells as a screen reader asks for them: name, description, whether checkable and whether checked.
    void accessibleCells()
    {
        WindowTrial trial(root, {{u("spoken"), 200, Custom}, {u("fixed"), 201, Custom + classOf("always-on")},
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
        trial.cell(u("idle"), RequestedColumn)->setCheckState(Qt::Checked);
        QVERIFY(table->tableInterface()->cellAt(2, 0)->state().checked);
        QCOMPARE(table->tableInterface()->cellAt(2, 1)->text(QAccessible::Description), QString());
    }

    /// All that is not a cell: role, name, keys, and what the keyboard can reach.
    void accessibleControls()
    {
        WindowTrial trial(root, {{u("spoken"), 200, Custom}});
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
        trial.click(0, InfoColumn);
        QVERIFY(box.contains(u("AlertMessage|Details on DHCP Option 200 -- Name of spoken:||")));
        QVERIFY(box.contains(u("Button|OK|Enter|focusable")));
        QCOMPARE(box.filter(QRegularExpression(u("^StaticText\\|Standard DHCP Code: 200\n.*\\|focusable$"),
                                               QRegularExpression::DotMatchesEverythingOption)).count(), 1);
    }

private:
    static QString u(const char *text) { return QString::fromUtf8(text); }

    TrialRoot root;
};

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
