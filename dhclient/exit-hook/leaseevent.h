#ifndef LEASEEVENT_H
#define LEASEEVENT_H

#include <sys/types.h>

#include <map>
#include <string>
#include <string_view>

/// One call of the client's script, as its environment tells it; see dhclient-script(8).
struct LeaseEvent
{
    enum class Kind {
        Ignored,
        Bound,   ///< the client has newly bound the interface
        Renewed, ///< it keeps a lease that it had
        Lost     ///< the interface is without a lease from now on
    };

    /// Reads variables, each "NAME=VALUE" ended by a NUL. What is not one, or is named like nothing that the
    /// client sets, is passed over; the last of several values of one name counts.
    static LeaseEvent fromEnvironment(std::string_view variables);

    Kind kind = Kind::Ignored;
    std::string interface;
    pid_t pid = 0; ///< the client's; 0 when there is no sound one
    /// The received options: file name (the option's name with dashes) and text to show.
    std::map<std::string, std::string> options;
};

#endif
