#include "wish.h"

#include "configuration.h"
#include "error.h"

#include <algorithm>

namespace DhclientConf {

namespace {

constexpr std::string_view Blanks = " \t";

// Removes the first word from the text and returns it.
std::string_view firstWord(std::string_view &text)
{
    const std::string_view word = text.substr(0, text.find_first_of(Blanks));
    text.remove_prefix(std::min(text.find_first_not_of(Blanks, word.size()), text.size()));
    return word;
}

// The client sends the low byte of a larger code, and takes 0 and 255 too, which are no options (C5).
bool canBeAdded(const std::string &code)
{
    return !code.empty() && code.size() <= 3 && std::stoi(code) > 0 && std::stoi(code) < 255;
}

Wish::Declaration readDeclaration(std::string_view codeAndType, bool adds, const std::string &whole)
{
    Wish::Declaration result;
    const std::string_view code = firstWord(codeAndType);
    result.code = normalisedCode(code);
    // What is to be removed may have any code and type: a definition or the registry may hold others.
    if (result.code.empty() || (adds && !canBeAdded(result.code)))
        throw Error(Error::Command, quoted(code) + " is not an option code from 1 to 254, in " + whole);
    if (adds && codeAndType.find('"') == std::string_view::npos)
        result.type = normalisedType(codeAndType);
    if (adds && result.type.empty())
        throw Error(Error::Command, quoted(codeAndType) + " is not an option type, in " + whole);
    return result;
}

void add(Wish &wish, Command::Kind kind, const Wish::Declaration &declaration)
{
    switch (kind) {
    case Command::Kind::AddRequest:
        wish.requested = true;
        break;
    case Command::Kind::DelRequest:
        wish.requested = false;
        wish.isCleared = true;
        break;
    case Command::Kind::AddNewOption:
        wish.declaration = declaration;
        break;
    case Command::Kind::DelNewOption:
        wish.undeclared.insert(declaration.code);
        if (wish.declaration && wish.declaration->code == declaration.code) {
            wish.declaration.reset();
            wish.isUndeclared = true;
        }
        break;
    }
}

} // namespace

std::vector<Wish> readWishes(const std::vector<Command> &commands)
{
    std::vector<Wish> wishes;
    for (const Command &command : commands) {
        const bool adds = command.kind == Command::Kind::AddRequest || command.kind == Command::Kind::AddNewOption;
        const bool declares = command.kind == Command::Kind::AddNewOption
                              || command.kind == Command::Kind::DelNewOption;
        std::string_view rest = command.argument;
        const std::string name(declares ? firstWord(rest) : rest);
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
        add(*wish, command.kind,
            declares ? readDeclaration(rest, adds, quoted(command.argument)) : Wish::Declaration());
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

std::string quoted(std::string_view text)
{
    return '"' + printable(text) + '"';
}

} // namespace DhclientConf
