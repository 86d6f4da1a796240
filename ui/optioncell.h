#ifndef OPTIONCELL_H
#define OPTIONCELL_H

#include <QTableWidgetItem>

/// What the cells of one kind share besides their text.
struct CellLooks
{
    QVariant alignment;
    QVariant font;
    QVariant icon;
};

/// A cell of the option table. Tells a screen reader what it is: its column's header, and its text or, in a cell
/// without text, the option's name. Whether it is disabled or can be edited it tells in words: Qt's table reports
/// neither state. That is looked up when asked for, and the looks are shared, so that a cell costs no memory for
/// them.
class OptionCell : public QTableWidgetItem
{
public:
    /// The looks are not owned and must outlive the cell.
    OptionCell(const QString &text, const CellLooks *looks, int type = UserType);

    QVariant data(int role) const override;

private:
    QString accessibleText() const;
    QString accessibleDescription() const;

    const CellLooks *m_looks;
};

class DhcpOption;

/// The cell that tells which option its row is for: its text is the option's client name. It also holds the option
/// itself, since to look thousands of names up costs more than all that is done with the options found.
class KeyCell : public OptionCell
{
public:
    static constexpr int Type = UserType + 1;

    KeyCell(DhcpOption *option, const CellLooks *looks);

    DhcpOption *option() const { return m_option; }

private:
    DhcpOption *m_option;
};

#endif
