// The option table, driven through Qt's events.

#include "windowtest.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>

class TestTable : public WindowTest
{
    Q_OBJECT

private slots:
    /// The stored choice wins over the default, the class of an option over both.
    void rowShowsWhetherTheOptionIsRequested_data()
    {
        QTest::addColumn<QByteArray>("elements");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QVariant>("box");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isRequested");
        const QVariant ticked = Qt::Checked;
        const QVariant clear = Qt::Unchecked;
        const QVariant none;
        QTest::newRow("requested by default") << QByteArray() << "" << ticked << "" << true;
        QTest::newRow("not by default") << QByteArray(NotRequested) << "" << clear << "" << false;
        QTest::newRow("chosen") << QByteArray(NotRequested) << "1" << ticked << "" << true;
        QTest::newRow("declined") << QByteArray() << "0" << clear << "" << false;
        QTest::newRow("always") << QByteArray("<dhcp-class>Always-On</dhcp-class>") << "0" << none << "Always" << true;
        QTest::newRow("never") << QByteArray("<dhcp-class>Always-Off</dhcp-class>") << "1" << none << "Never" << false;
        QTest::newRow("managed") << QByteArray("<dhcp-class>Managed</dhcp-class>") << "0" << none << "*" << true;
    }

    void rowShowsWhetherTheOptionIsRequested()
    {
        QFETCH(QByteArray, elements);
        QFETCH(QString, stored);
        const QString entry = QString("root/DHCP/Req_%1").arg(QTest::currentDataTag()).replace(' ', '-');
        const QString name = entry.section('_', 1);
        if (!stored.isEmpty())
            root.store(entry, 10, stored);
        open({{name, 7, elements}});
        QTEST(cell(name, RequestedColumn)->data(Qt::CheckStateRole), "box");
        QTEST(cell(name, RequestedColumn)->text(), "text");
        for (const int column : {CodeColumn, NameColumn, ValueColumn})
            QTEST(cell(name, column)->flags().testFlag(Qt::ItemIsEnabled), "isRequested");
        QVERIFY(cell(name, InfoColumn)->flags().testFlag(Qt::ItemIsEnabled));
        if (stored.isEmpty())
            QTEST(root.stored(entry) == "1", "isRequested"); // at once, before any apply
    }

    void cellsOfARow()
    {
        root.setValue("custom", "1.2.3.4");
        open({{"custom", 7}, {"known", 8, QByteArray(Predefined) + "<standard-option>Yes</standard-option>"}});
        QCOMPARE(cell("custom", CodeColumn)->text(), "007");
        QCOMPARE(cell("custom", NameColumn)->text(), "CUSTOM");
        QCOMPARE(cell("custom", ValueColumn)->text(), "1.2.3.4");
        QCOMPARE(cell("known", ValueColumn)->text(), "N/A");
        QVERIFY(cell("custom", CodeColumn)->flags().testFlag(Qt::ItemIsEditable));
        QVERIFY(!cell("known", CodeColumn)->flags().testFlag(Qt::ItemIsEditable));
        QVERIFY(cell("custom", CodeColumn)->font().bold());
        QVERIFY(cell("custom", NameColumn)->font().italic()); // an extension
        QVERIFY(!cell("known", NameColumn)->font().italic());
        QVERIFY(table->isColumnHidden(KeyColumn));
    }

    void viewsListTheirOptions()
    {
        open({{"custom", 1}, {"known", 2, Predefined}, {"hidden", 3, Hidden}});
        auto *selector = window->findChild<QComboBox *>();
        QCOMPARE(shownNames(), QStringList("custom"));
        selector->setCurrentIndex(ShowCommon);
        QCOMPARE(shownNames(), QStringList({"custom", "known"}));
        selector->setCurrentIndex(ShowAll);
        QCOMPARE(shownNames(), QStringList({"custom", "known", "hidden"}));
        table->setCurrentCell(row("known"), RequestedColumn);
        selector->setCurrentIndex(ShowCustom);
        QCOMPARE(currentName(), "custom"); // the keyboard has a cell to go on from
    }

    void emptyViewSaysWhereTheOptionsAre()
    {
        open({{"known", 1, Predefined}});
        const auto *hint = table->viewport()->findChild<QLabel *>();
        QVERIFY(hint->isVisible());
        QVERIFY(hint->text().contains("Choose another view"));
        table->changeViewMode(ShowCommon);
        QVERIFY(!hint->isVisible());
    }

    /// A code that is being typed when the view changes is neither lost nor given to another option.
    void viewChangesWhileACodeIsTyped()
    {
        open({{"known", 1, Predefined}, {"custom", 2}, {"other", 3}});
        table->changeViewMode(ShowCommon);
        table->setCurrentCell(row("custom"), CodeColumn);
        type("240");
        QVERIFY(table->viewport()->findChild<QLineEdit *>());
        QTest::keyClick(window->findChild<QComboBox *>(), Qt::Key_Up);
        window->apply();
        QVERIFY(root.calls(2).join('\n').contains("'--add-new-option' 'custom 240 text'"));
        QCOMPARE(cell("known", CodeColumn)->text(), "001");
        QCOMPARE(cell("other", CodeColumn)->text(), "003");
    }

