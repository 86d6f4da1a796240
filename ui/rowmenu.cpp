#include "rowmenu.h"

#include "currentcell.h"
#include "optioncell.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QShortcut>
#include <QTableWidget>

RowMenu::RowMenu(QTableWidget *table, CurrentCell *current) : QMenu(table), table(table), current(current)
{
    const auto add = [this](const QString &text, auto act) {
        QAction *action = addAction(text);
        // Once the menu is gone: the details keep whoever asks for them waiting.
        connect(action, &QAction::triggered, this, act, Qt::QueuedConnection);
        return action;
    };
    QAction *details = add(tr("&Details"), [=] { emit detailsRequested(table->currentRow(), InfoColumn); });
    details->setShortcut(Qt::Key_F1);
    details->setShortcutContext(Qt::WidgetShortcut);
    details->setAutoRepeat(false);
    table->addAction(details);
    connect(table, &QTableWidget::currentCellChanged, details, [details](int, int column) {
        QList<QKeySequence> keys = {Qt::Key_F1};
        if (column == InfoColumn) // which is a button to the user
            keys << Qt::Key_Space << Qt::Key_Select << Qt::Key_Return << Qt::Key_Enter;
        details->setShortcuts(keys);
    });

    changeCode = add(tr("Change C&ode"), [=] {
        table->setCurrentCell(table->currentRow(), CodeColumn);
        table->editItem(table->currentItem());
    });
    changeCode->setShortcut(Qt::Key_F2); // the table's own, only shown here

    addSeparator();
    add(tr("Copy &Value"), [=] { copy(ValueColumn); });
    add(tr("Copy &Name"), [=] { copy(NameColumn); });
    connect(new QShortcut(QKeySequence::Copy, table, nullptr, nullptr, Qt::WidgetShortcut), &QShortcut::activated, this,
            [=] {
                const int column = table->currentColumn();
                copy(column == CodeColumn || column == NameColumn ? column : ValueColumn);
            });

    addSeparator();
    QAction *find = add(tr("&Find"), [=] { emit findRequested(); });
    find->setShortcut(QKeySequence::Find); // from anywhere in the window
    table->addAction(find);
    QMenu *sort = addMenu(tr("&Sort by"));
    for (const int column : {RequestedColumn, CodeColumn, NameColumn, ValueColumn}) {
        const QString heading = table->horizontalHeaderItem(column)->text().simplified();
        connect(sort->addAction(heading), &QAction::triggered, this, [=] { sortBy(column); });
    }

    table->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(table, &QWidget::customContextMenuRequested, this, &RowMenu::open);
}

void RowMenu::open(const QPoint &position)
{
    current->goTo(table->rowAt(position.y()), table->columnAt(position.x()));
    const QTableWidgetItem *code = table->item(table->currentRow(), CodeColumn);
    changeCode->setEnabled(code && isEditable(code->flags()));
    popup(table->viewport()->mapToGlobal(position));
}

void RowMenu::copy(int column) const
{
    if (const QTableWidgetItem *cell = table->item(table->currentRow(), column))
        QGuiApplication::clipboard()->setText(cell->text());
}

/// Once more the other way, as a click on the header.
void RowMenu::sortBy(int column)
{
    const QHeaderView *header = table->horizontalHeader();
    const bool isAscending = header->sortIndicatorSection() == column
                             && header->sortIndicatorOrder() == Qt::AscendingOrder;
    table->sortByColumn(column, isAscending ? Qt::DescendingOrder : Qt::AscendingOrder);
}
