#include "statements.h"

#include "error.h"
#include "lexer.h"
#include "optiontype.h"

#include <algorithm>

namespace DhclientConf {

namespace {

class Parser
{
public:
    explicit Parser(std::string_view text) : text(text), lexer(text) { advance(); }

    std::vector<Statement> statements(bool inBlock);
    Name name();
    bool atEnd() const { return token.kind == Token::End; }
    /// Throws Error: at the end of what was read before, since what is missing belongs there.
    [[noreturn]] void expected(const std::string &what) const
    {
        throw Error(Error::File, what + " expected", lastLine);
    }

    void wantEnd() const
    {
        if (!atEnd())
            throw Error(Error::File, "a \"}\" without its \"{\"", token.line);
    }

private:
    void advance();
    bool take(std::string_view keyword);
    bool takeSign(char sign);
    Statement statement(bool inBlock);
    bool list(Statement &result);
    bool declaration(Statement &result);
    bool include(Statement &result);
    bool block(Statement &result);
    void opaque(Statement &result);

    std::string_view text;
    Lexer lexer;
    Token token;
    std::size_t lastEnd = 0; ///< of the token before
    int lastLine = 1;
};

void Parser::advance()
{
    lastEnd = token.end;
    lastLine = std::max(token.line, 1);
    token = lexer.next();
}

bool Parser::take(std::string_view keyword)
{
    const bool found = token.isWord(keyword);
    if (found)
        advance();
    return found;
}

bool Parser::takeSign(char sign)
{
    const bool found = token.isSign(sign);
    if (found)
        advance();
    return found;
}

std::vector<Statement> Parser::statements(bool inBlock)
{
    std::vector<Statement> result;
    if (!inBlock)
        result.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), ';')));
    while (!atEnd() && !token.isSign('}'))
        result.push_back(statement(inBlock));
    return result;
}

// Each kind is tried from the statement's first token on; what turns out to be none of them is opaque.
Statement Parser::statement(bool inBlock)
{
    Statement result;
    result.range.begin = token.begin;
    result.line = token.line;
    const bool isList = token.isWord("request", "require", "also") && list(result);
    if (!isList) {
        const Parser start = *this;
        const bool isKnown = token.isWord("option", "include", "interface", "pseudo")
                             && (include(result) || (!inBlock && (declaration(result) || block(result))));
        if (!isKnown) {
            *this = start;
            opaque(result);
        }
    }
    result.range.end = lastEnd;
    return result;
}

Name Parser::name()
{
    Name result;
    result.range = {token.begin, token.end};
    result.line = token.line;
    if (token.kind != Token::Word || isNumber(token.text))
        return result;
    result.id = lower(token.text);
    advance();
    if (takeSign('.') && token.kind == Token::Word) {
        result.id = result.id == "dhcp" ? lower(token.text) : result.id + '.' + lower(token.text);
        result.range.end = token.end;
        advance();
    }
    return result;
}

// The client drops a list with a fault in it whole, so it must not pass as an opaque statement.
bool Parser::list(Statement &result)
{
    const Parser start = *this;
    result.also = take("also");
    if (!token.isWord("request", "require")) {
        result.also = false;
        *this = start;
        return false;
    }
    result.kind = token.isWord("request") ? Statement::Request : Statement::Require;
    advance();
    result.keywordEnd = lastEnd;
    while (!token.isSign(';')) {
        result.names.push_back(name());
        if (result.names.back().id.empty())
            expected("an option's name");
        if (token.isSign(','))
            result.names.back().comma = token.begin;
        else if (!token.isSign(';'))
            expected("\";\"");
        takeSign(','); // the client accepts one before the ";" too
    }
    advance();
    return true;
}

bool Parser::declaration(Statement &result)
{
    if (!take("option"))
        return false;
    result.names = {name()};
    if (result.names.front().id.empty() || !take("code") || !isNumber(token.text)) {
        result.names.clear();
        return false;
    }
    result.codeRange = {token.begin, token.end};
    result.code = sentCode(token.text);
    advance();
    const bool sound = takeSign('=');
    result.typeRange.begin = token.begin;
    while (!atEnd() && !token.isSign(';'))
        advance();
    result.typeRange.end = std::max(lastEnd, result.typeRange.begin);
    if (!takeSign(';'))
        expected("\";\"");
    result.kind = Statement::Declaration;
    if (sound)
        result.value = normalisedType(
            text.substr(result.typeRange.begin, result.typeRange.end - result.typeRange.begin));
    return true;
}

bool Parser::include(Statement &result)
{
    if (!take("include") || token.kind != Token::String)
        return false;
    result.value = stringValue(token.text);
    advance();
    if (!takeSign(';'))
        return false;
    result.kind = Statement::Include;
    return true;
}

bool Parser::block(Statement &result)
{
    const bool pseudo = token.isWord("pseudo");
    if (!token.isWord("interface", "pseudo"))
        return false;
    advance();
    result.value = (pseudo ? "pseudo " : "") + std::string(token.text);
    for (int strings = pseudo ? 2 : 1; strings > 0; --strings) {
        if (token.kind != Token::String)
            return false;
        advance();
    }
    if (!takeSign('{'))
        return false;
    result.body = statements(true);
    if (!takeSign('}'))
        expected("\"}\"");
    result.kind = Statement::Block;
    return true;
}

void Parser::opaque(Statement &result)
{
    result.sends = token.isWord("send");
    int depth = 0;
    while (!atEnd()) {
        if (token.isWord("option", "send", "default", "supersede", "prepend", "append")) {
            advance();
            if (Name used = name(); !used.id.empty())
                result.names.push_back(std::move(used));
        } else if (takeSign('{')) {
            ++depth;
        } else if (takeSign('}')) {
            if (--depth < 0)
                expected("\";\"");
            if (depth == 0)
                return;
        } else if (takeSign(';')) {
            if (depth == 0)
                return;
        } else {
            advance();
        }
    }
    expected(depth > 0 ? "\"}\"" : "\";\"");
}

} // namespace

std::vector<Statement> parse(std::string_view text, bool inBlock)
{
    Parser parser(text);
    std::vector<Statement> result = parser.statements(inBlock);
    parser.wantEnd();
    return result;
}

bool isNumber(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

int sentCode(std::string_view digits)
{
    int code = 0;
    for (const char digit : digits)
        code = (code * 10 + (digit - '0')) % 256;
    return code;
}

std::string parseName(std::string_view text)
{
    // A file's name may hold blanks and comments, an argument must be the bare name.
    if (text.find_first_of(" \t\r\n\v\f#\"") != std::string_view::npos)
        return {};
    Parser parser(text);
    const Name name = parser.name();
    return parser.atEnd() && name.range.end == text.size() ? name.id : std::string();
}

} // namespace DhclientConf
