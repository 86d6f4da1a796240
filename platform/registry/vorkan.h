#ifndef VORKAN_H
#define VORKAN_H

#include <QString>

#include <chrono>

/// Name of the registry's root; every key begins with it. Keys are slash-separated.
inline constexpr char VorkanRootName[] = "root";

/// The entry types that are used here, by their numbers in the file.
inline constexpr quint32 VorkanNumberType = 7;
inline constexpr quint32 VorkanBoolType = 10; ///< texts "1" and "0"

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

/// Type of an entry.
struct _RegEntryType
{
    quint32 type = 0;
};

/// Parameters of a read or a write; there are none yet.
struct _RegEntryParam
{
    quint32 flags = 0;
};

// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

/// The reading side of the configuration registry.
///
/// As long as there is an object of this class, the process reads from one unchanging view of the registry, taken
/// at the first read; that makes many reads cheap, and keeps other processes' commits waiting.
class Vorkan
{
public:
    Vorkan();
    virtual ~Vorkan();

    /// Reads the entry's text into `value`, or `defaultValue` when there is no such entry. Writes that wait
    /// for a commit in this process are seen. Returns 0 when the entry exists.
    int get(const QString &key, QString &value, const _RegEntryParam &param, const QString &defaultValue);

    /// False once the registry could not be read: what looks like a missing entry may be one that somebody set.
    static bool isReadable();
    /// How long to wait, from the next read or commit on, where another process keeps the registry locked; 10 s until
    /// it is called.
    static void setPatience(std::chrono::milliseconds patience);

private:
    Q_DISABLE_COPY(Vorkan)
};

#endif
