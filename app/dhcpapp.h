#ifndef DHCPAPP_H
#define DHCPAPP_H

#include <QList>
#include <QObject>

class DhcpOption;
class MainWindow;
class QSocketNotifier;

/// What the program consists of besides Qt's own application object: option records, window, refresh.
class DhcpApp : public QObject
{
    Q_OBJECT

public:
    /// Ends the process with status 1 where no definitions are installed. The window is not shown. `showAll` opens it
    /// with all options, and without `updateMode` a SIGHUP refreshes it as soon as the handler is installed.
    DhcpApp(bool updateMode, bool showAll, QObject *parent = nullptr);
    /// Leaves the records, since edit tools that still run belong to them.
    ~DhcpApp() override;

    MainWindow *mainWindow() const { return window; }
    bool isUpdateRun() const { return updateMode; }

private slots:
    void sighupRefresh();

private:
    Q_DISABLE_COPY(DhcpApp)

    void loadDefinitions();
    void armSighupRefresh();

    MainWindow *window = nullptr;
    QList<DhcpOption *> options;
    bool updateMode;
    bool showAll;
    QSocketNotifier *notifier = nullptr;
};

#endif
