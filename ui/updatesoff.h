#ifndef UPDATESOFF_H
#define UPDATESOFF_H

#include <QWidget>

/// Suspends a widget's repainting while it lives. Hiding thousands of rows is some twenty times faster that way.
class UpdatesOff
{
public:
    explicit UpdatesOff(QWidget *widget) : widget(widget), wereOn(widget->updatesEnabled())
    {
        widget->setUpdatesEnabled(false);
    }
    ~UpdatesOff() { widget->setUpdatesEnabled(wereOn); }

private:
    Q_DISABLE_COPY(UpdatesOff)
    QWidget *widget;
    bool wereOn;
};

#endif
