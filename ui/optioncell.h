#ifndef OPTIONCELL_H
#define OPTIONCELL_H

#include <QTableWidgetItem>

/// A cell of the option table. Tells a screen reader what it is: its column's header, and its text or, in a cell
/// without text, the option's name. Whether it is disabled or can be edited it tells in words: Qt's table reports
/// neither state. All is looked up when asked for, so that a cell costs no memory for it.
class OptionCell : public QTableWidgetItem
{
public:
    explicit OptionCell(const QString &text, int type = UserType);

    QVariant data(int role) const override;

private:
    QString accessibleText() const;
    QString accessibleDescription() const;
};

class DhcpOption;

/// The cell that tells which option its row is for: its text is the option's client name. It also holds the option
/// itself, since to look thousands of names up costs more than all that is done with the options found.
class KeyCell : public OptionCell
{
public:
    static constexpr int Type = UserType + 1;

    explicit KeyCell(DhcpOption *option);

    DhcpOption *option() const { return m_option; }

private:
    DhcpOption *m_option;
};

#endif
