#ifndef INSTANCELOCK_H
#define INSTANCELOCK_H

#include "posix.h"

#include <string>
#include <sys/types.h>

/// The right to be the user's one running instance of a program.
///
/// An abstract socket (unix(7)) of a name that belongs to the program and the user: it takes no directory, the kernel
/// frees it however the process ends, and child processes do not inherit it. A later start finds the holder through
/// it, and can ask it to show its window.
class InstanceLock
{
public:
    enum class State {
        Acquired,
        Held,  ///< by the process holder()
        Failed ///< error() says why
    };

    explicit InstanceLock(const std::string &program);

    /// `asksToShow` lets the holder, if there is one, know that the user wants to see it.
    State acquire(bool asksToShow);
    /// 0 when it cannot be known, as from another process namespace.
    pid_t holder() const { return holderPid; }
    const std::string &error() const { return reason; }

    /// Of the holder: readable when a later start has come. -1 otherwise.
    int descriptor() const { return socket.get(); }
    /// Takes one later start; true when the user started it to see the window.
    bool isAskedToShow();

private:
    std::string program;
    std::string reason;
    pid_t holderPid = 0;
    Posix::Descriptor socket;
};

#endif
