#include "requests.h"

#include "knownoptions.h"
#include "placement.h"

#include <algorithm>

namespace DhclientConf {

namespace {

// Far more than a file's lists and blocks need: no text is to keep the tool busy for ever.
constexpr int MostSteps = 1000;

/// Where a name goes: into a list, or into a new "also request" statement.
struct Target
{
    const Statement *list = nullptr;
    std::size_t start = 0; ///< the first statement that a new one may stand before
};

bool isList(const Statement &statement)
{
    return statement.kind == Statement::Request;
}

// The list in force among these statements that the edited file holds itself; the last one called "also", if
// they only add to a list from elsewhere. `from` is the first statement that may name the option.
Target target(const Reading &reading, const std::vector<Statement> &statements, Target target, std::size_t from)
{
    for (std::size_t i = 0; i < statements.size(); ++i) {
        const Statement &statement = statements[i];
        const bool includesList = statement.kind == Statement::Include && reading.replacesList(statement);
        if (includesList || (isList(statement) && !statement.also))
            target = {nullptr, i + 1};
        if (i < from)
            continue;
        const bool plain = target.list && !target.list->also;
        if (isList(statement) && (!statement.also || (!plain && !statement.names.empty())))
            target.list = &statement;
    }
    target.start = std::max(target.start, from);
    return target;
}

std::string addToFile(const Reading &reading, const std::string &name, std::size_t from)
{
    const std::vector<Statement> &statements = reading.statements();
    const Target place = target(reading, statements, {}, from);
    if (place.list)
        return withName(reading.text(), *place.list, name);
    const std::string added = "also request " + name + ';';
    // Before the interface blocks, which take a copy of the list.
    for (std::size_t i = place.start; i < statements.size(); ++i) {
        if (statements[i].kind == Statement::Block)
            return withBefore(reading.text(), statements[i], added);
    }
    return withAtEnd(reading.text(), added);
}

std::string addToBlocks(const Reading &reading, const Context &context, const std::string &name)
{
    // An included block of the same interface may set the list anew behind some of the file's own.
    const auto index = static_cast<std::size_t>(&context - reading.contexts().data());
    const Statement *const statements = reading.statements().data();
    auto from = static_cast<std::size_t>(context.include ? context.include - statements : 0);
    for (const Foreign &foreign : reading.foreign()) {
        if (foreign.context == index && isList(*foreign.statement) && !foreign.statement->also)
            from = std::max(from, foreign.anchor);
    }
    const Statement *const first = statements + from;
    const std::string added = "also request " + name + ';';
    if (context.blocks.empty() || context.blocks.back() < first)
        return withBehind(reading.text(), *first, "interface " + context.interface + " { " + added + " }");
    Target place;
    for (const Statement *block : context.blocks) {
        if (block >= first)
            place = target(reading, block->body, place, 0);
    }
    if (place.list)
        return withName(reading.text(), *place.list, name);
    return withInBlock(reading.text(), *context.blocks.back(), added);
}

bool holds(const Context &context, const Entry &wanted)
{
    return std::any_of(context.entries.begin(), context.entries.end(), [&wanted](const Entry &entry) {
        return entry.list == wanted.list && entry.index == wanted.index;
    });
}

// The first statement at top level that may name the option.
std::size_t knownFrom(const Reading &reading, const std::string &id, bool declared)
{
    const std::vector<Foreign> foreign = reading.foreignDeclarations(id);
    if (isKnownOption(id) || foreign.empty() || (!declared && !reading.declarations(id).empty()))
        return 0;
    // A declaration to come goes behind the last one, so that it wins.
    return (declared ? foreign.back() : foreign.front()).anchor + 1;
}

/// The names of one option.
struct Option
{
    const std::string &id;
    int code; ///< 0 if names by number don't count

