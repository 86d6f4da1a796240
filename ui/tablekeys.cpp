#include "tablekeys.h"

#include "optioncell.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QTableWidget>

TableKeys::TableKeys(QTableWidget *table) : QObject(table), table(table)
{
    table->installEventFilter(this);
    table->viewport()->installEventFilter(this);
    connect(table, &QTableWidget::cellClicked, this, [this](int row, int column) {
        if (!isUsable(row, column))
            goToRow(row);
    });
}

bool TableKeys::isUsable(int row, int column) const
{
    const QTableWidgetItem *cell = table->item(row, column);
    return cell && cell->flags().testFlag(Qt::ItemIsEnabled) && !table->isRowHidden(row)
           && !table->isColumnHidden(column);
}

void TableKeys::goToRow(int row)
{
    for (int column = 0; column < table->columnCount(); ++column) {
        if (isUsable(row, column)) {
            table->setCurrentCell(row, column, QItemSelectionModel::Clear);
            return;
        }
    }
}

void TableKeys::ensureCurrentCell()
{
    for (int row = 0; row < table->rowCount() && !isUsable(table->currentRow(), table->currentColumn()); ++row)
        goToRow(row);
    if (!isUsable(table->currentRow(), table->currentColumn()))
        table->selectionModel()->setCurrentIndex(QModelIndex(), QItemSelectionModel::NoUpdate);
}

bool TableKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ContextMenu) {
        // A mouse asks in the viewport, the keyboard in the table.
        const auto &asked = *static_cast<QContextMenuEvent *>(event);
        if (watched != table)
            openMenu(table->rowAt(asked.y()), asked.globalPos());
        else if (asked.reason() == QContextMenuEvent::Keyboard)
            openMenu(table->currentRow(),
                     table->viewport()->mapToGlobal(table->visualRect(table->currentIndex()).center()));
        return true;
    }
    if (event->type() == QEvent::FocusIn && watched == table)
        ensureCurrentCell();
    return event->type() == QEvent::KeyPress && watched == table && handleKey(*static_cast<QKeyEvent *>(event));
}

/// Whether the key is one of ours.
bool TableKeys::handleKey(const QKeyEvent &event)
{
    const int row = table->currentRow();
    const int column = table->currentColumn();
    if (row < 0 || table->isRowHidden(row))
        return false;
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const bool isInfoKey = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter || event.key() == Qt::Key_Space
                           || event.key() == Qt::Key_Select;
    if (modifiers == Qt::NoModifier && (event.key() == Qt::Key_F1 || (column == InfoColumn && isInfoKey))) {
        // A key that is held down asks once.
        if (!event.isAutoRepeat())
            emit infoRequested(row, InfoColumn);
        return true;
    }
    if (modifiers == Qt::ControlModifier && event.key() == Qt::Key_S) {
        sortByCurrentColumn();
        return true;
    }
    if (event.matches(QKeySequence::Copy)) {
        copy(row, column == CodeColumn || column == NameColumn ? column : ValueColumn);
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

void TableKeys::copy(int row, int column) const
{
    if (const QTableWidgetItem *cell = table->item(row, column))
        QGuiApplication::clipboard()->setText(cell->text());
}

void TableKeys::openMenu(int row, const QPoint &position)
{
    if (!table->item(row, KeyColumn))
        return; // below the last row, or a row without cells
    if (row != table->currentRow())
        goToRow(row);
    auto *menu = new QMenu(table);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction *copyValue = menu->addAction(tr("Copy &Value"));
    copyValue->setShortcut(QKeySequence::Copy);
    connect(copyValue, &QAction::triggered, this, [this, row] { copy(row, ValueColumn); });
    connect(menu->addAction(tr("Copy &Name")), &QAction::triggered, this, [this, row] { copy(row, NameColumn); });
    QAction *details = menu->addAction(tr("&Details"));
    details->setShortcut(Qt::Key_F1);
    // Once the menu is gone, since the box keeps the signal's sender waiting.
    connect(
        details, &QAction::triggered, this, [this, row] { emit infoRequested(row, InfoColumn); }, Qt::QueuedConnection);
    menu->popup(position);
}
