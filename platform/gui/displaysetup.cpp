#include "displaysetup.h"

#include "standarderror.h"

#include <QGuiApplication>
#include <QString>

#include <unistd.h>

#include <cstring>
#include <iostream>
#include <memory>

namespace {

// Qt's message handler is one per process and a plain function, so what it works with has to be here.
QtMessageHandler defaultHandler = nullptr;
std::unique_ptr<WithheldStandardError> withheld;
QString firstComplaint;
bool displayNamed = false;

/// Remarks of Qt on the surroundings, which are no fault: neither pkexec nor a boot unit provides the runtime
/// directory, which nothing here uses, some platforms have no size hints, and a session's manager may be another
/// user's.
bool isIdleRemark(const QString &message)
{
    return message.startsWith(QLatin1String("QStandardPaths: "))
        || message.startsWith(QLatin1String("This plugin does not support "))
        || message.startsWith(QLatin1String("Qt: Session management error: "));
}

void filteringHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!isIdleRemark(message))
        defaultHandler(type, context, message);
}

/// Why the display could not be opened. The window system's libraries write to standard error by themselves, and
/// know more than the platform plugin, whose complaints know more than the fatal message at the end.
QString reasonFor(const QString &fatalMessage)
{
    const QString said = withheld ? withheld->text() : QString();
    if (!said.isEmpty())
        return said;
    if (!displayNamed)
        return QStringLiteral("DISPLAY is not set");
    return firstComplaint.isEmpty() ? fatalMessage : firstComplaint;
}

[[noreturn]] void fail(const QString &fatalMessage)
{
    const QString reason = reasonFor(fatalMessage).simplified();
    withheld.reset();
    std::cerr << "Cannot open the display: " << reason.toStdString() << std::endl;
    // Not exit(): the application object is half built.
    ::_exit(1);
}

void guardingHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtFatalMsg) {
        const bool isPlatformsComplaint = type != QtDebugMsg && context.category
            && std::strncmp(context.category, "qt.qpa.", 7) == 0;
        if (!isPlatformsComplaint)
            filteringHandler(type, context, message);
        else if (firstComplaint.isEmpty())
            firstComplaint = message;
        return;
    }
    fail(message);
}

/// Qt takes its own options with one dash or two.
bool isOption(const char *argument, const char *name)
{
    return std::strcmp(argument, name) == 0 || (argument[0] == '-' && std::strcmp(argument + 1, name) == 0);
}

/// How many arguments, from this one on, choose what to load for the display.
int choosingDisplay(const char *argument)
{
    for (const char *name : {"-platform", "-platformtheme", "-style"}) {
        if (isOption(argument, name))
            return 2;
    }
    const QLatin1String text(argument);
    return text.startsWith(QLatin1String("-style=")) || text.startsWith(QLatin1String("--style=")) ? 1 : 0;
}

} // namespace

DisplaySetup::DisplaySetup(int argc, char **argv, Options options)
    : m_guarding(options.guardDisplay)
{
    bool platformNamed = !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
    const bool displaySet = !qEnvironmentVariableIsEmpty("DISPLAY");
    displayNamed = displaySet || platformNamed || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    for (int i = 0; i < argc; ++i) {
        const int skipped = i > 0 && options.headless ? choosingDisplay(argv[i]) : 0;
        if (skipped > 0) {
            i += skipped - 1;
            continue;
        }
        platformNamed = platformNamed || (i > 0 && isOption(argv[i], "-platform"));
        displayNamed = displayNamed || platformNamed || (i > 0 && isOption(argv[i], "-display"));
        m_argv.push_back(argv[i]);
    }
    // Given as arguments, which win over the environment's wishes and are not inherited by the programs that are
    // started from here. Some themes connect to a display whatever the platform is.
    if (options.headless) {
        addOption("-platform", "minimal");
        addOption("-platformtheme", "");
        addOption("-style", "fusion");
    } else if (!platformNamed && displaySet) {
        addOption("-platform", "xcb"); // Qt's own choice grumbles in a Wayland session
    }
    m_argc = static_cast<int>(m_argv.size());
    m_argv.push_back(nullptr);

    // Widgets paint without OpenGL; loading it would cost half of the start and 50 MiB. There is no argument for
    // this one.
    if (options.withoutOpenGl && !options.headless && !qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");

    defaultHandler = qInstallMessageHandler(m_guarding ? guardingHandler : filteringHandler);
    if (m_guarding && !options.headless)
        withheld = std::make_unique<WithheldStandardError>();
}

void DisplaySetup::addOption(const char *name, const char *value)
{
    // Qt takes the arguments as char *, but only reads them.
    const auto position = m_argv.empty() ? m_argv.end() : m_argv.begin() + 1;
    m_argv.insert(position, {const_cast<char *>(name), const_cast<char *>(value)});
}

void DisplaySetup::opened()
{
    if (!m_guarding)
        return;
    // Some platforms only tell that there is no screen; the first window would then end in an abort.
    if (QGuiApplication::screens().isEmpty())
        fail(QStringLiteral("no screens available"));
    withheld.reset();
    qInstallMessageHandler(filteringHandler);
    if (!firstComplaint.isEmpty())
        qWarning("%s", qUtf8Printable(firstComplaint));
}
