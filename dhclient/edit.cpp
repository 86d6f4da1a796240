#include "edit.h"

#include "draft.h"
#include "error.h"
#include "knownoptions.h"
#include "layout.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <iterator>
#include <set>

namespace DhclientConf {

namespace {

/// The names of one option in lists.
struct Option
{
    std::string id;
    int code; ///< 0 if none is known

    bool isNumbered(const Name &name) const { return code != 0 && numberedCode(name.id) == code; }
    bool isNamed(const Name &name) const { return name.id == id || isNumbered(name); }
    bool isIn(const Step &list) const
    {
        const std::vector<Name> &names = list.statement->names;
        return std::any_of(names.begin(), names.end(), [this](const Name &name) { return isNamed(name); });
    }
    bool isIn(const Context &context) const
    {
        const bool builtIn = context.isBuiltIn()
            && std::find(std::begin(BuiltInRequests), std::end(BuiltInRequests), id) != std::end(BuiltInRequests);
        return builtIn || std::any_of(context.lists.begin(), context.lists.end(),
                                      [this](const Step &list) { return isIn(list); });
    }
};

/// A declaration as a command gives it.
struct NewOption
{
    std::string name; ///< as written
    std::string id;
    int code;
    std::string type; ///< as of normalisedType()

    bool isSame(const Statement &declaration) const { return declaration.code == code && declaration.value == type; }
};

bool isList(const Step &step)
{
    return step.statement->kind == Statement::Request || step.statement->kind == Statement::Require;
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
    if (id.empty())
        throw Error(Error::Command, quoted(text) + " is not an option name");
    return id;
}

NewOption readNewOption(std::string_view text)
{
    const std::string whole = quoted(text);
    NewOption result{};
    result.name = firstWord(text);
    result.id = readName(result.name);
    const std::string_view code = firstWord(text);
    const auto [end, error] = std::from_chars(code.data(), code.data() + code.size(), result.code);
    if (error != std::errc() || end != code.data() + code.size() || code.front() == '0' || result.code < 1
        || result.code > 254)
        throw Error(Error::Command, quoted(code) + " is not an option code from 1 to 254, in " + whole);
    result.type = normalisedType(text);
    if (result.type.empty())
        throw Error(Error::Command, quoted(text) + " is not an option type, in " + whole);
    return result;
}

std::string fileName(const Step &step)
{
    return "the included file \"" + *step.included + '"';
}

std::set<std::string> othersWithCode(const Reading &reading, const Option &option)
{
    std::set<std::string> others;
    const std::string known(knownName(option.code));
    if (!known.empty() && reading.code(known) == option.code)
        others.insert(known);
    for (const Step &step : reading.steps()) {
        const Statement &statement = *step.statement;
        if (statement.kind == Statement::Declaration && statement.code == option.code
            && reading.code(statement.names.front().id) == option.code)
            others.insert(statement.names.front().id);
    }
    others.erase(option.id);
    return others;
}

// Leaves one declaration of the option in the edited file, with this code and type, before its first use.
void declare(Draft &draft, const NewOption &wanted)
{
    const std::vector<Step> &steps = draft.reading().steps();
    const std::vector<std::size_t> places = draft.reading().declarations(wanted.id);
    const std::size_t firstUse = draft.reading().firstUse(wanted.id);
    std::vector<std::size_t> own;
    for (const std::size_t place : places) {
        if (!steps[place].included)
            own.push_back(place);
        else
            draft.note(fileName(steps[place]) + " declares \"" + wanted.name + "\" too");
    }
    if (own.empty() && !places.empty() && places.front() < firstUse && wanted.isSame(*steps[places.back()].statement))
        return;
    const bool keepsFirst = !own.empty() && places.front() < firstUse;
    for (; own.size() > (keepsFirst ? 1 : 0); own.pop_back())
        draft.remove(own.back());
    if (!keepsFirst) {
        draft.addDeclaration("option " + wanted.name + " code " + std::to_string(wanted.code) + " = " + wanted.type
                             + ';');
        return;
    }
    const Statement kept = *draft.reading().steps()[own.front()].statement;
    std::string text = draft.text();
    if (kept.value != wanted.type)
        text = replaced(text, kept.typeRange, wanted.type);
    if (kept.code != wanted.code)
        text = replaced(text, kept.codeRange, std::to_string(wanted.code));
    draft.change(std::move(text));
}

// An option that is requested by name must be declared before. If it is declared too late, it is declared once more.
void declareInTime(Draft &draft, const std::string &name, const std::string &id)
{
    const Reading &reading = draft.reading();
    const std::vector<std::size_t> places = reading.declarations(id);
    if (knownCode(id) != 0 || places.empty() || places.front() < reading.firstUse(id))
        return;
    const auto own = std::find_if(places.rbegin(), places.rend(), [&reading](std::size_t place) {
        return !reading.steps()[place].included;
    });
    const Statement &model = *reading.steps()[own == places.rend() ? places.back() : *own].statement;
    declare(draft, {name, id, model.code, model.value});
}

// Removes the option from every list of the edited file.
void unlist(Draft &draft, const Option &option)
{
    for (std::size_t place = 0; place < draft.reading().steps().size();) {
        const Step &step = draft.reading().steps()[place];
        const std::vector<Name> &names = step.statement->names;
        const auto name = std::find_if(names.begin(), names.end(),
                                       [&option](const Name &other) { return option.isNamed(other); });
        if (!step.included && isList(step) && name != names.end())
            draft.removeName(place, static_cast<std::size_t>(name - names.begin()));
        else
            ++place;
    }
}

void unlistEverywhere(Draft &draft, const Option &option, const std::string &name)
{
    unlist(draft, option);
    for (const Step &step : draft.reading().steps()) {
        if (step.included && isList(step) && option.isIn(step))
            draft.note(fileName(step) + " still lists \"" + name + '"');
    }
}

// Whether the client sends an option that is listed by number depends on where it is declared (measured).
void nameNumbers(Draft &draft, const Option &option, const std::string &name)
{
    for (std::size_t place = 0; place < draft.reading().steps().size(); ++place) {
        const Step &step = draft.reading().steps()[place];
        if (step.included || !isList(step))
            continue;
        for (const Name &other : step.statement->names) {
            if (other.id != option.id && option.isNumbered(other)) {
                draft.change(replaced(draft.text(), other.range, name));
                --place; // there may be more
                break;
            }
        }
    }
}

// The list of the edited file that the option enters so that this context requests it; null if there is none. One that
// only adds to the built-in list must serve all contexts that lack the option there: a new one above them would.
const Statement *listFor(const Context &context, const std::vector<const Context *> &lackingBuiltIn)
{
    const bool isBuiltIn = context.isBuiltIn();
    if (!isBuiltIn && !context.lists.front().included)
        return context.lists.front().statement;
    for (auto list = context.lists.rbegin(); list != context.lists.rend(); ++list) {
        const auto isServed = [&list](const Context *other) {
            return std::any_of(other->lists.begin(), other->lists.end(),
                               [&list](const Step &step) { return step.statement == list->statement; });
        };
        if (!list->included
            && (!isBuiltIn || std::all_of(lackingBuiltIn.begin(), lackingBuiltIn.end(), isServed)))
            return list->statement;
    }
    return nullptr;
}

void request(Draft &draft, const Option &option, const std::string &name)
{
    nameNumbers(draft, option, name);
    for (;;) {
        std::vector<const Context *> lacking;
        std::vector<const Context *> lackingBuiltIn;
        for (const Context &context : draft.reading().contexts()) {
            if (option.isIn(context))
                continue;
            lacking.push_back(&context);
            if (context.isBuiltIn())
                lackingBuiltIn.push_back(&context);
        }
        const auto reachable = std::find_if(lacking.begin(), lacking.end(), [&](const Context *context) {
            return context->isBuiltIn() || listFor(*context, lackingBuiltIn);
        });
        if (reachable == lacking.end()) {
            for (const Context *context : lacking)
                draft.note(fileName(context->lists.front()) + " sets a list of requests without \"" + name + '"');
            break;
        }
        if (const Statement *list = listFor(**reachable, lackingBuiltIn))
            draft.change(withName(draft.text(), *list, name));
        else
            draft.addList("also request " + name + ';');
    }
    for (const Step &step : draft.reading().steps()) {
        const std::vector<Name> &names = step.statement->names;
        if (step.included && step.statement->kind == Statement::Request && knownName(option.code).empty()
            && std::any_of(names.begin(), names.end(), [&](const Name &other) { return option.isNumbered(other); }))
            draft.note(fileName(step) + " requests \"" + name + "\" by its number, which the client may ignore");
    }
}

void requestNoMore(Draft &draft, const Option &option, const std::string &name)
{
    unlistEverywhere(draft, option, name);
    const std::vector<Context> &contexts = draft.reading().contexts();
    const bool isBuiltIn = std::find(std::begin(BuiltInRequests), std::end(BuiltInRequests), option.id)
        != std::end(BuiltInRequests);
    if (isBuiltIn && std::any_of(contexts.begin(), contexts.end(), std::mem_fn(&Context::isBuiltIn))) {
        std::vector<std::string_view> others;
        std::remove_copy(std::begin(BuiltInRequests), std::end(BuiltInRequests), std::back_inserter(others), option.id);
        draft.addList(requestStatement(others, lineEnd(draft.text())));
    }
}

void undeclare(Draft &draft, const NewOption &unwanted)
{
    const std::vector<Step> &steps = draft.reading().steps();
    std::vector<std::size_t> doomed;
    bool staysKnown = knownCode(unwanted.id) != 0;
    for (const std::size_t place : draft.reading().declarations(unwanted.id)) {
        const bool isMeant = steps[place].statement->code == unwanted.code;
        if (!steps[place].included && isMeant)
            doomed.push_back(place);
        else
            staysKnown = true;
        if (steps[place].included && isMeant)
            draft.note(fileName(steps[place]) + " still declares \"" + unwanted.name + '"');
    }
    const bool isUsed = std::any_of(steps.begin(), steps.end(), [&unwanted](const Step &step) {
        const auto isName = [&unwanted](const Name &name) { return name.id == unwanted.id; };
        const std::vector<Name> &names = step.statement->names;
        return (step.statement->kind == Statement::Opaque || (step.included && isList(step)))
            && std::any_of(names.begin(), names.end(), isName);
    });
    if (!doomed.empty() && !staysKnown && isUsed) {
        draft.note('"' + unwanted.name + "\" is still used, its declaration stays");
        return;
    }
    // A list with a name that the client doesn't know is dropped whole.
    if (!doomed.empty() && !staysKnown)
        unlist(draft, {unwanted.id, 0});
    const Option option{unwanted.id, unwanted.code};
    if (othersWithCode(draft.reading(), option).empty())
        unlistEverywhere(draft, {std::string(), unwanted.code}, unwanted.name); // it may be listed by number
    const std::vector<std::size_t> places = draft.reading().declarations(unwanted.id);
    for (auto place = places.rbegin(); place != places.rend(); ++place) {
        const Step &step = draft.reading().steps()[*place];
        if (!step.included && step.statement->code == unwanted.code)
            draft.remove(*place);
    }
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
        const bool isRequest = command.kind == Command::AddRequest || command.kind == Command::DelRequest;
        Edit edit{command.kind, {}};
        edit.option = isRequest ? NewOption{command.argument, readName(command.argument), 0, {}}
                                : readNewOption(command.argument);
        const std::string &id = edit.option.id;
        const bool adds = command.kind == Command::AddRequest || command.kind == Command::AddNewOption;
        if (adds && id.find('.') != std::string::npos)
            throw Error(Error::Command, quoted(edit.option.name) + " belongs to an option space other than DHCPv4's");
        // The client reads such names as numbers, and "option space" starts another statement.
        if (adds && (id == "space" || id.compare(0, 8, "unknown-") == 0))
            throw Error(Error::Command, quoted(edit.option.name) + " is not an option name");
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
            throw Error(Error::Command, "cannot request \"" + option.name
                            + "\": neither the client nor the file knows such an option");
        request(draft, requested, option.name);
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
        if (!isDeclaredLater)
            undeclare(draft, option);
        else if (othersWithCode(draft.reading(), {option.id, option.code}).empty())
            nameNumbers(draft, {option.id, option.code}, option.name); // the declaration changes in place
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
    for (const Edit &edit : edits)
        declareInTime(draft, edit.option.name, edit.option.id);
    if (!draft.reading().faults().empty())
        throw Error(Error::Command, draft.reading().faults().front().reason);
    for (const std::string &path : draft.reading().missing())
        draft.note("the included file \"" + path + "\" cannot be read");
    return {draft.text(), draft.notes()};
}

} // namespace DhclientConf
