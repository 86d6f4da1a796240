#ifndef LEXER_H
#define LEXER_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace DhclientConf {

constexpr char lowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// A piece of a configuration as the client's lexer splits it.
struct Token
{
    enum Kind : unsigned char {
        End,
        Word,   ///< letters, digits, "-" and "_": keywords, names and numbers
        String, ///< quotes included
        Sign    ///< any other single byte
    };

    Kind kind = End;
    std::size_t begin = 0; ///< byte offset into the text
    std::size_t end = 0;   ///< one past the last byte
    int line = 0;          ///< from 1
    std::string_view text;

    bool isSign(char sign) const { return kind == Sign && text.front() == sign; }
    /// Whether it is one of these keywords, given in lower case; the client ignores case.
    template <typename... Keywords>
    bool isWord(Keywords... keywords) const
    {
        return kind == Word && (isEqual(keywords) || ...);
    }

private:
    bool isEqual(std::string_view keyword) const
    {
        return text.size() == keyword.size()
               && std::equal(text.begin(), text.end(), keyword.begin(),
                             [](char a, char b) { return lowerCase(a) == b; });
    }
};

/// In ASCII's lower case, whatever the locale.
std::string lower(std::string_view text);

/// The content of a string token: without its quotes, its escapes resolved as the client resolves them.
std::string stringValue(std::string_view token);

/// Splits a text into tokens. White space and comments ("#" up to the end of the line) only separate; "//" and "/*"
/// start no comment, and a string may go over several lines (measured with isc-dhcp-client 4.4.3-P1).
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
