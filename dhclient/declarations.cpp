#include "declarations.h"

#include "knownoptions.h"
#include "placement.h"

#include <algorithm>

namespace DhclientConf {

namespace {

constexpr std::size_t None = std::string::npos;

/// Between which statements a declaration may stand: at or behind `first`, before `last`.
struct Bounds
{
    std::size_t first = 0;
    std::size_t last = 0;
};

// The statement behind the last one that declares the space, 0 if the client knows it by itself.
std::size_t behindSpace(const Reading &reading, const std::string &space)
{
    if (space.empty() || isKnownSpace(space))
        return 0;
    std::size_t found = None;
    const std::vector<Statement> &statements = reading.statements();
    for (std::size_t i = 0; i < statements.size(); ++i) {
        if (statements[i].kind == Statement::Space && statements[i].word == space)
            found = i;
    }
    for (const Foreign &foreign : reading.foreign()) {
        if (foreign.statement->kind == Statement::Space && foreign.statement->word == space)
            found = found == None ? foreign.anchor : std::max(found, foreign.anchor);
    }
    if (found == None)
        throw Refusal{"neither the client nor the file knows an option space \"" + space + "\""};
    return found + 1;
}

bool isSame(const Statement &declaration, const NewOption &wanted)
{
    return declaration.code == wanted.code && declaration.type == wanted.type.text;
}

Bounds bounds(const Reading &reading, const NewOption &wanted)
{
    const std::size_t dot = wanted.id.find('.');
    Bounds result;
    result.first = behindSpace(reading, dot == None ? std::string() : wanted.id.substr(0, dot));
    result.first = std::max(result.first, behindSpace(reading, wanted.type.encapsulated));
    result.last = std::min(reading.firstUse(wanted.id), reading.statements().size());
    const std::vector<Foreign> foreign = reading.foreignDeclarations(wanted.id);
    // The last declaration wins, for uses before it too (measured).
    const bool confirmed = !foreign.empty() && isSame(*foreign.back().statement, wanted)
        && foreign.front().anchor > reading.firstUse(wanted.id);
    if (!foreign.empty() && !confirmed) {
        result.first = std::max(result.first, foreign.back().anchor + 1);
        if (foreign.front().anchor <= result.last)
            result.last = reading.statements().size();
    }
    return result;
}

std::string inPlace(std::string_view text, const Statement &declaration, const NewOption &wanted)
{
    std::string result(text);
    if (declaration.type != wanted.type.text)
        result = replaced(result, declaration.typeBegin, declaration.typeEnd, wanted.type.text);
    if (declaration.code != wanted.code)
        result = replaced(result, declaration.codeBegin, declaration.codeEnd, wanted.code);
    return result;
}

std::string inserted(const Reading &reading, const NewOption &wanted)
{
    const std::string_view text = reading.text();
    const std::vector<Statement> &statements = reading.statements();
    const Bounds where = bounds(reading, wanted);
    if (where.first > where.last) {
        const std::vector<Foreign> foreign = reading.foreignDeclarations(wanted.id);
        const bool byInclude = !foreign.empty() && !isSame(*foreign.back().statement, wanted);
        throw Refusal{"\"" + wanted.name + "\" is used before "
                      + (byInclude ? "the included file \"" + foreign.back().path + "\" declares it otherwise"
                                   : "what its declaration needs")};
    }
    const std::string added = "option " + wanted.name + " code " + wanted.code + " = " + wanted.type.text + ';';
    for (std::size_t i = where.last; i > 0 && i >= where.first; --i) {
        if (statements[i - 1].kind == Statement::Declaration)
            return withBehind(text, statements[i - 1], added);
    }
    if (where.last < statements.size())
        return withBefore(text, statements[where.last], added);
    return withAtEnd(text, added);
}

// Whether anything but the lists of the edited file names the option.
bool isUsedOtherwise(const Reading &reading, const std::string &id)
{
    const auto names = [&id](const std::vector<Name> &list) {
        return std::any_of(list.begin(), list.end(), [&id](const Name &name) { return name.id == id; });
    };
    const std::function<bool(const Statement &)> uses = [&](const Statement &statement) {
        return names(statement.uses) || std::any_of(statement.body.begin(), statement.body.end(), uses);
    };
    return std::any_of(reading.statements().begin(), reading.statements().end(), uses)
        || std::any_of(reading.foreign().begin(), reading.foreign().end(), [&](const Foreign &foreign) {
               return names(foreign.statement->uses) || names(foreign.statement->names);
           });
}

} // namespace

void declareOnce(Draft &draft, const NewOption &wanted)
{
    std::size_t kept = None;
    {
        const Reading &reading = draft.reading();
        const std::vector<Statement> &statements = reading.statements();
        const std::vector<std::size_t> own = reading.declarations(wanted.id);
        const std::vector<Foreign> foreign = reading.foreignDeclarations(wanted.id);
        if (!foreign.empty()) {
            draft.note("the included file \"" + foreign.back().path + "\" declares \"" + wanted.name + "\" too");
            if (own.empty() && isSame(*foreign.back().statement, wanted)
                && foreign.front().anchor <= reading.firstUse(wanted.id))
                return;
        }
        const Bounds where = bounds(reading, wanted);
        const auto inBounds = [&where](std::size_t index) { return index >= where.first && index < where.last; };
        for (const std::size_t index : own) {
            if (inBounds(index) && (kept == None || (!isSame(statements[kept], wanted)
                                                     && isSame(statements[index], wanted))))
                kept = index;
        }
        std::string text = draft.text();
        for (auto index = own.rbegin(); index != own.rend(); ++index) {
            const Statement &declaration = statements[*index];
            text = *index == kept ? inPlace(text, declaration, wanted) : without(text, declaration);
        }
        draft.change(std::move(text));
    }
    if (kept == None)
        draft.change(inserted(draft.reading(), wanted));
}

void undeclare(Draft &draft, const std::string &id, const std::optional<std::string> &code)
{
    const Reading &reading = draft.reading();
    std::vector<std::size_t> doomed;
    const std::vector<std::size_t> own = reading.declarations(id);
    for (const std::size_t index : own) {
        if (!code || reading.statements()[index].code == *code)
            doomed.push_back(index);
    }
    const bool stays = doomed.size() < own.size() || !reading.foreignDeclarations(id).empty() || isKnownOption(id);
    if (!doomed.empty() && !stays && isUsedOtherwise(reading, id)) {
        draft.note("\"" + id + "\" is still used, its declaration stays");
        return;
    }
    for (const Foreign &foreign : reading.foreignDeclarations(id)) {
        if (!code || foreign.statement->code == *code)
            draft.note("the included file \"" + foreign.path + "\" still declares \"" + id + "\"");
    }
    std::string text = draft.text();
    for (auto index = doomed.rbegin(); index != doomed.rend(); ++index)
        text = without(text, reading.statements()[*index]);
    draft.change(std::move(text));
}

} // namespace DhclientConf
