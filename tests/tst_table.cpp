// The option table, driven through Qt's events.

#include "windowtest.h"

#include <QScreen>

namespace {

/// A cell's text; flags (1 selectable, 2 editable, 16 checkable, 32 enabled), alignment; then letters: [+] or [-] for a
/// box, bold, italic, picture; at the end what its tooltip stresses.
QString looks(const QTableWidgetItem &cell)
{
    QString seen = QString("%1/%2/%3").arg(cell.text()).arg(cell.flags()).arg(cell.textAlignment() - Qt::AlignVCenter);
    const QVariant box = cell.data(Qt::CheckStateRole);
    seen += !box.isValid() ? "" : box.toInt() == Qt::Checked ? "+" : "-";
    seen += cell.font().weight() == 75 ? "B" : "";
    seen += cell.font().italic() ? "I" : "";
    seen += cell.icon().availableSizes().isEmpty() ? "" : "P";
    return seen + cell.toolTip().section('>', 1, 1).section('<', 0, 0);
}

} // namespace

class TestTable : public WindowTest
{
    Q_OBJECT

private slots:
    /// What is stored wins over a Normal option's default; the other classes win over what is stored.
    void cells_data()
    {
        addRows(R"(
            never ; always-off ; 1 ; Never/0/4never|007/3/2BP|Never/0/1I|/33/4P|N/A/0/1
            managed ; known managed off ; 0 ; */0/4|007/32/2|Managed/32/1I|/33/4P|N/A/32/1
            always ; known always-on <standard-option>yes</standard-option> ; 0 ; Always/0/4always|007/32/2|Always/32/1|/33/4P|N/A/32/1
            on ;  ;  ; /48/4+|007/35/2BP|On/32/1I|/33/4P|N/A/32/1
            off ; off ;  ; /48/4-|007/3/2BP|Off/0/1I|/33/4P|N/A/0/1
            stored-on ; known off ; 1 ; /48/4+|007/32/2|Stored-on/32/1I|/33/4P|N/A/32/1
            stored-off ; known ; 0 ; /48/4-|007/0/2|Stored-off/0/1I|/33/4P|N/A/0/1)");
    }

    void cells()
    {
        QFETCH(QStringList, cells);
        const QString where = "WHERE key = 'root/DHCP/Req_" + cells.at(0) + "'";
        if (!cells.at(2).isEmpty())
            root.sql(QString("INSERT INTO entry VALUES('root/DHCP/Req_%1', 10, '%2')").arg(cells.at(0), cells.at(2)));
        open({"upper 43", cells.at(0) + " 7 " + cells.at(1)});
        QStringList row; // sorted by code
        for (int column = RequestedColumn; column < KeyColumn; ++column)
            row << looks(*table->item(0, column));
        QCOMPARE(row.join('|'), cells.at(3));
        QCOMPARE(root.sql("SELECT type FROM entry " + where), QStringList("10")); // stored at once
        window->apply();
        QCOMPARE(recorded(1), QStringList("dhclient|-1")); // nothing has changed
        QCOMPARE(root.sql("SELECT value FROM entry " + where), QStringList(cells.at(3).endsWith("/32/1") ? "1" : "0"));
    }

    void views()
    {
        open({"hidden 1 hidden", "known 2 known", "hidden-and-with-a-long-name 3 known hidden", "custom 4"});
        const int width = table->columnWidth(NameColumn);
        for (const QString expected : {"Show Custom Options 4", "Show Common Options 24", "Show All Options 1234"}) {
            table->changeViewMode(3); // no such view
            QString seen = selector->currentText() + ' ';
            for (int row = 0; row < 4; ++row)
                seen += table->isRowHidden(row) ? "" : table->item(row, CodeColumn)->text().right(1);
            QCOMPARE(seen, expected);
            QTest::keyClick(selector, Qt::Key_Down);
        }
        QVERIFY(table->columnWidth(NameColumn) > width); // fits again
        open({"known 3 known"});
        const auto *hint = table->viewport()->findChild<QLabel *>();
        QVERIFY(hint->isVisible() && hint->text().contains("Choose another"));
        table->changeViewMode(ShowCommon);
        QVERIFY(!hint->isVisible());
    }

