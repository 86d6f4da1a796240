#include "declarationedits.h"

#include "knownoptions.h"
#include "layout.h"
#include "listedits.h"
#include "optiontype.h"

#include <algorithm>

namespace DhclientConf {

namespace {

std::string declarationOf(const NewOption &option)
{
    return "option " + option.name + " code " + std::to_string(option.code) + " = " + option.type + ';';
}

} // namespace

void declare(Draft &draft, const NewOption &wanted)
{
    // A code of the option that goes may be what lists it.
    const int oldCode = draft.reading().code(wanted.id);
    if (oldCode != wanted.code && othersWithCode(draft.reading(), {wanted.id, oldCode}).empty())
        nameNumbers(draft, {wanted.id, oldCode}, wanted.name);
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
    for (; own.size() > (keepsFirst ? 1 : 0); own.pop_back()) {
        // The same once more does no harm: declareSafely() may have added the first.
        if (!keepsFirst || !wanted.isSame(*draft.reading().steps()[own.back()].statement))
            draft.remove(own.back());
    }
    if (!keepsFirst) {
        draft.addDeclaration(declarationOf(wanted));
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

void declareInTime(Draft &draft, const std::string &name, const std::string &id)
{
    const Reading &reading = draft.reading();
    const std::vector<std::size_t> places = reading.declarations(id);
    if (knownCode(id) != 0 || places.empty() || places.front() < reading.firstUse(id))
        return;
    const auto own = std::find_if(places.rbegin(), places.rend(),
                                  [&reading](std::size_t place) { return !reading.steps()[place].included; });
    const Statement &model = *reading.steps()[own == places.rend() ? places.back() : *own].statement;
    if (!model.value.empty() && !isEncapsulation(model.value))
        declare(draft, {name, id, model.code, model.value});
}

void declareSafely(Draft &draft, const std::string &name, const std::string &id)
{
    const Reading &reading = draft.reading();
    const std::vector<std::size_t> places = reading.declarations(id);
    const auto isIncluded = [&reading](std::size_t place) { return reading.steps()[place].included != nullptr; };
    if (knownCode(id) != 0 || places.empty() || std::any_of(places.begin(), places.end(), isIncluded)
        || draft.isSafe(places.front()))
        return;
    const Statement &last = *reading.steps()[places.back()].statement;
    if (!last.value.empty() && !isEncapsulation(last.value))
        draft.addDeclaration(declarationOf({name, id, last.code, last.value}));
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

} // namespace DhclientConf
