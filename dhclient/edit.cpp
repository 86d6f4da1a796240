#include "edit.h"

#include "declarations.h"
#include "knownoptions.h"
#include "requests.h"

#include <algorithm>
#include <map>

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
    std::optional<NewOption> declaration;
    bool undeclareAll = false;
    std::vector<std::string> undeclare; ///< codes
    bool requestIsLater = false; ///< than the last command that takes a declaration away
};

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

std::string readName(std::string_view text, bool mayBeNumber)
{
    std::string id = parseName(text);
    // "option space" starts another statement.
    if (id.empty() || id == "space" || (isReadAsNumber(id) && !mayBeNumber))
        throw Refusal{quoted(text) + " is no option name"};
    return id;
}

NewOption readNewOption(std::string_view text, bool mayBeNumber)
{
    const std::string whole = quoted(text);
    NewOption result;
    result.name = firstWord(text);
    result.id = readName(result.name, mayBeNumber);
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

void add(Wish &wish, const Command &command, const std::optional<NewOption> &newOption)
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
        wish.declaration = newOption;
        break;
    case Command::DelNewOption:
        wish.requestIsLater = false;
        if (!wish.declaration) {
            wish.undeclare.push_back(newOption->code);
        } else if (wish.declaration->code == newOption->code) {
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
        std::optional<NewOption> newOption;
        std::string name = command.argument;
        // What is to go may be called as it likes.
        const bool goes = command.kind == Command::DelRequest || command.kind == Command::DelNewOption;
        if (command.kind == Command::AddNewOption || command.kind == Command::DelNewOption) {
            newOption = readNewOption(command.argument, goes);
            name = newOption->name;
        }
        const std::string id = newOption ? newOption->id : readName(name, goes);
        auto wish = std::find_if(wishes.begin(), wishes.end(), [&id](const Wish &other) { return other.id == id; });
        if (wish == wishes.end()) {
            wishes.emplace_back();
            wish = wishes.end() - 1;
            wish->id = id;
        }
        wish->name = name;
        add(*wish, command, newOption);
    }
    return wishes;
}

void changeRequests(Draft &draft, const std::vector<Wish> &wishes)
{
    // What goes may have the built-in list written out, or one behind an include: whether a name stands in there
    // once too often shows only then.
    for (const Wish &wish : wishes) {
        if (wish.noRequest)
            requestNowhere(draft, wish.id);
        else if (wish.noRequire)
            unlist(draft, wish.id, draft.reading().code(wish.id), Lists::Require);
    }
    for (const Wish &wish : wishes) {
        // One that will be unknown stays unrequested.
        if (wish.request && (wish.declaration || draft.reading().knows(wish.id)))
            requestOnce(draft, wish.id, wish.name, wish.declaration ? std::stoi(wish.declaration->code) : 0);
    }
}

NewOption asDeclared(const Statement &declaration, const Wish &wish)
{
    return {wish.name, wish.id, declaration.code, {declaration.type, declaration.encapsulated}};
}

void changeDeclarations(Draft &draft, const Wish &wish)
{
    if (wish.declaration) {
        declareOnce(draft, *wish.declaration);
        return;
    }
    if (!wish.undeclareAll && wish.undeclare.empty()) {
        const std::vector<Foreign> foreign = draft.reading().foreignDeclarations(wish.id);
        const bool late = !foreign.empty() && foreign.front().anchor > draft.reading().firstUse(wish.id);
        if (wish.request && late && draft.reading().declarations(wish.id).empty())
            declareOnce(draft, asDeclared(*foreign.back().statement, wish));
        return;
    }
    if (wish.undeclareAll) {
        undeclare(draft, wish.id, std::nullopt);
    } else {
        for (const std::string &code : wish.undeclare)
            undeclare(draft, wish.id, code);
    }
    const Reading &reading = draft.reading();
    const std::vector<std::size_t> left = reading.declarations(wish.id);
    if (!reading.knows(wish.id)) {
        // A list with a name that the client doesn't know is dropped whole.
        if (!(wish.request && wish.requestIsLater))
            unlist(draft, wish.id, 0, Lists::Both);
    } else if (!left.empty() && left.front() > reading.firstUse(wish.id)
               && reading.foreignDeclarations(wish.id).empty()) {
        declareOnce(draft, asDeclared(reading.statements()[left.back()], wish));
    }
}

