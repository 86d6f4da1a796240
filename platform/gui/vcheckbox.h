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

    /// The button to show or to drive. It stays without a parent until somebody lays it out, so that a field
    /// which is never laid out never shows up in a window; it lives as long as the VCheckBox.
    QAbstractButton *fieldWidget() { return &m_button; }

    void store(VorkanClient &client) override;

private:
    Q_DISABLE_COPY(VCheckBox)
    QCheckBox m_button;
};

#endif
