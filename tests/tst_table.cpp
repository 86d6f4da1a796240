// The option table, driven through Qt's events.

#include "windowtest.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QLineEdit>

class TestTable : public WindowTest
{
    Q_OBJECT

private slots:
    void init() { forgetChoicesAndValues(); }

    void storedChoiceWinsOverTheDefault()
    {
        root.store("root/DHCP/Req_chosen", 10, "1");
        root.store("root/DHCP/Req_declined", 10, "0");
        open({{"wanted", 1}, {"unwanted", 2, NotRequested}, {"chosen", 3, NotRequested}, {"declined", 4}});
        QCOMPARE(cell("wanted", RequestedColumn)->checkState(), Qt::Checked);
        QCOMPARE(cell("unwanted", RequestedColumn)->checkState(), Qt::Unchecked);
        QCOMPARE(cell("chosen", RequestedColumn)->checkState(), Qt::Checked);
        QCOMPARE(cell("declined", RequestedColumn)->checkState(), Qt::Unchecked);
        QVERIFY(cell("chosen", NameColumn)->flags().testFlag(Qt::ItemIsEnabled));
        QVERIFY(!cell("declined", NameColumn)->flags().testFlag(Qt::ItemIsEnabled));
        QCOMPARE(root.stored("root/DHCP/Req_unwanted"), "0"); // at once, before any apply
    }

    void classWinsOverTheStoredChoice()
    {
        root.store("root/DHCP/Req_always", 10, "0");
        root.store("root/DHCP/Req_never", 10, "1");
        open({{"always", 1, "<dhcp-class>Always-On</dhcp-class>"},
              {"never", 2, "<dhcp-class>Always-Off</dhcp-class>"},
              {"managed", 3, "<dhcp-class>Managed</dhcp-class>"}});
        QCOMPARE(cell("always", RequestedColumn)->text(), "Always");
        QCOMPARE(cell("never", RequestedColumn)->text(), "Never");
        QCOMPARE(cell("managed", RequestedColumn)->text(), "*");
        QVERIFY(!cell("always", RequestedColumn)->data(Qt::CheckStateRole).isValid());
        QVERIFY(cell("always", NameColumn)->flags().testFlag(Qt::ItemIsEnabled));
        QVERIFY(!cell("never", NameColumn)->flags().testFlag(Qt::ItemIsEnabled));
        QVERIFY(cell("managed", NameColumn)->flags().testFlag(Qt::ItemIsEnabled));
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
        QVERIFY(cell("custom", NameColumn)->font().italic()); // an extension
        QVERIFY(!cell("known", NameColumn)->font().italic());
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
        QCOMPARE(currentName(), "second");
        QCOMPARE(cell("second", NameColumn)->flags(), Qt::NoItemFlags);
        window->apply();
        window->apply();
        QCOMPARE(root.calls(3).filter("kiro-dhclient-edit"),
                 QStringList("kiro-dhclient-edit '--del-new-option' 'second 2 text' '--del-request' 'second'"));
        QCOMPARE(root.stored("root/DHCP/Req_second"), "0");
    }

    void forcedApplyTakesAllOptionsButOthersBusiness()
    {
        open({{"managed", 1, "<dhcp-class>Managed</dhcp-class>"},
              {"never", 2, "<dhcp-class>Always-Off</dhcp-class>"},
              {"twice", 20},
              {"twice", 10}},
             true);
        window->apply();
        QCOMPARE(root.calls(2).filter("kiro-dhclient-edit"),
                 QStringList("kiro-dhclient-edit '--add-new-option' 'twice 20 text' '--add-request' 'twice'"));
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

    void menuIsAboutTheRowBelowIt()
    {
        open({{"one", 1}, {"off", 2, NotRequested}});
        QContextMenuEvent asking(QContextMenuEvent::Mouse, table->visualItemRect(cell("off", ValueColumn)).center());
        QApplication::sendEvent(table->viewport(), &asking);
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_N); // copies the name
        QTRY_COMPARE(QApplication::clipboard()->text(), "OFF");
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
