#ifndef ROWMENU_H
#define ROWMENU_H

#include <QMenu>

class CurrentCell;
class QTableWidget;

/// The option table's context menu, and the keys for what it offers. All of it is about the current row, which stays
/// the same option when rows move under the open menu.
class RowMenu : public QMenu
{
    Q_OBJECT

public:
    /// Becomes a child of the table.
    RowMenu(QTableWidget *table, CurrentCell *current);

signals:
    void detailsRequested(int row, int column);
    void findRequested();

private:
    Q_DISABLE_COPY(RowMenu)
    void open(const QPoint &position);
    void copy(int column) const;
    void sortBy(int column);

    QTableWidget *table;
    CurrentCell *current;
    QAction *changeCode;
};

#endif
