#ifndef OPTIONCELL_H
#define OPTIONCELL_H

#include <QCoreApplication>
#include <QTableWidgetItem>

/// The columns of the option table.
enum OptionColumn { RequestedColumn, CodeColumn, NameColumn, InfoColumn, ValueColumn, KeyColumn };

/// Whether the cell with these flags can be edited now; a disabled one cannot.
inline bool isEditable(Qt::ItemFlags flags)
{
    return flags.testFlag(Qt::ItemIsEnabled) && flags.testFlag(Qt::ItemIsEditable);
}

/// A cell of the option table. It gives a screen reader its column's header and its text or, without a text, the
/// option's name; also whether it is disabled or can be edited, which Qt's table does not report.
class OptionCell : public QTableWidgetItem
{
    Q_DECLARE_TR_FUNCTIONS(OptionCell)

public:
    using QTableWidgetItem::QTableWidgetItem;

    QVariant data(int role) const override;

    /// Equal texts are in the order of the boxes that were noted last, ticked ones first.
    bool operator<(const QTableWidgetItem &other) const override;
    /// Notes whether the box is ticked. Not done by the tick itself, which would move the row away from the mouse.
    void noteBox() { wasTicked = checkState() == Qt::Checked; }

private:
    QString accessibleText() const;
    QString accessibleDescription() const;

    bool wasTicked = false;
};

#endif