    /// Whatever the server sends, the window fits the screen.
    void widths()
    {
        const int screen = QGuiApplication::primaryScreen()->availableSize().width();
        for (const auto &[nameLength, valueLength] : {std::pair(5, 5), {5, 300}, {100, 5}, {100, 300}}) {
            const QString name(nameLength, 'n');
            root.setValue(name, "x=" + QByteArray(valueLength, 'v'));
            open({name + " 200"});
            QCOMPARE(table->minimumWidth() - table->horizontalHeader()->length(), 46);
            QVERIFY(table->minimumWidth() <= screen && table->columnWidth(ValueColumn) <= screen / 3);
            const auto isWhole = [&](int column) {
                return table->columnWidth(column) >= table->fontMetrics().horizontalAdvance(cell(name, column)->text());
            };
            QVERIFY(isWhole(NameColumn) == (nameLength == 5) && isWhole(ValueColumn) == (valueLength == 5));
        }
    }

    /// Every operation must reach its option by whatever column the table is sorted, also among equal texts.
    void rightRow_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<Qt::SortOrder>("order");
        for (int i = 0; i < 12; ++i)
            QTest::addRow("%d", i) << i / 2 << Qt::SortOrder(i % 2);
    }

    void rightRow()
    {
        QFETCH(int, column);
        QFETCH(Qt::SortOrder, order);
        const QString prefix = QTest::currentDataTag();
        const auto name = [&](int i) { return QString("%1-%2").arg(prefix).arg(i); };
        QStringList definitions;
        for (int i = 0; i < 12; ++i) {
            definitions << QString("%1 %2 %3").arg(name(i)).arg(150 + 3 * i).arg(i == 3 ? "hidden" : "");
            root.setValue(name(i), "x=old");
        }
        open(definitions);
        table->sortByColumn(column, order);
        // Values whose order turns over, some of them equal
        for (int i = 0; i < 12; ++i)
            root.setValue(name(i), "x=new" + QByteArray::number((20 - i) / 2));
        table->refreshValues();
        for (int row = 1; row < 12; ++row) {
            const QTableWidgetItem *upper = table->item(row - 1, column);
            const QTableWidgetItem *lower = table->item(row, column);
            QVERIFY(order == Qt::AscendingOrder ? !(*lower < *upper) : !(*upper < *lower));
        }
        for (const int i : {5, 6, 6}) // the last one off and on again
            click(row(name(i)), RequestedColumn);
        window->resize(780, 300); // not all rows are in sight
        for (const char *code : {"0", "256", "x1", "", "0251"}) {
            cell(name(0), CodeColumn)->setText(code);
            QCOMPARE(cell(name(0), CodeColumn)->text().toInt(), *code && code[1] == '2' ? 251 : 150);
        }
        const QRect inSight = table->viewport()->rect();
        QVERIFY(eventually([&] { return inSight.contains(table->visualItemRect(cell(name(0), CodeColumn))); }));
        for (int i = 0; i < 12; ++i) {
            QCOMPARE(cell(name(i), ValueColumn)->text(), QString("new%1").arg((20 - i) / 2));
            QCOMPARE(table->isRowHidden(row(name(i))), i == 3);
            QCOMPARE(options.at(i)->code, i == 0 ? 251u : 150 + 3 * static_cast<quint32>(i));
            for (const int changed : {int(CodeColumn), int(InfoColumn), int(KeyColumn)})
                QVERIFY(i < 5 || i > 6 || cell(name(i), changed)->flags() == cell(name(i), NameColumn)->flags());
            QCOMPARE(cell(name(i), NameColumn)->flags(), i == 5 ? Qt::NoItemFlags : Qt::ItemIsEnabled);
        }
        window->apply();
        QCOMPARE(root.sql("SELECT value FROM entry WHERE key = 'root/DHCP/Code_" + name(0) + "'"), QStringList("251"));
        window->apply(); // nothing is left to apply
        const QString calls = recorded(4).join('\n');
        QCOMPARE(calls.count("kiro-dhclient-edit|"), 2);
        QVERIFY(calls.contains("--add-new-option|" + name(0) + " 251 text|"));
        QVERIFY(calls.contains("|--del-request|" + name(5)));
    }

    /// A forced apply takes every option that is for this program to apply; a repeated name's row stays empty.
    void forcedApply()
    {
        const CapturedErrors errors;
        open({"managed 1 managed", "on 2 always-on", "off 3 always-off", "twice 20", "twice 10"}, true);
        QCOMPARE(errors.text(), QString("Error: linux-name repeated: 'twice'\n"));
        table->refreshValues();
        click(4, InfoColumn);
        window->apply();
        QCOMPARE(recorded(3),
                 QStringList({"dhclient|-1", "kiro-dhclient-edit|--add-new-option|on 2 text|--add-request|on",
                              "kiro-dhclient-edit|--add-new-option|twice 20 text|--add-request|twice"}));
    }
};

QTEST_MAIN(TestTable)
#include "tst_table.moc"
