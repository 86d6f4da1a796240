#include "reading.h"

#include "knownoptions.h"
#include "values.h"

#include <algorithm>

namespace DhclientConf {

namespace {

// The client itself knows no bound and runs into its own stack's; files that include themselves end here.
constexpr int DeepestInclude = 8;

bool names(const Statement &statement, const std::string &id)
{
    const auto has = [&id](const std::vector<Name> &list) {
        return std::any_of(list.begin(), list.end(), [&id](const Name &name) { return name.id == id; });
    };
    return (statement.kind != Statement::Declaration && has(statement.names)) || has(statement.uses)
        || std::any_of(statement.body.begin(), statement.body.end(),
                       [&id](const Statement &inner) { return names(inner, id); });
}

} // namespace

Reading::Reading(std::string_view text, const Reader &reader)
    : m_text(text), m_reader(reader), m_statements(parse(text))
{
    Context everywhere{};
    std::size_t index = 0;
    for (const std::string_view id : BuiltInRequests)
        everywhere.entries.push_back({id, nullptr, index++, false});
    m_contexts.push_back(std::move(everywhere));
    std::size_t context = 0;
    read(m_statements, &context, {}, 0);
}

void Reading::read(const std::vector<Statement> &statements, std::size_t *context, const std::string &file, int depth)
{
    for (const Statement &statement : statements) {
        const bool foreign = depth > 0;
        if (!foreign && &statements == &m_statements)
            m_anchor = static_cast<std::size_t>(&statement - m_statements.data());
        if (foreign)
            m_foreign.push_back({&statement, m_anchor, m_include, file, *context});
        for (const Name &name : statement.uses)
            check(name, file, false);
        switch (statement.kind) {
        case Statement::Request:
            readList(statement, *context, file);
            break;
        case Statement::Require:
            for (const Name &name : statement.names)
                check(name, file, true);
            break;
        case Statement::Declaration:
            checkDeclaration(statement, file);
            break;
        case Statement::Space:
            // A space declared once more is a new one, without the options of the old (measured).
            m_encapsulated.erase(statement.word);
            if (!m_spaces.insert(statement.word).second) {
                const std::string prefix = statement.word + '.';
                for (auto name = m_declared.lower_bound(prefix);
                     name != m_declared.end() && name->first.substr(0, prefix.size()) == prefix;)
                    name = m_declared.erase(name);
            }
            break;
        case Statement::Include:
            readInclude(statement, context, depth);
            break;
        case Statement::Block: {
            std::size_t inner = enter(statement, *context, foreign);
            read(statement.body, &inner, file, depth);
            break;
        }
        case Statement::Other:
            checkSent(statement, file);
            break;
        }
    }
}

std::size_t Reading::enter(const Statement &block, std::size_t outer, bool foreign)
{
    std::size_t found = m_contexts.size();
    if (!block.pseudo) {
        for (std::size_t i = 1; i < m_contexts.size(); ++i) {
            if (m_contexts[i].interface == block.word)
                found = i;
        }
    }
    if (found == m_contexts.size()) {
        Context copy{};
        copy.interface = block.pseudo ? "pseudo " + block.word : block.word;
        copy.isPseudo = block.pseudo;
        copy.entries = m_contexts[outer].entries;
        copy.include = foreign ? m_include : nullptr;
        m_contexts.push_back(std::move(copy));
    }
    if (!foreign)
        m_contexts[found].blocks.push_back(&block);
    return found;
}

void Reading::readList(const Statement &list, std::size_t context, const std::string &file)
{
    std::vector<Entry> &entries = m_contexts[context].entries;
    if (!list.also)
        entries.clear();
    for (std::size_t i = 0; i < list.names.size(); ++i) {
        check(list.names[i], file, true);
        entries.push_back({list.names[i].id, &list, i, !file.empty()});
    }
}

void Reading::readInclude(const Statement &include, std::size_t *context, int depth)
{
    const std::optional<std::string> content = m_reader(include.word);
    if (!content) {
        m_missing.push_back(include.word);
        return;
    }
    if (depth == DeepestInclude)
        throw SyntaxError{m_statements[m_anchor].line, include.word + ": files included too deeply"};
    try {
        auto statements = std::make_unique<std::vector<Statement>>(parse(*content, *context != 0));
        const std::vector<Statement> &kept = *statements;
        if (depth == 0)
            m_include = &include;
        m_included.emplace(&include, std::move(statements));
        read(kept, context, include.word, depth + 1);
    } catch (const SyntaxError &error) {
        if (depth > 0)
            throw;
        throw SyntaxError{include.line, "in \"" + include.word + "\", line " + std::to_string(error.line) + ": "
                                            + error.reason};
    }
}

bool Reading::replacesList(const Statement &include) const
{
    const auto found = m_included.find(&include);
    return found != m_included.end()
        && std::any_of(found->second->begin(), found->second->end(), [this](const Statement &statement) {
               return (statement.kind == Statement::Request && !statement.also)
                   || (statement.kind == Statement::Include && replacesList(statement));
           });
}

bool Reading::knows(const std::string &id) const
{
    return isDeclared(id) || isKnownOption(id);
}

const Foreign &Reading::foreign(const Entry &entry) const
{
    return *std::find_if(m_foreign.begin(), m_foreign.end(),
                         [&entry](const Foreign &foreign) { return foreign.statement == entry.list; });
}

int Reading::code(const std::string &id) const
{
    if (id.find('.') != std::string::npos)
        return 0;
    const auto declared = m_declared.find(id);
    if (declared == m_declared.end())
        return knownCode(id);
    const std::string &code = declared->second->code;
    return code.size() <= 3 ? std::stoi(code) : 0;
}

bool Reading::knowsSpace(const std::string &space) const
{
    return m_spaces.count(space) != 0 || isKnownSpace(space);
}

// How the values of an option that is known here are written.
std::string Reading::format(const std::string &id) const
{
    const auto declared = m_declared.find(id);
    if (declared != m_declared.end())
        return formatOf(declared->second->type);
    if (isKnownOption(id))
        return std::string(knownFormat(id));
    const int code = numberedCode(id);
    for (const auto &[other, declaration] : m_declared) {
        if (code != 0 && other.find('.') == std::string_view::npos && declaration->code == std::to_string(code))
            return formatOf(declaration->type);
    }
    const std::string_view known = knownName(code);
    return known.empty() ? "X" : std::string(knownFormat(known));
}

void Reading::check(const Name &name, const std::string &file, bool request)
{
    if (!isDeclared(name.id) && !isKnownOption(name.id) && !isNumberedOption(name.id))
        m_violations.push_back({file, name.line, name.id, "no option is called \"" + name.id + "\" here", request});
    else if (!name.value.empty() && !fits(name.value, format(name.id)))
        m_violations.push_back({file, name.line, name.id, "\"" + name.id + "\" has no such values", false});
}

void Reading::checkDeclaration(const Statement &declaration, const std::string &file)
{
    const std::string &id = declaration.names.front().id;
    const std::size_t dot = id.find('.');
    const auto want = [&](const std::string &space) {
        if (!knowsSpace(space))
            m_violations.push_back({file, declaration.line, id, "no option space is called \"" + space + "\" here",
                                    false});
    };
    if (dot != std::string::npos)
        want(id.substr(0, dot));
    if (const std::string &space = declaration.encapsulated; !space.empty()) {
        want(space);
        // The client ends when it reads such a declaration (measured).
        if (!canBeEncapsulated(space) || !m_encapsulated.insert(space).second)
            m_violations.push_back({file, declaration.line, id, "the client cannot encapsulate \"" + space + "\" here",
                                    false});
    }
    if (!isReadAsNumber(id))
        m_declared[id] = &declaration;
}

// What a send statement gives the client wins over the list that it would make (measured); not what the other
// statements give, nor a send statement under a condition.
void Reading::checkSent(const Statement &statement, const std::string &file)
{
    constexpr int ParameterRequestList = 55;
    if (!statement.send || statement.uses.empty() || !m_fixedList.empty())
        return;
    const std::string &id = statement.uses.front().id;
    if (code(id) == ParameterRequestList || numberedCode(id) == ParameterRequestList)
        m_fixedList = (file.empty() ? std::string() : "in the included \"" + file + "\": ") + "line "
            + std::to_string(statement.line) + " sends a list of its own, whatever is requested";
}

std::vector<std::size_t> Reading::declarations(const std::string &id) const
{
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < m_statements.size(); ++i) {
        if (m_statements[i].kind == Statement::Declaration && m_statements[i].names.front().id == id)
            result.push_back(i);
    }
    return result;
}

