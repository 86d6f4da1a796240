#ifndef DRAFT_H
#define DRAFT_H

#include "configuration.h"
#include "wish.h"

#include <string>
#include <string_view>
#include <vector>

namespace DhclientConf {

/// The text of a dhclient.conf while it is edited. Names enter and leave lists where these stand; what is new goes
/// above the first statement, so that every interface starts with it. Whether the client reads the result is for the
/// client to say.
class Draft
{
public:
    /// Throws Error as Configuration does.
    explicit Draft(std::string_view text);

    void carryOut(const std::vector<Wish> &wishes);

    /// Equal to the text at the start where the wishes are fulfilled already.
    const std::string &text() const { return content; }
    /// Lines for the user: why an edit does not take full effect.
    const std::vector<std::string> &notes() const { return lines; }

private:
    void change(std::string text);
    void request(const Wish &wish);
    void requestNoMore(const Wish &wish);
    std::vector<const Statement *> declarations(const std::string &id) const;
    void declare(const Wish &wish);
    void undeclare(const Wish &wish);
    /// A declaration as the first statement, a list below the declarations at the head of the file.
    void add(const std::string &statement, bool isDeclaration);
    void noteLimits();

    std::string content;
    Configuration configuration; ///< of the content
    std::vector<std::string> lines;
};

} // namespace DhclientConf

#endif
