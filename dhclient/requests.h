#ifndef REQUESTS_H
#define REQUESTS_H

#include "reading.h"

#include <string>

namespace DhclientConf {

/// Makes every interface request the option exactly once: in the request list that is in force there, where the
/// text has one, else through "also request". Names listed more than once keep their first place. `declared` is
/// the code under which the caller is going to declare the option, 0 if it isn't. What only an included file could
/// mend gets a note.
void requestOnce(Draft &draft, const std::string &id, const std::string &name, int declared);

/// Takes the option out of all request lists, the client's built-in one included, and all require lists.
void requestNowhere(Draft &draft, const std::string &id);

/// Takes the option out of the lists of the text, and changes nothing else that it asks for. A name like
/// "unknown-3" is another one for the option of that code, and goes too where a code is given.
enum class Lists { Require, Both };
void unlist(Draft &draft, const std::string &id, int code, Lists lists);

} // namespace DhclientConf

#endif
