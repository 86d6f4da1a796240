#include "dhcpapp.h"

#include "dhcpoption.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "qtpaths.h"
#include "sighup.h"
#include "vorkanclient.h"

#include <QDir>
#include <QSocketNotifier>

#include <cstdlib>
#include <iostream>
#include <memory>

#include <unistd.h>

namespace {

constexpr char definitionDirectory[] = "/usr/share/kiro-dhcp-mgr";

void report(const char *what, const QString &path)
{
    std::cerr << what << path.toStdString() << std::endl;
}

} // namespace

DhcpApp::DhcpApp(bool updateMode, bool showAll, QObject *parent)
    : QObject(parent)
    , updateMode(updateMode)
    , showAll(showAll)
{
    loadDefinitions();
    window = new MainWindow(options, updateMode);
    if (updateMode)
        return;
    if (showAll)
        window->selectView(ShowAll);
    armSighupRefresh();
}

DhcpApp::~DhcpApp()
{
    window->deleteLater();
    // The records stay until the process ends: the window points at them, and a tool that still runs for one of them
    // would be killed with it.
    options.clear();
}

void DhcpApp::loadDefinitions()
{
    const QDir directory(Paths::resolved(definitionDirectory));
    if (!directory.exists()) {
        report("Cannot read config directory ", directory.path());
        std::exit(1);
    }
    // The records look up their entries with clients of their own; within this one's life they share a view of the
    // registry. Without it the load takes a fifth longer.
    const VorkanClient registry;
    const QStringList names = directory.entryList({QStringLiteral("*.xml")});
    for (const QString &name : names)
        loadDefinition(directory.path() + QLatin1Char('/') + name);
}

void DhcpApp::loadDefinition(const QString &path)
{
    std::unique_ptr<DhcpOption> option;
    try {
        option = std::make_unique<DhcpOption>(path, nullptr);
    } catch (DhcpOption::ExceptionType reason) {
        report(reason == DhcpOption::FileNotReadable   ? "DhcpOption: File not readable for "
               : reason == DhcpOption::FileParseFailed ? "DhcpOption: File parse failed for "
                                                       : "DhcpOption: Unknown exception for ",
               path);
    } catch (...) {
        report("Unexpected exception from DhcpOption for ", path);
    }
    if (option && option->code != 0 && !option->localizedText(QString(), option->names).isEmpty())
        options.append(option.release());
    else
        report("Parse error, file ignored: ", path);
}

void DhcpApp::armSighupRefresh()
{
    if (!makeSighupSockets())
        return;
    notifier = new QSocketNotifier(sighupSockets[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &DhcpApp::sighupRefresh);
}

void DhcpApp::sighupRefresh()
{
    notifier->setEnabled(false);
    char byte = 0;
    // One byte at a time, so that every signal leads to a refresh of its own.
    const ssize_t ignored = ::read(sighupSockets[1], &byte, 1);
    Q_UNUSED(ignored)
    window->optionTable()->refreshValues();
    notifier->setEnabled(true);
}
