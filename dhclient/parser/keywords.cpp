#include "parser/parser.h"

#include "values.h"

#include <algorithm>

// The statements of dhclient.conf(5) with a form of their own, and what each takes: the client drops more than a
// statement whose value it doesn't know, so only what it is sure to know is let through.

namespace DhclientConf {

namespace {

constexpr std::string_view Booleans[] = {"true", "false", "on", "off"};

std::vector<Word> slice(const std::vector<Word> &words, std::size_t begin, std::size_t end)
{
    return {words.begin() + static_cast<std::ptrdiff_t>(begin), words.begin() + static_cast<std::ptrdiff_t>(end)};
}

bool isAddress(const std::vector<Word> &words)
{
    return words.size() == 7 && words.front().kind == 'N' && fits(words, "I");
}

bool isAddressOrNetwork(const std::vector<Word> &words)
{
    constexpr int longestPrefix = 32;
    if (words.size() != 9 || words[7].kind != '/')
        return isAddress(words);
    return isAddress(slice(words, 0, 7)) && words[8].kind == 'N' && words[8].text.size() <= 2
        && words[8].text.front() != '-' && std::stoi(words[8].text) <= longestPrefix;
}

bool isHardware(const std::vector<Word> &words)
{
    static constexpr std::string_view types[] = {"ethernet", "token-ring", "fddi", "infiniband"};
    return words.size() > 1 && words[1].kind != 'S' && fits(slice(words, 1, words.size()), "X")
        && std::find(std::begin(types), std::end(types), lower(words.front().text)) != std::end(types);
}

// "never", "epoch SECONDS", or a weekday, a date and a time.
bool isTime(const std::vector<Word> &words)
{
    std::string kinds;
    for (const Word &word : words)
        kinds += word.kind;
    return kinds == "NN/N/NN:N:N" || (kinds == "W" && lower(words.front().text) == "never")
        || (kinds == "WN" && lower(words.front().text) == "epoch");
}

} // namespace

template<typename Words>
bool Parser::takeOne(const Words &words)
{
    return std::any_of(std::begin(words), std::end(words), [this](std::string_view word) { return take(word); });
}

void Parser::refuseUnless(bool good, const char *what) const
{
    if (!good)
        throw SyntaxError{m_endLine, std::string(what) + " expected"};
}

// True if one of the statements was there.
bool Parser::keywordStatement(Scope scope)
{
    static constexpr std::string_view times[] = {"timeout", "retry", "reboot", "select-timeout", "backoff-cutoff",
                                                 "initial-interval", "initial-delay"};
    static constexpr std::string_view addresses[] = {"hardware", "anycast-mac"};
    static constexpr std::string_view leaseIds[] = {"octal", "hex"};
    static constexpr std::string_view dates[] = {"default", "local"};
    if (takeOne(times)) {
        want(Token::Number, "a number of seconds");
    } else if (take("do-forward-updates")) {
        refuseUnless(takeOne(Booleans), "\"true\" or \"false\"");
    } else if (take("lease-id-format")) {
        refuseUnless(takeOne(leaseIds), "\"octal\" or \"hex\"");
    } else if (take("db-time-format")) {
        refuseUnless(takeOne(dates), "\"default\" or \"local\"");
    } else if (take("reject")) {
        reject();
    } else if (take("omapi")) {
        want("port");
        const std::string_view port = m_token.text;
        want(Token::Number, "a port");
        refuseUnless(port.size() <= 5 && port.front() != '-' && std::stoi(std::string(port)) <= 0xffff, "a port");
    } else if (scope == Interface && takeOne(addresses)) {
        refuseUnless(isHardware(values()), "a hardware type and address");
    } else if (take("script")) {
        want(Token::String, "a quoted file name");
    } else if (take("media")) {
        do
            want(Token::String, "a quoted media setup");
        while (takeSign(','));
    } else if (take("vendor")) {
        want("option");
        want("space");
        want(Token::Word, "the name of an option space");
    } else if (!take("bootp-broadcast-always")) {
        return false;
    }
    semicolon();
    return true;
}

void Parser::reject()
{
    const std::vector<Word> words = values();
    for (std::size_t begin = 0; begin <= words.size();) {
        std::size_t end = begin;
        while (end < words.size() && words[end].kind != ',')
            ++end;
        refuseUnless(isAddressOrNetwork(slice(words, begin, end)), "an address or a network");
        begin = end + 1;
    }
}

void Parser::lease()
{
    static constexpr std::string_view times[] = {"renew", "rebind", "expire"};
    static constexpr std::string_view strings[] = {"interface", "filename", "server-name", "medium"};
    wantSign('{');
    while (!m_token.isSign('}')) {
        if (take("option")) {
            optionValue();
        } else if (takeOne(times)) {
            refuseUnless(isTime(values()), "a time");
        } else if (takeOne(strings)) {
            want(Token::String, "a string in quotes");
        } else if (take("fixed-address")) {
            refuseUnless(isAddress(values()), "an address");
        } else if (take("key")) {
            knownKey();
        } else if (!take("bootp")) {
            refuse("a lease declaration or \"}\" expected");
        }
        semicolon();
    }
    advance();
}

std::string Parser::keyName()
{
    std::string name(m_token.text);
    if (m_token.kind == Token::String)
        name = name.substr(1, name.size() - 2);
    else if (m_token.kind != Token::Word)
        refuse("the name of a key expected");
    advance();
    while (takeSign('.')) {
        name += '.';
        name += m_token.text;
        want(Token::Word, "a name");
    }
    return name;
}

// A key of this file, or perhaps of one that it includes.
void Parser::knownKey()
{
    const std::string name = keyName();
    if (!m_anyKey && m_keys.count(name) == 0)
        throw SyntaxError{m_endLine, "no key is called \"" + name + "\" here"};
}

// A key without its secret crashes the client.
void Parser::key()
{
    m_keys.insert(keyName());
    wantSign('{');
    bool algorithm = false;
    bool secret = false;
    while (!m_token.isSign('}')) {
        bool &given = take("algorithm") ? algorithm : (want("secret"), secret);
        if (given)
            refuse("a key with two algorithms or secrets");
        given = true;
        while (m_token.kind != Token::End && !m_token.isSign(';') && !m_token.isSign('{') && !m_token.isSign('}')) {
            std::string_view text = m_token.text;
            if (m_token.kind == Token::String)
                text = text.substr(1, text.size() - 2);
            if (text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=.-_")
                != std::string_view::npos)
                refuse("a secret that is not base64");
            advance();
        }
        semicolon();
    }
    if (!algorithm || !secret)
        refuse("\"algorithm\" and \"secret\" expected");
    advance();
    takeSign(';');
}

void Parser::zone()
{
    static constexpr std::string_view servers[] = {"primary", "secondary"};
    static constexpr std::string_view servers6[] = {"primary6", "secondary6"};
    while (m_token.kind == Token::Word || m_token.kind == Token::Number || m_token.isSign('.'))
        advance();
    wantSign('{');
    while (!m_token.isSign('}')) {
        if (takeOne(servers))
            refuseUnless(fits(values(), "IA"), "a server");
        else if (takeOne(servers6))
            refuseUnless(fits(values(), "JA"), "a server");
        else if (take("key"))
            knownKey();
        else
            refuse("a zone's statement or \"}\" expected");
        semicolon();
    }
    advance();
}

} // namespace DhclientConf
