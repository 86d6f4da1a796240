#include "parser/parser.h"

#include <algorithm>

namespace DhclientConf {

namespace {

constexpr int DeepestNesting = 100;

} // namespace

std::vector<Statement> parse(std::string_view text, bool inBlock)
{
    Parser parser(text);
    std::vector<Statement> result = parser.statements(inBlock ? Parser::Interface : Parser::File);
    parser.wantEnd();
    return result;
}

Parser::Nesting::Nesting(Parser &parser) : m_parser(parser)
{
    if (parser.m_depth == DeepestNesting)
        parser.refuse("blocks or brackets nested too deeply");
    ++parser.m_depth;
}

const Token &Parser::advance()
{
    m_end = m_token.end;
    m_endLine = m_token.line;
    m_token = m_lexer.next();
    return m_token;
}

void Parser::refuse(const std::string &reason) const
{
    // What is missing belongs behind the token before, which may stand lines above the one found instead.
    throw SyntaxError{reason.find("expected") != std::string::npos ? m_endLine : m_token.line, reason};
}

bool Parser::take(std::string_view keyword)
{
    if (!m_token.isWord(keyword))
        return false;
    advance();
    return true;
}

bool Parser::takeSign(char sign)
{
    if (!m_token.isSign(sign))
        return false;
    advance();
    return true;
}

void Parser::want(std::string_view keyword)
{
    if (!take(keyword))
        refuse("\"" + std::string(keyword) + "\" expected");
}

void Parser::wantSign(char sign)
{
    if (!takeSign(sign))
        refuse(std::string("\"") + sign + "\" expected");
}

void Parser::want(Token::Kind kind, const char *what)
{
    if (m_token.kind != kind)
        refuse(std::string(what) + " expected");
    advance();
}

void Parser::wantEnd() const
{
    if (!atEnd())
        refuse("a \"}\" without its \"{\"");
}

void Parser::semicolon()
{
    wantSign(';');
}

std::vector<Statement> Parser::statements(Scope scope)
{
    std::vector<Statement> result;
    if (scope == File)
        result.reserve(static_cast<std::size_t>(std::count(m_text.begin(), m_text.end(), ';')));
    while (m_token.kind != Token::End && !(scope == Interface && m_token.isSign('}')))
        result.push_back(statement(scope));
    return result;
}

Statement Parser::statement(Scope scope)
{
    Statement result;
    result.begin = m_token.begin;
    result.line = m_token.line;
    std::vector<Name> *const outerUses = m_uses;
    m_uses = &result.uses;
    if (take("also")) {
        result.also = true;
        if (!m_token.isWord("request") && !m_token.isWord("require"))
            refuse("\"request\" or \"require\" expected");
    }
    if (take("request") || (take("require") && (result.kind = Statement::Require) == Statement::Require)) {
        if (result.kind == Statement::Other)
            result.kind = Statement::Request;
        optionList(result);
    } else if (take("include")) {
        include(result);
    } else if (take("option")) {
        option(result, scope);
    } else if (m_token.isWord("interface") || m_token.isWord("pseudo")) {
        block(result, scope);
    } else if (take("lease") || take("alias")) {
        lease();
    } else if (scope == File && take("key")) {
        key();
    } else {
        result.send = m_token.isWord("send");
        if (!keywordStatement(scope) && !executable())
            refuse(m_token.isSign('}') ? "a \"}\" without its \"{\""
                   : m_token.isSign(';') ? "a \";\" without a statement"
                                         : "no statement starts with \"" + std::string(m_token.text) + "\"");
    }
    result.end = m_end;
    m_uses = outerUses;
    return result;
}

void Parser::optionList(Statement &result)
{
    result.keywordEnd = m_end;
    // The client takes a comma before the ";", but none before the first name.
    while (!m_token.isSign(';')) {
        result.names.push_back(optionName());
        if (!m_token.isSign(','))
            break;
        result.names.back().comma = m_token.begin;
        advance();
    }
    semicolon();
}

void Parser::include(Statement &result)
{
    result.kind = Statement::Include;
    const std::string_view quoted = m_token.text;
    want(Token::String, "a quoted file name");
    result.word = stringValue(quoted);
    m_anyKey = true;
    semicolon();
}

void Parser::block(Statement &result, Scope scope)
{
    const Nesting nesting(*this);
    result.kind = Statement::Block;
    result.pseudo = m_token.isWord("pseudo");
    if (!result.pseudo && scope == Interface)
        refuse("an interface block inside another block");
    advance();
    result.word = m_token.text;
    want(Token::String, "an interface name in quotes");
    if (result.pseudo)
        want(Token::String, "an interface name in quotes");
    wantSign('{');
    result.body = statements(Interface);
    result.bodyEnd = m_token.begin;
    wantSign('}');
}

} // namespace DhclientConf
