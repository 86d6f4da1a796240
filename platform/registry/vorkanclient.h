#ifndef VORKANCLIENT_H
#define VORKANCLIENT_H

#include "vorkan.h"

/// The writing side of the configuration registry.
///
/// Make one wherever it is needed: all share one connection. What create(), set() and remove() change is pending in the
/// process, visible to later reads through any client, until commit() writes it. A registry that cannot be read is
/// reported once and counts as empty from then on; nothing is written to it. Use on one thread only.
class VorkanClient : public Vorkan
{
public:
    /// Returns 0 when the entry exists, non-zero when it does not.
    int contains(const QString &key);

    /// Makes an entry with an empty text. An entry that exists keeps its type and text. Returns 0.
    int create(const QString &key, const _RegEntryType &type);

    /// Gives an existing entry a new text. Returns 0, or non-zero when there is no such entry.
    int set(const QString &key, const QString &value, const _RegEntryParam &param);

    /// Takes the entry away, if there is one. Returns 0.
    int remove(const QString &key);

    /// Writes all pending changes in one durable transaction, whatever the path, which is empty so far. Returns 0;
    /// otherwise nothing was written, the reason went to standard error and the changes stay pending.
    int commit(const QString &path);
};

#endif
