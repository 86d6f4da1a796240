#include "vapplication.h"

#include <QFile>
#include <QSocketNotifier>
#include <QWidget>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace {

constexpr char ProgramName[] = "kiro-dhcp-mgr";

bool headlessRequested = false;

// Qt's message handler is one per process and a plain function, so what it works with has to be here.
QtMessageHandler defaultHandler = nullptr;
bool isOpeningGuarded = false;
QString firstComplaint;

bool isHarmless(const QString &message)
{
    const auto beginnings = {
        "QStandardPaths: ",                  // pkexec and boot units set no runtime directory; nothing here uses it
        "This plugin does not support ",     // platforms without size hints
        "Qt: Session management error: ",    // the session's manager is another user's
        "QProcess: Destroyed while process " // a tool that takes too long is ended on purpose
    };
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&](const char *beginning) { return message.startsWith(QLatin1String(beginning)); });
}

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const bool isComplaint = isOpeningGuarded && type != QtDebugMsg
                             && QByteArray(context.category).startsWith("qt.qpa.");
    if (isOpeningGuarded && type == QtFatalMsg) {
        // The platform's first complaint is closer to the cause than the fatal message at the end.
        const QString &reason = firstComplaint.isEmpty() ? message : firstComplaint;
        std::cerr << "Cannot open the display: " << reason.simplified().toStdString() << std::endl;
        ::_exit(1); // not exit(): the application object is half built
    } else if (isComplaint && firstComplaint.isEmpty()) {
        firstComplaint = message;
    } else if (!isComplaint && !isHarmless(message)) {
        defaultHandler(type, context, message);
    }
}

/// The caller of a program that runs as root must not have it load plugins of the caller's, nor serve its window on a
/// port, as the "vnc" platform does.
void distrustEnvironment()
{
    qunsetenv("QT_PLUGIN_PATH");
    qunsetenv("QT_QPA_PLATFORM_PLUGIN_PATH");
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const auto trusted = {"xcb", "wayland", "offscreen", "minimal"};
    if (std::find(trusted.begin(), trusted.end(), platform) == trusted.end())
        qunsetenv("QT_QPA_PLATFORM");
}

void bringToFront()
{
    const auto show = [](QWidget *window) {
        window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
        window->raise();
        window->activateWindow();
        QApplication::alert(window); // it may be on another workspace
    };
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window->isVisible() && window->windowType() == Qt::Window)
            show(window);
    }
    if (QWidget *box = QApplication::activeModalWidget())
        show(box);
}

} // namespace

DisplaySetup::DisplaySetup(bool guardDisplay, bool light)
{
    if (::geteuid() == 0)
        distrustEnvironment();
    if (headlessRequested) {
        qputenv("QT_QPA_PLATFORM", "minimal");
        // Some themes and styles connect to a display whatever the platform is.
        qunsetenv("QT_QPA_PLATFORMTHEME");
        qputenv("QT_STYLE_OVERRIDE", "fusion"); // which is also the quickest to make
    } else if (!qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "xcb"); // Qt's own choice complains in a Wayland session
    }
    // Widgets paint without OpenGL; loading it would cost half of the start and 50 MiB.
    if (light && !qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    // Without a session's bus, as under pkexec, libdbus would start one and leave it running.
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")
        && !QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/bus")))
        qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");

    isOpeningGuarded = guardDisplay;
    defaultHandler = qInstallMessageHandler(handleMessage);
}

void VApplication::setHeadless(bool headless)
{
    headlessRequested = headless;
}

bool VApplication::isHeadless()
{
    return headlessRequested;
}

VApplication::VApplication(int &argc, char **argv, bool singleInstance, bool guardDisplay, bool light)
    : DisplaySetup(guardDisplay, light)
    , QApplication(argc, argv)
    , lock(ProgramName)
    , singleInstance(singleInstance)
{
    isOpeningGuarded = false;
    if (!firstComplaint.isEmpty())
        qWarning("%s", qUtf8Printable(firstComplaint));
}

void VApplication::exitIfRunning()
{
    if (!singleInstance)
        return;
    switch (lock.acquire(!headlessRequested)) {
    case InstanceLock::State::Held:
        std::cerr << ProgramName << " is already running";
        if (lock.holder() > 0)
            std::cerr << " (process " << lock.holder() << ")";
        std::cerr << std::endl;
        std::exit(AlreadyRunningStatus);
    case InstanceLock::State::Failed:
        std::cerr << "Cannot find out whether " << ProgramName << " is already running: " << lock.error() << std::endl;
        break;
    case InstanceLock::State::Acquired:
        connect(new QSocketNotifier(lock.descriptor(), QSocketNotifier::Read, this), &QSocketNotifier::activated, this,
                [this] {
                    if (lock.isAskedToShow())
                        bringToFront();
                });
        break;
    }
}
