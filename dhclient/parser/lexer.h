#ifndef LEXER_H
#define LEXER_H

#include <cstddef>
#include <string>
#include <string_view>

namespace DhclientConf {

/// What is wrong with a text, and on which of its lines (from 1). Thrown by everything in parser/.
struct SyntaxError
{
    int line;
    std::string reason;
};

/// A piece of the text as the client's lexer sees it.
struct Token
{
    enum Kind : unsigned char {
        End,
        Word,   ///< letters, digits, "-" and "_": keywords and names, which the client doesn't tell apart here
        Number, ///< decimal digits, perhaps after a "-"
        String, ///< quotes included
        Sign    ///< any other single byte
    };

    Kind kind = End;
    std::size_t begin = 0; ///< byte offset into the text
    std::size_t end = 0;   ///< one past the last byte
    int line = 0;          ///< from 1
    std::string_view text;

    bool isSign(char sign) const { return kind == Sign && text.front() == sign; }
    /// Whether it is that keyword, given in lower case; the client ignores case.
    bool isWord(std::string_view keyword) const;
};

std::string lower(std::string_view text);

/// What a string token stands for: without its quotes, its escapes resolved as the client resolves them.
std::string stringValue(std::string_view token);

/// Splits a text into tokens. White space and comments ("#" up to the end of its line) only separate.
///
/// Follows dhclient.conf(5) and what was measured with isc-dhcp-client 4.4.3-P1: "//" and "/*" start no
/// comment, a string may go over several lines, "\" and an octal digit want three digits, "\x" wants two,
/// and a byte 0xFF ends the client's reading wherever it stands, so that it is refused here.
class Lexer
{
public:
    /// The text must outlive the lexer and the tokens.
    explicit Lexer(std::string_view text) : m_text(text) {}

    Token next();

private:
    Token token(Token::Kind kind, std::size_t begin, int line);
    void skipSpace();
    void readString();
    void readEscape();

    std::string_view m_text;
    std::size_t m_position = 0;
    int m_line = 1;
};

} // namespace DhclientConf

#endif
