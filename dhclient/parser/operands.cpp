#include "parser/parser.h"

#include <algorithm>
#include <utility>

// The expressions of dhcp-eval(5), and of which kind each is: the client refuses one of another kind than it wants.

namespace DhclientConf {

namespace {

// D data, N number, S quoted string, W width of an integer, "*" for any number more of the one before.
constexpr std::pair<std::string_view, std::string_view> Functions[] = {
    {"binary-to-ascii", "NNDD"}, {"concat", "DDD*"}, {"encode-int", "NW"}, {"extract-int", "DW"},
    {"gethostbyname", "S"}, {"gethostname", ""}, {"lcase", "D"}, {"packet", "NN"}, {"pick", "DD*"},
    {"pick-first-value", "DD*"}, {"reverse", "ND"}, {"substring", "DNN"}, {"suffix", "DN"}, {"ucase", "D"},
    {"v6relay", "ND"}};

constexpr std::string_view DataWords[] = {"filename", "hardware", "host-decl-name", "leased-address", "null",
                                          "server-name"};

bool isHexByte(std::string_view text)
{
    return text.size() <= 2 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

// Whether the client takes the word for a variable: it takes some that hold digits for numbers.
bool isVariable(std::string_view word)
{
    const std::size_t digit = word.find_first_of("0123456789");
    return word.size() > 1 && digit > 2 && word.find_first_not_of("0123456789abcdefABCDEF") != std::string_view::npos
        && word != "on" && word != "off" && word != "hash" && word != "check";
}

} // namespace

bool Parser::isOf(Kind kind, Kind wanted)
{
    return kind == wanted || kind == Any || wanted == Any || (kind == Literal && wanted != Boolean)
        || (wanted == Literal && kind != Boolean);
}

void Parser::want(Kind kind)
{
    if (!isOf(expression(), kind))
        throw SyntaxError{m_endLine, kind == Boolean ? "a condition expected" : kind == Data ? "data expected"
                                                                                           : "a number expected"};
}

// What a signature wants, in brackets.
void Parser::arguments(std::string_view signature)
{
    const Nesting nesting(*this);
    wantSign('(');
    for (std::size_t i = 0; i < signature.size() && signature[i] != '*'; ++i) {
        const char letter = signature[i];
        const bool optional = i + 1 < signature.size() && signature[i + 1] == '*';
        if (optional) {
            while (takeSign(','))
                want(Data);
            break;
        }
        if (i > 0)
            wantSign(',');
        const std::string_view text = m_token.text;
        if (letter == 'S')
            want(Token::String, "a quoted string");
        else if (letter == 'W' && text != "8" && text != "16" && text != "32")
            refuse("a width of 8, 16 or 32 expected");
        else
            want(letter == 'D' ? Data : Number);
    }
    wantSign(')');
}

Parser::Kind Parser::expression()
{
    const Kind first = comparison();
    if (!m_token.isWord("and") && !m_token.isWord("or"))
        return first;
    bool good = isOf(first, Boolean);
    while (take("and") || take("or"))
        good = isOf(comparison(), Boolean) && good;
    if (!good)
        throw SyntaxError{m_endLine, "a condition expected beside \"and\" and \"or\""};
    return Boolean;
}

Parser::Kind Parser::comparison()
{
    const Kind left = operand();
    if (!m_token.isSign('=') && !m_token.isSign('!') && !m_token.isSign('~'))
        return left;
    const bool equals = m_token.isSign('=');
    const bool pattern = m_token.isSign('~');
    const std::size_t begin = m_token.begin;
    advance();
    if (!equals) {
        if (m_token.begin != begin + 1 || !(m_token.isSign('=') || (pattern && m_token.isSign('~'))))
            refuse("\"=\" expected");
        advance();
    }
    const Kind right = operand();
    const bool good = pattern ? isOf(left, Data) && isOf(right, Data)
                              : left != Boolean && right != Boolean && isOf(left, right);
    if (!good)
        throw SyntaxError{m_endLine, "two of a kind expected in a comparison"};
    return Boolean;
}

Parser::Kind Parser::operand()
{
    const Nesting nesting(*this);
    if (take("not")) {
        if (!isOf(operand(), Boolean))
            throw SyntaxError{m_endLine, "a condition expected behind \"not\""};
        return Boolean;
    }
    if (takeSign('(')) {
        const Kind kind = expression();
        wantSign(')');
        return kind;
    }
    if (take("option") || take("config-option")) {
        use();
        return Data;
    }
    if (take("exists")) {
        use();
        return Boolean;
    }
    if (m_token.kind == Token::String) {
        advance();
        return Data;
    }
    return word();
}

Parser::Kind Parser::word()
{
    if (m_token.kind != Token::Number && m_token.kind != Token::Word)
        refuse("an operand expected");
    if (isReserved())
        refuse("an operand expected before \"" + std::string(m_token.text) + "\"");
    const std::string text = lower(m_token.text);
    const bool number = m_token.kind == Token::Number;
    advance();
    if (m_token.isSign(':') && isHexByte(text)) { // data as hexadecimal numbers
        while (takeSign(':')) {
            if (!isHexByte(m_token.text))
                refuse("a hexadecimal number expected");
            advance();
        }
        return Data;
    }
    if (number)
        return isHexByte(text) ? Literal : Number;
    if (m_token.isSign('(')) {
        for (const auto &[name, signature] : Functions) {
            if (text == name) {
                arguments(signature);
                return text == "extract-int" ? Number : Data;
            }
        }
    }
    if (text == "defined") { // without its bracket it crashes the client
        wantSign('(');
        want(Token::Word, "a variable");
        wantSign(')');
        return Boolean;
    }
    if (text == "known" || text == "static")
        return Boolean;
    if (text == "lease-time" || text == "client-state")
        return Number;
    if (std::find(std::begin(DataWords), std::end(DataWords), text) != std::end(DataWords))
        return Data;
    const auto function = [&text](const auto &entry) { return entry.first == text; };
    if (std::any_of(std::begin(Functions), std::end(Functions), function))
        refuse("\"(\" expected");
    if (isHexByte(text))
        return Data;
    if (!isVariable(text))
        throw SyntaxError{m_endLine, "no value is written \"" + text + "\""};
    if (m_token.isSign('(')) {
        const Nesting nesting(*this);
        do {
            advance();
            expression();
        } while (m_token.isSign(','));
        wantSign(')');
    }
    return Any;
}

} // namespace DhclientConf
