#ifndef WISH_H
#define WISH_H

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace DhclientConf {

/// What all commands of a call want of one option: what they leave when they are carried out in order.
struct Wish
{
    struct Declaration
    {
        std::string code; ///< as of normalisedCode()
        std::string type; ///< as of normalisedType()
    };

    std::string name; ///< as it is to be written
    std::string id;
    std::optional<bool> requested;
    bool isCleared = false;                 ///< out of all lists before it is requested
    std::optional<Declaration> declaration; ///< of every declaration of the name
    std::set<std::string> undeclared;       ///< codes with which it is not to be declared
    bool isUndeclared = false;              ///< not to be declared with any code
};

/// One wish for each option that the commands of a command line name, in the order of their first commands. Throws
/// Error for an argument that holds anything but a name, a code and a type, so none can end its statement.
std::vector<Wish> readWishes(const std::vector<std::string> &arguments);

/// A text as a line on a terminal can show it: "?" for all that is not printable ASCII.
std::string printable(std::string_view text);

} // namespace DhclientConf

#endif