    bool isNumbered(std::string_view name) const { return code != 0 && numberedCode(name) == code; }
    bool isNamed(std::string_view name) const { return name == id || isNumbered(name); }
};

// Nothing if the option isn't listed.
std::optional<std::string> withoutSome(std::string_view text, const std::vector<Statement> &statements,
                                       const Option &option, Lists lists)
{
    for (const Statement &statement : statements) {
        if (statement.kind == Statement::Require || (isList(statement) && lists == Lists::Both)) {
            std::vector<std::size_t> indices;
            for (std::size_t i = 0; i < statement.names.size(); ++i) {
                if (option.isNamed(statement.names[i].id))
                    indices.push_back(i);
            }
            if (!indices.empty())
                return withoutNames(text, statement, indices);
        }
        if (std::optional<std::string> result = withoutSome(text, statement.body, option, lists))
            return result;
    }
    return std::nullopt;
}

// Without the entries of that list, but for the first of all.
std::string withoutOthers(std::string_view text, const std::vector<const Entry *> &entries, const Statement &list)
{
    std::vector<std::size_t> indices;
    for (auto entry = entries.begin() + 1; entry != entries.end(); ++entry) {
        if ((*entry)->list == &list)
            indices.push_back((*entry)->index);
    }
    // The first of all may be a foreign one, or the list's only one.
    return withoutNames(text, list, indices.empty() ? std::vector<std::size_t>{entries.front()->index} : indices);
}

// Behind the include that still brings the option into a list, that list without it; nothing if there is none, or
// if it is a pseudo interface's, whose included block no statement of this file reaches.
std::optional<std::string> withListBehindInclude(const Reading &reading, const Option &option)
{
    const std::vector<Statement> &statements = reading.statements();
    for (const Context &context : reading.contexts()) {
        for (auto entry = context.entries.rbegin(); entry != context.entries.rend(); ++entry) {
            if (!entry->foreign || !option.isNamed(entry->id))
                continue;
            const Foreign &foreign = reading.foreign(*entry);
            const bool topLevel = foreign.include == &statements[foreign.anchor];
            // Then only another block of the interface reaches its list.
            const bool inBlock = topLevel && (foreign.context != 0 || context.include == foreign.include);
            if (inBlock && context.isPseudo)
                break;
            std::vector<std::string> others;
            for (const Entry &other : context.entries) {
                const std::size_t place = !other.list ? 0
                    : other.foreign                   ? reading.foreign(other).include->begin
                                                      : other.list->begin;
                if (place <= foreign.include->begin && !option.isNamed(other.id))
                    others.emplace_back(other.id);
            }
            const std::string list = listStatement("request", others, lineEnd(reading.text()));
            return withBehind(reading.text(), *foreign.include,
                              inBlock ? "interface " + context.interface + " { " + list + " }" : list);
        }
    }
    return std::nullopt;
}

} // namespace

void requestOnce(Draft &draft, const std::string &id, const std::string &name, int declared)
{
    for (int step = 0;; ++step) {
        if (step == MostSteps)
            throw Refusal{"found no way to request \"" + name + "\" once"};
        const Reading &reading = draft.reading();
        const std::size_t from = knownFrom(reading, id, declared != 0);
        const Option option{id, declared != 0 ? declared : reading.code(id)};
        std::optional<std::string> next;
        std::vector<std::string> hopeless;
        for (const Context &context : reading.contexts()) {
            std::vector<const Entry *> entries;
            for (const Entry &entry : context.entries) {
                if (option.isNamed(entry.id))
                    entries.push_back(&entry);
            }
            const auto numbered = std::find_if(entries.begin(), entries.end(), [&option](const Entry *entry) {
                return entry->list && !entry->foreign && option.isNumbered(entry->id);
            });
            // The contexts before this one are right already: what they share with it stays.
            const auto own = std::find_if(entries.rbegin(), entries.rend(), [&](const Entry *entry) {
                return entry->list && !entry->foreign
                    && std::none_of(reading.contexts().data(), &context, [entry](const Context &earlier) {
                           return holds(earlier, *entry);
                       });
            });
            const bool everywhere = context.interface.empty();
            if (numbered != entries.end()) {
                next = withoutName(draft.text(), *(*numbered)->list, (*numbered)->index);
                break;
            }
            if (entries.size() > 1 && own != entries.rend())
                next = withoutOthers(draft.text(), entries, *(*own)->list);
            else if (entries.size() > 1)
                hopeless.push_back("an included file requests \"" + name + "\" once more"
                                   + (everywhere ? "" : " for interface " + context.interface));
            else if (entries.size() == 1 && entries.front()->foreign && option.isNumbered(entries.front()->id)
                     && knownName(option.code).empty()) // not always sent, by where the declaration stands (measured)
                hopeless.push_back("an included file requests \"" + name + "\" by number, which may go unheard");
            else if (entries.empty() && everywhere)
                next = addToFile(reading, name, from);
            else if (entries.empty() && !(context.isPseudo && context.blocks.empty()))
                next = addToBlocks(reading, context, name);
            else if (entries.empty())
                hopeless.push_back("an included file alone says what " + context.interface + " requests, without \""
                                   + name + "\"");
            if (next)
                break;
        }
        if (!next) {
            std::for_each(hopeless.begin(), hopeless.end(), [&draft](const std::string &line) { draft.note(line); });
            return;
        }
        draft.change(std::move(*next));
    }
}

void unlist(Draft &draft, const std::string &id, int code, Lists lists)
{
    for (;;) {
        std::optional<std::string> next = withoutSome(draft.text(), draft.reading().statements(), {id, code}, lists);
        if (!next)
            return;
        draft.change(std::move(*next));
    }
}

void requestNowhere(Draft &draft, const std::string &id)
{
    const int code = draft.reading().code(id);
    const Option option{id, code};
    unlist(draft, id, code, Lists::Both);
    for (int step = 0; std::optional<std::string> next = withListBehindInclude(draft.reading(), option); ++step) {
        if (step == MostSteps)
            throw Refusal{"found no way to request \"" + id + "\" no more"};
        draft.change(std::move(*next));
    }
    const Reading &reading = draft.reading();
    const auto note = [&](const Foreign &foreign) {
        draft.note("the included file \"" + foreign.path + "\" still lists \"" + id + "\"");
    };
    for (const Foreign &foreign : reading.foreign()) {
        const std::vector<Name> &names = foreign.statement->names;
        if (foreign.statement->kind == Statement::Require
            && std::any_of(names.begin(), names.end(), [&option](const Name &name) { return option.isNamed(name.id); }))
            note(foreign);
    }
    for (const Context &context : reading.contexts()) {
        for (const Entry &entry : context.entries) {
            if (entry.foreign && option.isNamed(entry.id))
                note(reading.foreign(entry));
        }
    }
    const auto asked = [&id](const Context &context) {
        return std::any_of(context.entries.begin(), context.entries.end(), [&id](const Entry &entry) {
            return !entry.list && entry.id == id;
        });
    };
    if (std::none_of(reading.contexts().begin(), reading.contexts().end(), asked))
        return;

    std::vector<std::string> others;
    for (const std::string_view other : BuiltInRequests) {
        if (other != id)
            others.emplace_back(other);
    }
    const std::string list = listStatement("request", others, lineEnd(draft.text()));
    // It replaces all before it, so it goes before whatever adds to the list or takes a copy of it.
    for (const Statement &statement : reading.statements()) {
        if (isList(statement) || statement.kind == Statement::Block || statement.kind == Statement::Include)
            return draft.change(withBefore(draft.text(), statement, list));
    }
    draft.change(withAtEnd(draft.text(), list));
}

} // namespace DhclientConf
