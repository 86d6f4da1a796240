#ifndef DECLARATIONS_H
#define DECLARATIONS_H

#include "reading.h"

#include <optional>
#include <string>

namespace DhclientConf {

/// A declaration as a command gives it.
struct NewOption
{
    std::string name; ///< as written
    std::string id;
    std::string code; ///< decimal, without leading zeros
    OptionType type;
};

/// Leaves exactly one declaration of the option, with this code and type, before its first use. One that stands
/// in a good place stays there and changes only in what differs. Throws Refusal.
void declareOnce(Draft &draft, const NewOption &wanted);

/// Takes the declarations of the option with that code away (with any code, if none is given). They stay, with a
/// note, where the client would know the option no more while something other than a list of the text uses it.
void undeclare(Draft &draft, const std::string &id, const std::optional<std::string> &code);

} // namespace DhclientConf

#endif
