#include "lexer.h"

#include "error.h"

#include <algorithm>

namespace DhclientConf {

namespace {

constexpr std::string_view Space = " \t\n\v\f\r";

char lowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool isLetter(char c)
{
    const char l = lowerCase(c);
    return (l >= 'a' && l <= 'z') || (l >= '0' && l <= '9') || l == '-' || l == '_';
}

} // namespace

std::string lower(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lowerCase);
    return result;
}

bool Token::is(std::string_view expected) const
{
    return lower(text) == expected;
}

void Lexer::skipSpace()
{
    while (position < text.size() && (text[position] == '#' || Space.find(text[position]) != std::string_view::npos)) {
        if (text[position] == '#')
            position = std::min(text.find('\n', position), text.size());
        else if (text[position++] == '\n')
            ++line;
    }
}

Token Lexer::next()
{
    skipSpace();
    Token token;
    token.range.begin = position;
    token.line = line;
    if (position < text.size()) {
        const char first = text[position++];
        if (first == '"') {
            token.kind = Token::Kind::String;
            skipString();
        } else if (isLetter(first)) {
            token.kind = Token::Kind::Word;
            while (position < text.size() && isLetter(text[position]))
                ++position;
        } else {
            token.kind = Token::Kind::Sign;
        }
    }
    token.range.end = position;
    token.text = text.substr(token.range.begin, position - token.range.begin);
    return token;
}

void Lexer::skipString()
{
    const int begin = line;
    for (bool isEscaped = false; position < text.size();) {
        const char c = text[position++];
        if (c == '"' && !isEscaped)
            return;
        if (c == '\n')
            ++line;
        isEscaped = c == '\\' && !isEscaped;
    }
    throw Error(Error::File, "a string without its closing quote", begin);
}

} // namespace DhclientConf
