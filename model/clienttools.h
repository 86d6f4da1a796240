#ifndef CLIENTTOOLS_H
#define CLIENTTOOLS_H

#include <QStringList>

#include <functional>

class QObject;

/// The DHCP client and the tool that edits its configuration, both programs of their own.
namespace ClientTools {

/// Whether an edit tool that is started from here has the right to write the client's configuration.
bool mayEdit();

/// Runs the edit tool and waits for its end, 2 s at most. The process object, a child of `owner`, is handed to
/// deferred deletion: a tool that still runs then is killed. Without an event loop it goes on.
void edit(const QStringList &commands, QObject *owner);

/// Has the edit tool look over the configuration, and does not wait for it. `report` gets the first of the tool's lines
/// if there is a fault, unless `owner` is gone by then.
void check(QObject *owner, const std::function<void(const QString &)> &report);

/// Starts the client, detached. It reads the configuration as it is then.
void start();

} // namespace ClientTools

#endif
