#ifndef DHCPAPP_H
#define DHCPAPP_H

#include <QList>
#include <QObject>

class DhcpOption;
class MainWindow;
class QSocketNotifier;

/// The application: holds the option records and the main window for the whole run.
class DhcpApp : public QObject
{
    Q_OBJECT

public:
    /// Loads every option definition, reporting and skipping those that fail, and builds the window hidden. Ends
    /// the process with status 1 when there is no definition directory. An interactive run (no `updateMode`) is armed
    /// to refresh the current values on SIGHUP, once the handler is installed; `showAll` opens it in the view of all
    /// options.
    DhcpApp(bool updateMode, bool showAll, QObject *parent = nullptr);
    /// Hands the window to deferred deletion. The records are not deleted.
    ~DhcpApp() override;

    MainWindow *mainWindow() const { return window; }
    bool isUpdateRun() const { return updateMode; }

private slots:
    void sighupRefresh();

private:
    Q_DISABLE_COPY(DhcpApp)

    void loadDefinitions();
    void loadDefinition(const QString &path);
    void armSighupRefresh();

    MainWindow *window = nullptr;
    QList<DhcpOption *> options;
    bool updateMode;
    bool showAll;
    QSocketNotifier *notifier = nullptr;
};

#endif
