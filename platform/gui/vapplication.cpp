#include "vapplication.h"

#include <cstdlib>
#include <iostream>

namespace {

constexpr char ProgramName[] = "kiro-dhcp-mgr";

bool headlessRequested = false;

} // namespace

void VApplication::setHeadless(bool headless)
{
    headlessRequested = headless;
}

bool VApplication::isHeadless()
{
    return headlessRequested;
}

VApplication::VApplication(int &argc, char **argv, bool singleInstance, bool guardDisplay, bool light)
    : DisplaySetup(argc, argv, {headlessRequested, guardDisplay, light})
    , QApplication(DisplaySetup::argc(), DisplaySetup::argv())
    , m_lock(ProgramName)
    , m_singleInstance(singleInstance)
{
    DisplaySetup::opened();
}

VApplication::~VApplication()
{
    // What was handed to deferred deletion after the event loop had ended is deleted here, while widgets still
    // have an application object.
    sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void VApplication::exitIfRunning()
{
    if (!m_singleInstance)
        return;
    switch (m_lock.acquire()) {
    case InstanceLock::State::Held:
        std::cerr << ProgramName << " is already running";
        if (m_lock.holder() > 0)
            std::cerr << " (process " << m_lock.holder() << ")";
        std::cerr << std::endl;
        std::exit(AlreadyRunningStatus);
    case InstanceLock::State::Failed:
        std::cerr << "Cannot tell whether " << ProgramName << " is already running: " << m_lock.error() << std::endl;
        break;
    case InstanceLock::State::Acquired:
        break;
    }
}
