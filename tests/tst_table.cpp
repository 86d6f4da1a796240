// The option table, driven through Qt's events.

#include "windowtest.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QScreen>
#include <QScrollBar>

/// A cell's text; flags (1 selectable, 2 editable, 16 checkable, 32 enabled), alignment; then letters: [+] or [-] for a
/// box, bold, italic, picture; at the end its tooltip's fourth word, and the first letter of what a screen reader adds.
static QString looks(const QTableWidgetItem &cell)
{
    QString seen = QString("%1/%2/%3").arg(cell.text()).arg(cell.flags()).arg(cell.textAlignment() - Qt::AlignVCenter);
    const QVariant box = cell.data(Qt::CheckStateRole);
    seen += !box.isValid() ? "" : box.toInt() == Qt::Checked ? "+" : "-";
    seen += cell.font().weight() == 75 ? "B" : "";
    seen += cell.font().italic() ? "I" : "";
    seen += cell.icon().availableSizes().isEmpty() ? "" : "P";
    seen += cell.toolTip().section(' ', 3, 3);
    return seen + cell.data(Qt::AccessibleDescriptionRole).toString().left(1);
}

class TestTable : public WindowTest
{
    Q_OBJECT

private slots:
    /// What is stored wins over a Normal option's default; the other classes win over what is stored.
    void cells_data()
    {
        addRows(R"(
            never ; dhcp-class=always-off ; 1 ; Never/0/4<i>never</i>D|007/3/2BPD|NEVER/0/1ID|/33/4P|N/A/0/1D
            managed ; linux-predefined=yes dhcp-class=managed default=no ; 0 ; */0/4managedD|007/32/2|MANAGED/32/1I|/33/4P|N/A/32/1
            always ; linux-predefined=yes dhcp-class=always-on standard-option=yes ; 0 ; Always/0/4<i>always</i>D|007/32/2|ALWAYS/32/1|/33/4P|N/A/32/1
            on ;  ;  ; /48/4+T|007/35/2BPE|ON/32/1I|/33/4P|N/A/32/1
            off ; default=no ;  ; /48/4-N|007/3/2BPD|OFF/0/1ID|/33/4P|N/A/0/1D
            stored-on ; linux-predefined=yes default=no ; 1 ; /48/4+T|007/32/2|STORED-ON/32/1I|/33/4P|N/A/32/1)");
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
        const auto spoken = [&](int column) { return table->item(0, column)->data(Qt::AccessibleTextRole).toString(); };
        QCOMPARE(spoken(CodeColumn) + spoken(InfoColumn), "DHCP Code: 007Info: " + cells.at(0).toUpper());
        QCOMPARE(root.sql("SELECT type FROM entry " + where), QStringList("10")); // stored at once
        window->apply();
        QCOMPARE(root.recorded(1), QStringList("dhclient|-1")); // nothing has changed
        QCOMPARE(root.sql("SELECT value FROM entry " + where), QStringList(cells.at(3).endsWith("/32/1") ? "1" : "0"));
    }

