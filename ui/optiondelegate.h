#ifndef OPTIONDELEGATE_H
#define OPTIONDELEGATE_H

#include <QStyledItemDelegate>

/// Paints the cells of the option table.
///
/// Most options are not requested, and their disabled cells are read to choose among them: their text keeps a contrast
/// of 4.5:1. The current row is tinted, so that it is found again without the focus. A value reads from left to right,
/// whatever the layout. Text that does not fit shows whole in a tooltip. The icon of a code that cannot be edited yet
/// is grey.
class OptionDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    Q_DISABLE_COPY(OptionDelegate)
};

#endif
