#ifndef OPTIONTYPE_H
#define OPTIONTYPE_H

#include <string>
#include <string_view>

namespace DhclientConf {

/// A type of dhcp-options(5), DEFINING NEW OPTIONS, in lower case with one blank between its words; empty if the text
/// is not a type that the client accepts.
std::string normalisedType(std::string_view text);
/// Whether the options of another space are the value of such a type. The client must know the space before, and ends
/// over some (measured).
bool isEncapsulation(const std::string &type);

} // namespace DhclientConf

#endif
