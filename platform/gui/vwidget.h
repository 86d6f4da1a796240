#ifndef VWIDGET_H
#define VWIDGET_H

#include <QObject>

class VGui;
class VorkanClient;

/// A field bound to one registry entry. Owned by its page.
class VWidget : public QObject
{
    Q_OBJECT

public:
    VWidget(VGui *gui, const QString &key);

    const QString key;

    /// Brings the field's state to its entry when it differs, making the entry when it is missing. Pending until
    /// the client commits.
    virtual void store(VorkanClient &client) = 0;

private:
    Q_DISABLE_COPY(VWidget)
};

#endif
