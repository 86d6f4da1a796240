#ifndef RIGHTS_H
#define RIGHTS_H

/// For an interactive run: says in one line on standard error what the user's choices will not reach for want of
/// rights, if anything. Call it before the registry is first written, which then says nothing of its own.
void reportMissingRights();

#endif
