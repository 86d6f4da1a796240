#include "wish.h"

#include "configuration.h"
#include "error.h"

#include <algorithm>

namespace DhclientConf {

namespace {

std::string quoted(std::string_view text)
{
    return '"' + printable(text) + '"';
}

// Removes the first word from the text and returns it.
std::string_view firstWord(std::string_view &text)
{
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    text.remove_prefix(std::min(text.find_first_not_of(" \t", word.size()), text.size()));
    return word;
}

Wish::Declaration readDeclaration(std::string_view codeAndType, bool adds, const std::string &whole)
{
    const std::string_view code = firstWord(codeAndType);
    Wish::Declaration result{normalisedCode(code), {}};
    // What is to be removed may have any code and type: a definition or the registry may hold others. Of a larger code
    // the client sends the low byte, and it takes 0 and 255 too, which are no options (C5).
    const bool canBeAdded = !result.code.empty() && result.code.size() <= 3 && std::stoi(result.code) > 0
                            && std::stoi(result.code) < 255;
    if (result.code.empty() || (adds && !canBeAdded))
        throw Error(Error::Command, quoted(code) + " is not an option code from 1 to 254, in " + whole);
    if (adds && codeAndType.find('"') == std::string_view::npos)
        result.type = normalisedType(codeAndType);
    if (adds && result.type.empty())
        throw Error(Error::Command, quoted(codeAndType) + " is not an option type, in " + whole);
    return result;
}

void add(std::vector<Wish> &wishes, const std::string &command, std::string_view argument)
{
    const bool adds = command == "--add-request" || command == "--add-new-option";
    const bool declares = command == "--add-new-option" || command == "--del-new-option";
    const std::string whole = quoted(argument);
    const std::string name(declares ? firstWord(argument) : argument);
    const std::string id = parseName(name);
    if (id.empty())
        throw Error(Error::Command, quoted(name) + " is not an option name");
    if (adds && id.find('.') != std::string::npos)
        throw Error(Error::Command, quoted(name) + " belongs to an option space other than DHCPv4's");
    auto wish = std::find_if(wishes.begin(), wishes.end(), [&id](const Wish &other) { return other.id == id; });
    if (wish == wishes.end()) {
        wish = wishes.emplace(wishes.end());
        wish->name = name;
        wish->id = id;
    }
    if (!declares) {
        wish->requested = adds;
        wish->isCleared = wish->isCleared || !adds;
        return;
    }
    const Wish::Declaration declaration = readDeclaration(argument, adds, whole);
    if (adds) {
        wish->declaration = declaration;
        return;
    }
    wish->undeclared.insert(declaration.code);
    if (wish->declaration && wish->declaration->code == declaration.code) {
        wish->declaration.reset();
        wish->isUndeclared = true;
    }
}

} // namespace

std::vector<Wish> readWishes(const std::vector<std::string> &arguments)
{
    static const std::set<std::string> commands{"--add-request", "--del-request", "--add-new-option",
                                                "--del-new-option"};
    std::vector<Wish> wishes;
    for (std::size_t i = 0; i < arguments.size(); i += 2) {
        if (commands.count(arguments[i]) == 0)
            throw Error(Error::Command, "unknown argument " + quoted(arguments[i]) + ", see --help");
        if (i + 1 == arguments.size())
            throw Error(Error::Command, arguments[i] + " needs an argument");
        add(wishes, arguments[i], arguments[i + 1]);
    }
    return wishes;
}

std::string printable(std::string_view text)
{
    std::string result(text);
    std::replace_if(
        result.begin(), result.end(), [](char c) { return c < ' ' || c >= '\x7f'; }, '?');
    return result;
}

} // namespace DhclientConf
