#ifndef BENCH_H
#define BENCH_H

#include <QEvent>
#include <QFile>
#include <QHeaderView>
#include <QMainWindow>
#include <QObject>
#include <QTableWidget>
#include <QTimer>

#include <chrono>
#include <cstdio>

#include <unistd.h>

/// What the programs of this directory share.
namespace Bench {

/// Milliseconds on the monotonic clock, which the script that starts the programs reads too.
inline double now()
{
    using Milliseconds = std::chrono::duration<double, std::milli>;
    return Milliseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Milliseconds that a call takes.
template <typename Call>
double duration(Call call)
{
    const double start = now();
    call();
    return now() - start;
}

/// The process's resident set in KiB, from smaps_rollup: /proc/self/status is only approximate.
inline long residentKiB()
{
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read smaps_rollup");
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("Rss:"))
            return line.mid(4).trimmed().split(' ').first().toLong();
    }
    qFatal("smaps_rollup has no Rss line");
}

/// Ends the process when a widget has been painted for the first time and the picture has gone to the
/// display; prints the time of that and the resident set.
class FirstPaint : public QObject
{
public:
    explicit FirstPaint(QWidget *widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            QTimer::singleShot(0, [] {
                const double end = now();
                std::printf("%.3f %ld\n", end, residentKiB());
                std::fflush(stdout);
                ::_exit(0);
            });
        }
        return QObject::eventFilter(watched, event);
    }
};

/// Fills a plain table from memory.
inline void fill(QTableWidget &table)
{
    for (int row = 0; row < table.rowCount(); ++row) {
        const QString text = QStringLiteral("Option %1").arg(row);
        for (int column = 0; column < table.columnCount(); ++column)
            table.setItem(row, column, new QTableWidgetItem(text));
    }
}

/// A plain cell that looks like another one, which may compute what it shows.
inline QTableWidgetItem *plainCell(const QTableWidgetItem &from)
{
    auto *cell = new QTableWidgetItem;
    for (const int role : {Qt::DisplayRole, Qt::DecorationRole, Qt::FontRole, Qt::TextAlignmentRole, Qt::CheckStateRole,
                           Qt::ToolTipRole}) {
        const QVariant value = from.data(role);
        if (value.isValid())
            cell->setData(role, value);
    }
    cell->setFlags(from.flags());
    return cell;
}

/// Makes a plain table equal to another: cells, headers, order, hidden rows, columns and size.
inline void copyTable(const QTableWidget &from, QTableWidget &to)
{
    to.setRowCount(from.rowCount());
    to.setColumnCount(from.columnCount());
    to.setUpdatesEnabled(false);
    for (int column = 0; column < from.columnCount(); ++column) {
        to.setHorizontalHeaderItem(column, plainCell(*from.horizontalHeaderItem(column)));
        to.setColumnHidden(column, from.isColumnHidden(column));
        for (int row = 0; row < from.rowCount(); ++row)
            to.setItem(row, column, plainCell(*from.item(row, column)));
    }
    for (int row = 0; row < from.rowCount(); ++row)
        to.setRowHidden(row, from.isRowHidden(row));
    to.setUpdatesEnabled(true);
    to.verticalHeader()->hide();
    to.setSortingEnabled(true);
    to.sortByColumn(from.horizontalHeader()->sortIndicatorSection(), from.horizontalHeader()->sortIndicatorOrder());
    to.resizeColumnsToContents();
    to.resize(from.size());
}

} // namespace Bench

#endif
