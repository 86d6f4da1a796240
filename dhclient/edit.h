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

    Kind kind = AddRequest;
    std::string argument; ///< a name, or "NAME CODE TYPE"
};

struct Result
{
    enum Status {
        Done,   ///< `text` is the new text; it may equal the old one
        Broken, ///< the text is not what the client would take; nothing is to be written
        Refused ///< a command asks for what the client would not take; nothing is to be written
    };

    Status status = Done;
    std::string text;
    int line = 0;      ///< of the old text, when Broken
    std::string error; ///< one line without its end, unless Done
    std::vector<std::string> notes; ///< lines that the user should see, when Done
};

/// An argument as a line on a terminal can tell it: between quotes, "?" for all that is not printable ASCII.
std::string quoted(std::string_view text);

/// Carries the commands out, in order, on the text of a dhclient.conf; a pure function but for what `reader`
/// reads. Only the end is judged: the client takes the new text as a whole, and asks for exactly what is meant.
Result edit(std::string_view text, const std::vector<Command> &commands, const Reader &reader);

} // namespace DhclientConf

#endif
