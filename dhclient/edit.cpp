#include "edit.h"

#include "declarationedits.h"
#include "draft.h"
#include "error.h"
#include "knownoptions.h"
#include "listedits.h"
#include "optiontype.h"

#include <algorithm>

namespace DhclientConf {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

// Removes the first word from the text and returns it.
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
    if (id.empty())
        throw Error(Error::Command, quoted(text) + " is not an option name");
    return id;
}

// What is to be removed may have any code and type: a definition or the registry may hold one that can't be declared.
NewOption readNewOption(std::string_view text, bool adds)
{
    const std::string whole = quoted(text);
    NewOption result{};
    result.name = firstWord(text);
    result.id = readName(result.name);
    const std::string_view code = firstWord(text);
    const bool canBeAdded = code.size() <= 3 && isNumber(code) && code.front() != '0'
                            && std::stoi(std::string(code)) < 255;
    if (adds ? !canBeAdded : !isNumber(code))
        throw Error(Error::Command, quoted(code) + " is not an option code from 1 to 254, in " + whole);
    result.code = sentCode(code);
    result.type = normalisedType(text);
    if (adds && result.type.empty())
        throw Error(Error::Command, quoted(text) + " is not an option type, in " + whole);
    return result;
}

void noteSharedCode(Draft &draft, const Option &option, const std::string &name)
{
    const std::set<std::string> others = othersWithCode(draft.reading(), option);
    if (others.empty())
        return;
    std::string line = "code " + std::to_string(option.code) + " of \"" + name + "\" is also the code of \""
                       + *others.begin() + '"';
    if (others.size() > 1)
        line += " and " + std::to_string(others.size() - 1) + " more";
    draft.note(line);
}

// What a send statement gives the server wins over the list that the client would make (measured).
void noteSentList(Draft &draft)
{
    constexpr int ParameterRequestList = 55;
    for (const Step &step : draft.reading().steps()) {
        const std::vector<Name> &names = step.statement->names;
        if (!step.statement->sends || names.empty())
            continue;
        const int code = numberedCode(names.front().id);
        if ((code != 0 ? code : draft.reading().code(names.front().id)) == ParameterRequestList)
            draft.note((step.included ? fileName(step) + ", " : std::string()) + "line "
                       + std::to_string(step.statement->line) + " sends a list of its own, whatever is requested");
    }
}

/// A command with its argument read.
struct Edit
{
    Command::Kind kind;
    NewOption option; ///< of a request command: only name and id
};

std::vector<Edit> readCommands(const std::vector<Command> &commands)
{
    std::vector<Edit> edits;
    for (const Command &command : commands) {
        const bool adds = command.kind == Command::AddRequest || command.kind == Command::AddNewOption;
        const bool isRequest = command.kind == Command::AddRequest || command.kind == Command::DelRequest;
        Edit edit{command.kind, {}};
        edit.option = isRequest ? NewOption{command.argument, readName(command.argument), 0, {}}
                                : readNewOption(command.argument, adds);
        const std::string &id = edit.option.id;
        if (adds && id.find('.') != std::string::npos)
            throw Error(Error::Command, quoted(edit.option.name) + " belongs to an option space other than DHCPv4's");
        // The client reads such names as numbers, and "option space" starts another statement.
        if (adds && (id == "space" || id.compare(0, 8, "unknown-") == 0))
            throw Error(Error::Command, quoted(edit.option.name) + " is not an option name");
        if (adds && isEncapsulation(edit.option.type))
            throw Error(Error::Command, quoted(edit.option.type) + " needs an option space, which is not looked into");
        edits.push_back(std::move(edit));
    }
    return edits;
}

void carryOut(Draft &draft, const std::vector<Edit> &edits, std::size_t index)
{
    const NewOption &option = edits[index].option;
    const auto declaration = std::find_if(edits.begin() + static_cast<std::ptrdiff_t>(index), edits.end(),
                                          [&option](const Edit &edit) {
                                              return edit.kind == Command::AddNewOption && edit.option.id == option.id;
                                          });
    const bool isDeclaredLater = declaration != edits.end();
    switch (edits[index].kind) {
    case Command::AddRequest: {
        if (isDeclaredLater)
            declare(draft, declaration->option);
        const Option requested{option.id, draft.reading().code(option.id)};
        if (requested.code == 0)
            throw Error(Error::Command,
                        "cannot request \"" + option.name + "\": neither the client nor the file knows such an option");
        const std::string before = draft.text();
        request(draft, requested, option.name);
        if (draft.text() != before)
            declareSafely(draft, option.name, option.id);
        noteSharedCode(draft, requested, option.name);
        noteSentList(draft);
        break;
    }
    case Command::DelRequest:
        requestNoMore(draft, {option.id, draft.reading().code(option.id)}, option.name);
        noteSentList(draft);
        break;
    case Command::AddNewOption:
        declare(draft, option);
        noteSharedCode(draft, {option.id, option.code}, option.name);
        break;
    case Command::DelNewOption:
        if (!isDeclaredLater) {
            undeclare(draft, option);
        } else if (othersWithCode(draft.reading(), {option.id, option.code}).empty()) {
            // The declaration changes in place. The code that it had may be what lists it.
            nameNumbers(draft, {option.id, option.code}, option.name);
            if (declaration->option.code != option.code)
                noteIncludedLists(draft, {std::string(), option.code}, option.name);
        }
        break;
    }
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
    const std::vector<Edit> edits = readCommands(commands);
    Draft draft(text, reader);
    const std::vector<Fault> &faults = draft.reading().faults();
    if (!faults.empty())
        throw Error(Error::File, faults.front().reason, faults.front().line);
    for (std::size_t i = 0; i < edits.size(); ++i)
        carryOut(draft, edits, i);
    for (const Edit &edit : edits) {
        if (edit.kind != Command::DelRequest)
            declareInTime(draft, edit.option.name, edit.option.id);
    }
    if (!draft.reading().faults().empty())
        throw Error(Error::Command, draft.reading().faults().front().reason);
    for (const std::string &path : draft.reading().missing())
        draft.note("the included file \"" + path + "\" cannot be read");
    return {draft.text(), draft.notes()};
}

} // namespace DhclientConf
