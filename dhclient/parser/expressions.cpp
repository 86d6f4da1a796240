#include "parser/parser.h"

#include <algorithm>

// The executable statements and expressions of dhcp-eval(5): just enough of them to know where each statement
// ends and which options it uses. Values are kept for the check against the types of their
// options, which are known only when all is read in order.

namespace DhclientConf {

namespace {

// Words that start a statement. Where a value wants an operand they tell of a ";" that is missing before them.
constexpr std::string_view Reserved[] = {
    "add", "alias", "also", "anycast-mac", "append", "backoff-cutoff", "bootp-broadcast-always", "break", "case",
    "db-time-format", "default", "do-forward-updates", "else", "elsif", "eval", "execute", "if", "include",
    "initial-delay", "initial-interval", "interface", "key", "lease", "lease-id-format", "log", "media", "omapi",
    "option", "prepend", "pseudo", "reboot", "reject", "request", "require", "retry", "return", "script",
    "select-timeout", "send", "set", "supersede", "switch", "timeout", "unset", "vendor", "zone"};

} // namespace

bool Parser::isReserved() const
{
    if (m_token.kind != Token::Word)
        return false;
    const std::string word = lower(m_token.text);
    return std::binary_search(std::begin(Reserved), std::end(Reserved), word);
}

// True if one of the executable statements was there; "option N value" is one only inside a block, where the
// caller takes it.
bool Parser::executable()
{
    if (take("send") || take("supersede") || take("default") || take("prepend") || take("append")) {
        optionValue();
    } else if (take("set")) {
        want(Token::Word, "a variable");
        wantSign('=');
        expression();
    } else if (take("unset")) {
        want(Token::Word, "a variable");
    } else if (take("eval") || take("return")) {
        expression();
    } else if (take("add")) {
        want(Token::String, "a quoted class name");
    } else if (take("log")) {
        wantSign('(');
        if (take("fatal") || take("error") || take("debug") || take("info"))
            wantSign(',');
        want(Data);
        wantSign(')');
    } else if (take("execute")) {
        arguments("SD*");
    } else if (take("if")) {
        conditional();
        return true;
    } else if (take("on")) {
        onEvent();
        return true;
    } else if (take("switch")) {
        switchBlock();
        return true;
    } else if (take("zone")) {
        zone();
        return true;
    } else if (!take("break")) {
        return false;
    }
    semicolon();
    return true;
}

void Parser::executableBlock()
{
    const Nesting nesting(*this);
    wantSign('{');
    while (!m_token.isSign('}')) {
        if (take("option")) {
            optionValue();
            semicolon();
        } else if (!executable()) {
            refuse("a statement or \"}\" expected");
        }
    }
    advance();
}

void Parser::conditional()
{
    const Nesting nesting(*this);
    // Behind a bracket right here, the client expects the block.
    if (takeSign('(')) {
        want(Boolean);
        wantSign(')');
    } else {
        want(Boolean);
    }
    executableBlock();
    if (take("elsif")) {
        conditional();
    } else if (take("else")) {
        if (take("if"))
            conditional();
        else
            executableBlock();
    }
}

void Parser::onEvent()
{
    do
        if (!take("expiry") && !take("release") && !take("commit"))
            refuse("\"expiry\", \"release\" or \"commit\" expected");
    while (take("or"));
    executableBlock();
}

void Parser::switchBlock()
{
    const Nesting nesting(*this);
    wantSign('(');
    expression();
    wantSign(')');
    wantSign('{');
    while (!m_token.isSign('}')) {
        if (take("case")) {
            if (m_token.kind != Token::String)
                want(Token::Number, "a string or number");
            else
                advance();
            wantSign(':');
        } else if (take("default")) {
            if (takeSign(':'))
                continue;
            optionValue(); // the statement of the same name
            semicolon();
        } else if (take("option")) {
            optionValue();
            semicolon();
        } else if (!executable()) {
            refuse("a statement or \"}\" expected");
        }
    }
    advance();
}

void Parser::optionValue()
{
    const bool ofSpace = (use(), m_uses->back().id.find('.') != std::string::npos);
    if (takeSign('='))
        want(Data);
    else if (!(ofSpace && m_token.isSign(';'))) // some options of DHCPv6 have no value
        m_uses->back().value = values();
}

// Literal values: strings, numbers, addresses, names, with commas or, in records, blanks between them.
std::vector<Word> Parser::values()
{
    std::vector<Word> words;
    bool joined = false; // whether a sign such as "." or ":" asks for more of the same value
    bool any = false;
    for (;; any = true) {
        if (m_token.kind == Token::Sign) {
            const char sign = m_token.text.front();
            if (sign == ';' && any && !joined)
                return words;
            words.push_back({sign, std::string(1, sign)});
            const bool comma = sign == ',' && any && !joined;
            if (!comma && std::string_view(".:/").find(sign) == std::string_view::npos)
                refuse(any ? "a value or \";\" expected" : "a value expected");
            joined = true;
            // IPv6 addresses hold "::", domain names end in ".".
            const std::string_view text = m_token.text;
            advance();
            if (text != "," && (m_token.isSign(';') || m_token.isSign(',') || m_token.isSign(':')))
                joined = false;
            continue;
        }
        if (m_token.kind == Token::End)
            refuse("\";\" expected");
        if (isReserved() && !joined)
            refuse("\";\" expected before \"" + std::string(m_token.text) + "\"");
        const bool digit = m_token.text.front() >= '0' && m_token.text.front() <= '9';
        const char kind = m_token.kind == Token::String ? 'S' : m_token.kind == Token::Number ? 'N' : digit ? 'H' : 'W';
        words.push_back({kind, std::string(m_token.text)});
        if (!joined && m_token.isWord("on")) { // a boolean, or the start of a statement
            const int line = m_endLine;
            advance();
            if (m_token.kind == Token::Word)
                throw SyntaxError{line, "\";\" expected before \"on\""};
        } else {
            const bool string = m_token.kind == Token::String;
            advance();
            if (string && !m_token.isSign(',') && !m_token.isSign(';')) // strings end a record
                refuse("\";\" expected");
        }
        joined = false;
    }
}

} // namespace DhclientConf
