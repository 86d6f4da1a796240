#include "currentcell.h"

#include <QTableWidget>
#include <QTimer>

CurrentCell::CurrentCell(QTableWidget *table) : QObject(table), table(table)
{
    connect(table, &QTableWidget::cellClicked, this, &CurrentCell::goTo);
    const QAbstractItemModel *model = table->model();
    connect(model, &QAbstractItemModel::layoutAboutToBeChanged, this, [this] { wasInSight = isInSight(); });
    connect(model, &QAbstractItemModel::layoutChanged, this, [this] {
        if (wasInSight)
            this->table->scrollTo(this->table->currentIndex());
    });
    QTimer::singleShot(0, this, &CurrentCell::ensure); // once it is known in which view the table starts
}

bool CurrentCell::isInSight() const
{
    return table->viewport()->rect().intersects(table->visualRect(table->currentIndex()));
}

bool CurrentCell::isUsable(int row, int column) const
{
    const QTableWidgetItem *cell = table->item(row, column);
    return cell && cell->flags().testFlag(Qt::ItemIsEnabled) && !table->isRowHidden(row)
           && !table->isColumnHidden(column);
}

void CurrentCell::goTo(int row, int column)
{
    for (int other = 0; !isUsable(row, column) && other < table->columnCount(); ++other)
        column = isUsable(row, other) ? other : column;
    if (isUsable(row, column))
        table->setCurrentCell(row, column, QItemSelectionModel::Clear);
}

void CurrentCell::ensure()
{
    for (int row = 0; row < table->rowCount() && !isUsable(table->currentRow(), table->currentColumn()); ++row)
        goTo(row, 0);
    if (!isUsable(table->currentRow(), table->currentColumn()))
        table->selectionModel()->setCurrentIndex(QModelIndex(), QItemSelectionModel::NoUpdate);
}
