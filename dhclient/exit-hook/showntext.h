#ifndef SHOWNTEXT_H
#define SHOWNTEXT_H

#include <string>
#include <string_view>

/// The text to show for a value that the client passes to its script: one line of valid UTF-8.
///
/// The client writes a text option's bytes as printable ASCII: a backslash before each of " ' $ ` \ | &, and a
/// backslash with three octal digits for every other byte that is not printable ASCII. This is undone where the
/// result is printable UTF-8. Everything else (control characters, line ends, bytes that are not UTF-8, characters
/// that are invisible or change the direction of the text) is shown in the octal form, byte by byte.
std::string shownText(std::string_view escaped);

#endif
