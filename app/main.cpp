#include "dhcpapp.h"
#include "mainwindow.h"
#include "sighup.h"
#include "vapplication.h"
#include "vorkanclient.h"

#include <QStringList>
#include <QTimer>

#include <algorithm>
#include <csignal>
#include <string_view>

namespace {

void installSighupHandler()
{
    struct sigaction action = {};
    action.sa_handler = sighupHandler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGHUP, &action, nullptr);
}

} // namespace

int main(int argc, char **argv)
{
    // A message that nobody reads any more, as after "| head", must not end an apply half-way.
    std::signal(SIGPIPE, SIG_IGN);
    // Only ours reach Qt: its own load plugins from any directory, or open root's window on a port.
    const auto isUnknown = [](std::string_view argument) {
        return argument != "--update" && argument != "--apply" && argument != "--show-all";
    };
    argc = static_cast<int>(std::remove_if(argv + 1, argv + argc, isUnknown) - argv);
    argv[argc] = nullptr;
    // Checked before the application object exists: it connects to the display, which an update run does not need and
    // may not have.
    const bool updateMode = std::any_of(argv + 1, argv + argc,
                                        [](std::string_view argument) { return argument != "--show-all"; });
    VApplication::setHeadless(updateMode);
    VApplication application(argc, argv, true, true, true);
    application.exitIfRunning();
    const bool showAll = QCoreApplication::arguments().mid(1).contains(QLatin1String("--show-all"));

    // Whoever locks the registry will release it at some point; a window, though, is waited for, and read and commit
    // come before it.
    VorkanClient::setPatience(updateMode ? std::chrono::minutes(1) : std::chrono::milliseconds(700));
    DhcpApp app(updateMode, showAll);
    installSighupHandler();
    if (app.isUpdateRun()) {
        // Defaults must not replace choices that could not be read.
        if (VorkanClient::isReadable())
            app.mainWindow()->apply();
        return 0;
    }
    app.mainWindow()->setVisible(true);
    VorkanClient::setPatience(std::chrono::seconds(10));
    QTimer::singleShot(0, app.mainWindow(), &MainWindow::examineMachine);
    return QApplication::exec();
}
