#include "tablekeys.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QTableWidget>

TableKeys::TableKeys(QTableWidget *table, int infoColumn)
    : QObject(table)
    , table(table)
    , infoColumn(infoColumn)
{
    table->installEventFilter(this);
}

bool TableKeys::isUsable(int row, int column) const
{
    const QTableWidgetItem *cell = table->item(row, column);
    return cell && cell->flags().testFlag(Qt::ItemIsEnabled) && !table->isRowHidden(row)
        && !table->isColumnHidden(column);
}

void TableKeys::ensureCurrentCell()
{
    if (isUsable(table->currentRow(), table->currentColumn()))
        return;
    QModelIndex first;
    for (int row = 0; row < table->rowCount() && !first.isValid(); ++row) {
        for (int column = 0; column < table->columnCount() && !first.isValid(); ++column) {
            if (isUsable(row, column))
                first = table->model()->index(row, column);
        }
    }
    table->selectionModel()->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
}

bool TableKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn)
        ensureCurrentCell();
    if (event->type() == QEvent::KeyPress && handleKey(*static_cast<QKeyEvent *>(event)))
        return true;
    return QObject::eventFilter(watched, event);
}

/// Whether the key is one of ours.
bool TableKeys::handleKey(const QKeyEvent &event)
{
    const int row = table->currentRow();
    const int column = table->currentColumn();
    if (row < 0 || table->isRowHidden(row))
        return false;
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const bool isInfoKey = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter
        || event.key() == Qt::Key_Space || event.key() == Qt::Key_Select;
    if (modifiers == Qt::NoModifier && (event.key() == Qt::Key_F1 || (column == infoColumn && isInfoKey))) {
        // A key that is held down asks once.
        if (!event.isAutoRepeat())
            emit infoRequested(row, infoColumn);
        return true;
    }
    if (modifiers == Qt::ControlModifier && event.key() == Qt::Key_S) {
        sortByCurrentColumn();
        return true;
    }
    return false;
}

void TableKeys::sortByCurrentColumn()
{
    const QHeaderView *header = table->horizontalHeader();
    const int column = table->currentColumn();
    const bool isAscending = header->sortIndicatorSection() == column
        && header->sortIndicatorOrder() == Qt::AscendingOrder;
    table->sortByColumn(column, isAscending ? Qt::DescendingOrder : Qt::AscendingOrder);
}
