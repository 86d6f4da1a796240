#ifndef VCHECKBOX_H
#define VCHECKBOX_H

#include "vwidget.h"

#include <QCheckBox>

#include <memory>

/// A check box bound to a registry entry of type bool ("1" or "0"). Starts checked when the entry holds "1".
class VCheckBox : public VWidget
{
    Q_OBJECT

public:
    VCheckBox(VGui *gui, const QString &key);

    /// The button to show or to drive. It stays without a parent until somebody lays it out, so that a field
    /// which is never laid out never shows up in a window; it lives as long as the VCheckBox.
    /// Made when it is first asked for, since a button weighs a kilobyte and most are never shown.
    QAbstractButton *fieldWidget();

    /// The button's state, whether there is one yet or not.
    bool isChecked() const { return m_button ? m_button->isChecked() : m_checked; }
    void setChecked(bool checked);

    void store(VorkanClient &client) override;

private:
    Q_DISABLE_COPY(VCheckBox)
    std::unique_ptr<QCheckBox> m_button;
    bool m_checked; ///< while there is no button
};

#endif
