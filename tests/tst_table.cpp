// The option table, driven through Qt's events.

#include "windowtrial.h"

#include <QScreen>
#include <QtEndian>

namespace {

const QString Tool = "kiro-dhclient-edit|"; // how a recorded call begins

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

class TestTable : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        root.presetRegistry("('x', 10, '0')");
        root.write("/usr/share/icons/kiro-icons/16x16/pencil.png", "");
        QVERIFY(QImage(16, 16, QImage::Format_RGB32).save(root.path("/usr/share/icons/kiro-icons/16x16/pencil.png")));
    }

    /// What is stored wins over a Normal option's default; the other classes win over what is stored.
    void cells_data()
    {
        QTest::addColumn<QByteArray>("more");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("expected");
        // clang-format off
        QTest::newRow("never") << Custom + classOf("always-off") << "1"
            << "Never/0/4never|007/3/2BP|Never/0/1I|/33/4P|N/A/0/1";
        QTest::newRow("managed") << Predefined + classOf("managed") + Off << "0"
            << "*/0/4|007/32/2|Managed/32/1I|/33/4P|N/A/32/1";
        QTest::newRow("always") << Predefined + classOf("always-on") + "<standard-option>yes</standard-option>" << "0"
            << "Always/0/4always|007/32/2|Always/32/1|/33/4P|N/A/32/1";
        QTest::newRow("on") << Custom << "" << "/48/4+|007/35/2BP|On/32/1I|/33/4P|N/A/32/1";
        QTest::newRow("off") << Custom + Off << "" << "/48/4-|007/3/2BP|Off/0/1I|/33/4P|N/A/0/1";
        QTest::newRow("stored-on") << Predefined + Off << "1" << "/48/4+|007/32/2|Stored-on/32/1I|/33/4P|N/A/32/1";
        QTest::newRow("stored-off") << Predefined << "0" << "/48/4-|007/0/2|Stored-off/0/1I|/33/4P|N/A/0/1";
        // clang-format on
    }

    void cells()
    {
        QFETCH(QByteArray, more);
        QFETCH(QString, stored);
        QFETCH(QString, expected);
        const QString name = QTest::currentDataTag();
        if (!stored.isEmpty())
            root.sql(QString("INSERT INTO entry VALUES('root/DHCP/Req_%1', 10, '%2'), ('root/DHCP/Req_%1-2', 10, '%2')")
                         .arg(name, stored));
        const quint32 before = changeCounter();
        const WindowTrial trial(root, {{name + "-2", 43, more}, {name, 7, more}});
        QCOMPARE(changeCounter(), before + (stored.isEmpty() ? 1 : 0)); // one commit for both entries
        QStringList cells;
        for (int column = RequestedColumn; column < KeyColumn; ++column)
            cells << looks(*trial.table->item(0, column)); // sorted by code
        QCOMPARE(cells.join('|'), expected);
        QVERIFY(trial.table->isColumnHidden(KeyColumn));
        trial.window->apply();
        QCOMPARE(trial.recorded(1), QStringList("dhclient|-1")); // nothing has changed
        QCOMPARE(root.sql(QString("SELECT type, value FROM entry WHERE key = 'root/DHCP/Req_%1'").arg(name)),
                 QStringList(expected.endsWith("/32/1") ? "10|1" : "10|0"));
    }

    void views()
    {
        WindowTrial trial(root, {{"custom", 1, Custom},
                                 {"hidden", 2, Custom + Hidden},
                                 {"known", 3, Predefined},
                                 {"known-hidden-and-with-a-long-name", 4, Predefined + Hidden}});
        trial.show();
        const auto visible = [&] {
            QString codes;
            for (int row = 0; row < 4; ++row)
                codes += trial.table->isRowHidden(row) ? "" : trial.table->item(row, CodeColumn)->text().right(1);
            return codes;
        };
        QCOMPARE(visible(), QString("1"));
        const int width = trial.table->columnWidth(NameColumn);
        QTest::keyClick(trial.selector, Qt::Key_Down);
        QCOMPARE(trial.selector->currentText() + visible(), QString("Show Common Options13"));
        QTest::keyClick(trial.selector, Qt::Key_Down);
        QCOMPARE(visible(), QString("1234"));
        QVERIFY(trial.table->columnWidth(NameColumn) > width); // fits again
        trial.table->changeViewMode(ShowCustom);
        trial.table->changeViewMode(3);
        trial.table->changeViewMode(-1);
        QCOMPARE(visible(), QString("1"));
    }

    /// Whatever the server sends, the window fits the screen; a column can be dragged wider.
    void widths()
    {
        for (const auto &[nameLength, valueLength] : {std::pair(5, 5), {5, 300}, {100, 5}, {100, 300}}) {
            root.setValue(QString(nameLength, 'n'), "x=" + QByteArray(valueLength, 'v'));
            const WindowTrial trial(root, {{QString(nameLength, 'n'), 200, Custom}});
            int width = 46;
            for (int column = 0; column < KeyColumn; ++column)
                width += trial.table->columnWidth(column);
            const int screen = QGuiApplication::primaryScreen()->availableSize().width();
            QCOMPARE(trial.table->minimumWidth(), width);
            QVERIFY(width <= screen && trial.table->columnWidth(ValueColumn) <= screen / 3);
            const auto isWhole = [&](int column) {
                const QString text = trial.table->item(0, column)->text();
                return trial.table->columnWidth(column) >= trial.table->fontMetrics().horizontalAdvance(text);
            };
            QVERIFY(isWhole(NameColumn) == (nameLength == 5) && isWhole(ValueColumn) == (valueLength == 5));
            trial.table->horizontalHeader()->resizeSection(ValueColumn, 1000);
            QCOMPARE(trial.table->columnWidth(ValueColumn), 1000);
        }
    }

    /// Every operation must reach its option by whatever column the table is sorted, also among equal texts.
    void rightRow_data()
    {
        QTest::addColumn<Qt::SortOrder>("order");
        for (int column = 0; column < 6; ++column) {
            QTest::addRow("%d ascending", column) << Qt::AscendingOrder;
            QTest::addRow("%d descending", column) << Qt::DescendingOrder;
        }
    }

    void rightRow()
    {
        QFETCH(Qt::SortOrder, order);
        const QString prefix = QString(QTest::currentDataTag()).replace(' ', '-');
        const int column = prefix.left(1).toInt();
        QList<WindowTrial::Definition> definitions;
        for (int i = 0; i < 12; ++i) {
            definitions << WindowTrial::Definition{prefix + QString::number(i), 150 + 3 * i, Custom};
            root.setValue(definitions.last().name, "x=old");
        }
        definitions[3].more += Hidden;
        WindowTrial trial(root, definitions);
        trial.show();
        trial.table->sortByColumn(column, order);
        // Values whose order turns over, some of them equal
        for (int i = 0; i < 12; ++i)
            root.setValue(definitions.at(i).name, "x=new" + QByteArray::number((20 - i) / 2));
        trial.table->refreshValues();
        for (int row = 1; row < 12; ++row) {
            const QTableWidgetItem *upper = trial.table->item(row - 1, column);
            const QTableWidgetItem *lower = trial.table->item(row, column);
            QVERIFY(order == Qt::AscendingOrder ? !(*lower < *upper) : !(*upper < *lower));
        }
        QVERIFY(trial.typeCode(definitions.at(0).name, "251"));
        trial.tick(definitions.at(5).name);
        for (int i = 0; i < 12; ++i) {
            const QString name = definitions.at(i).name;
            QCOMPARE(trial.cell(name, ValueColumn)->text(), QString("new%1").arg((20 - i) / 2));
            QCOMPARE(trial.table->isRowHidden(trial.row(name)), i == 3);
            QCOMPARE(trial.options.at(i)->code, i == 0 ? 251u : 150 + 3 * static_cast<quint32>(i));
            QCOMPARE(trial.cell(name, NameColumn)->flags(), i == 5 ? Qt::NoItemFlags : Qt::ItemIsEnabled);
        }
        trial.window->apply();
        QCOMPARE(root.sql("SELECT value FROM entry WHERE key = 'root/DHCP/Code_" + prefix + "0'"), QStringList("251"));
        trial.window->apply(); // nothing is left to apply
        const QString recorded = trial.recorded(4).join('\n');
        QCOMPARE(recorded.count(Tool), 2);
        QVERIFY(recorded.contains("--add-new-option|" + prefix + "0 251 text|"));
        QVERIFY(recorded.contains("|--del-request|" + prefix + "5"));
    }

    void editing()
    {
        QList<WindowTrial::Definition> definitions = {{"edit", 7, Custom}, {"known", 8, Predefined}};
        for (int i = 100; i < 140; ++i)
            definitions << WindowTrial::Definition{QString("edit-%1").arg(i), i, Custom};
        WindowTrial trial(root, definitions);
        trial.selector->setCurrentIndex(ShowAll);
        trial.show();
        const auto codeCell = [&] { return trial.cell("edit", CodeColumn); };
        for (const char *text : {"0", "256", "x1", ""}) {
            QVERIFY(trial.typeCode("edit", text));
            QCOMPARE(codeCell()->text(), QString("7"));
        }
        QVERIFY(trial.typeCode("edit", "0200"));
        QCOMPARE(codeCell()->text(), QString("0200"));
        QCOMPARE(trial.options.at(0)->code, 200u);
        QVERIFY(trial.typeCode("edit", "201")); // which moves the row far down
        const QRect inSight = trial.table->viewport()->rect();
        QVERIFY(eventually([&] { return inSight.contains(trial.table->visualItemRect(codeCell())); }));
        QVERIFY(!trial.typeCode("known", "9"));

        trial.tick("edit");
        for (const Qt::ItemFlags flags : {Qt::ItemFlags(Qt::NoItemFlags), Qt::ItemFlags(Qt::ItemIsEnabled)}) {
            for (int column = 1; column < 6; ++column)
                QCOMPARE(trial.cell("edit", column)->flags(), flags);
            trial.table->setCurrentCell(trial.row("edit"), 0);
            trial.key(Qt::Key_Space);
        }
    }

    /// A forced apply takes every option that is for this program to apply; a repeated name's row stays empty.
    void forcedApply()
    {
        const CapturedErrors errors;
        // clang-format off
        WindowTrial trial(root, {{"managed", 1, Custom + classOf("managed")}, {"on", 2, Custom + classOf("always-on")},
                                 {"off", 3, Custom + classOf("always-off")}, {"twice", 20, Custom},
                                 {"twice", 10, Custom}}, true);
        // clang-format on
        QCOMPARE(errors.text(), QString("Error: linux-name repeated: 'twice'\n"));
        trial.show();
        for (int column = 0; column < 6; ++column) {
            trial.table->sortByColumn(column, column % 2 ? Qt::AscendingOrder : Qt::DescendingOrder);
            for (int mode = 0; mode < 3; ++mode)
                trial.table->changeViewMode(mode);
            trial.table->refreshValues();
            int empty = 0;
            while (trial.table->item(empty, KeyColumn))
                ++empty;
            for (int cell = 0; cell < 5; ++cell)
                trial.click(empty, cell);
            for (const int key : {Qt::Key_Return, Qt::Key_F1, Qt::Key_F, Qt::Key_1}) {
                trial.table->setCurrentCell(empty, InfoColumn);
                trial.key(key);
            }
        }
        trial.table->sortByColumn(KeyColumn, Qt::AscendingOrder);
        trial.window->apply();
        QCOMPARE(trial.recorded(3),
                 QStringList({Tool + "--add-new-option|on 2 text|--add-request|on",
                              Tool + "--add-new-option|twice 20 text|--add-request|twice", "dhclient|-1"}));
    }

private:
    /// Grows with each transaction that writes (SQLite database file format, file change counter).
    quint32 changeCounter() const
    {
        QFile file(root.path("/var/lib/vorkan/registry.db"));
        return file.open(QIODevice::ReadOnly) ? qFromBigEndian<quint32>(file.read(28).constData() + 24) : 0;
    }

    TrialRoot root;
};

QTEST_MAIN(TestTable)
#include "tst_table.moc"
