#include "lexer.h"

#include <algorithm>
#include <array>

namespace DhclientConf {

namespace {

// The client's token buffer holds 1,500 bytes and cuts what is longer.
constexpr std::size_t LongestToken = 1499;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr char lowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool isHexDigit(char c)
{
    return isDigit(c) || (lowerCase(c) >= 'a' && lowerCase(c) <= 'f');
}

bool isOctalDigit(char c)
{
    return c >= '0' && c <= '7';
}

enum Class : unsigned char { Other, Space, Digit, Letter, Underline };

// A look-up per byte: most of the tool's time goes by here.
constexpr std::array<Class, 256> classes()
{
    std::array<Class, 256> result{};
    for (std::size_t i = 0; i < result.size(); ++i) {
        const char c = lowerCase(static_cast<char>(i));
        result[i] = c == ' ' || (c >= '\t' && c <= '\r') ? Space
            : c >= '0' && c <= '9'                         ? Digit
            : (c >= 'a' && c <= 'z') || c == '-'           ? Letter
            : c == '_'                                     ? Underline
                                                           : Other;
    }
    return result;
}

constexpr std::array<Class, 256> Classes = classes();

Class classOf(char c)
{
    return Classes[static_cast<unsigned char>(c)];
}

[[noreturn]] void refuseEndByte(int line)
{
    throw SyntaxError{line, "a byte 0xFF, which the client takes for the end of the file"};
}

} // namespace

bool Token::isWord(std::string_view keyword) const
{
    return kind == Word && text.size() == keyword.size()
        && std::equal(text.begin(), text.end(), keyword.begin(), [](char a, char b) { return lowerCase(a) == b; });
}

std::string lower(std::string_view text)
{
    std::string result(text);
    for (char &c : result)
        c = lowerCase(c);
    return result;
}

Token Lexer::token(Token::Kind kind, std::size_t begin, int line)
{
    if (m_position - begin > LongestToken)
        throw SyntaxError{line, "a word or string longer than the client takes"};
    return {kind, begin, m_position, line, m_text.substr(begin, m_position - begin)};
}

void Lexer::skipSpace()
{
    for (; m_position < m_text.size(); ++m_position) {
        const char c = m_text[m_position];
        if (c == '\n') {
            ++m_line;
        } else if (c == '#') {
            const std::string_view comment = m_text.substr(m_position, m_text.find('\n', m_position) - m_position);
            if (comment.find('\xff') != std::string_view::npos)
                refuseEndByte(m_line);
            m_position += comment.size() - 1;
        } else if (classOf(c) != Space) {
            if (c == '\xff')
                refuseEndByte(m_line);
            return;
        }
    }
}

Token Lexer::next()
{
    skipSpace();
    const std::size_t begin = m_position;
    const int line = m_line;
    if (begin == m_text.size())
        return token(Token::End, begin, line);
    const char first = m_text[m_position++];
    if (first == '"') {
        readString();
        return token(Token::String, begin, line);
    }
    const Class start = classOf(first);
    if (start != Digit && start != Letter) {
        if (first == '\0')
            throw SyntaxError{line, "a NUL byte"};
        return token(Token::Sign, begin, line);
    }
    bool number = start == Digit || first == '-';
    for (; m_position < m_text.size(); ++m_position) {
        const Class next = classOf(m_text[m_position]);
        if (next < Digit)
            break;
        number = number && next == Digit;
    }
    if (first == '-' && m_position == begin + 1)
        return token(Token::Sign, begin, line);
    return token(number ? Token::Number : Token::Word, begin, line);
}

void Lexer::readString()
{
    const int line = m_line;
    while (m_position < m_text.size()) {
        const char c = m_text[m_position++];
        if (c == '"')
            return;
        if (c == '\n')
            ++m_line;
        else if (c == '\xff')
            refuseEndByte(m_line);
        else if (c == '\\')
            readEscape();
    }
    throw SyntaxError{line, "a string without its closing quote"};
}

std::string stringValue(std::string_view token)
{
    constexpr std::string_view Letters = "tnrb";
    constexpr std::string_view Controls = "\t\n\r\b";
    std::string value;
    // The lexer has seen to it that an escape has its digits.
    for (std::size_t i = 1; i + 1 < token.size(); ++i) {
        if (token[i] != '\\') {
            value += token[i];
            continue;
        }
        const char c = token[++i];
        const bool isHex = c == 'x';
        if (isHex || isOctalDigit(c)) {
            const std::string digits(token.substr(isHex ? i + 1 : i, isHex ? 2 : 3));
            value += static_cast<char>(std::stoi(digits, nullptr, isHex ? 16 : 8));
            i += 2;
        } else {
            const std::size_t letter = Letters.find(c);
            value += letter == std::string_view::npos ? c : Controls[letter];
        }
    }
    return value;
}

void Lexer::readEscape()
{
    const auto want = [this](int digits, bool (*isOne)(char)) {
        for (; digits > 0; --digits, ++m_position) {
            if (m_position == m_text.size() || !isOne(m_text[m_position]))
                throw SyntaxError{m_line, "an escape in a string with too few digits"};
        }
    };
    if (m_position == m_text.size())
        return;
    const char c = m_text[m_position++];
    if (c == 'x')
        want(2, isHexDigit);
    else if (isOctalDigit(c))
        want(2, isOctalDigit);
    else if (c == '\n')
        ++m_line;
    else if (c == '\xff')
        refuseEndByte(m_line);
}

} // namespace DhclientConf
