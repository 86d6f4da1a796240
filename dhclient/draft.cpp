#include "draft.h"

#include "layout.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace DhclientConf {

namespace {

// What the client requests where no request statement says otherwise (C4). Those of
// dhcp6 are the list of its DHCPv6 side: one statement sets both.
constexpr std::string_view BuiltInRequests[] = {"subnet-mask", "broadcast-address",  "time-offset",
                                                "routers",     "domain-name",        "domain-name-servers",
                                                "host-name",   "dhcp6.name-servers", "dhcp6.domain-search"};

bool isBuiltIn(const std::string &id)
{
    return std::find(std::begin(BuiltInRequests), std::end(BuiltInRequests), id) != std::end(BuiltInRequests);
}

} // namespace

Draft::Draft(std::string_view text) : content(text), configuration(content) {}

void Draft::change(std::string text)
{
    content = std::move(text);
    configuration = Configuration(content);
}

void Draft::carryOut(const std::vector<Wish> &wishes)
{
    for (const Wish &wish : wishes) {
        if (wish.isCleared)
            requestNoMore(wish);
        if (wish.declaration)
            declare(wish);
        else
            undeclare(wish);
        if (wish.requested == true)
            request(wish);
    }
    if (std::any_of(wishes.begin(), wishes.end(), [](const Wish &wish) { return wish.requested.has_value(); }))
        noteLimits();
}

void Draft::request(const Wish &wish)
{
    while (const Statement *list = configuration.listWithout(wish.id))
        change(withName(content, *list, wish.name));
    if (isBuiltIn(wish.id) || !configuration.isMissingFromBuiltIn(wish.id))
        return;
    if (const Statement *list = configuration.addedToBuiltIn())
        change(withName(content, *list, wish.name));
    else
        add("also request " + wish.name + ';', false);
}

void Draft::requestNoMore(const Wish &wish)
{
    const auto lists = [&wish](const Statement *statement) { return statement->isList() && statement->has(wish.id); };
    for (;;) {
        const std::vector<const Statement *> &all = configuration.all();
        const auto list = std::find_if(all.begin(), all.end(), lists);
        if (list == all.end())
            break;
        change(withoutName(content, **list, (*list)->find(wish.id)));
    }
    if (wish.requested == true || !isBuiltIn(wish.id) || !configuration.isMissingFromBuiltIn(wish.id))
        return;
    add("request;", false);
    for (const std::string_view name : BuiltInRequests) {
        const std::vector<Statement> &statements = configuration.statements();
        if (name != wish.id)
            change(withName(
                content, *std::find_if(statements.begin(), statements.end(), std::mem_fn(&Statement::isPlainRequest)),
                name));
    }
}

std::vector<const Statement *> Draft::declarations(const std::string &id) const
{
    std::vector<const Statement *> result;
    for (const Statement *statement : configuration.all()) {
        if (statement->kind == Statement::Kind::Declaration && statement->has(id))
            result.push_back(statement);
    }
    return result;
}

void Draft::declare(const Wish &wish)
{
    const Wish::Declaration &wanted = *wish.declaration;
    const std::vector<const Statement *> declared = declarations(wish.id);
    std::string text = content;
    // From the last on: the places of those before stay.
    for (auto statement = declared.rbegin(); statement != declared.rend(); ++statement) {
        if ((*statement)->type.id != wanted.type)
            text = replaced(text, (*statement)->type.range, wanted.type);
        if ((*statement)->code.id != wanted.code)
            text = replaced(text, (*statement)->code.range, wanted.code);
    }
    if (declared.empty())
        add("option " + wish.name + " code " + wanted.code + " = " + wanted.type + ';', true);
    else
        change(std::move(text));
}

void Draft::undeclare(const Wish &wish)
{
    std::vector<const Statement *> doomed = declarations(wish.id);
    const auto stays = [&wish](const Statement *statement) {
        return !wish.isUndeclared && wish.undeclared.count(statement->code.id) == 0;
    };
    doomed.erase(std::remove_if(doomed.begin(), doomed.end(), stays), doomed.end());
    if (doomed.empty())
        return;
    const std::vector<const Statement *> &all = configuration.all();
    if (std::any_of(all.begin(), all.end(), [&wish](const Statement *statement) {
            return statement->kind != Statement::Kind::Declaration && statement->has(wish.id);
        })) {
        lines.push_back('"' + wish.name + "\" is still used, its declaration stays");
        return;
    }
    std::string text = content;
    for (auto statement = doomed.rbegin(); statement != doomed.rend(); ++statement)
        text = without(text, **statement);
    change(std::move(text));
}

void Draft::add(const std::string &statement, bool isDeclaration)
{
    const std::vector<Statement> &statements = configuration.statements();
    const auto next = std::find_if(statements.begin(), statements.end(), [isDeclaration](const Statement &other) {
        return isDeclaration || other.kind != Statement::Kind::Declaration;
    });
    change(withStatement(content, next == statements.end() ? content.size() : next->range.begin, statement));
}

void Draft::noteLimits()
{
    for (const Statement *statement : configuration.all()) {
        if (statement->kind != Statement::Kind::Opaque)
            continue;
        const std::string line = "line " + std::to_string(statement->line);
        // The list that the client would make gives way to what a send statement gives the server (C7).
        if (statement->has("send") && statement->has("dhcp-parameter-request-list"))
            lines.push_back(line + " sends a list of its own, whatever is requested");
        if (!statement->names.empty() && statement->names.front().id == "include")
            lines.push_back(line + " includes a file, whose lists are not looked into");
    }
}

} // namespace DhclientConf
