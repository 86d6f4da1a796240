#include "sighup.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

int sighupSockets[2] = {0, 0};

bool makeSighupSockets()
{
    // Into a separate array, which the kernel may fill even when it fails. Programs that are started from here do not
    // inherit the sockets.
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
    // The event loop reads on this same thread: a write that waits for room in the socket, after some hundreds
    // of signals during a long apply, would wait for ever.
    ::send(sighupSockets[0], &byte, 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    errno = savedErrno;
}
