#include "optioncell.h"

#include "dhcpoption.h"
#include "dhcptable.h"

OptionCell::OptionCell(const QString &text, int type)
    : QTableWidgetItem(text, type)
{
}

KeyCell::KeyCell(DhcpOption *option)
    : OptionCell(option->linuxName, Type)
    , m_option(option)
{
}

QVariant OptionCell::data(int role) const
{
    switch (role) {
    case Qt::AccessibleTextRole:
        return accessibleText();
    case Qt::AccessibleDescriptionRole:
        return accessibleDescription();
    default:
        return QTableWidgetItem::data(role);
    }
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

QString OptionCell::accessibleDescription() const
{
    if (!flags().testFlag(Qt::ItemIsEnabled))
        return DhcpTable::tr("Disabled", "Spoken by a screen reader: the cell cannot be used");
    if (flags().testFlag(Qt::ItemIsEditable))
        return DhcpTable::tr("Editable", "Spoken by a screen reader: the cell can be edited");
    return QString();
}
