#ifndef CURRENTCELL_H
#define CURRENTCELL_H

#include <QObject>

class QTableWidget;

/// Where the keyboard stands in the option table: always on a cell that it can use, in the row clicked last, and kept
/// in sight when the rows are sorted.
///
/// Left to itself, Qt ignores clicks on disabled cells, and on a box it ticks it without going there.
class CurrentCell : public QObject
{
    Q_OBJECT

public:
    /// Becomes a child of the table.
    explicit CurrentCell(QTableWidget *table);

    /// Where the current cell is missing, hidden or disabled, takes the first one that the keyboard can use.
    void ensure();
    /// Goes to the cell or, if the keyboard cannot use it, to the first one of its row that it can. Every row has one:
    /// the box or the info cell.
    void goTo(int row, int column);

private:
    Q_DISABLE_COPY(CurrentCell)
    bool isUsable(int row, int column) const;
    bool isInSight() const;

    QTableWidget *table;
    bool wasInSight = false;
};

#endif
