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
    ours.palette.setColor(QPalette::Disabled, QPalette::Text, mixed(color(QPalette::Text), base, DisabledTextShare));
    QStyledItemDelegate::paint(painter, ours, index);
}

bool OptionDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                               const QModelIndex &index)
{
    const QRect seen = view->visualRect(index) & view->viewport()->rect();
    const QString text = index.data().toString();
    if (event->type() != QEvent::ToolTip || text.isEmpty() || sizeHint(option, index).width() <= seen.width())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), toolTipText(text), view->viewport(), seen);
    return true;
}
