#include "sighup.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>

int sighupSockets[2] = {0, 0};

bool makeSighupSockets()
{
    // Into an array of its own: the kernel leaves numbers behind even when it fails.
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, sockets) != 0)
        return false;
    for (int i = 0; i < 2; ++i) {
        // The programs started from here have no business with them.
        ::fcntl(sockets[i], F_SETFD, FD_CLOEXEC);
        sighupSockets[i] = sockets[i];
    }
    return true;
}

void sighupHandler(int /*signalNumber*/)
{
    // A pair has two different descriptors.
    if (sighupSockets[0] == sighupSockets[1])
        return;
    const int savedErrno = errno;
    const char byte = 1;
    // The event loop reads on this very thread: a write that waited for room in the socket, after some hundreds
    // of signals during a long apply, would wait for ever.
    ::send(sighupSockets[0], &byte, 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    errno = savedErrno;
}
