#ifndef SIGHUP_H
#define SIGHUP_H

/// A signal handler may call next to nothing, so SIGHUP reaches the event loop as a byte: in at the first socket, out
/// at the second. Both are 0 without a pair.
extern int sighupSockets[2];

/// False if the system has no sockets left.
bool makeSighupSockets();

/// For sigaction(2). Without a pair it ignores the signal.
void sighupHandler(int signalNumber);

#endif
