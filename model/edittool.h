#ifndef EDITTOOL_H
#define EDITTOOL_H

#include <QProcess>

/// A run of the tool that edits the DHCP client's configuration.
///
/// Deleting the object does not end a run that is still under way: the tool then finishes its edit on its own,
/// where QProcess would kill it half way and grumble on standard error.
class EditTool : public QProcess
{
    Q_OBJECT

public:
    explicit EditTool(QObject *parent);
    ~EditTool() override;

    /// Whether a tool that is started from here has the right to write the client's configuration.
    static bool mayEdit();

    /// Starts the tool and waits until it has ended, 2 s at most.
    void run(const QStringList &arguments);

private:
    Q_DISABLE_COPY(EditTool)
};

#endif
