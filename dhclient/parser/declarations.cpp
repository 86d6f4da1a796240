#include "parser/parser.h"

namespace DhclientConf {

namespace {

// The client writes a record down in so many letters, and then forgets the option (measured).
constexpr std::size_t LongestRecord = 128;
// For its values it takes memory ahead, and more than it has ends it. Its own spaces are far below.
constexpr std::size_t LongestHashSize = 5;

// Names are compared as the client compares them: without case, and "dhcp" is the space of names without one.
void setId(Name &name, std::string_view space, std::string_view word)
{
    name.id = lower(word);
    const std::string prefix = lower(space);
    if (!prefix.empty() && prefix != "dhcp")
        name.id = prefix + '.' + name.id;
}

void append(std::string &text, std::string_view token)
{
    if (!text.empty())
        text += ' ';
    text += lower(token);
}

} // namespace

OptionType parseType(std::string_view text)
{
    Parser parser(text);
    OptionType type = parser.optionType();
    if (!parser.atEnd())
        throw SyntaxError{1, "more than a type"};
    return type;
}

std::string parseName(std::string_view text)
{
    try {
        Parser parser(text);
        const Name name = parser.optionName();
        // Comments and blanks may stand in a file's name, an argument must be the bare name.
        const bool bare = text.find_first_of(" \t\r\n\v\f#") == std::string_view::npos;
        return parser.atEnd() && bare && name.begin == 0 && name.end == text.size() ? name.id : std::string();
    } catch (const SyntaxError &) {
        return {};
    }
}

Name Parser::optionName()
{
    Name name{{}, m_token.begin, m_token.end, m_token.line, std::string::npos, {}};
    const std::string_view first = m_token.text;
    want(Token::Word, "an option's name");
    std::string_view space;
    std::string_view word = first;
    if (takeSign('.')) {
        space = first;
        word = m_token.text;
        want(Token::Word, "an option's name");
    }
    name.end = m_end;
    setId(name, space, word);
    return name;
}

void Parser::option(Statement &result, Scope scope)
{
    if (m_token.isWord("space")) {
        if (scope != File)
            refuse("an option space declared inside a block");
        spaceDeclaration(result);
        return;
    }
    result.kind = Statement::Declaration;
    result.names.push_back(optionName());
    want("code");
    if (scope != File)
        refuse("an option declared inside a block");
    result.codeBegin = m_token.begin;
    result.code = m_token.text;
    want(Token::Number, "a code");
    result.code.erase(0, std::min(result.code.find_first_not_of('0'), result.code.size() - 1));
    result.codeEnd = m_end;
    wantSign('=');
    result.typeBegin = m_token.begin;
    OptionType type = optionType();
    result.type = std::move(type.text);
    result.encapsulated = std::move(type.encapsulated);
    result.typeEnd = m_end;
    semicolon();
}

void Parser::spaceDeclaration(Statement &result)
{
    advance();
    result.kind = Statement::Space;
    result.word = lower(m_token.text);
    want(Token::Word, "the name of an option space");
    while (!m_token.isSign(';')) {
        std::string_view allowed; // any number, if empty
        if (take("hash")) {
            want("size");
            if (m_token.text.size() > LongestHashSize)
                refuse("a larger table than the client can hold");
        } else if (take("code")) {
            allowed = "124";
            want("width");
        } else if (take("length")) {
            allowed = "12";
            want("width");
        } else {
            refuse("\";\" expected");
        }
        const std::string_view number = m_token.text;
        if (!allowed.empty() && (number.size() != 1 || allowed.find(number.front()) == std::string_view::npos))
            refuse("a width that the client doesn't know");
        want(Token::Number, "a number");
    }
    semicolon();
}

// The rest of this file is the type grammar of dhcp-options(5), DEFINING NEW OPTIONS, with the bounds that the
// client sets: text, string and the domain types fill the rest of an option, so they end a record and stand in
// no array; an array holds atoms or one record, a record holds atoms and arrays of atoms.
OptionType Parser::optionType()
{
    OptionType type;
    if (m_token.isSign('{'))
        record(type, false);
    else
        atomOrArray(type);
    return type;
}

bool Parser::takeArray(OptionType &type, bool inArray)
{
    if (!m_token.isWord("array"))
        return false;
    if (inArray)
        refuse("an array inside an array");
    advance();
    want("of");
    append(type.text, "array");
    append(type.text, "of");
    return true;
}

void Parser::atomOrArray(OptionType &type)
{
    const bool array = takeArray(type, false);
    if (array && m_token.isSign('{'))
        record(type, true);
    else
        atom(type, array, true);
}

void Parser::record(OptionType &type, bool inArray)
{
    advance();
    append(type.text, "{");
    std::size_t letters = 0;
    for (;;) {
        const bool array = takeArray(type, inArray);
        letters += (array ? 1 : 0) + atom(type, inArray || array, false);
        if (letters > LongestRecord)
            refuse("a record of too many parts");
        if (!takeSign(','))
            break;
        type.text += ',';
    }
    wantSign('}');
    append(type.text, "}");
}

// In how many letters the client writes it down.
std::size_t Parser::atom(OptionType &type, bool inArray, bool last)
{
    const std::string word = lower(m_token.text);
    want(Token::Word, "a type");
    append(type.text, word);
    if (word == "boolean" || word == "ip-address" || word == "ip6-address")
        return 1;
    const bool sign = word == "signed" || word == "unsigned";
    if (sign) {
        want("integer");
        append(type.text, "integer");
    }
    if (sign || word == "integer") {
        const std::string_view width = m_token.text;
        if (width != "8" && width != "16" && width != "32")
            refuse("\"8\", \"16\" or \"32\" expected");
        append(type.text, width);
        advance();
        return 1;
    }
    std::size_t letters = 1;
    if (word == "encapsulate") {
        type.encapsulated = lower(m_token.text);
        append(type.text, m_token.text);
        letters = type.encapsulated.size() + 2;
        want(Token::Word, "the name of an option space");
    } else if (word == "domain-list") {
        if (take("compressed")) {
            append(type.text, "compressed");
            letters = 2;
        }
    } else if (word != "text" && word != "string" && word != "domain-name") {
        throw SyntaxError{m_endLine, "no type is called \"" + word + "\""};
    }
    if (inArray)
        refuse("an array of " + word);
    if (!last && !m_token.isSign('}'))
        refuse("\"}\" expected: " + word + " ends a record");
    return letters;
}

} // namespace DhclientConf
