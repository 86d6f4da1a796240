#include "reading.h"

#include "error.h"
#include "knownoptions.h"

#include <algorithm>

namespace DhclientConf {

namespace {

// The client has no limit and exhausts its stack; files that include themselves end here.
constexpr int DeepestInclude = 8;
constexpr std::size_t MostFiles = 100;

bool names(const std::vector<Name> &list, const std::string &id)
{
    return std::any_of(list.begin(), list.end(), [&id](const Name &name) { return name.id == id; });
}

} // namespace

Reading::Reading(std::string_view text, const Reader &reader) : reader(reader)
{
    files.push_back({{}, {}, parse(text)});
    allContexts.emplace_back();
    read(files.front().statements, 0, nullptr, 0);
}

void Reading::read(const std::vector<Statement> &statements, std::size_t context, const std::string *included,
                   int depth)
{
    for (const Statement &statement : statements) {
        const Step step{&statement, included};
        allSteps.push_back(step);
        if (!included)
            line = statement.line;
        switch (statement.kind) {
        case Statement::Request:
        case Statement::Require:
            readList(step, context);
            break;
        case Statement::Declaration:
            if (!statement.value.empty())
                declaredCodes[statement.names.front().id] = statement.code;
            break;
        case Statement::Include:
            readInclude(statement, context, depth);
            break;
        case Statement::Block:
            read(statement.body, enter(statement, context), included, depth);
            break;
        case Statement::Opaque:
            break;
        }
    }
}

void Reading::readList(const Step &list, std::size_t context)
{
    for (const Name &name : list.statement->names) {
        // Names with a dot belong to other option spaces, which are not looked into.
        if (name.id.find('.') != std::string::npos || knownCode(name.id) != 0 || numberedCode(name.id) != 0
            || declaredCodes.count(name.id) != 0)
            continue;
        std::string reason = "unknown option \"" + name.id + '"';
        if (list.included)
            reason = "in \"" + *list.included + "\", line " + std::to_string(name.line) + ": " + reason;
        allFaults.push_back({std::move(reason), list.included ? line : name.line});
    }
    if (list.statement->kind == Statement::Require)
        return;
    std::vector<Step> &lists = allContexts[context].lists;
    if (!list.statement->also)
        lists.clear();
    lists.push_back(list);
}

void Reading::readInclude(const Statement &include, std::size_t context, int depth)
{
    std::optional<std::string> content = reader(include.value);
    if (!content) {
        unreadable.push_back(include.value);
        return;
    }
    if (depth == DeepestInclude || files.size() == MostFiles)
        throw Error(Error::File, include.value + ": too many files included", line);
    files.push_back({include.value, std::move(*content), {}});
    File &file = files.back();
    try {
        file.statements = parse(file.text, context != 0);
    } catch (const Error &error) {
        throw Error(Error::File,
                    "in \"" + include.value + "\", line " + std::to_string(error.line) + ": " + error.what(), line);
    }
    read(file.statements, context, &file.path, depth + 1);
}

std::size_t Reading::enter(const Statement &block, std::size_t outer)
{
    const auto known = std::find_if(allContexts.begin() + 1, allContexts.end(),
                                    [&block](const Context &context) { return context.interface == block.value; });
    if (known != allContexts.end() && block.value.front() == '"') // no second block reaches a pseudo interface
        return static_cast<std::size_t>(known - allContexts.begin());
    allContexts.push_back({block.value, allContexts[outer].lists});
    return allContexts.size() - 1;
}

std::vector<std::size_t> Reading::declarations(const std::string &id) const
{
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < allSteps.size(); ++i) {
        const Statement &statement = *allSteps[i].statement;
        if (statement.kind == Statement::Declaration && statement.names.front().id == id)
            places.push_back(i);
    }
    return places;
}

std::size_t Reading::firstUse(const std::string &id) const
{
    const auto use = std::find_if(allSteps.begin(), allSteps.end(), [&id](const Step &step) {
        return step.statement->kind != Statement::Declaration && names(step.statement->names, id);
    });
    return static_cast<std::size_t>(use - allSteps.begin());
}

int Reading::code(const std::string &id) const
{
    const auto declared = declaredCodes.find(id);
    if (id.find('.') != std::string::npos)
        return 0;
    return declared == declaredCodes.end() ? knownCode(id) : declared->second;
}

} // namespace DhclientConf
