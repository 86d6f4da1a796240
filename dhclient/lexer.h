#ifndef LEXER_H
#define LEXER_H

#include <cstddef>
#include <string>
#include <string_view>

namespace DhclientConf {

/// A range of a text: byte offsets, `end` is one past the last byte.
struct Range
{
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// A piece of a configuration as the client's lexer splits it.
struct Token
{
    enum class Kind {
        End,
        Word,   ///< letters, digits, "-" and "_": keywords, names and numbers
        String, ///< quotes included
        Sign    ///< any other single byte
    };

    Kind kind = Kind::End;
    Range range;
    int line = 0; ///< from 1
    std::string_view text;

    /// Whether it is this sign or keyword, given in lower case; the client ignores case.
    bool is(std::string_view expected) const;
};

/// In ASCII's lower case, whatever the locale.
std::string lower(std::string_view text);

/// Splits a text into tokens. White space and comments ("#" up to the end of the line) only separate; "//" and "/*"
/// start no comment, and a string may go over several lines (C12).
class Lexer
{
public:
    /// The text must outlive the lexer and the tokens.
    explicit Lexer(std::string_view text) : text(text) {}

    /// Throws Error for a string without its closing quote.
    Token next();

private:
    void skipSpace();
    void skipString();

    std::string_view text;
    std::size_t position = 0;
    int line = 1;
};

} // namespace DhclientConf

#endif
