// The option table, driven through Qt's events.

#include "windowtrial.h"

#include <QHeaderView>
#include <QtEndian>

class TestTable : public QObject
{
    Q_OBJECT

private slots:
    void init() { installRecorders(root); }

    void cells()
    {
        const CapturedErrors errors;
        const WindowTrial trial(root, {{u("cells-off"), 7, Custom + classOf("always-off")},
                                         {u("cells-managed"), 43,
                                          Predefined + classOf("managed") + "<default>no</default>"},
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
        QCOMPARE(root.sql(u("SELECT key, type, value FROM entry WHERE key LIKE '%cells%' ORDER BY key")),
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
        const QString name
            = u("stored-") + QString::fromUtf8(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('-'));
        const QList<WindowTrial::Definition> definitions = {{name, 200, more}, {name + u("-2"), 201, more}};
        { // the first run makes both entries, by one commit
            const quint32 before = changeCounter();
            const WindowTrial first(root, definitions);
            QCOMPARE(changeCounter(), before + 1);
        }
        root.sql(u("UPDATE entry SET value = '%1' WHERE key = 'root/DHCP/Req_%2'").arg(stored, name));
        const quint32 before = changeCounter();
        const WindowTrial trial(root, definitions);
        QCOMPARE(changeCounter(), before);
        QTEST(trial.cell(name, 0)->text(), "text");
        QCOMPARE(trial.cell(name, 4)->flags().testFlag(Qt::ItemIsEnabled), requested);
        QCOMPARE(trial.options.at(0)->appliedRequested, requested);
        trial.window->apply();
        QCOMPARE(root.sql(u("SELECT value FROM entry WHERE key = 'root/DHCP/Req_%1'").arg(name)),
                 QStringList(requested ? u("1") : u("0")));
        QTRY_COMPARE(root.recorded(), QStringList(u("dhclient|-1")));
    }

    void views()
    {
        WindowTrial trial(root, {{u("v-custom"), 1, Custom},
                                   {u("v-hidden"), 2, Custom + "<hide-option>yes</hide-option>"},
                                   {u("v-known"), 3, Predefined},
                                   {u("v-known-hidden"), 4, Predefined + "<hide-option>yes</hide-option>"}});
        trial.show();
        QCOMPARE(trial.selector->currentText(), u("Show Custom Options"));
        QCOMPARE(trial.visibleNames(), QStringList(u("v-custom")));
        QTest::keyClick(trial.selector, Qt::Key_Down);
        QCOMPARE(trial.visibleNames(), QStringList({u("v-custom"), u("v-known")}));
        trial.table->sortByColumn(NameColumn, Qt::DescendingOrder);
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
        QList<WindowTrial::Definition> definitions;
        for (int i = 0; i < 12; ++i) {
            const QByteArray hidden = i % 4 == 3 ? "<hide-option>yes</hide-option>" : "";
            definitions.append({prefix + QString::number(i), 150 + 3 * i, Custom + hidden});
            root.setValue(definitions.last().name, "x=old");
        }
        WindowTrial trial(root, definitions);
        trial.show();
        trial.table->sortByColumn(column, order);
        const QStringList visible = trial.visibleNames();
        QCOMPARE(visible.count(), 9);

        // Refresh: values whose order turns over, some of them equal.
        for (int i = 0; i < 12; ++i)
            root.setValue(definitions.at(i).name, "x=new" + QByteArray::number((20 - i) / 2));
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
        QTRY_COMPARE(root.recorded().count(), 3);
        QStringList recorded = root.recorded();
        recorded.sort();
        QCOMPARE(recorded, QStringList({u("dhclient|-1"),
                                        ToolName + u("--del-new-option|%1 150 text|--del-new-option|%1 150 text|"
                                                     "--add-new-option|%1 251 text|--add-request|%1").arg(edited),
                                        ToolName + u("--del-new-option|%1 165 text|--del-request|%1").arg(unticked)}));
        QCOMPARE(root.sql(u("SELECT value FROM entry WHERE key IN ('root/DHCP/Code_%1', 'root/DHCP/Req_%2')"
                              " ORDER BY key").arg(edited, unticked)), QStringList({u("251"), u("0")}));
        root.forgetRecorded();
        trial.window->apply();
        QTRY_COMPARE(root.recorded(), QStringList(u("dhclient|-1")));
    }

    void editing()
    {
        WindowTrial trial(root, {{u("edit"), 7, Custom}, {u("edit-known"), 8, Predefined}});
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
        WindowTrial trial(root, {{u("f-managed"), 1, Predefined + classOf("managed")},
                                   {u("f-on"), 2, Predefined + classOf("always-on")},
                                   {u("f-off"), 3, Predefined + classOf("always-off")}, {u("f-normal"), 4, Predefined}},
                          true);
        trial.window->apply();
        QTRY_COMPARE(root.recorded(), QStringList({ToolName + u("--add-request|f-on"),
                                                     ToolName + u("--add-request|f-normal"), u("dhclient|-1")}));
    }

    void repeatedName()
    {
        const CapturedErrors errors;
        WindowTrial trial(root, {{u("twice"), 20, Custom}, {u("once"), 30, Custom}, {u("twice"), 10, Custom}}, true);
        QCOMPARE(errors.text(), u("Error: linux-name repeated: 'twice'\n"));
        trial.show();
        for (int column = 0; column < 6; ++column) {
            trial.table->sortByColumn(column, column % 2 ? Qt::AscendingOrder : Qt::DescendingOrder);
            for (int mode = 0; mode < 3; ++mode)
                trial.table->changeViewMode(mode);
            trial.table->refreshValues();
            int empty = 0;
            while (trial.table->item(empty, KeyColumn))
                ++empty;
            QCOMPARE(detailsShownBy([&] {
                for (int cell = 0; cell < 5; ++cell)
                    trial.click(empty, cell);
                trial.table->setCurrentCell(empty, InfoColumn);
                QTest::keyClick(trial.table, Qt::Key_Return);
            }), QString());
        }
        trial.table->sortByColumn(KeyColumn, Qt::AscendingOrder);
        trial.window->apply();
        QTRY_COMPARE(root.recorded().count(), 3);
        QCOMPARE(root.recorded(), QStringList({ToolName + u("--add-new-option|once 30 text|--add-request|once"),
                                                 ToolName + u("--add-new-option|twice 20 text|--add-request|twice"),
                                                 u("dhclient|-1")}));
    }

    void emptyList()
    {
        root.sql(u("DELETE FROM entry"));
        const WindowTrial trial(root, {}, true);
        QCOMPARE(trial.table->columnCount(), 6);
        trial.table->refreshValues();
        trial.window->apply();
        QTRY_COMPARE(root.recorded(), QStringList(u("dhclient|-1")));
        QCOMPARE(root.sql(u("SELECT count(*) FROM entry")), QStringList(u("0")));
    }

private:
    static QString u(const char *text) { return QString::fromUtf8(text); }

    /// Grows with each transaction that writes (SQLite database file format, file change counter).
    quint32 changeCounter() const
    {
        QFile file(root.path(u("/var/lib/vorkan/registry.db")));
        if (!file.open(QIODevice::ReadOnly) || !file.seek(24))
            return 0;
        return qFromBigEndian<quint32>(file.read(4).constData());
    }

    TrialRoot root;
};

QTEST_MAIN(TestTable)
#include "tst_table.moc"
