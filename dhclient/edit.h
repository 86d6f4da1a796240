#ifndef EDIT_H
#define EDIT_H

#include "reading.h"

#include <string>
#include <string_view>
#include <vector>

namespace DhclientConf {

/// One edit command of the command line, and its argument.
struct Command
{
    enum Kind { AddRequest, DelRequest, AddNewOption, DelNewOption };

    Kind kind;
    std::string argument; ///< a name, or "NAME CODE TYPE"
};

struct Result
{
    std::string text;               ///< equal to the old one where nothing changes
    std::vector<std::string> notes; ///< lines for the user: why an edit does not take full effect
};

/// An argument as a line on a terminal can show it: between quotes, "?" for all that is not printable ASCII.
std::string quoted(std::string_view text);

/// Carries the commands out, in order, on the text of a dhclient.conf. Throws Error. A pure function but for what
/// `reader` reads.
///
/// The client skips one statement after some that it can't use, without a message. So names enter and leave lists
/// where they stand, and what is new goes above the first statement: there nothing can make the client skip it, and
/// every interface block takes its copy of the list after it.
Result edit(std::string_view text, const std::vector<Command> &commands, const Reader &reader);

} // namespace DhclientConf

#endif
