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

    /// Writes the field's state to its entry if it differs, and creates a missing entry. Pending until the client
    /// commits.
    virtual void store(VorkanClient &client) = 0;

private:
    Q_DISABLE_COPY(VWidget)
};

#endif
