#include "configuration.h"

#include "error.h"
#include "lexer.h"

#include <algorithm>

namespace DhclientConf {

namespace {

class Parser
{
public:
    explicit Parser(std::string_view text) : text(text), tokens(tokensOf(text)) {}

    std::vector<Statement> statements(bool inBlock)
    {
        std::vector<Statement> result;
        while (!atEnd() && !token().is("}"))
            result.push_back(statement(inBlock));
        return result;
    }
    Word name();
    bool atEnd() const { return token().kind == Token::Kind::End; }
    const Token &token() const { return tokens[at]; }

private:
    std::size_t lastEnd() const { return tokens[at - 1].end(); }
    bool take(std::string_view expected);
    /// Throws Error: at the end of what was read before, since what is missing belongs there.
    [[noreturn]] void expected(const std::string &what) const
    {
        throw Error(Error::File, what + " expected", tokens[at - 1].line);
    }
    Statement statement(bool inBlock);
    bool list(Statement &result);
    bool declaration(Statement &result);
    bool block(Statement &result);
    bool opaque(Statement &result);

    std::string_view text;
    std::vector<Token> tokens;
    std::size_t at = 0;
};

bool Parser::take(std::string_view expected)
{
    const bool found = token().is(expected);
    at += found ? 1 : 0;
    return found;
}

// Each kind is tried from the statement's first token on. Blocks do not nest (C14).
Statement Parser::statement(bool inBlock)
{
    const std::size_t first = at;
    for (const auto kind : {&Parser::list, &Parser::declaration, &Parser::block, &Parser::opaque}) {
        Statement result;
        result.range.begin = token().begin;
        result.line = token().line;
        if (!(inBlock && kind == &Parser::block) && (this->*kind)(result)) {
            result.range.end = lastEnd();
            return result;
        }
        if (kind != &Parser::opaque)
            at = first;
    }
    expected("\";\" or \"}\"");
}

Word Parser::name()
{
    Word result;
    if (token().kind != Token::Kind::Word || !normalisedCode(token().text).empty())
        return result;
    result.range.begin = token().begin;
    result.id = lower(tokens[at++].text);
    if (take(".") && token().kind != Token::Kind::Word)
        return {};
    if (tokens[at - 1].is("."))
        result.id = (result.id == "dhcp" ? std::string() : result.id + '.') + lower(tokens[at++].text);
    result.range.end = lastEnd();
    return result;
}

bool Parser::list(Statement &result)
{
    result.also = take("also");
    result.kind = token().is("request") ? Statement::Kind::Request : Statement::Kind::Require;
    if (!take("request") && !take("require"))
        return false;
    result.keywordEnd = lastEnd();
    while (!take(";")) {
        result.names.push_back(name());
        Word &last = result.names.back();
        if (last.id.empty())
            expected("an option's name");
        if (token().is(","))
            last.comma = token().begin;
        // The client accepts a comma before the ";" too (C13).
        if (!take(",") && !token().is(";"))
            expected("\";\"");
    }
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
    result.code = {normalisedCode(token().text), {token().begin, token().end()}};
    if (result.code.id.empty() || !tokens[++at].is("="))
        return false;
    const std::size_t begin = tokens[++at].begin;
    while (!atEnd() && !token().is(";"))
        ++at;
    result.type = {normalisedType(text.substr(begin, lastEnd() - begin)), {begin, lastEnd()}};
    return take(";") && !result.type.id.empty();
}

bool Parser::block(Statement &result)
{
    const int strings = token().is("pseudo") ? 2 : 1;
    if (!take("interface") && !take("pseudo"))
        return false;
    for (int i = 0; i < strings; ++i) {
        if (tokens[at++].kind != Token::Kind::String)
            return false;
    }
    if (!take("{"))
        return false;
    result.kind = Statement::Kind::Block;
    result.body = statements(true);
    return take("}");
}

bool Parser::opaque(Statement &result)
{
    for (int depth = 0; !atEnd(); ++at) {
        if (token().kind == Token::Kind::Word)
            result.names.push_back({lower(token().text), {}});
        depth += token().is("{") ? 1 : token().is("}") ? -1 : 0;
        if (depth < 0)
            return false;
        if (depth == 0 && (token().is(";") || token().is("}"))) {
            ++at;
            return true;
        }
    }
    return false;
}

bool isNumbered(const Word &name)
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
        if (std::none_of(list, end, [&id](const Statement &statement) { return statement.requests(id); }))
            return &*list;
    }
    return nullptr;
}

} // namespace

std::size_t Statement::find(const std::string &id) const
{
    const auto found = std::find_if(names.begin(), names.end(), [&id](const Word &name) { return name.id == id; });
    return static_cast<std::size_t>(found - names.begin());
}

Configuration::Configuration(std::string_view text)
{
    Parser parser(text);
    topLevel = parser.statements(false);
    if (!parser.atEnd())
        throw Error(Error::File, "a \"}\" without its \"{\"", parser.token().line);
    for (const Statement &statement : topLevel) {
        every.push_back(&statement);
        for (const Statement &inner : statement.body)
            every.push_back(&inner);
    }
    for (const Statement *statement : every) {
        const auto numbered = std::find_if(statement->names.begin(), statement->names.end(), isNumbered);
        if (statement->isList() && numbered != statement->names.end())
            throw Error(Error::File, "\"" + numbered->id + "\" in a list: write the option's name", statement->line);
    }
}

const Statement *Configuration::listWithout(const std::string &id) const
{
    return firstWithout(topLevel, id);
}

bool Configuration::isMissingFromBuiltIn(const std::string &id) const
{
    const auto isEnough = [&id](const Statement &other) { return other.isPlainRequest() || other.requests(id); };
    for (const Statement &statement : topLevel) {
        if (isEnough(statement))
            return false;
        if (statement.kind == Statement::Kind::Block
            && std::none_of(statement.body.begin(), statement.body.end(), isEnough))
            return true;
    }
    return true;
}

const Statement *Configuration::addedToBuiltIn() const
{
    for (const Statement &statement : topLevel) {
        if (statement.kind == Statement::Kind::Request || statement.kind == Statement::Kind::Block)
            return statement.also ? &statement : nullptr;
    }
    return nullptr;
}

std::string parseName(std::string_view text)
{
    // A file's name may hold blanks and comments, an argument must be the bare name.
    if (text.find_first_of(" \t\r\n\v\f#\"") != std::string_view::npos)
        return {};
    Parser parser(text);
    const Word name = parser.name();
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
    std::string result;
    int depth = 0;
    for (const Token &token : tokensOf(text)) {
        depth += token.is("{") ? 1 : token.is("}") ? -1 : 0;
        if (depth < 0 || (result.empty() && token.is(",")))
            return {};
        const bool isSign = token.kind == Token::Kind::Sign;
        if (token.kind == Token::Kind::String || (isSign && token.text.find_first_of("{},") != 0))
            return {};
        result.append(result.empty() || token.text.empty() || token.is(",") ? "" : " ").append(lower(token.text));
    }
    return depth == 0 ? result : std::string();
}

} // namespace DhclientConf
