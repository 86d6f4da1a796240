#ifndef DECLARATIONEDITS_H
#define DECLARATIONEDITS_H

#include "draft.h"
#include "option.h"

#include <set>
#include <string>

// Edits of the declarations of options.

namespace DhclientConf {

/// Leaves one declaration of the option in the edited file, with this code and type, before its first use. One that
/// comes early enough stays where it is.
void declare(Draft &draft, const NewOption &wanted);
/// Removes the declarations of the option with that code, and the option from the lists that the client would drop
/// for it. They stay, with a note, where another statement uses the option.
void undeclare(Draft &draft, const NewOption &unwanted);
/// An option must be declared before its first use: if all declarations come too late, adds one above.
void declareInTime(Draft &draft, const std::string &name, const std::string &id);
/// A list with the option would be dropped whole if the client skipped its declaration: puts one above where that may
/// happen.
void declareSafely(Draft &draft, const std::string &name, const std::string &id);

/// The ids of the other options with that code, known or declared.
std::set<std::string> othersWithCode(const Reading &reading, const Option &option);

} // namespace DhclientConf

#endif
