#ifndef EDITTOOL_H
#define EDITTOOL_H

#include <QStringList>

class QObject;

/// The tool that edits the DHCP client's configuration.
namespace EditTool {

/// Whether a tool that is started from here has the right to write the client's configuration.
bool mayEdit();

/// Starts the tool and waits until it has ended, 2 s at most; a slower one finishes its edit on its own, also
/// when `owner`, whose child the process object is, goes before.
void run(const QStringList &arguments, QObject *owner);

} // namespace EditTool

#endif
