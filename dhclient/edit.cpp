#include "edit.h"

#include "declarations.h"
#include "knownoptions.h"
#include "requests.h"

#include <algorithm>

namespace DhclientConf {

namespace {

/// What all commands of a call together want of one option.
struct Wish
{
    std::string name;
    std::string id;
    bool request = false;
    bool noRequest = false;
    bool noRequire = false;
    std::optional<Specification> declaration;
    bool undeclareAll = false;
    std::vector<std::string> undeclare; ///< codes
    bool requestIsLater = false; ///< than the last command that takes a declaration away
};

std::string quoted(std::string_view text)
{
    std::string result = "\"";
    for (const char c : text)
        result += c >= ' ' && c < '\x7f' ? c : '?';
    return result + '"';
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

// The first word of the text, which is taken off it.
std::string_view firstWord(std::string_view &text)
{
    const auto end = std::find_if(text.begin(), text.end(), isBlank);
    const std::string_view word = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    const auto rest = std::find_if_not(end, text.end(), isBlank);
    text.remove_prefix(static_cast<std::size_t>(rest - text.begin()));
    return word;
}

std::string readName(std::string_view text)
{
    std::string id = parseName(text);
    // "option space" starts another statement.
    if (id.empty() || id == "space")
        throw Refusal{quoted(text) + " is no option name"};
    return id;
}

Specification readSpecification(std::string_view text)
{
    const std::string whole = quoted(text);
    Specification result;
    result.name = firstWord(text);
    result.id = readName(result.name);
    const std::string_view code = firstWord(text);
    const bool digits = !code.empty() && code.size() <= 3 && code.front() != '0'
        && code.find_first_not_of("0123456789") == std::string_view::npos;
    if (!digits || std::stoi(std::string(code)) > 254)
        throw Refusal{quoted(code) + " is no option code from 1 to 254 in " + whole};
    result.code = code;
    try {
        if (text.find_first_of("#\r\n\v\f") != std::string_view::npos)
            throw SyntaxError{1, "more than a type"};
        result.type = parseType(text);
    } catch (const SyntaxError &error) {
        throw Refusal{quoted(text) + " is no option type: " + error.reason};
    }
    return result;
}

void add(Wish &wish, const Command &command, const std::optional<Specification> &specification)
{
    switch (command.kind) {
    case Command::AddRequest:
        wish.request = true;
        wish.noRequest = false;
        wish.requestIsLater = true;
        break;
    case Command::DelRequest:
        wish.request = false;
        wish.noRequest = wish.noRequire = true;
        break;
    case Command::AddNewOption:
        wish.declaration = specification;
        break;
    case Command::DelNewOption:
        wish.requestIsLater = false;
        if (!wish.declaration) {
            wish.undeclare.push_back(specification->code);
        } else if (wish.declaration->code == specification->code) {
            wish.declaration.reset();
            wish.undeclareAll = true;
        }
        break;
    }
}

std::vector<Wish> gather(const std::vector<Command> &commands)
{
    std::vector<Wish> wishes;
    for (const Command &command : commands) {
        std::optional<Specification> specification;
        std::string name = command.argument;
        if (command.kind == Command::AddNewOption || command.kind == Command::DelNewOption) {
            specification = readSpecification(command.argument);
            name = specification->name;
        }
        const std::string id = specification ? specification->id : readName(name);
        auto wish = std::find_if(wishes.begin(), wishes.end(), [&id](const Wish &other) { return other.id == id; });
        if (wish == wishes.end()) {
            wishes.emplace_back();
            wish = wishes.end() - 1;
            wish->id = id;
        }
        wish->name = name;
        add(*wish, command, specification);
    }
    return wishes;
}

std::string withRequests(std::string text, const Wish &wish, const Reader &reader, std::vector<std::string> &notes)
{
    if (wish.noRequest)
        text = withoutRequest(std::move(text), wish.id, reader, notes);
    else if (wish.noRequire)
        text = withoutListed(std::move(text), wish.id, Lists::Require);
    if (wish.request)
        text = withRequest(std::move(text), wish.id, wish.name, wish.declaration.has_value(), reader, notes);
    return text;
}

std::string withDeclarations(std::string text, const Wish &wish, const Reader &reader,
                             std::vector<std::string> &notes)
{
    if (wish.declaration)
        return withDeclaration(std::move(text), *wish.declaration, reader, notes);
    const std::string before = text;
    if (wish.undeclareAll)
        text = withoutDeclaration(std::move(text), wish.id, std::nullopt, reader, notes);
    for (const std::string &code : wish.undeclare) {
        if (!wish.undeclareAll)
            text = withoutDeclaration(std::move(text), wish.id, code, reader, notes);
    }
    if (text == before)
        return text;
    const Reading reading(text, reader);
    if (!reading.knows(wish.id)) {
        // A list with a name that the client doesn't know is dropped whole.
        if (!(wish.request && wish.requestIsLater))
            text = withoutListed(std::move(text), wish.id, Lists::Both);
    } else if (const std::vector<std::size_t> left = reading.declarations(wish.id);
               !left.empty() && left.front() > reading.firstUse(wish.id)
               && reading.foreignDeclarations(wish.id).empty()) {
        const Statement &declaration = reading.statements()[left.back()];
        const Specification kept{wish.name, wish.id, declaration.code,
                                 {declaration.type, declaration.encapsulated}};
        text = withDeclaration(std::move(text), kept, reader, notes);
    }
    return text;
}

// The code under which the file's end knows a DHCPv4 option; empty for those of other spaces.
std::string codeOf(const Reading &reading, const std::string &id)
{
    if (id.find('.') != std::string::npos)
        return {};
    const std::vector<std::size_t> own = reading.declarations(id);
    const std::vector<Foreign> foreign = reading.foreignDeclarations(id);
    if (!foreign.empty() && (own.empty() || foreign.back().anchor > own.back()))
        return foreign.back().statement->code;
    if (!own.empty())
        return reading.statements()[own.back()].code;
    const int code = knownCode(id);
    return code == 0 ? std::string() : std::to_string(code);
}

void noteSharedCodes(const Reading &reading, const Wish &wish, std::vector<std::string> &notes)
{
    const std::string code = codeOf(reading, wish.id);
    if (code.empty() || !(wish.declaration || wish.request))
        return;
    std::set<std::string> others;
    others.insert(std::string(knownName(std::stoi(code.substr(0, 9)))));
    for (const Statement &statement : reading.statements()) {
        if (statement.kind == Statement::Declaration)
            others.insert(statement.names.front().id);
    }
    for (const Foreign &foreign : reading.foreign()) {
        if (foreign.statement->kind == Statement::Declaration)
            others.insert(foreign.statement->names.front().id);
    }
    for (const std::string &other : others) {
        if (other != wish.id && !other.empty() && codeOf(reading, other) == code)
            notes.push_back("code " + code + " of \"" + wish.name + "\" is also the code of \"" + other + '"');
    }
}

void judge(const Reading &before, const Reading &after, const std::vector<Wish> &wishes, Result &result)
{
    for (const Wish &wish : wishes) {
        if (wish.request && !after.knows(wish.id))
            throw Refusal{"cannot request \"" + wish.name + "\": neither the client nor the file knows such an option"};
    }
    if (after.violations().empty())
        return;
    // A fault of the file as it stands is told with its place there.
    const Violation &fault = after.violations().front();
    const auto old = std::find_if(before.violations().begin(), before.violations().end(),
                                  [&fault](const Violation &other) { return other.id == fault.id; });
    if (old == before.violations().end())
        throw Refusal{fault.reason};
    result.status = Result::Broken;
    result.line = old->line;
    result.error = old->file.empty() ? old->reason : "in the included \"" + old->file + "\": " + old->reason;
}

} // namespace

Result edit(std::string_view text, const std::vector<Command> &commands, const Reader &reader)
{
    Result result;
    try {
        const std::vector<Wish> wishes = gather(commands);
        const Reading before(text, reader);
        result.text = text;
        // Declarations go before uses, so all uses come first.
        for (const Wish &wish : wishes)
            result.text = withRequests(std::move(result.text), wish, reader, result.notes);
        for (const Wish &wish : wishes)
            result.text = withDeclarations(std::move(result.text), wish, reader, result.notes);
        const Reading after(result.text, reader);
        judge(before, after, wishes, result);
        for (const Wish &wish : wishes)
            noteSharedCodes(after, wish, result.notes);
        for (const std::string &path : after.missing())
            result.notes.push_back("the included file \"" + path + "\" cannot be read");
    } catch (const Refusal &refusal) {
        result.status = Result::Refused;
        result.error = refusal.reason;
    } catch (const SyntaxError &error) {
        result.status = Result::Broken;
        result.line = error.line;
        result.error = error.reason;
    }
    return result;
}

} // namespace DhclientConf
