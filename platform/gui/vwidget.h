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

    QString key() const { return m_key; }

    /// Writes the field's state to its entry, making the entry when it is missing. Returns true when the state
    /// differed, that is when the client has something to commit now.
    virtual bool store(VorkanClient &client) = 0;

private:
    Q_DISABLE_COPY(VWidget)
    QString m_key;
};

#endif
