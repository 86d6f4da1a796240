#include "vapplyokcancelpanel.h"

#include <QHBoxLayout>

VApplyOkCancelPanel::VApplyOkCancelPanel(QFlags<Button> buttons, QWidget *parent)
    : QWidget(parent)
    , row(new QHBoxLayout(this))
{
    if (buttons.testFlag(Apply))
        apply = addButton(tr("&Apply"));
    if (buttons.testFlag(Ok))
        ok = addButton(tr("&OK"));
    if (buttons.testFlag(Cancel))
        cancel = addButton(tr("&Cancel"));
}

QPushButton *VApplyOkCancelPanel::addButton(const QString &text)
{
    auto *button = new QPushButton(text, this);
    button->setAutoDefault(true); // presses it with Enter, as in a dialog
    row->addWidget(button);
    return button;
}

void VApplyOkCancelPanel::prependStretch(int factor)
{
    row->insertStretch(0, factor);
}

void VApplyOkCancelPanel::prependWidget(QWidget *widget)
{
    row->insertWidget(0, widget);
}
