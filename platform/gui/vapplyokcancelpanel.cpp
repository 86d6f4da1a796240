#include "vapplyokcancelpanel.h"

#include <QHBoxLayout>

VApplyOkCancelPanel::VApplyOkCancelPanel(QFlags<Button> buttons, QWidget *parent)
    : QWidget(parent)
    , m_row(new QHBoxLayout(this))
{
    if (buttons.testFlag(Apply))
        m_apply = addButton(tr("&Apply"));
    if (buttons.testFlag(Ok))
        m_ok = addButton(tr("&OK"));
    if (buttons.testFlag(Cancel))
        m_cancel = addButton(tr("&Cancel"));
}

QPushButton *VApplyOkCancelPanel::addButton(const QString &text)
{
    auto *button = new QPushButton(text, this);
    m_row->addWidget(button);
    return button;
}

void VApplyOkCancelPanel::prependStretch(int factor)
{
    m_row->insertStretch(0, factor);
}

void VApplyOkCancelPanel::prependWidget(QWidget *widget)
{
    m_row->insertWidget(0, widget);
}
