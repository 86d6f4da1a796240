#include "listedits.h"

#include "knownoptions.h"
#include "layout.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace DhclientConf {

namespace {

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
        if (!list->included && (!isBuiltIn || std::all_of(lackingBuiltIn.begin(), lackingBuiltIn.end(), isServed)))
            return list->statement;
    }
    return nullptr;
}

} // namespace

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
    noteIncludedLists(draft, option, name);
}

void noteIncludedLists(Draft &draft, const Option &option, const std::string &name)
{
    for (const Step &step : draft.reading().steps()) {
        if (step.included && isList(step) && option.isIn(step))
            draft.note(fileName(step) + " still lists \"" + name + '"');
    }
}

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
    if (option.isBuiltIn() && std::any_of(contexts.begin(), contexts.end(), std::mem_fn(&Context::isBuiltIn))) {
        std::vector<std::string_view> others;
        std::remove_copy(std::begin(BuiltInRequests), std::end(BuiltInRequests), std::back_inserter(others), option.id);
        draft.addList(requestStatement(others, lineEnd(draft.text())));
    }
}

} // namespace DhclientConf
