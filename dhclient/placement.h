#ifndef PLACEMENT_H
#define PLACEMENT_H

#include "parser/statements.h"

#include <string>
#include <string_view>
#include <vector>

// Single edits of a text. Each takes the text and a statement that was read from this very text, and returns
// the text with the edit; every byte outside it stays. New lines end like the text's first one.

namespace DhclientConf {

/// Without bytes [begin, end), with `replacement` in their place.
std::string replaced(std::string_view text, std::size_t begin, std::size_t end, std::string_view replacement);

/// Takes a statement out, and its line with it where nothing else stands there.
std::string without(std::string_view text, const Statement &statement);

/// Puts a new statement on a line of its own before or behind another one, or on the other's line where that
/// shares it with more.
std::string withBefore(std::string_view text, const Statement &statement, std::string_view added);
std::string withBehind(std::string_view text, const Statement &statement, std::string_view added);
std::string withAtEnd(std::string_view text, std::string_view added);
std::string withInBlock(std::string_view text, const Statement &block, std::string_view added);

/// Adds a name behind the last one of a list, on a new line like the list's others where the line would grow
/// longer than 78 columns.
std::string withName(std::string_view text, const Statement &list, std::string_view name);

/// Takes a name out of a list. A plain list that gets empty stays ("request;" asks for nothing, "require;"
/// requires nothing), an "also" list disappears unless it holds a comment.
std::string withoutName(std::string_view text, const Statement &list, std::size_t index);

/// Takes at least one of several names (indices in ascending order) out of a list, and all at once that stand as
/// names mostly do, so that a long list needs few readings.
std::string withoutNames(std::string_view text, const Statement &list, const std::vector<std::size_t> &indices);

/// A list statement of these names, broken into lines as withName() does.
std::string listStatement(std::string_view keyword, const std::vector<std::string> &names, std::string_view lineEnd);

std::string_view lineEnd(std::string_view text);

} // namespace DhclientConf

#endif
