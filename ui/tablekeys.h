#ifndef TABLEKEYS_H
#define TABLEKEYS_H

#include <QObject>

class QKeyEvent;
class QTableWidget;

/// What keyboard and mouse do in the option table beyond what every table offers.
///
/// Enter or Space on an info cell, or F1 anywhere in its row, asks for the row's details. Ctrl+S sorts by the
/// current cell's column, and once more the other way. Ctrl+C copies the row's value, or the code or name that is
/// the current cell; a context menu copies value and name too. Such a key goes no further, so that the table does
/// not also take it for the start of an edit or for an activation.
///
/// There is always a current cell to start from, and it is in the row that was clicked last: Qt by itself insists
/// on the first cell, also where that is disabled, and ignores clicks on disabled cells.
class TableKeys : public QObject
{
    Q_OBJECT

public:
    /// Becomes a child of the table.
    explicit TableKeys(QTableWidget *table);

    /// Where the current cell is missing, hidden or disabled, takes the first one that the keyboard can work with.
    void ensureCurrentCell();
    /// Moves the current cell to the row's first one that is enabled. Every row has one: the box or the info cell.
    void goToRow(int row);

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void infoRequested(int row, int column);

private:
    Q_DISABLE_COPY(TableKeys)
    bool isUsable(int row, int column) const;
    bool handleKey(const QKeyEvent &event);
    void sortByCurrentColumn();
    void copy(int row, int column) const;
    void openMenu(int row, const QPoint &position);

    QTableWidget *table;
};

#endif
