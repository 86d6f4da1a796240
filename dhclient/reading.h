#ifndef READING_H
#define READING_H

#include "parser/statements.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace DhclientConf {

/// Gives the content of an included file by the path that the configuration names, nothing if it can't be read.
using Reader = std::function<std::optional<std::string>(const std::string &path)>;

/// A request list's entry, or one of the client's built-in list.
struct Entry
{
    std::string_view id;
    const Statement *list; ///< null for the built-in list
    std::size_t index;     ///< into the list's names
    bool foreign;          ///< from an included file, which is never edited
};

/// What one interface asks for: the list that is in force when the file has been read.
///
/// An interface block takes a copy of the file's list as it stands where the first block of that interface
/// begins, and later statements at top level don't reach it (measured).
struct Context
{
    std::string interface;                ///< with its quotes; empty for all interfaces without a block
    bool isPseudo;                        ///< whose one block is not reached by another
    std::vector<const Statement *> blocks; ///< of the edited file; empty for all interfaces without a block
    std::vector<Entry> entries;
    const Statement *include; ///< the edited file's include statement that brought its first block, null if none did
};

/// Why a file as it stands doesn't mean what it says.
struct Violation
{
    std::string file; ///< empty for the edited file, else the included one's path
    int line;
    std::string id;   ///< the name that is unknown
    std::string reason;
    bool request;     ///< the name stands in a request or require list
};

/// An included file's statement.
struct Foreign
{
    const Statement *statement;
    std::size_t anchor;       ///< the index of the edited file's statement that includes it, or whose block does
    const Statement *include; ///< the edited file's include statement that brought it
    std::string path;         ///< of the file that holds it
    std::size_t context;      ///< an index into contexts()
};

/// The edited file as the client reads it: statements in order, included files where they are included.
/// Pointers stay valid as long as the reading does.
class Reading
{
public:
    /// Throws SyntaxError; for an included file the reason names it and its line, the line is the include's.
    Reading(std::string_view text, const Reader &reader);
    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;

    std::string_view text() const { return m_text; }
    const std::vector<Statement> &statements() const { return m_statements; }
    /// The first is the one of all interfaces without a block.
    const std::vector<Context> &contexts() const { return m_contexts; }
    const std::vector<Foreign> &foreign() const { return m_foreign; }
    /// The one of a foreign entry's list.
    const Foreign &foreign(const Entry &entry) const;
    const std::vector<Violation> &violations() const { return m_violations; }
    /// What fixes the list that the client sends, whatever is requested: a line for people; empty if nothing does.
    const std::string &fixedList() const { return m_fixedList; }
    /// Included files that can't be read: the client goes on without them (measured).
    const std::vector<std::string> &missing() const { return m_missing; }

    /// Whether an included file has statements on the given include statement's behalf that set a list anew.
    bool replacesList(const Statement &include) const;
    /// Whether the name is declared by the file or an included one at its end.
    bool isDeclared(const std::string &id) const { return m_declared.count(id) != 0; }
    /// Whether the client knows the name at the end of the file, by itself or by a declaration.
    bool knows(const std::string &id) const;
    /// The code of a DHCPv4 option that is known at the end of the file, 0 if none is known by that name.
    int code(const std::string &id) const;
    bool knowsSpace(const std::string &space) const;
    /// The declarations of a name, the edited file's (as indices into statements()).
    std::vector<std::size_t> declarations(const std::string &id) const;
    /// The statements of an included file that declare the name.
    std::vector<Foreign> foreignDeclarations(const std::string &id) const;
    /// The first statement that names the option other than by declaring it, as an index; npos if none does.
    std::size_t firstUse(const std::string &id) const;

private:
    void read(const std::vector<Statement> &statements, std::size_t *context, const std::string &file, int depth);
    void readList(const Statement &list, std::size_t context, const std::string &file);
    void readInclude(const Statement &include, std::size_t *context, int depth);
    void check(const Name &name, const std::string &file, bool request);
    std::string format(const std::string &id) const;
    void checkDeclaration(const Statement &declaration, const std::string &file);
    void checkSent(const Statement &statement, const std::string &file);
    std::size_t enter(const Statement &block, std::size_t outer, bool foreign);

    std::string_view m_text;
    const Reader &m_reader;
    std::vector<Statement> m_statements;
    // Included statements by the include that brought them.
    std::map<const Statement *, std::unique_ptr<std::vector<Statement>>> m_included;
    std::vector<Context> m_contexts;
    std::vector<Foreign> m_foreign;
    std::vector<Violation> m_violations;
    std::vector<std::string> m_missing;
    std::map<std::string_view, const Statement *> m_declared; ///< the last declaration of each
    std::set<std::string> m_spaces;
    std::set<std::string> m_encapsulated; ///< spaces, since each was last declared
    std::string m_fixedList;
    std::size_t m_anchor = 0;
    const Statement *m_include = nullptr;
};

/// Why a command can't be carried out; thrown.
struct Refusal
{
    std::string reason;
};

/// A text in the course of its edits, read anew only after it changed.
class Draft
{
public:
    Draft(std::string_view text, const Reader &reader) : m_text(text), m_reader(reader) {}
    Draft(const Draft &) = delete;
    Draft &operator=(const Draft &) = delete;

    const std::string &text() const { return m_text; }
    /// Valid until the next change. Throws SyntaxError.
    const Reading &reading();
    void change(std::string text);
    /// A line that the user should see, once.
    void note(const std::string &line);
    const std::vector<std::string> &notes() const { return m_notes; }

private:
    std::string m_text;
    const Reader &m_reader;
    std::unique_ptr<Reading> m_reading;
    std::vector<std::string> m_notes;
};

} // namespace DhclientConf

#endif
