// The option table, driven through Qt's events.

#include "windowtrial.h"

#include <QScreen>
#include <QtEndian>

namespace {

const QString Tool = "kiro-dhclient-edit|"; // how a recorded call begins

/// A cell's text, then "/" and letters: flags in lower case, a box and whether it is ticked, bold, italic, picture,
/// alignment; at the end what its tooltip stresses.
QString looks(const QTableWidgetItem &cell)
{
    QString seen = cell.text() + '/';
    const auto add = [&seen](bool is, char letter) { seen += is ? QString(letter) : QString(); };
    add(cell.flags() & Qt::ItemIsEnabled, 'e');
    add(cell.flags() & Qt::ItemIsUserCheckable, 'c');
    add(cell.flags() & Qt::ItemIsSelectable, 's');
    add(cell.flags() & Qt::ItemIsEditable, 'd');
    const QVariant box = cell.data(Qt::CheckStateRole);
    add(box.isValid(), box.toInt() == Qt::Checked ? '+' : '-');
    add(cell.font().weight() == 75, 'B');
    add(cell.font().italic(), 'I');
    add(!cell.icon().availableSizes().isEmpty(), 'P');
    const Qt::Alignment alignment(cell.textAlignment());
    seen += alignment == (Qt::AlignLeft | Qt::AlignVCenter) ? 'L' : alignment & Qt::AlignRight ? 'R' : 'C';
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
        QTest::newRow("never") << Custom + classOf("always-off") << "1" << "Never/Cnever|007/sdBPR|Never/IL|/esPC|N/A/L";
        QTest::newRow("managed") << Predefined + classOf("managed") + Off << "0" << "*/C|007/eR|Managed/eIL|/esPC|N/A/eL";
        QTest::newRow("always") << Predefined + classOf("always-on") + "<standard-option>yes</standard-option>" << "0"
                                << "Always/Calways|007/eR|Always/eL|/esPC|N/A/eL";
        QTest::newRow("on") << Custom << "" << "/ec+C|007/esdBPR|On/eIL|/esPC|N/A/eL";
        QTest::newRow("off") << Custom + Off << "" << "/ec-C|007/sdBPR|Off/IL|/esPC|N/A/L";
        QTest::newRow("stored-on") << Predefined + Off << "1" << "/ec+C|007/eR|Stored-on/eIL|/esPC|N/A/eL";
        QTest::newRow("stored-off") << Predefined << "0" << "/ec-C|007/R|Stored-off/IL|/esPC|N/A/L";
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
        QVERIFY(eventually([&] { return root.recorded() == QStringList("dhclient|-1"); })); // nothing has changed
        QCOMPARE(root.sql(QString("SELECT type, value FROM entry WHERE key = 'root/DHCP/Req_%1'").arg(name)),
                 QStringList(expected.endsWith("/eL") ? "10|1" : "10|0"));
    }

    void views()
    {
        WindowTrial trial(root, {{"custom", 1, Custom},
                                 {"hidden", 2, Custom + Hidden},
                                 {"known", 3, Predefined},
                                 {"known-hidden-and-with-a-long-name", 4, Predefined + Hidden}});
        trial.show();
        QCOMPARE(trial.visibleNames(), QStringList("custom"));
        QTest::keyClick(trial.selector, Qt::Key_Down);
        trial.table->sortByColumn(NameColumn, Qt::DescendingOrder);
        QCOMPARE(trial.visibleNames(), QStringList({"known", "custom"}));
        const int width = trial.table->columnWidth(NameColumn);
        QTest::keyClick(trial.selector, Qt::Key_Down);
        QCOMPARE(trial.visibleNames().count(), 4);
        QVERIFY(trial.table->columnWidth(NameColumn) > width); // fits again
        for (const int mode : {3, -1}) {
            trial.table->changeViewMode(mode);
            QCOMPARE(trial.visibleNames().count(), 4);
        }
        trial.table->changeViewMode(ShowCustom);
        QCOMPARE(trial.visibleNames(), QStringList("custom"));
    }

