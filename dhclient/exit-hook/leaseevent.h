#ifndef LEASEEVENT_H
#define LEASEEVENT_H

#include <sys/types.h>

#include <map>
#include <set>
#include <string>

/// One call of the client's script, as its environment describes it; see dhclient-script(8).
struct LeaseEvent
{
    enum class Kind {
        Bound,   ///< the client has newly bound the interface
        Renewed, ///< it keeps a lease that it had
        Lost     ///< the interface has no lease from now on
    };

    /// Takes variables as proc(5) gives them, each "NAME=VALUE" with a NUL after it. Anything else is skipped; the
    /// last of several values of one name counts. Throws std::runtime_error when they describe no event.
    static LeaseEvent fromEnvironment(const std::string &environment);

    Kind kind = Kind::Lost;
    std::string interface; ///< not empty; the kernel gives no interface a name with blanks
    pid_t pid = 0;         ///< the client's; 0 when it gave none
    /// The received options: file name (the option's name with dashes) and text to show. None in a lost lease.
    std::map<std::string, std::string> options;
    std::set<std::string> requested; ///< the options that the client asked for, by file name
};

#endif
