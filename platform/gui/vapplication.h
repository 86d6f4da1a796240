#ifndef VAPPLICATION_H
#define VAPPLICATION_H

#include "instancelock.h"

#include <QApplication>

/// Sets up what QApplication's constructor, which opens the display, looks at. A base class, since it has to come
/// first.
struct DisplaySetup
{
    DisplaySetup(bool guardDisplay, bool light);
};

/// The application object of a configuration program: a QApplication of which one instance runs at a time.
class VApplication : private DisplaySetup, public QApplication
{
public:
    /// Exit status of a start that found another instance running.
    static constexpr int AlreadyRunningStatus = 3;

    /// Called before the application object is made, lets it open no display connection, whatever the environment
    /// says. Widgets can be made and laid out then, but are never seen.
    static void setHeadless(bool headless);
    static bool isHeadless();

    /// `singleInstance` makes exitIfRunning() look for other instances. `guardDisplay` ends the process with one
    /// line and status 1 when the display cannot be opened, where Qt aborts. `light` leaves OpenGL unloaded.
    VApplication(int &argc, char **argv, bool singleInstance, bool guardDisplay, bool light);

    /// Ends the process with a line and AlreadyRunningStatus when another instance of the user's runs, whose window
    /// then comes to the front unless this start is headless; else this process is the running instance until it
    /// ends. Where that cannot be found out, the start goes on with a line that says so.
    void exitIfRunning();

private:
    Q_DISABLE_COPY(VApplication)
    InstanceLock lock;
    bool singleInstance;
};

#endif
