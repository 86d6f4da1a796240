#ifndef UPDATESOFF_H
#define UPDATESOFF_H

#include <QWidget>

/// Holds a widget's repainting back while it lives. Hiding thousands of rows is some twenty times faster so.
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
