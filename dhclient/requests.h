#ifndef REQUESTS_H
#define REQUESTS_H

#include "reading.h"

#include <string>
#include <vector>

namespace DhclientConf {

/// The text with the option requested exactly once by every interface: in the request list that is in force
/// there, where the text has one, else through "also request". Names listed more than once keep their first
/// place. `declared` tells that the caller is going to declare the option. What an included file asks for once
/// more can't be mended and gets a note.
std::string withRequest(std::string text, const std::string &id, const std::string &name, bool declared,
                        const Reader &reader, std::vector<std::string> &notes);

/// The text with the option in no request list, the client's built-in one included, and in no require list.
std::string withoutRequest(std::string text, const std::string &id, const Reader &reader,
                           std::vector<std::string> &notes);

/// The text with the option in no list of that kind; what it asks for otherwise may change by nothing else.
enum class Lists { Require, Both };
std::string withoutListed(std::string text, const std::string &id, Lists lists);

} // namespace DhclientConf

#endif