    /// Whatever the server sends, the window fits the screen; a column can be dragged wider.
    void widths()
    {
        for (const auto &[nameLength, valueLength] : {std::pair(5, 5), {5, 300}, {100, 5}, {100, 300}}) {
            const QString name(nameLength, 'n');
            const QString value(valueLength, 'v');
            root.setValue(name, "x=" + value.toUtf8());
            const WindowTrial trial(root, {{name, 200, Custom}});
            int width = 46;
            for (int column = 0; column < KeyColumn; ++column)
                width += trial.table->columnWidth(column);
            QCOMPARE(trial.table->minimumWidth(), width);
            const int screen = QGuiApplication::primaryScreen()->availableSize().width();
            QVERIFY(width <= screen);
            QVERIFY(trial.table->columnWidth(ValueColumn) <= screen / 3);
            const auto isWhole = [&](int column, const QString &text) {
                return trial.table->columnWidth(column) >= trial.table->fontMetrics().horizontalAdvance(text);
            };
            QCOMPARE(isWhole(NameColumn, name), nameLength == 5);
            QCOMPARE(isWhole(ValueColumn, value), valueLength == 5);
            trial.table->horizontalHeader()->resizeSection(ValueColumn, 1000);
            QCOMPARE(trial.table->columnWidth(ValueColumn), 1000);
        }
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
        QList<WindowTrial::Definition> definitions;
        for (int i = 0; i < 12; ++i) {
            definitions << WindowTrial::Definition{QString("right%1%2-%3").arg(column).arg(order).arg(i), 150 + 3 * i,
                                                   i % 4 == 3 ? Custom + Hidden : Custom};
            root.setValue(definitions.last().name, "x=old");
        }
        WindowTrial trial(root, definitions);
        trial.show();
        trial.table->sortByColumn(column, order);
        // Values whose order turns over, some of them equal
        for (int i = 0; i < 12; ++i)
            root.setValue(definitions.at(i).name, "x=new" + QByteArray::number((20 - i) / 2));
        trial.table->refreshValues();
        for (int i = 0; i < 12; ++i) {
            const QString name = definitions.at(i).name;
            QCOMPARE(trial.cell(name, ValueColumn)->text(), QString("new%1").arg((20 - i) / 2));
            QCOMPARE(trial.table->isRowHidden(trial.row(name)), i % 4 == 3);
        }
        for (int row = 1; row < 12; ++row) {
            const QTableWidgetItem *upper = trial.table->item(row - 1, column);
            const QTableWidgetItem *lower = trial.table->item(row, column);
            QVERIFY(order == Qt::AscendingOrder ? !(*lower < *upper) : !(*upper < *lower));
        }

        const QString edited = definitions.at(0).name;
        const QString unticked = definitions.at(5).name;
        QVERIFY(trial.typeCode(edited, "251"));
        QVERIFY(trial.typeCode(definitions.at(1).name, "256")); // refused
        trial.tick(unticked);
        for (int i = 0; i < 12; ++i) {
            const QString name = definitions.at(i).name;
            const quint32 code = name == edited ? 251 : 150 + 3 * static_cast<quint32>(i);
            QCOMPARE(trial.options.at(i)->code, code);
            QCOMPARE(trial.cell(name, CodeColumn)->text().toUInt(), code);
            QCOMPARE(trial.cell(name, NameColumn)->flags(), name == unticked ? Qt::NoItemFlags : Qt::ItemIsEnabled);
        }
        const QStringList expected = {
            "dhclient|-1", "dhclient|-1",
            Tool
                + QString("--del-new-option|%1 150 text|--del-new-option|%1 150 text|--add-new-option|%1 251 text|"
                          "--add-request|%1")
                      .arg(edited),
            Tool + QString("--del-new-option|%1 165 text|--del-request|%1").arg(unticked)};
        trial.window->apply();
        trial.window->apply(); // nothing is left to apply
        QVERIFY(eventually([&] { return root.recorded().count() == 4; }));
        QStringList recorded = root.recorded();
        recorded.sort();
        QCOMPARE(recorded, expected);
        QCOMPARE(root.sql(QString("SELECT value FROM entry WHERE key IN ('root/DHCP/Code_%1', 'root/DHCP/Req_%2')"
                                  " ORDER BY key")
                              .arg(edited, unticked)),
                 QStringList({"251", "0"}));
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
        QVERIFY(trial.typeCode("edit", "0200")); // which moves the row far down
        QCOMPARE(codeCell()->text(), QString("0200"));
        QCOMPARE(trial.options.at(0)->code, 200u);
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
        WindowTrial trial(root,
                          {{"f-managed", 1, Custom + classOf("managed")},
                           {"f-on", 2, Predefined + classOf("always-on")},
                           {"f-off", 3, Custom + classOf("always-off")},
                           {"f-twice", 20, Custom},
                           {"f-twice", 10, Custom}},
                          true);
        QCOMPARE(errors.text(), QString("Error: linux-name repeated: 'f-twice'\n"));
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
        QVERIFY(eventually([&] { return root.recorded().count() == 3; }));
        QCOMPARE(root.recorded(),
                 QStringList({Tool + "--add-request|f-on",
                              Tool + "--add-new-option|f-twice 20 text|--add-request|f-twice", "dhclient|-1"}));
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
