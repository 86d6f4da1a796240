#ifndef LAYOUT_H
#define LAYOUT_H

#include "configuration.h"

#include <string>
#include <string_view>

// Single edits of a text. Each takes the text and what was read from this same text, and returns the new text; what is
// added follows the lines, the indentation and the line ends around it.

namespace DhclientConf {

std::string replaced(std::string_view text, Range range, std::string_view replacement);
std::string without(std::string_view text, const Statement &statement);
/// With a statement before the one that begins at the position, or at the end.
std::string withStatement(std::string_view text, std::size_t position, std::string_view added);
/// With the name as the last of a list.
std::string withName(std::string_view text, const Statement &list, std::string_view name);
/// Without the list's name at that index; comments around it stay. With its last name goes a statement that only adds
/// to others.
std::string withoutName(std::string_view text, const Statement &list, std::size_t index);

} // namespace DhclientConf

#endif
