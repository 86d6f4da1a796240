#include "configuration.h"

#include "error.h"

#include <algorithm>

namespace DhclientConf {

namespace {

class Parser
{
public:
    explicit Parser(std::string_view text) : text(text), lexer(text) { advance(); }

    std::vector<Statement> statements();
    Name name();
    bool atEnd() const { return token.kind == Token::Kind::End; }
    int line() const { return token.line; }

private:
    void advance();
    bool take(std::string_view expected);
    /// Throws Error: at the end of what was read before, since what is missing belongs there.
    [[noreturn]] void expected(const std::string &what) const
    {
        throw Error(Error::File, what + " expected", lastLine);
    }
    Statement statement();
    bool list(Statement &result);
    bool declaration(Statement &result);
    bool block(Statement &result);
    void opaque(Statement &result);

    std::string_view text;
    Lexer lexer;
    Token token;
    std::size_t lastEnd = 0; ///< of the token before
    int lastLine = 1;
    bool inBlock = false; ///< blocks do not nest (C14)
};

void Parser::advance()
{
    lastEnd = token.range.end;
    lastLine = std::max(token.line, 1);
    token = lexer.next();
}

bool Parser::take(std::string_view expected)
{
    const bool found = token.is(expected);
    if (found)
        advance();
    return found;
}

std::vector<Statement> Parser::statements()
{
    std::vector<Statement> result;
    while (!atEnd() && !token.is("}"))
        result.push_back(statement());
    return result;
}

// Each kind is tried from the statement's first token on; what turns out to be none of them is opaque.
Statement Parser::statement()
{
    const Parser start = *this;
    for (const auto kind : {&Parser::list, &Parser::declaration, &Parser::block}) {
        Statement result;
        result.range.begin = token.range.begin;
        result.line = token.line;
        if ((this->*kind)(result)) {
            result.range.end = lastEnd;
            return result;
        }
        *this = start;
    }
    Statement result;
    result.range.begin = token.range.begin;
    result.line = token.line;
    opaque(result);
    result.range.end = lastEnd;
    return result;
}

Name Parser::name()
{
    Name result;
    result.range = token.range;
    result.line = token.line;
    if (token.kind != Token::Kind::Word || !normalisedCode(token.text).empty())
        return result;
    result.id = lower(token.text);
    advance();
    if (take(".") && token.kind == Token::Kind::Word) {
        result.id = result.id == "dhcp" ? lower(token.text) : result.id + '.' + lower(token.text);
        result.range.end = token.range.end;
        advance();
    }
    return result;
}

bool Parser::list(Statement &result)
{
    result.also = take("also");
    result.kind = token.is("request") ? Statement::Kind::Request : Statement::Kind::Require;
    if (!take("request") && !take("require"))
        return false;
    result.keywordEnd = lastEnd;
    while (!token.is(";")) {
        result.names.push_back(name());
        Name &last = result.names.back();
        if (last.id.empty())
            expected("an option's name");
        if (token.is(","))
            last.comma = token.range.begin;
        else if (!token.is(";"))
            expected("\";\"");
        take(","); // the client accepts one before the ";" too (C13)
    }
    advance();
    return true;
}

bool Parser::declaration(Statement &result)
{
    if (!take("option"))
        return false;
    result.kind = Statement::Kind::Declaration;
    result.names = {name()};
    if (!take("code"))
        return false;
    result.code = normalisedCode(token.text);
    result.codeRange = token.range;
    advance();
    if (result.code.empty() || !take("="))
        return false;
    result.typeRange = token.range;
    while (!atEnd() && !token.is(";"))
        advance();
    result.typeRange.end = lastEnd;
    if (!take(";"))
        expected("\";\"");
    result.type = normalisedType(text.substr(result.typeRange.begin, result.typeRange.end - result.typeRange.begin));
    return !result.type.empty();
}

bool Parser::block(Statement &result)
{
    int strings = token.is("pseudo") ? 2 : 1;
    if (inBlock || (!take("interface") && !take("pseudo")))
        return false;
    for (; strings > 0; --strings) {
        if (token.kind != Token::Kind::String)
            return false;
        advance();
    }
    if (!take("{"))
        return false;
    result.kind = Statement::Kind::Block;
    inBlock = true;
    result.body = statements();
    inBlock = false;
    if (!take("}"))
        expected("\"}\"");
    return true;
}

void Parser::opaque(Statement &result)
{
    int depth = 0;
    while (!atEnd()) {
        if (token.kind == Token::Kind::Word) {
            result.names.push_back({lower(token.text), token.range, token.line});
            advance();
        } else if (take("{")) {
            ++depth;
        } else if (take("}")) {
            if (--depth < 0)
                expected("\";\"");
            if (depth == 0)
                return;
        } else if (take(";")) {
            if (depth == 0)
                return;
        } else {
            advance();
        }
    }
    expected(depth > 0 ? "\"}\"" : "\";\"");
}

bool isNumbered(const Name &name)
{
    constexpr std::string_view Prefix = "unknown-";
    return name.id.compare(0, Prefix.size(), Prefix) == 0 && !normalisedCode(name.id.substr(Prefix.size())).empty();
}

const Statement *firstWithout(const std::vector<Statement> &statements, const std::string &id)
{
    for (auto list = statements.begin(); list != statements.end(); ++list) {
        if (const Statement *found = firstWithout(list->body, id))
            return found;
        if (!list->isPlainRequest())
            continue;
        // What a block's interfaces start with is copied where it begins (C6): what is added later misses them.
        const auto end = std::find_if(list + 1, statements.end(), [](const Statement &statement) {
            return statement.isPlainRequest() || statement.kind == Statement::Kind::Block;
        });
        if (std::none_of(list, end, [&id](const Statement &statement) {
                return statement.kind == Statement::Kind::Request && statement.has(id);
            }))
            return &*list;
    }
    return nullptr;
}

} // namespace

std::size_t Statement::find(const std::string &id) const
{
    const auto found = std::find_if(names.begin(), names.end(), [&id](const Name &name) { return name.id == id; });
    return static_cast<std::size_t>(found - names.begin());
}

Configuration::Configuration(std::string_view text)
{
    Parser parser(text);
    topLevel = parser.statements();
    if (!parser.atEnd())
        throw Error(Error::File, "a \"}\" without its \"{\"", parser.line());
    for (const Statement &statement : topLevel) {
        every.push_back(&statement);
        for (const Statement &inner : statement.body)
            every.push_back(&inner);
    }
    for (const Statement *statement : every) {
        const auto numbered = std::find_if(statement->names.begin(), statement->names.end(), isNumbered);
        if (statement->isList() && numbered != statement->names.end())
            throw Error(Error::File, "\"" + numbered->id + "\" in a list: write the option's name", numbered->line);
    }
}

const Statement *Configuration::listWithout(const std::string &id) const
{
    return firstWithout(topLevel, id);
}

bool Configuration::isMissingFromBuiltIn(const std::string &id) const
{
    bool isAdded = false;
    for (const Statement &statement : topLevel) {
        if (statement.isPlainRequest())
            return false;
        if (statement.kind == Statement::Kind::Request)
            isAdded = isAdded || statement.has(id);
        const std::vector<Statement> &body = statement.body;
        const auto isEnough = [&id](const Statement &inner) {
            return inner.isPlainRequest() || (inner.kind == Statement::Kind::Request && inner.has(id));
        };
        if (statement.kind == Statement::Kind::Block && !isAdded && std::none_of(body.begin(), body.end(), isEnough))
            return true;
    }
    return !isAdded;
}

const Statement *Configuration::addedToBuiltIn() const
{
    const auto first = std::find_if(topLevel.begin(), topLevel.end(), [](const Statement &statement) {
        return statement.kind == Statement::Kind::Request || statement.kind == Statement::Kind::Block;
    });
    return first != topLevel.end() && first->kind == Statement::Kind::Request && first->also ? &*first : nullptr;
}

std::string parseName(std::string_view text)
{
    // A file's name may hold blanks and comments, an argument must be the bare name.
    if (text.find_first_of(" \t\r\n\v\f#\"") != std::string_view::npos)
        return {};
    Parser parser(text);
    const Name name = parser.name();
    return parser.atEnd() && name.range.end == text.size() && !isNumbered(name) ? name.id : std::string();
}

std::string normalisedCode(std::string_view text)
{
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos)
        return {};
    return std::string(text.substr(std::min(text.find_first_not_of('0'), text.size() - 1)));
}

std::string normalisedType(std::string_view text)
{
    Lexer lexer(text);
    std::string result;
    for (Token token = lexer.next(); token.kind != Token::Kind::End; token = lexer.next()) {
        if (token.kind != Token::Kind::Word && !token.is("{") && !token.is("}") && !token.is(","))
            return {};
        result.append(result.empty() || token.is(",") ? "" : " ").append(lower(token.text));
    }
    return result;
}

} // namespace DhclientConf
