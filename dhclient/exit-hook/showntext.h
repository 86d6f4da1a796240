#ifndef SHOWNTEXT_H
#define SHOWNTEXT_H

#include <string>
#include <string_view>

/// What is shown of a value that the client passes to its script.
///
/// The client writes a text option's bytes as printable ASCII: a backslash before each of " ' $ ` \ | &,
/// three octal digits after a backslash for what is no printable ASCII. Undone here is what gives printable
/// UTF-8. All else (control characters, line ends, bytes that are no UTF-8, characters that are invisible or
/// turn the direction of the text) keeps, or gets, the octal form, byte by byte. The result is one line of
/// valid UTF-8.
std::string shownText(std::string_view escaped);

#endif
