#include "draft.h"

#include "layout.h"

#include <algorithm>

namespace DhclientConf {

namespace {

// Changes nothing wherever it stands, and no request enters it.
constexpr std::string_view EmptyList = "also require;";

bool isSoundDeclaration(const Statement &statement)
{
    return statement.kind == Statement::Declaration && !statement.value.empty();
}

} // namespace

Draft::Draft(std::string_view text, const Reader &reader)
    : reader(reader)
    , content(text)
    , current(std::make_unique<Reading>(text, reader))
{
}

void Draft::change(std::string text)
{
    if (text == content)
        return;
    content = std::move(text);
    current = std::make_unique<Reading>(content, reader);
}

void Draft::addDeclaration(const std::string &statement)
{
    const std::vector<Statement> &statements = reading().statements();
    change(statements.empty() ? withAtEnd(content, statement) : withAbove(content, statements.front(), statement));
}

void Draft::addList(const std::string &statement)
{
    const std::vector<Statement> &statements = reading().statements();
    const auto first = std::find_if_not(statements.begin(), statements.end(), isSoundDeclaration);
    if (first == statements.begin())
        addDeclaration(statement);
    else
        change(withBelow(content, *(first - 1), statement));
}

bool Draft::isSafe(std::size_t place) const
{
    if (place == 0)
        return true;
    const std::vector<Step> &steps = reading().steps();
    const Range range = steps[place].statement->range;
    const Step &before = steps[place - 1];
    const std::size_t lastBegin = before.statement->range.begin;
    const bool isAfterBlock = std::any_of(steps.begin(), steps.end(), [&](const Step &step) {
        const Range block = step.statement->range;
        return !step.included && step.statement->kind == Statement::Block && block.begin < lastBegin
               && lastBegin < block.end && block.end <= range.begin;
    });
    if (before.included || isAfterBlock)
        return false;
    switch (before.statement->kind) {
    case Statement::Request:
    case Statement::Require:
        return true;
    case Statement::Declaration:
        return isSoundDeclaration(*before.statement);
    case Statement::Block:
        return range.end < before.statement->range.end; // the first statement in it
    case Statement::Include:
    case Statement::Opaque:
        break;
    }
    return false;
}

void Draft::remove(std::size_t place)
{
    const Statement &statement = *reading().steps()[place].statement;
    change(isSafe(place) ? without(content, statement) : replaced(content, statement.range, EmptyList));
}

void Draft::removeName(std::size_t place, std::size_t index)
{
    const Statement &list = *reading().steps()[place].statement;
    const std::string_view statement = std::string_view(content).substr(list.range.begin,
                                                                        list.range.end - list.range.begin);
    const bool vanishes = list.also && list.names.size() == 1 && isSafe(place)
                          && statement.find('#') == std::string_view::npos;
    change(vanishes ? without(content, list) : withoutName(content, list, index));
}

void Draft::note(const std::string &line)
{
    if (std::find(lines.begin(), lines.end(), line) == lines.end())
        lines.push_back(line);
}

} // namespace DhclientConf
