// Refreshes the values of the shown window's table, and writes the same values into an equal plain table: sorted by
// each column in both orders, with all values changed or one in ten. Usage: refresh ROUNDS
// Prints column, order, percent changed, milliseconds of ours and of the plain table, one line per round.
// Ends with a message when a row shows an old value, or is hidden or shown where its option is not.

#include "showntables.h"

#include "paths.h"

#include <QHash>
#include <QTextStream>

namespace {

QString valuePath(const QString &key)
{
    static const QString directory = QFile::decodeName(Paths::resolve("/var/lib/dhcp3/vars/eth0/").c_str());
    return directory + key;
}

/// The value files, and what every row has to show.
class Values
{
public:
    explicit Values(const QTableWidget &table)
    {
        for (int row = 0; row < table.rowCount(); ++row) {
            keys.append(table.item(row, KeyColumn)->text());
            hidden.insert(keys.last(), table.isRowHidden(row));
        }
    }

    /// Gives every `step`-th option another value.
    void change(int step)
    {
        ++generation;
        for (int i = generation % step; i < keys.size(); i += step) {
            const QString &key = keys.at(i);
            const QString value = QStringLiteral("192.0.2.%1 %2").arg((i * 7919 + generation) % 251).arg(generation);
            values.insert(key, value);
            QFile file(valuePath(key));
            const QByteArray line = "new_" + key.toUtf8().replace('-', '_') + "='" + value.toUtf8() + "'\n";
            if (!file.open(QIODevice::WriteOnly) || file.write(line) != line.size())
                qFatal("cannot write %s", qUtf8Printable(file.fileName()));
        }
    }

    void check(const QTableWidget &table, const char *whose) const
    {
        for (int row = 0; row < table.rowCount(); ++row) {
            const QString key = table.item(row, KeyColumn)->text();
            if (table.item(row, ValueColumn)->text() != values.value(key))
                qFatal("%s: %s has an old value", whose, qUtf8Printable(key));
            if (table.isRowHidden(row) != hidden.value(key))
                qFatal("%s: %s was hidden or shown", whose, qUtf8Printable(key));
        }
    }

private:
    QStringList keys;
    QHash<QString, QString> values;
    QHash<QString, bool> hidden;
    int generation = 0;
};

QString readValue(const QString &key)
{
    QFile file(valuePath(key));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        qFatal("cannot read %s", qUtf8Printable(file.fileName()));
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    const QString line = stream.readLine();
    const int start = line.indexOf(QLatin1Char('=')) + 2;
    return line.mid(start, line.size() - start - 1);
}

/// The best way found. setText() on a cell that has been sorted searches the whole table for it, so the cell
/// is taken out and put back; without the model's signals, since the whole table is painted afterwards.
void refreshPlain(QTableWidget &table)
{
    const bool isSortColumn = table.horizontalHeader()->sortIndicatorSection() == ValueColumn;
    table.setUpdatesEnabled(false);
    if (isSortColumn)
        table.setSortingEnabled(false);
    table.model()->blockSignals(true);
    for (int row = 0; row < table.rowCount(); ++row) {
        const QString value = readValue(table.item(row, KeyColumn)->text());
        if (table.item(row, ValueColumn)->text() == value)
            continue;
        QTableWidgetItem *cell = table.takeItem(row, ValueColumn);
        cell->setText(value);
        table.setItem(row, ValueColumn, cell);
    }
    table.model()->blockSignals(false);
    if (isSortColumn)
        table.setSortingEnabled(true);
    table.setUpdatesEnabled(true);
}

} // namespace

int main(int argc, char **argv)
{
    Bench::ShownTables tables(argc, argv);
    DhcpTable &ours = tables.ours;
    QTableWidget &plain = tables.plain;

    Values values(ours);
    for (int column = 0; column < ours.columnCount(); ++column) {
        for (const Qt::SortOrder order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
            for (QTableWidget *table : {static_cast<QTableWidget *>(&ours), &plain})
                table->sortByColumn(column, order);
            for (const int step : {1, 10}) {
                for (int round = 0; round < tables.rounds; ++round) {
                    values.change(step);
                    double oursTime = 0;
                    double plainTime = 0;
                    for (const bool oursTurn : {round % 2 == 0, round % 2 != 0}) {
                        if (oursTurn)
                            oursTime = Bench::duration([&] {
                                ours.refreshValues();
                                QCoreApplication::processEvents();
                            });
                        else
                            plainTime = Bench::duration([&] {
                                refreshPlain(plain);
                                QCoreApplication::processEvents();
                            });
                    }
                    values.check(ours, "ours");
                    values.check(plain, "plain");
                    std::printf("%d %d %d %.3f %.3f\n", column, order, 100 / step, oursTime, plainTime);
                }
            }
        }
    }
    return 0;
}
