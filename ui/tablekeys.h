#ifndef TABLEKEYS_H
#define TABLEKEYS_H

#include <QObject>

class QKeyEvent;
class QTableWidget;

/// Lets the keyboard do in a table what else takes a mouse.
///
/// Enter or Space on a cell of the info column, or F1 anywhere in its row, asks for the row's details; Ctrl+S
/// sorts by the current cell's column, and once more the other way. Such a key goes no further, so that the table
/// does not also take it for the start of an edit or for an activation. And whenever the table gets the focus,
/// there is a current cell to start from: Qt by itself insists on the first cell, also where that is disabled.
class TableKeys : public QObject
{
    Q_OBJECT

public:
    /// Becomes a child of the table.
    TableKeys(QTableWidget *table, int infoColumn);

    /// Moves a current cell that is none, hidden or disabled to the first one that the keyboard can work with.
    void ensureCurrentCell();

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void infoRequested(int row, int column);

private:
    Q_DISABLE_COPY(TableKeys)
    bool isUsable(int row, int column) const;
    bool handleKey(const QKeyEvent &event);
    void sortByCurrentColumn();

    QTableWidget *table;
    int infoColumn;
};

#endif
