#ifndef DRAFT_H
#define DRAFT_H

#include "reading.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace DhclientConf {

/// A text while it is edited. It is read again only after a change.
class Draft
{
public:
    /// Throws Error for a text that can't be understood.
    Draft(std::string_view text, const Reader &reader);

    const std::string &text() const { return content; }
    /// Valid until the next change.
    const Reading &reading() const { return *current; }
    void change(std::string text);

    /// Adds the statement above the file's first one, or after the declarations there.
    void addDeclaration(const std::string &statement);
    void addList(const std::string &statement);
    /// Whether the client reads the statement at that place for sure: after some that it can't use it skips the next.
    /// If such a one is removed, the client skips the one after it instead.
    bool isSafe(std::size_t place) const;
    /// Removes the statement at that place of the reading's steps.
    void remove(std::size_t place);
    /// Removes a name from the list at that place; with its last name goes a statement that only adds to others.
    void removeName(std::size_t place, std::size_t index);

    /// A line for the user, kept once.
    void note(const std::string &line);
    const std::vector<std::string> &notes() const { return lines; }

private:
    const Reader &reader;
    std::string content;
    std::unique_ptr<Reading> current;
    std::vector<std::string> lines;
};

} // namespace DhclientConf

#endif