std::vector<Foreign> Reading::foreignDeclarations(const std::string &id) const
{
    std::vector<Foreign> result;
    std::copy_if(m_foreign.begin(), m_foreign.end(), std::back_inserter(result), [&id](const Foreign &foreign) {
        return foreign.statement->kind == Statement::Declaration && foreign.statement->names.front().id == id;
    });
    return result;
}

std::size_t Reading::firstUse(const std::string &id) const
{
    std::size_t first = std::string::npos;
    for (std::size_t i = 0; i < m_statements.size() && first == std::string::npos; ++i) {
        if (names(m_statements[i], id))
            first = i;
    }
    for (const Foreign &foreign : m_foreign) {
        if (names(*foreign.statement, id))
            first = std::min(first, foreign.anchor);
    }
    return first;
}

const Reading &Draft::reading()
{
    if (!m_reading)
        m_reading = std::make_unique<Reading>(m_text, m_reader);
    return *m_reading;
}

void Draft::change(std::string text)
{
    if (text == m_text)
        return;
    m_reading.reset();
    m_text = std::move(text);
}

void Draft::note(const std::string &line)
{
    if (std::find(m_notes.begin(), m_notes.end(), line) == m_notes.end())
        m_notes.push_back(line);
}

} // namespace DhclientConf
