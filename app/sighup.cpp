#include "sighup.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

int sighupSockets[2] = {0, 0};

bool makeSighupSockets()
{
    // Into an array of its own: the kernel leaves numbers behind even when it fails. The programs that are started
    // from here have no business with them.
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
        return false;
    std::copy_n(sockets, 2, sighupSockets);
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
