#include "lexer.h"

#include "error.h"

#include <algorithm>

namespace DhclientConf {

namespace {

constexpr std::string_view Space = " \t\n\v\f\r";
constexpr std::string_view Letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_";

/// The offset after the string that begins there; npos if it has no end.
std::size_t endOfString(std::string_view text, std::size_t begin)
{
    std::size_t end = begin + 1;
    while (end < text.size() && text[end] != '"')
        end += text[end] == '\\' ? 2 : 1;
    return end < text.size() ? end + 1 : std::string_view::npos;
}

} // namespace

std::string lower(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    return result;
}

bool Token::is(std::string_view expected) const
{
    return text.size() == expected.size() && lower(text) == expected;
}

std::vector<Token> tokensOf(std::string_view text)
{
    std::vector<Token> tokens;
    int line = 1;
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end) {
        const bool isComment = text[begin] == '#';
        const bool isSpace = Space.find(text[begin]) != std::string_view::npos;
        Token::Kind kind = Token::Kind::Sign;
        end = begin + 1;
        if (isComment) {
            end = text.find('\n', begin);
        } else if (text[begin] == '"') {
            kind = Token::Kind::String;
            end = endOfString(text, begin);
            if (end == std::string_view::npos)
                throw Error(Error::File, "a string without its closing quote", line);
        } else if (Letters.find(text[begin]) != std::string_view::npos) {
            kind = Token::Kind::Word;
            end = text.find_first_not_of(Letters, begin);
        }
        end = std::min(end, text.size());
        const std::string_view piece = text.substr(begin, end - begin);
        if (!isComment && !isSpace)
            tokens.push_back({kind, line, begin, piece});
        line += static_cast<int>(std::count(piece.begin(), piece.end(), '\n'));
    }
    tokens.push_back({Token::Kind::End, line, text.size(), {}});
    return tokens;
}

} // namespace DhclientConf
