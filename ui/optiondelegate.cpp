#include "optiondelegate.h"

#include "optioncell.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QRegularExpression>
#include <QToolTip>

namespace {

constexpr qreal DisabledTextShare = 0.6; // the rest is the background
constexpr qreal TintShare = 0.12;
constexpr int ToolTipLength = 1000;  // characters
const QChar LeftToRightMark(0x200e); // keeps numbers in their order

QColor mixed(const QColor &first, const QColor &second, qreal firstShare)
{
    const auto mix = [firstShare](int a, int b) { return qRound(a * firstShare + b * (1 - firstShare)); };
    return QColor(mix(first.red(), second.red()), mix(first.green(), second.green()), mix(first.blue(), second.blue()));
}

/// A code that the client does not know by itself, but that cannot be edited at present.
bool isLockedCode(const QModelIndex &index)
{
    return index.column() == CodeColumn && index.data(Qt::DecorationRole).isValid() && !isEditable(index.flags());
}

/// Escaped, since it comes from the network, and breakable where it has no blanks.
QString toolTipText(const QString &text)
{
    static const QRegularExpression longWord(QStringLiteral("(\\S{60})"));
    QString broken = LeftToRightMark + text.left(ToolTipLength);
    broken.replace(longWord, QStringLiteral("\\1\u200b")); // zero width space
    if (text.size() > ToolTipLength)
        broken += QChar(0x2026); // an ellipsis
    return QStringLiteral("<p>") + broken.toHtmlEscaped() + QStringLiteral("</p>");
}

} // namespace

void OptionDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.column() == ValueColumn && option->direction == Qt::RightToLeft)
        option->text = LeftToRightMark + option->text + LeftToRightMark;
    if (isLockedCode(index))
        option->icon = QIcon(option->icon.pixmap(option->decorationSize, QIcon::Disabled));
}

QWidget *OptionDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                      const QModelIndex &index) const
{
    // A row without cells would take a text.
    const bool isRow = index.siblingAtColumn(KeyColumn).data().isValid();
    return isRow ? QStyledItemDelegate::createEditor(parent, option, index) : nullptr;
}

void OptionDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem ours(option);
    const auto color = [&](QPalette::ColorRole role) { return option.palette.color(QPalette::Active, role); };
    QColor base = color(QPalette::Base);
    const auto *view = qobject_cast<const QAbstractItemView *>(option.widget);
    if (view && view->currentIndex().row() == index.row()) {
        base = mixed(color(QPalette::Highlight), base, TintShare);
        painter->fillRect(option.rect, base);
    }
    // Some styles paint this once the keyboard is elsewhere.
    ours.palette.setColor(QPalette::Inactive, QPalette::Text, color(QPalette::Text));
    ours.palette.setColor(QPalette::Disabled, QPalette::Text, mixed(color(QPalette::Text), base, DisabledTextShare));
    QStyledItemDelegate::paint(painter, ours, index);
}

bool OptionDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                               const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || index.data(Qt::ToolTipRole).isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    const QRect seen = view->visualRect(index) & view->viewport()->rect();
    QString text;
    if (sizeHint(option, index).width() > seen.width())
        text = toolTipText(index.data().toString());
    else if (isLockedCode(index))
        text = tr("The code can be edited once the program is started with the option requested.");
    QToolTip::showText(event->globalPos(), text, view->viewport(), seen);
    return true;
}
