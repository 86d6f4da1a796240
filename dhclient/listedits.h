#ifndef LISTEDITS_H
#define LISTEDITS_H

#include "draft.h"
#include "option.h"

#include <string>

// Edits of the lists that request options. `name` is how the option is written there and in notes.

namespace DhclientConf {

/// Makes every interface request the option, where the edited file can; a note says where it can't.
void request(Draft &draft, const Option &option, const std::string &name);
/// Makes no interface request or require it; a note says which included file still does.
void requestNoMore(Draft &draft, const Option &option, const std::string &name);

/// Removes the option from every list of the edited file.
void unlist(Draft &draft, const Option &option);
/// The same, with a note for the lists of included files.
void unlistEverywhere(Draft &draft, const Option &option, const std::string &name);
void noteIncludedLists(Draft &draft, const Option &option, const std::string &name);
/// Lists it by its name instead of its number: whether the client sends that depends on where the declaration stands
/// (measured).
void nameNumbers(Draft &draft, const Option &option, const std::string &name);

} // namespace DhclientConf

#endif
