#ifndef DECLARATIONS_H
#define DECLARATIONS_H

#include "reading.h"

#include <optional>
#include <string>
#include <vector>

namespace DhclientConf {

/// A declaration as a command gives it.
struct Specification
{
    std::string name; ///< as written
    std::string id;
    std::string code; ///< decimal, without leading zeros
    OptionType type;
};

/// Why a command can't be carried out; thrown.
struct Refusal
{
    std::string reason;
};

/// The text with exactly one declaration of the option, with this code and type, before its first use. One that
/// stands in a good place stays there and changes only in what differs. Throws Refusal.
std::string withDeclaration(std::string text, const Specification &wanted, const Reader &reader,
                            std::vector<std::string> &notes);

/// The text without declarations of the option with that code (with any code, if none is given). They stay, with
/// a note, where the client would know the option no more while something other than a list of the text uses it.
std::string withoutDeclaration(std::string text, const std::string &id, const std::optional<std::string> &code,
                               const Reader &reader, std::vector<std::string> &notes);

} // namespace DhclientConf

#endif
