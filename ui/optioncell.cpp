#include "optioncell.h"

#include <QTableWidget>

QVariant OptionCell::data(int role) const
{
    if (role == Qt::AccessibleTextRole)
        return accessibleText();
    if (role == Qt::AccessibleDescriptionRole)
        return accessibleDescription();
    return QTableWidgetItem::data(role);
}

bool OptionCell::operator<(const QTableWidgetItem &other) const
{
    if (text() != other.text())
        return QTableWidgetItem::operator<(other);
    return wasTicked && !static_cast<const OptionCell &>(other).wasTicked;
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
    if (flags().testFlag(Qt::ItemIsUserCheckable))
        return checkState() == Qt::Checked ? tr("Ticked") : tr("Not ticked");
    if (!flags().testFlag(Qt::ItemIsEnabled))
        return tr("Disabled", "Spoken by a screen reader: the cell cannot be used");
    if (flags().testFlag(Qt::ItemIsEditable))
        return tr("Editable", "Spoken by a screen reader: the cell can be edited");
    return QString();
}
