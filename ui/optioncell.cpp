#include "optioncell.h"

#include "dhcptable.h"

OptionCell::OptionCell(const QString &text)
    : QTableWidgetItem(text, UserType)
{
}

QVariant OptionCell::data(int role) const
{
    return role == Qt::AccessibleTextRole ? accessibleText() : QTableWidgetItem::data(role);
}

QString OptionCell::accessibleText() const
{
    const QTableWidget *table = tableWidget();
    if (!table)
        return text();
    const QTableWidgetItem *header = table->horizontalHeaderItem(column());
    const QTableWidgetItem *name = table->item(row(), DhcpTable::NameColumn);
    const QString content = text().isEmpty() && name ? name->text() : text();
    const QString heading = header ? header->text().simplified() : QString();
    return DhcpTable::tr("%1: %2", "Spoken by a screen reader: column header, cell content").arg(heading, content);
}
