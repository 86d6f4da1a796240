#ifndef INSTANCELOCK_H
#define INSTANCELOCK_H

#include <QtGlobal>

#include <string>
#include <sys/types.h>

/// Holds the right to be the one running instance of a program.
///
/// A record lock (fcntl(2)) on a file that only the user may open: the kernel drops it however the process ends,
/// child processes do not inherit it, and no other user can take it. Root's file is in /run and so machine-wide;
/// another user's is in the user's own runtime directory.
class InstanceLock
{
public:
    enum class State {
        Acquired,
        Held,      ///< by the process holder()
        Failed     ///< error() tells why
    };

    explicit InstanceLock(const std::string &programName);
    ~InstanceLock();

    State acquire();
    /// 0 when it cannot be told, as from another process namespace.
    pid_t holder() const { return m_holder; }
    std::string error() const { return m_error; }

private:
    Q_DISABLE_COPY(InstanceLock)
    State fail(const std::string &what, int errorNumber);

    std::string m_programName;
    std::string m_error;
    pid_t m_holder = 0;
    int m_descriptor = -1;
};

#endif