    /// In each view the keyboard has a cell to start from, and never one that is disabled or not shown.
    void views()
    {
        open({"hidden 1 hide-option=yes", "known 2 linux-predefined=yes", "fixed 4 dhcp-class=always-on", "last 5",
              "hidden-and-with-a-long-name 3 linux-predefined=yes hide-option=yes"});
        const int width = table->columnWidth(NameColumn);
        QVERIFY(!table->viewport()->findChild<QLabel *>()->isVisible());
        QCOMPARE(table->currentItem(), cell("fixed", CodeColumn));
        table->changeViewMode(ShowAll);
        table->setCurrentCell(row("known"), RequestedColumn);
        table->changeViewMode(ShowCustom);
        QCOMPARE(table->currentItem(), cell("fixed", CodeColumn));
        for (const QString expected : {"Show Custom Options 45", "Show Common Options 245", "Show All Options 12345"}) {
            table->changeViewMode(3); // no such view
            QString seen = selector->currentText() + ' ';
            for (int row = 0; row < 5; ++row)
                seen += table->isRowHidden(row) ? "" : table->item(row, CodeColumn)->text().right(1);
            QCOMPARE(seen, expected);
            QTest::keyClick(selector, Qt::Key_Down);
        }
        QVERIFY(table->columnWidth(NameColumn) > width); // fits again
        open({"known 3 linux-predefined=yes"});
        const auto *hint = table->viewport()->findChild<QLabel *>();
        QVERIFY(hint->isVisible() && hint->text().contains("Choose another") && hint->wordWrap());
        QVERIFY(hint->alignment() == Qt::AlignCenter && hint->width() > table->viewport()->width() / 2);
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
            const int others = table->horizontalHeader()->length() - table->columnWidth(ValueColumn);
            QVERIFY(table->minimumWidth() <= screen && table->minimumWidth() - others - 46 <= screen / 3);
            QVERIFY(!table->horizontalScrollBar()->isVisible());
            const QAbstractItemView *view = table;
            QVERIFY((view->sizeHintForColumn(NameColumn) <= table->columnWidth(NameColumn)) == (nameLength == 5));
            QVERIFY((view->sizeHintForColumn(ValueColumn) <= table->columnWidth(ValueColumn)) == (valueLength == 5));
        }
    }

    /// Every operation must reach its option by whatever column the table is sorted, also among equal texts.
    void rightRow()
    {
        for (int column = RequestedColumn; column <= KeyColumn; ++column) {
            const auto name = [&](int i) { return QString("%1-%2").arg(column).arg(i); };
            QStringList definitions;
            for (int i = 0; i < 12; ++i) {
                definitions << QString("%1 %2 %3").arg(name(i)).arg(150 + 3 * i).arg(i == 3 ? "hide-option=yes" : "");
                root.setValue(name(i), "x=old");
            }
            open(definitions);
            table->sortByColumn(column, Qt::DescendingOrder);
            // Values whose order turns over, some of them equal
            for (int i = 0; i < 12; ++i)
                root.setValue(name(i), "x=new" + QByteArray::number((20 - i) / 2));
            table->refreshValues();
            for (const int i : {5, 6, 6}) // the last one off and on again
                click(row(name(i)), RequestedColumn);
            window->resize(780, 300); // not all rows are in sight
            table->setCurrentItem(cell(name(0), CodeColumn));
            cell(name(0), CodeColumn)->setText("0251");
            cell(name(0), CodeColumn)->setText("256");
            QCOMPARE(cell(name(0), CodeColumn)->text(), QString("251"));
            for (int row = 1; row < 12; ++row)
                QVERIFY(table->item(row - 1, column)->text() >= table->item(row, column)->text());
            const QRect inSight = table->viewport()->rect();
            QVERIFY(eventually([&] { return inSight.contains(table->visualItemRect(cell(name(0), CodeColumn))); }));
            for (int i = 0; i < 12; ++i) {
                QCOMPARE(cell(name(i), ValueColumn)->text(), QString("new%1").arg((20 - i) / 2));
                QCOMPARE(table->isRowHidden(row(name(i))), i == 3);
                QCOMPARE(options.at(i)->code, i == 0 ? 251u : 150 + 3 * static_cast<quint32>(i));
            }
            for (int changed = CodeColumn; changed <= KeyColumn; ++changed) {
                QCOMPARE(cell(name(5), changed)->flags(), Qt::NoItemFlags);
                QCOMPARE(cell(name(6), changed)->flags(), Qt::ItemIsEnabled);
            }
            window->apply();
            QCOMPARE(root.sql("SELECT value FROM entry WHERE key = 'root/DHCP/Code_" + name(0) + "'"),
                     QStringList("251"));
            window->apply(); // nothing is left to apply
            const QString calls = root.recorded(4).join('\n');
            QCOMPARE(calls.count("kiro-dhclient-edit|"), 2);
            QVERIFY(calls.contains("--add-new-option|" + name(0) + " 251 text|"));
            QVERIFY(calls.contains("|--del-request|" + name(5)));
        }
    }

    /// What follows a click on another row's box is about that row.
    void clickedBoxIsCurrent()
    {
        open({"first 1", "second 2"});
        table->setCurrentCell(row("first"), CodeColumn);
        click(row("second"), RequestedColumn);
        QCOMPARE(table->currentItem(), cell("second", RequestedColumn));
        QCOMPARE(cell("second", RequestedColumn)->checkState(), Qt::Unchecked);
    }

    void ticksAreSortedAtTheNextSort()
    {
        open({"ticked 1", "clear 2 default=no", "also-ticked 3"});
        table->sortByColumn(RequestedColumn, Qt::AscendingOrder);
        QCOMPARE(row("clear"), 2);
        click(row("ticked"), RequestedColumn);
        table->refreshValues();
        QCOMPARE(row("ticked"), 0);
        table->sortByColumn(RequestedColumn, Qt::DescendingOrder);
        QCOMPARE(row("also-ticked"), 2);
    }

    void openMenuKeepsItsOption()
    {
        for (const QString name : {"one", "two"})
            root.setValue(name, "x=" + name.toUtf8());
        open({"one 1", "two 2"});
        table->sortByColumn(ValueColumn, Qt::AscendingOrder);
        QContextMenuEvent asking(QContextMenuEvent::Mouse, table->visualItemRect(cell("two", ValueColumn)).center());
        QApplication::sendEvent(table->viewport(), &asking);
        QWidget *menu = QApplication::activePopupWidget();
        QVERIFY(menu);
        root.setValue("two", "x=again");
        table->refreshValues();
        QCOMPARE(row("two"), 0);
        QTest::keyClick(menu, Qt::Key_N);
        QCoreApplication::processEvents();
        QCOMPARE(QApplication::clipboard()->text(), QString("TWO"));
    }

    void emptyRowTakesNoText()
    {
        open({"twice 1", "twice 2"});
        const int empty = 1 - row("twice");
        table->setCurrentIndex(table->model()->index(empty, NameColumn));
        key(Qt::Key_F2);
        QVERIFY(!table->viewport()->findChild<QLineEdit *>());
    }

    /// A forced apply takes every option that is for this program to apply; a repeated name's row stays empty.
    void forcedApply()
    {
        const CapturedErrors errors;
        open({"managed 1 dhcp-class=managed", "on 2 dhcp-class=always-on", "twice 20", "twice 10"}, true);
        QCOMPARE(errors.text(), QString("Error: linux-name repeated: 'twice'\n"));
        table->refreshValues();
        click(3, InfoColumn);
        key(Qt::Key_X); // is looked for in all rows
        window->apply();
        QStringList calls = root.recorded(3);
        calls.sort(); // a busy machine may delay any of them
        QCOMPARE(calls, QStringList({"dhclient|-1", "kiro-dhclient-edit|--add-new-option|on 2 text|--add-request|on",
                                     "kiro-dhclient-edit|--add-new-option|twice 20 text|--add-request|twice"}));
    }
};

QTEST_MAIN(TestTable)
#include "tst_table.moc"
