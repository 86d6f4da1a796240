#ifndef INSTANCELOCK_H
#define INSTANCELOCK_H

#include "posix.h"

#include <sys/socket.h>
#include <sys/types.h>
#include <sys/un.h>

#include <string>

/// The right to be the user's one running instance of a program.
///
/// An abstract socket (unix(7)) of a name that belongs to the program, the user and the root prefix: it takes no
/// directory, the kernel frees it however the process ends, and child processes do not inherit it. Other processes find
/// the holder through it, and can ask it to show its window.
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
    /// The holder that acquire() has found; 0 when it cannot be known, as from another process namespace.
    pid_t holder() const { return holderPid; }
    /// The holder at this moment; 0 when there is none, or when it cannot be known.
    pid_t currentHolder() const;
    const std::string &error() const { return reason; }

    /// Of the holder: readable when a later start has come. -1 otherwise.
    int descriptor() const { return socket.get(); }
    /// Takes one later start; true when the user started it to see the window.
    bool isAskedToShow();

private:
    sockaddr_un address = {};
    socklen_t addressSize = 0;
    std::string reason;
    pid_t holderPid = 0;
    Posix::Descriptor socket;
};

#endif
