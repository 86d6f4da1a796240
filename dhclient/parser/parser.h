#ifndef PARSER_H
#define PARSER_H

#include "parser/statements.h"

#include <set>

namespace DhclientConf {

/// The recursive descent behind parse(), parseType() and parseName().
class Parser
{
public:
    explicit Parser(std::string_view text) : m_text(text), m_lexer(text) { m_token = m_lexer.next(); }

    enum Scope { File, Interface };
    /// Statements up to the end of the text, or up to and without the "}" of a block.
    std::vector<Statement> statements(Scope scope);

    OptionType optionType();
    Name optionName();
    bool atEnd() const { return m_token.kind == Token::End; }
    void wantEnd() const;

private:
    // statements.cpp
    Statement statement(Scope scope);
    void optionList(Statement &result);
    void include(Statement &result);
    void block(Statement &result, Scope scope);
    void semicolon();

    // keywords.cpp
    bool keywordStatement(Scope scope);
    void reject();
    void lease();
    std::string keyName();
    void knownKey();
    void key();
    void zone();
    template<typename Words>
    bool takeOne(const Words &words);
    void refuseUnless(bool good, const char *what) const;

    // declarations.cpp
    void option(Statement &result, Scope scope);
    void spaceDeclaration(Statement &result);
    std::size_t atom(OptionType &type, bool inArray, bool last);
    bool takeArray(OptionType &type, bool inArray);
    void atomOrArray(OptionType &type);
    void record(OptionType &type, bool inArray);

    // expressions.cpp
    bool executable();
    void executableBlock();
    void conditional();
    void onEvent();
    void switchBlock();
    void optionValue();
    std::vector<Word> values();

    // operands.cpp
    enum Kind { Boolean, Data, Number, Literal, Any }; ///< Literal: data or number; Any: a variable's
    static bool isOf(Kind kind, Kind wanted);
    Kind expression();
    Kind comparison();
    Kind operand();
    Kind word();
    void want(Kind kind);
    void arguments(std::string_view signature);
    void use() { m_uses->push_back(optionName()); }
    bool isReserved() const;

    const Token &advance();
    bool take(std::string_view keyword);
    bool takeSign(char sign);
    void want(std::string_view keyword);
    void wantSign(char sign);
    void want(Token::Kind kind, const char *what);
    [[noreturn]] void refuse(const std::string &reason) const;

    /// Counts the blocks and brackets around it, so that no text can exhaust the stack.
    class Nesting
    {
    public:
        explicit Nesting(Parser &parser);
        ~Nesting() { --m_parser.m_depth; }
        Nesting(const Nesting &) = delete;
        Nesting &operator=(const Nesting &) = delete;

    private:
        Parser &m_parser;
    };

    std::string_view m_text;
    Lexer m_lexer;
    Token m_token;          // the next one, not yet taken
    std::size_t m_end = 0;  // behind the last one taken
    int m_endLine = 1;      // the line of the last one taken
    std::vector<Name> *m_uses = nullptr;
    std::set<std::string> m_keys;
    bool m_anyKey = false; // whether an include statement may have brought more keys
    int m_depth = 0;
};

} // namespace DhclientConf

#endif