// The codes under which the file's end knows DHCPv4 options that it declares; the last declaration wins.
std::map<std::string_view, std::string_view> declaredCodes(const Reading &reading)
{
    std::map<std::string_view, std::string_view> codes;
    const auto enter = [&codes](const Statement &statement) {
        if (statement.kind == Statement::Declaration && statement.names.front().id.find('.') == std::string::npos)
            codes[statement.names.front().id] = statement.code;
    };
    auto foreign = reading.foreign().begin();
    for (std::size_t i = 0; i < reading.statements().size(); ++i) {
        enter(reading.statements()[i]);
        for (; foreign != reading.foreign().end() && foreign->anchor == i; ++foreign)
            enter(*foreign->statement);
    }
    return codes;
}

// The client sends the low byte of a code, whatever stands in the file (measured).
int sentCode(std::string_view digits)
{
    int code = 0;
    for (const char digit : digits)
        code = (code * 10 + (digit - '0')) % 256;
    return code;
}

void noteSharedCodes(Draft &draft, const std::vector<Wish> &wishes)
{
    const auto codes = declaredCodes(draft.reading());
    for (const Wish &wish : wishes) {
        if (!(wish.declaration || wish.request))
            continue;
        const auto declared = codes.find(wish.id);
        const int known = knownCode(wish.id);
        const std::string code = declared != codes.end() ? std::string(declared->second) : std::to_string(known);
        if (declared == codes.end() && known == 0)
            continue;
        std::vector<std::string_view> others;
        const std::string_view own = knownName(sentCode(code));
        if (!own.empty() && own != wish.id && codes.count(own) == 0)
            others.push_back(own);
        for (const auto &[other, otherCode] : codes) {
            if (sentCode(otherCode) == sentCode(code) && other != wish.id)
                others.push_back(other);
        }
        if (others.empty())
            continue;
        std::string line = "code " + code + " of \"" + wish.name + "\" is also the code of \""
            + std::string(others.front()) + '"';
        if (others.size() > 1)
            line += " and " + std::to_string(others.size() - 1) + " more";
        draft.note(line);
    }
}

void judge(const std::vector<Violation> &before, const std::string &fixedList, const Reading &after,
           const std::vector<Wish> &wishes, Result &result)
{
    for (const Wish &wish : wishes) {
        if (wish.request && wish.requestIsLater && !after.knows(wish.id))
            throw Refusal{"cannot request \"" + wish.name + "\": neither the client nor the file knows such an option"};
        if ((wish.request || wish.noRequest) && !fixedList.empty())
            throw Refusal{fixedList};
    }
    if (after.violations().empty())
        return;
    // A fault of the file as it stands is told with its place there.
    const Violation &fault = after.violations().front();
    const auto old = std::find_if(before.begin(), before.end(),
                                  [&fault](const Violation &other) { return other.id == fault.id; });
    if (old == before.end())
        throw Refusal{fault.reason};
    result.status = Result::Broken;
    result.line = old->line;
    result.error = old->file.empty() ? old->reason : "in the included \"" + old->file + "\": " + old->reason;
}

} // namespace

std::string quoted(std::string_view text)
{
    std::string result = "\"";
    for (const char c : text)
        result += c >= ' ' && c < '\x7f' ? c : '?';
    return result + '"';
}

Result edit(std::string_view text, const std::vector<Command> &commands, const Reader &reader)
{
    Result result;
    try {
        const std::vector<Wish> wishes = gather(commands);
        Draft draft(text, reader);
        const std::vector<Violation> before = draft.reading().violations();
        std::string fixedList = draft.reading().fixedList();
        // Declarations go before uses, so all uses come first.
        changeRequests(draft, wishes);
        for (const Wish &wish : wishes)
            changeDeclarations(draft, wish);
        const Reading &after = draft.reading();
        if (fixedList.empty())
            fixedList = after.fixedList();
        judge(before, fixedList, after, wishes, result);
        if (result.status != Result::Done)
            return result;
        noteSharedCodes(draft, wishes);
        for (const std::string &path : after.missing())
            draft.note("the included file \"" + path + "\" cannot be read");
        result.text = draft.text();
        result.notes = draft.notes();
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
