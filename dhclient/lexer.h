#ifndef LEXER_H
#define LEXER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace DhclientConf {

/// A piece of a configuration as the client's lexer splits it.
struct Token
{
    enum class Kind {
        Word,   ///< letters, digits, "-" and "_": keywords, names and numbers
        String, ///< quotes included
        Sign,   ///< any other single byte
        End
    };

    Kind kind;
    int line;          ///< from 1
    std::size_t begin; ///< the offset of its first byte
    std::string_view text;

    std::size_t end() const { return begin + text.size(); }
    /// Whether it is this sign or keyword, given in lower case; the client ignores case.
    bool is(std::string_view expected) const;
};

/// In ASCII's lower case, whatever the locale.
std::string lower(std::string_view text);

/// The tokens of a text, which must outlive them; the last is the end. White space and comments ("#" up to the end of
/// the line) only separate; "//" and "/*" start no comment, and a string may go over several lines (C12). Throws Error
/// for a string without its closing quote.
std::vector<Token> tokensOf(std::string_view text);

} // namespace DhclientConf

#endif
