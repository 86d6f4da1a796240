#ifndef VALUES_H
#define VALUES_H

#include <string>
#include <string_view>

namespace DhclientConf {

/// The format of a declared type's values, in the letters of knownFormat(); empty where they tell it not.
std::string formatOf(std::string_view type);

/// Whether a value, as Name::value has it, can be one of that format; true where the format is empty.
///
/// After a value that doesn't fit, the client skips not only to the end of its statement, but over the next one
/// too (measured): a list of requests may be lost there.
bool fits(std::string_view value, std::string_view format);

} // namespace DhclientConf

#endif
