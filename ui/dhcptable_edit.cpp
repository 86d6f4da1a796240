// Editing, refresh of the current values, and apply.

#include "dhcptable.h"

#include "dhcpoption.h"
#include "vcheckbox.h"
#include "vorkanclient.h"

void DhcpTable::dataChange(int row, int column)
{
    if (column == RequestedColumn)
        requestedChanged(row);
    else if (column == CodeColumn)
        codeChanged(row);
}

void DhcpTable::requestedChanged(int row)
{
    const bool requested = item(row, RequestedColumn)->checkState() != Qt::Unchecked;
    checkBoxes.value(item(row, KeyColumn)->text())->fieldWidget()->setChecked(requested);
    for (int column = CodeColumn; column <= KeyColumn; ++column)
        item(row, column)->setFlags(requested ? Qt::ItemIsEnabled : Qt::NoItemFlags);
}

void DhcpTable::codeChanged(int row)
{
    QTableWidgetItem *codeCell = item(row, CodeColumn);
    DhcpOption *option = optionAt(row);
    if (!codeCell || !option)
        return;
    if (!option->setCode(codeCell->text()))
        codeCell->setText(QString::number(option->code));
}

void DhcpTable::finishEditing()
{
    // The editor hands its text over when it loses the focus.
    if (state() == EditingState)
        setFocus();
}

void DhcpTable::refreshValues()
{
    setSortingEnabled(false); // the rows would move meanwhile
    for (int row = 0; row < rowCount(); ++row) {
        if (DhcpOption *option = optionAt(row)) {
            option->readCurrentValue();
            item(row, ValueColumn)->setText(option->currentValue);
        }
    }
    setSortingEnabled(true);
}

void DhcpTable::applyOptions(bool force)
{
    bool changed = false;
    for (int row = 0; row < rowCount(); ++row) {
        DhcpOption *option = optionAt(row);
        if (!option || option->dhcpClass == Managed || option->dhcpClass == AlwaysOff)
            continue;
        const bool requested = option->dhcpClass == AlwaysOn || item(row, RequestedColumn)->checkState() == Qt::Checked;
        if (!force && requested == option->appliedRequested && option->code == option->appliedCode)
            continue;
        if (option->applyToClient(requested))
            changed = true;
    }
    if (changed)
        VorkanClient().commit(QString());
}
