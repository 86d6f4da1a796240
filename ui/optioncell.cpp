#include "optioncell.h"

#include "dhcpoption.h"
#include "dhcptable.h"

OptionCell::OptionCell(const QString &text, const CellLooks *looks, int type)
    : QTableWidgetItem(text, type)
    , m_looks(looks)
{
}

KeyCell::KeyCell(DhcpOption *option, const CellLooks *looks)
    : OptionCell(option->linuxName, looks, Type)
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
    case Qt::TextAlignmentRole:
        return m_looks->alignment;
    case Qt::FontRole:
        return m_looks->font;
    case Qt::DecorationRole:
        return m_looks->icon;
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
