#ifndef LAYOUT_H
#define LAYOUT_H

#include "configuration.h"

#include <string>
#include <string_view>
#include <vector>

// Single edits of a text. Each takes the text and a statement that was read from this same text, and returns the new
// text; what is added follows the lines, the indentation and the line ends around it.

namespace DhclientConf {

/// "\n", or "\r\n" if the first line ends so.
std::string_view lineEnd(std::string_view text);
std::string replaced(std::string_view text, Range range, std::string_view replacement);

std::string without(std::string_view text, const Statement &statement);
std::string withAbove(std::string_view text, const Statement &statement, std::string_view added);
std::string withBelow(std::string_view text, const Statement &statement, std::string_view added);
std::string withAtEnd(std::string_view text, std::string_view added);

/// With the name as the last of a list.
std::string withName(std::string_view text, const Statement &list, std::string_view name);
/// Without the list's name at that index; comments around it stay. With its last name goes a statement that only adds
/// to others.
std::string withoutName(std::string_view text, const Statement &list, std::size_t index);

/// "request A, B;" in lines of bounded length.
std::string requestStatement(const std::vector<std::string_view> &names, std::string_view lineEnd);

} // namespace DhclientConf

#endif
