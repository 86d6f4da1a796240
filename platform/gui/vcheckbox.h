#ifndef VCHECKBOX_H
#define VCHECKBOX_H

#include "vwidget.h"

#include <QCheckBox>

/// A check box bound to a registry entry of type bool ("1" or "0"). Starts checked when the entry holds "1".
class VCheckBox : public VWidget
{
    Q_OBJECT

public:
    VCheckBox(VGui *gui, const QString &key);

    /// The button to show or to drive, which holds the field's state. It has no parent until somebody lays it out,
    /// so that a field which is never laid out never appears in a window; it lives as long as the VCheckBox.
    QAbstractButton *fieldWidget() { return &button; }

    void store(VorkanClient &client) override;

private:
    Q_DISABLE_COPY(VCheckBox)
    QCheckBox button;
};

#endif
