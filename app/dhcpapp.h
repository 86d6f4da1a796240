#ifndef DHCPAPP_H
#define DHCPAPP_H

#include <QList>
#include <QObject>

class DhcpOption;
class MainWindow;
class QSocketNotifier;

/// What the program consists of once it has started: the options, and the window over them.
class DhcpApp : public QObject
{
    Q_OBJECT

public:
    /// Does all that can be done before the handler of SIGHUP is installed and the window is shown. A definition that
    /// cannot be used costs a line on standard error, a missing directory of definitions the process (status 1).
    /// `updateMode` is for a run that nobody sees: it takes no SIGHUP, and each apply takes every option. `showAll`
    /// selects the view of all options.
    DhcpApp(bool updateMode, bool showAll, QObject *parent = nullptr);
    /// For the end of the process only: the window and the records are left to it.
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