    void codeFrom1To255IsTaken()
    {
        open({{"custom", 200}});
        cell("custom", CodeColumn)->setText("255");
        for (const QString refused : {"0", "256", "0x10", ""}) {
            cell("custom", CodeColumn)->setText(refused);
            QCOMPARE(cell("custom", CodeColumn)->text(), "255");
        }
        QCOMPARE(options.first()->code, 255u);
    }

    void codeIsAppliedAndStored()
    {
        open({{"custom", 200}});
        cell("custom", CodeColumn)->setText("240");
        window->apply();
        QCOMPARE(root.stored("root/DHCP/Code_custom"), "240");
        cell("custom", CodeColumn)->setText("241");
        window->apply();
        QCOMPARE(root.calls(4).filter("kiro-dhclient-edit").last(),
                 "kiro-dhclient-edit '--del-new-option' 'custom 200 text' '--del-new-option' 'custom 240 text' "
                 "'--add-new-option' 'custom 241 text' '--add-request' 'custom'");
    }

    void onlyWhatHasChangedIsApplied()
    {
        open({{"first", 1}, {"second", 2}});
        click("second", RequestedColumn);
        QCOMPARE(cell("second", NameColumn)->flags(), Qt::NoItemFlags);
        window->apply();
        window->apply();
        QCOMPARE(root.calls(3).filter("kiro-dhclient-edit"),
                 QStringList("kiro-dhclient-edit '--del-new-option' 'second 2 text' '--del-request' 'second'"));
        QCOMPARE(root.stored("root/DHCP/Req_second"), "0");
    }

    /// A forced apply takes every option that is for this program to apply; a repeated name's row stays empty.
    void forcedApply()
    {
        const CapturedErrors errors;
        open({{"managed", 1, "<dhcp-class>Managed</dhcp-class>"},
              {"never", 2, "<dhcp-class>Always-Off</dhcp-class>"},
              {"always", 3, "<dhcp-class>Always-On</dhcp-class>"},
              {"twice", 20},
              {"twice", 10}},
             true);
        QCOMPARE(errors.text(), "Error: linux-name repeated: 'twice'\n");
        table->refreshValues();
        window->apply();
        QStringList calls = root.calls(3);
        calls.sort(); // a busy machine may delay any of them
        QCOMPARE(calls, QStringList({"dhclient '-1'",
                                     "kiro-dhclient-edit '--add-new-option' 'always 3 text' '--add-request' 'always'",
                                     "kiro-dhclient-edit '--add-new-option' 'twice 20 text' '--add-request' 'twice'"}));
    }

    /// Rows move when the column that the table is sorted by is written to.
    void refreshReachesItsRowByWhateverColumnTheTableIsSorted()
    {
        for (int column = RequestedColumn; column <= KeyColumn; ++column) {
            QList<Definition> definitions;
            for (int i = 0; i < 12; ++i) {
                definitions.append({QString("n%1-%2").arg(column).arg(i), 150 + i});
                root.setValue(definitions.last().name, "old");
            }
            open(definitions);
            table->sortByColumn(column, Qt::DescendingOrder);
            for (int i = 0; i < 12; ++i) // their order turns over, and some are equal
                root.setValue(definitions.at(i).name, "new" + QByteArray::number((20 - i) / 2));
            table->refreshValues();
            for (int i = 0; i < 12; ++i)
                QCOMPARE(cell(definitions.at(i).name, ValueColumn)->text(), QString("new%1").arg((20 - i) / 2));
            for (int row = 1; row < 12; ++row)
                QVERIFY(table->item(row - 1, column)->text() >= table->item(row, column)->text());
        }
    }

    void clickedBoxIsCurrent()
    {
        open({{"first", 1}, {"second", 2}});
        table->setCurrentCell(row("first"), CodeColumn);
        click("second", RequestedColumn);
        QCOMPARE(table->currentItem(), cell("second", RequestedColumn));
        QCOMPARE(cell("second", RequestedColumn)->checkState(), Qt::Unchecked);
    }

    void openMenuKeepsItsOption()
    {
        root.setValue("one", "one");
        root.setValue("two", "two");
        open({{"one", 1}, {"two", 2}});
        table->sortByColumn(ValueColumn, Qt::AscendingOrder);
        QContextMenuEvent asking(QContextMenuEvent::Mouse, table->visualItemRect(cell("two", ValueColumn)).center());
        QApplication::sendEvent(table->viewport(), &asking);
        QWidget *menu = QApplication::activePopupWidget();
        QVERIFY(menu);
        root.setValue("two", "again");
        table->refreshValues();
        QCOMPARE(row("two"), 0);
        QTest::keyClick(menu, Qt::Key_N); // copies the name
        QVERIFY(eventually([] { return QApplication::clipboard()->text() == "TWO"; }));
    }

private:
    QStringList shownNames() const
    {
        QStringList names;
        for (int row = 0; row < table->rowCount(); ++row) {
            if (!table->isRowHidden(row))
                names << table->item(row, KeyColumn)->text();
        }
        return names;
    }
};

QTEST_MAIN(TestTable)
#include "tst_table.moc"
