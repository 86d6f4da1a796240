#ifndef SIGHUP_H
#define SIGHUP_H

/// The socket pair through which the SIGHUP handler wakes the event loop: the handler writes to entry 0, the
/// application object reads from entry 1. Both are 0 until makeSighupSockets() has made the pair; they stay open
/// until the process ends.
extern int sighupSockets[2];

/// Makes the pair. False when that failed.
bool makeSighupSockets();

/// The handler. Without a pair it does nothing, so that the signal is ignored.
void sighupHandler(int signalNumber);

#endif
