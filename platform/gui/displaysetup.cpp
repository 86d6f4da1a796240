#include "displaysetup.h"

#include <QString>
#include <QStringList>

#include <unistd.h>

#include <cstring>
#include <iostream>

namespace {

// Qt's message handler is one per process and a plain function, so what it collects has to be here.
QStringList withheldMessages;

QtMessageHandler defaultHandler = nullptr;

/// Remarks of Qt on the surroundings, which are no fault: neither pkexec nor a boot unit provides the runtime
/// directory, which nothing here uses, and some platforms have no size hints.
bool isIdleRemark(const QString &message)
{
    return message.startsWith(QLatin1String("QStandardPaths: "))
        || message.startsWith(QLatin1String("This plugin does not support "));
}

void filteringHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!isIdleRemark(message))
        defaultHandler(type, context, message);
}

void guardingHandler(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message)
{
    if (type != QtFatalMsg) {
        if (!isIdleRemark(message))
            withheldMessages.append(message);
        return;
    }
    // The first complaint names the cause; the fatal one that follows only speaks of installing again.
    QString reason = withheldMessages.isEmpty() ? message : withheldMessages.constFirst();
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        reason = QStringLiteral("DISPLAY is not set");
    std::cerr << "Cannot open the display: " << reason.simplified().toStdString() << std::endl;
    // Not exit(): the application object is half built.
    ::_exit(1);
}

/// Qt takes its own options with one dash or two.
bool isPlatformOption(const char *argument)
{
    return std::strcmp(argument, "-platform") == 0 || std::strcmp(argument, "--platform") == 0;
}

} // namespace

DisplaySetup::DisplaySetup(int argc, char **argv, Options options)
    : m_guarding(options.guardDisplay)
{
    bool platformAsked = !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
    for (int i = 0; i < argc; ++i) {
        const bool platformOption = i > 0 && isPlatformOption(argv[i]);
        platformAsked = platformAsked || platformOption;
        if (platformOption && options.headless)
            ++i;
        else
            m_argv.push_back(argv[i]);
    }
    // Given as an argument, not as a variable, so that the programs started from here do not inherit it.
    if (options.headless)
        choosePlatform("minimal");
    else if (!platformAsked && !qEnvironmentVariableIsEmpty("DISPLAY"))
        choosePlatform("xcb"); // Qt's own choice grumbles in a Wayland session
    m_argc = static_cast<int>(m_argv.size());
    m_argv.push_back(nullptr);

    // Widgets paint without OpenGL; loading it would cost half of the start and 50 MiB.
    if (options.withoutOpenGl && !qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    defaultHandler = qInstallMessageHandler(m_guarding ? guardingHandler : filteringHandler);
}

void DisplaySetup::choosePlatform(const char *name)
{
    static char option[] = "-platform";
    // Qt takes the arguments as char *, but only reads them.
    const auto position = m_argv.empty() ? m_argv.end() : m_argv.begin() + 1;
    m_argv.insert(position, {option, const_cast<char *>(name)});
}

void DisplaySetup::opened()
{
    qInstallMessageHandler(filteringHandler);
    for (const QString &message : qAsConst(withheldMessages))
        qWarning("%s", qUtf8Printable(message));
    withheldMessages.clear();
}
