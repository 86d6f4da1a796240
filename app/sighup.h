#ifndef SIGHUP_H
#define SIGHUP_H

/// A signal handler may do next to nothing, so it writes a byte to entry 0, and the event loop reads it from entry 1.
/// 0 as long as there are none.
extern int sighupSockets[2];

/// Makes the pair. False when that failed.
bool makeSighupSockets();

/// The handler. Without a pair it does nothing, so that the signal is ignored.
void sighupHandler(int signalNumber);

#endif
