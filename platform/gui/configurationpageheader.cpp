#include "configurationpageheader.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

namespace {

constexpr qreal TitleScale = 1.3;

} // namespace

ConfigurationPageHeader::ConfigurationPageHeader(const QString &title, bool ruled, QWidget *parent)
    : QWidget(parent)
    , icon(new QLabel(this))
    , note(new QLabel(this))
{
    auto *titleLabel = new QLabel(title, this);
    QFont font = titleLabel->font();
    font.setBold(true);
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * TitleScale);
    else // an application font that is set in pixels
        font.setPixelSize(qRound(font.pixelSize() * TitleScale));
    titleLabel->setFont(font);
    icon->hide();
    note->setWordWrap(true);
    note->setTextFormat(Qt::PlainText);
    note->hide();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);

    auto *texts = new QVBoxLayout;
    texts->addWidget(titleLabel);
    texts->addWidget(note);

    auto *row = new QHBoxLayout;
    row->setSpacing(style()->pixelMetric(QStyle::PM_LayoutLeftMargin));
    row->addWidget(icon);
    row->addLayout(texts, 1);
    row->setContentsMargins(style()->pixelMetric(QStyle::PM_LayoutLeftMargin),
                            style()->pixelMetric(QStyle::PM_LayoutTopMargin),
                            style()->pixelMetric(QStyle::PM_LayoutRightMargin),
                            style()->pixelMetric(QStyle::PM_LayoutBottomMargin));

    auto *page = new QVBoxLayout(this);
    page->setContentsMargins(0, 0, 0, 0);
    page->setSpacing(0);
    page->addLayout(row);
    if (ruled) {
        auto *rule = new QFrame(this);
        rule->setFrameStyle(QFrame::HLine | QFrame::Sunken);
        page->addWidget(rule);
    }
}

void ConfigurationPageHeader::setTitleIcon(const QPixmap &pixmap)
{
    icon->setPixmap(pixmap);
    icon->setVisible(!pixmap.isNull());
}

void ConfigurationPageHeader::setNote(const QString &text)
{
    note->setText(text);
    note->setVisible(!text.isEmpty());
}
