#include "lexer.h"

#include "error.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace DhclientConf {

namespace {

enum Class : unsigned char { Other, Space, Letter };

// A look-up per byte: most of the tool's time is spent here.
constexpr std::array<Class, 256> classes()
{
    std::array<Class, 256> result{};
    for (std::size_t i = 0; i < result.size(); ++i) {
        const char c = lowerCase(static_cast<char>(i));
        if (c == ' ' || (c >= '\t' && c <= '\r'))
            result[i] = Space;
        else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_')
            result[i] = Letter;
    }
    return result;
}

constexpr std::array<Class, 256> Classes = classes();

Class classOf(char c)
{
    return Classes[static_cast<unsigned char>(c)];
}

} // namespace

std::string lower(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lowerCase);
    return result;
}

void Lexer::skipSpace()
{
    for (; position < text.size(); ++position) {
        if (text[position] == '#')
            position = std::min(text.find('\n', position), text.size());
        if (position == text.size() || classOf(text[position]) != Space)
            return;
        if (text[position] == '\n')
            ++line;
    }
}

Token Lexer::next()
{
    skipSpace();
    Token token;
    token.begin = position;
    token.line = line;
    if (position < text.size()) {
        const char first = text[position++];
        token.kind = first == '"' ? Token::String : classOf(first) == Letter ? Token::Word : Token::Sign;
        if (token.kind == Token::String)
            skipString();
        while (token.kind == Token::Word && position < text.size() && classOf(text[position]) == Letter)
            ++position;
    }
    token.end = position;
    token.text = text.substr(token.begin, token.end - token.begin);
    return token;
}

void Lexer::skipString()
{
    const int begin = line;
    while (position < text.size()) {
        const char c = text[position++];
        if (c == '"')
            return;
        if (c == '\\' && position < text.size() && text[position++] != '\n')
            continue;
        if (c == '\\' || c == '\n')
            ++line;
    }
    throw Error(Error::File, "a string without its closing quote", begin);
}

std::string stringValue(std::string_view token)
{
    constexpr std::string_view Letters = "tnrb";
    constexpr std::string_view Controls = "\t\n\r\b";
    const std::string_view content = token.substr(1, token.size() - 2);
    std::string value;
    for (std::size_t i = 0; i < content.size(); ++i) {
        if (content[i] != '\\' || i + 1 == content.size()) {
            value += content[i];
            continue;
        }
        const char c = content[++i];
        const bool isHex = c == 'x';
        if (isHex || (c >= '0' && c <= '7')) {
            const std::string digits(content.substr(isHex ? i + 1 : i, isHex ? 2 : 3));
            value += static_cast<char>(std::strtol(digits.c_str(), nullptr, isHex ? 16 : 8));
            i += 2;
        } else {
            const std::size_t letter = Letters.find(c);
            value += letter == std::string_view::npos ? c : Controls[letter];
        }
    }
    return value;
}

} // namespace DhclientConf
