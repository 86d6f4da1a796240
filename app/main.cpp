#include "dhcpapp.h"
#include "mainwindow.h"
#include "rights.h"
#include "sighup.h"
#include "vapplication.h"

#include <QStringList>

#include <algorithm>
#include <csignal>
#include <iostream>

namespace {

const QLatin1String UpdateOption("--update");
const QLatin1String ApplyOption("--apply");
const QLatin1String ShowAllOption("--show-all");

bool asksForUpdate(const QString &argument)
{
    return argument == UpdateOption || argument == ApplyOption;
}

/// Whether the command line asks for an update run, found out before there is an application object: that one
/// already connects to the display, of which an update run has no need and may have none.
bool startsUpdateRun(int argc, char **argv)
{
    return argc > 1
        && std::any_of(argv + 1, argv + argc, [](const char *argument) {
               return asksForUpdate(QString::fromLocal8Bit(argument));
           });
}

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
    VApplication::setHeadless(startsUpdateRun(argc, argv));
    VApplication application(argc, argv, true, true, true);
    application.exitIfRunning();

    bool updateMode = false;
    bool showAll = false;
    const QStringList arguments = QCoreApplication::arguments();
    for (int i = 1; i < arguments.count(); ++i) {
        const QString &argument = arguments.at(i);
        if (asksForUpdate(argument))
            updateMode = true;
        else if (argument == ShowAllOption)
            showAll = true;
    }
    if (VApplication::isHeadless() && !updateMode) {
        std::cerr << "Cannot open the display: an option of the window system took \"--update\" or \"--apply\" for"
                     " its value" << std::endl;
        return 1;
    }

    if (!updateMode)
        reportMissingRights();
    DhcpApp app(updateMode, showAll);
    installSighupHandler();
    if (app.isUpdateRun()) {
        app.mainWindow()->apply();
        return 0;
    }
    app.mainWindow()->setVisible(true);
    return QApplication::exec();
}
