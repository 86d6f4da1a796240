#ifndef VALUES_H
#define VALUES_H

#include "parser/statements.h"

#include <string>
#include <string_view>
#include <vector>

namespace DhclientConf {

/// The format of a declared type's values, in the letters of knownFormat().
std::string formatOf(std::string_view type);

/// Whether a literal value is one of that format; only where that is known for sure.
///
/// After a value that doesn't fit, the client skips not only to the end of its statement, but over the next one
/// too (measured): a list of requests may be lost there.
bool fits(const std::vector<Word> &value, std::string_view format);

} // namespace DhclientConf

#endif
