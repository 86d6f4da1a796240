// Edits arbitrary texts by arbitrary commands, and stops at an accepted edit that is not what it should be.

#include "input.h"

#include "declarations.h"
#include "parser/parser.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <set>

using namespace DhclientConf;

namespace {

std::optional<std::string> included(const std::string &path)
{
    if (path == "/r")
        return "request routers, ntp-servers;";
    if (path == "/d")
        return "option inc code 190 = text; option space incs;";
    if (path == "/a")
        return "option inc code 191 = text; also request inc, routers; supersede bar \"x\";";
    if (path == "/e")
        return "interface \"e0\" { also request routers; }";
    if (path == "/b")
        return "interface \"e0\" { request routers; }";
    if (path == "/c")
        return "request ntp-servers, routers; interface \"e0\" { }";
    return std::nullopt;
}

[[noreturn]] void fail(const char *what, const Input &input, const std::string &after)
{
    std::fprintf(stderr, "%s\n=== before\n%s\n=== commands\n", what, input.text.c_str());
    for (const Command &command : input.commands)
        std::fprintf(stderr, "%d %s\n", command.kind, command.argument.c_str());
    std::fprintf(stderr, "=== after\n%s\n", after.c_str());
    std::abort();
}

std::string idOf(const Command &command)
{
    const std::string &text = command.argument;
    return parseName(text.substr(0, text.find_first_of(" \t")));
}

std::string tokens(std::string_view text)
{
    Lexer lexer(text);
    std::string result;
    for (Token token = lexer.next(); token.kind != Token::End; token = lexer.next())
        result.append(token.text).append(" ");
    return result;
}

// All statements but request lists and the blocks around them (judged by what they come to) and the named options'
// declarations.
void normalise(std::string_view text, const std::vector<Statement> &statements,
               const std::set<std::string, std::less<>> &named, std::vector<std::string> &result)
{
    for (const Statement &statement : statements) {
        if (statement.kind == Statement::Request
            || (statement.kind == Statement::Declaration && named.count(statement.names.front().id)))
            continue;
        if (statement.kind == Statement::Block) {
            std::vector<std::string> body;
            normalise(text, statement.body, named, body);
            if (body.empty() && !statement.pseudo)
                continue; // one for a list only
            result.push_back((statement.pseudo ? "pseudo " : "block ") + statement.word);
            result.insert(result.end(), body.begin(), body.end());
            result.emplace_back("end");
        } else if (statement.kind == Statement::Require) {
            std::string list = statement.also ? "also require" : "require";
            bool any = !statement.also;
            for (const Name &name : statement.names) {
                if (!named.count(name.id)) {
                    list += ' ' + name.id;
                    any = true;
                }
            }
            if (any)
                result.push_back(list);
        } else {
            result.push_back(tokens(text.substr(statement.begin, statement.end - statement.begin)));
        }
    }
}

std::vector<std::string> others(const Context &context, const std::set<std::string, std::less<>> &named)
{
    std::vector<std::string> result{context.interface};
    for (const Entry &entry : context.entries) {
        if (!named.count(entry.id))
            result.emplace_back(entry.id);
    }
    return result;
}

std::size_t count(const Context &context, const std::string &id)
{
    return static_cast<std::size_t>(std::count_if(context.entries.begin(), context.entries.end(),
                                                  [&id](const Entry &entry) { return entry.id == id; }));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const Input input = readInput({reinterpret_cast<const char *>(data), size});
    const Reader reader = included;
    const Result result = edit(input.text, input.commands, reader);
    if (result.status != Result::Done)
        return 0;
    const Result again = edit(result.text, input.commands, reader);
    if (again.status != Result::Done || again.text != result.text)
        fail("not the same when done again", input, result.text + "\n=== again\n" + again.text + again.error);

    std::set<std::string, std::less<>> named;
    std::set<std::string, std::less<>> requested;
    std::set<std::string, std::less<>> unrequested;
    bool withdrawn = false;
    for (const Command &command : input.commands) {
        const std::string id = idOf(command);
        named.insert(id);
        withdrawn = withdrawn || command.kind == Command::DelNewOption;
        if (command.kind == Command::AddRequest || command.kind == Command::DelRequest) {
            (command.kind == Command::AddRequest ? requested : unrequested).insert(id);
            (command.kind == Command::AddRequest ? unrequested : requested).erase(id);
        }
    }
    const Reading before(input.text, reader);
    const Reading after(result.text, reader);
    if (!after.violations().empty())
        fail("the client would refuse it", input, result.text);
    std::vector<std::string> oldStatements;
    std::vector<std::string> newStatements;
    normalise(input.text, before.statements(), named, oldStatements);
    normalise(result.text, after.statements(), named, newStatements);
    if (oldStatements != newStatements)
        fail("another statement changed", input, result.text);
    if (before.contexts().size() != after.contexts().size())
        fail("another block", input, result.text);
    for (std::size_t i = 0; i < before.contexts().size(); ++i) {
        if (others(before.contexts()[i], named) != others(after.contexts()[i], named))
            fail("another option's request changed", input, result.text);
        for (const std::string &id : requested) {
            if (result.notes.empty() && !withdrawn && count(after.contexts()[i], id) != 1)
                fail("not requested once", input, result.text);
        }
        for (const std::string &id : unrequested) {
            if (result.notes.empty() && count(after.contexts()[i], id) != 0)
                fail("still requested", input, result.text);
        }
    }
    return 0;
}
