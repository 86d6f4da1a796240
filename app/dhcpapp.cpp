#include "dhcpapp.h"

#include "definitions.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "sighup.h"

#include <QSocketNotifier>

#include <cstdlib>

#include <unistd.h>

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
    const Definitions definitions = Definitions::load(nullptr);
    if (definitions.isDirectoryMissing)
        std::exit(1);
    options = definitions.options;
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
