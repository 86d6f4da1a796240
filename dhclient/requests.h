#ifndef REQUESTS_H
#define REQUESTS_H

#include "reading.h"

#include <string>

namespace DhclientConf {

/// Makes every interface request the option exactly once: in the request list that is in force there, where the
/// text has one, else through "also request". Names listed more than once keep their first place. `declared`
/// tells that the caller is going to declare the option. What only an included file could mend gets a note.
void requestOnce(Draft &draft, const std::string &id, const std::string &name, bool declared);

/// Takes the option out of all request lists, the client's built-in one included, and all require lists.
void requestNowhere(Draft &draft, const std::string &id);

/// Takes the option out of the lists of the text, and changes nothing else that it asks for.
enum class Lists { Require, Both };
void unlist(Draft &draft, const std::string &id, Lists lists);

} // namespace DhclientConf

#endif
