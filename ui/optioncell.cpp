#include "optioncell.h"

#include <QTableWidget>

OptionCell::OptionCell(const QString &text, const CellLooks *looks) : QTableWidgetItem(text, UserType), looks(looks) {}

QVariant OptionCell::data(int role) const
{
    switch (role) {
    case Qt::AccessibleTextRole:
        return accessibleText();
    case Qt::AccessibleDescriptionRole:
        return accessibleDescription();
    case Qt::TextAlignmentRole:
        return looks->alignment;
    case Qt::FontRole:
        return looks->font;
    case Qt::DecorationRole:
        return looks->icon;
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
    const QTableWidgetItem *name = table->item(row(), NameColumn);
    const QString content = text().isEmpty() && name ? name->text() : text();
    const QString heading = header ? header->text().simplified() : QString();
    return tr("%1: %2", "Spoken by a screen reader: column header, cell content").arg(heading, content);
}

QString OptionCell::accessibleDescription() const
{
    if (!flags().testFlag(Qt::ItemIsEnabled))
        return tr("Disabled", "Spoken by a screen reader: the cell cannot be used");
    if (flags().testFlag(Qt::ItemIsEditable))
        return tr("Editable", "Spoken by a screen reader: the cell can be edited");
    return QString();
}
