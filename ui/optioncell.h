#ifndef OPTIONCELL_H
#define OPTIONCELL_H

#include <QCoreApplication>
#include <QTableWidgetItem>

/// The columns of the option table.
enum OptionColumn { RequestedColumn, CodeColumn, NameColumn, InfoColumn, ValueColumn, KeyColumn };

/// What the cells of one kind share besides their text.
struct CellLooks
{
    QVariant alignment;
    QVariant font;
    QVariant icon;
};

/// A cell of the option table. It gives a screen reader its column's header and its text or, without a text, the
/// option's name; also whether it is disabled or can be edited, which Qt's table does not report. These are looked up
/// when asked for, and the looks are shared, so that a cell costs no memory for them.
class OptionCell : public QTableWidgetItem
{
    Q_DECLARE_TR_FUNCTIONS(OptionCell)

public:
    /// The looks are not owned and must outlive the cell.
    OptionCell(const QString &text, const CellLooks *looks);

    QVariant data(int role) const override;

private:
    QString accessibleText() const;
    QString accessibleDescription() const;

    const CellLooks *looks;
};

#endif
