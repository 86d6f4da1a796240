#ifndef READING_H
#define READING_H

#include "statements.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace DhclientConf {

/// Gives the content of an included file by the path that the configuration names, nothing if it can't be read.
using Reader = std::function<std::optional<std::string>(const std::string &path)>;

/// A statement at the place where the client reads it.
struct Step
{
    const Statement *statement;
    const std::string *included; ///< the path of the included file that holds it; null for the edited file
};

/// What one interface requests, or all interfaces without a block.
///
/// A block takes a copy of the list as it stands where the first block of that interface begins; later statements at
/// top level don't reach it (measured).
struct Context
{
    std::string interface;   ///< with its quotes; empty for all interfaces without a block
    std::vector<Step> lists; ///< the last plain request and what was added since

    /// Whether the client's built-in list is in force, perhaps added to.
    bool isBuiltIn() const { return lists.empty() || lists.front().statement->also; }
};

/// A list with a name that is unknown where it stands: the client drops it whole.
struct Fault
{
    std::string reason;
    int line; ///< of the edited file; for an included one that of its include statement
};

/// A configuration as the client reads it: statements in order, included files where they are included. Pointers stay
/// valid as long as the reading does.
class Reading
{
public:
    /// Throws Error for what can't be understood. The text must outlive the reading.
    Reading(std::string_view text, const Reader &reader);
    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;

    /// The edited file's at top level.
    const std::vector<Statement> &statements() const { return files.front().statements; }
    /// Every statement, those in blocks and included files too.
    const std::vector<Step> &steps() const { return allSteps; }
    /// The first is the one of all interfaces without a block.
    const std::vector<Context> &contexts() const { return allContexts; }
    const std::vector<Fault> &faults() const { return allFaults; }
    /// Included files that can't be read: the client goes on without them (measured).
    const std::vector<std::string> &missing() const { return unreadable; }

    /// The places in steps() of an option's declarations; the last one holds, for uses before it too (measured).
    std::vector<std::size_t> declarations(const std::string &id) const;
    /// The place in steps() of the first list or other statement that names the option; their number if none does.
    std::size_t firstUse(const std::string &id) const;
    /// The code of a DHCPv4 option at the end of the file, 0 if it is unknown there.
    int code(const std::string &id) const;

private:
    struct File
    {
        std::string path;
        std::string text;
        std::vector<Statement> statements;
    };

    void read(const std::vector<Statement> &statements, std::size_t context, const std::string *included, int depth);
    void readList(const Step &list, std::size_t context);
    void readInclude(const Statement &include, std::size_t context, int depth);
    std::size_t enter(const Statement &block, std::size_t outer);

    const Reader &reader;
    std::deque<File> files; ///< the edited one first
    std::vector<Step> allSteps;
    std::vector<Context> allContexts;
    std::vector<Fault> allFaults;
    std::vector<std::string> unreadable;
    std::map<std::string_view, int> declaredCodes; ///< by id, so far; the last declaration holds
    int line = 0;                                  ///< of the edited file's statement that is being read
};

} // namespace DhclientConf

#endif
