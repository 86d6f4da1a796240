#include "sighup.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>

int sighupSockets[2] = {0, 0};

bool makeSighupSockets()
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, sighupSockets) != 0)
        return false;
    // The programs started from here have no business with them.
    for (const int descriptor : sighupSockets)
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
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
