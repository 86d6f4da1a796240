#ifndef CONFIGURATION_H
#define CONFIGURATION_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace DhclientConf {

/// A range of a text: byte offsets, `end` is one past the last byte.
struct Range
{
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// A name, a code or a type where the text writes it.
struct Word
{
    std::string id; ///< a name in lower case, without the space "dhcp", else as of normalisedCode(), normalisedType()
    Range range;
    std::size_t comma = std::string::npos; ///< the offset of the comma after it in a list
};

/// A statement of dhclient.conf(5), as far as the editor looks into it.
struct Statement
{
    enum class Kind {
        Opaque,      ///< anything that is not listed below: `names` are all its words
        Request,     ///< [also] request: `names` is the list
        Require,     ///< [also] require: `names` is the list
        Declaration, ///< option NAME code N = TYPE: `names` holds the name
        Block        ///< an interface or pseudo block: `body` holds the statements
    };

    Kind kind = Kind::Opaque;
    bool also = false;
    int line = 0;
    Range range;                ///< from its first token to its last, the ";" or "}"
    std::size_t keywordEnd = 0; ///< of a list: the end of "request" or "require"
    std::vector<Word> names;
    Word code; ///< of a declaration, as its type
    Word type;
    std::vector<Statement> body;

    bool isList() const { return kind == Kind::Request || kind == Kind::Require; }
    /// A list that replaces what was requested before.
    bool isPlainRequest() const { return kind == Kind::Request && !also; }
    bool requests(const std::string &id) const { return kind == Kind::Request && has(id); }
    /// The place in `names`; their number if it is not there.
    std::size_t find(const std::string &id) const;
    bool has(const std::string &id) const { return find(id) < names.size(); }
};

/// The statements of a text, and what the interfaces request by them.
///
/// An interface starts with the list that stands where its block begins, else with the one at the end of the file
/// (C6). Where no plain request comes before, that is the client's built-in list.
class Configuration
{
public:
    /// Throws Error for a text without structure (an open string or brace, a "}" too many, a last statement without
    /// its ";", a broken list), and for a list that names an option by number: Debian 13's client may
    /// not request it (C11).
    explicit Configuration(std::string_view text);

    /// At top level.
    const std::vector<Statement> &statements() const { return topLevel; }
    /// Every statement, those in blocks too. Valid as long as the configuration is.
    const std::vector<const Statement *> &all() const { return every; }

    /// The first plain request list that lacks the option, with what is added to it; null if there is none.
    const Statement *listWithout(const std::string &id) const;
    /// Whether an interface starts from the built-in list and nothing adds the option, whatever that list holds.
    bool isMissingFromBuiltIn(const std::string &id) const;
    /// The list that adds to the built-in list of every interface; null if there is none.
    const Statement *addedToBuiltIn() const;

private:
    std::vector<Statement> topLevel;
    std::vector<const Statement *> every;
};

/// The id of a text that is an option's name and nothing else; empty if it is not.
std::string parseName(std::string_view text);
/// Decimal digits without leading zeros; empty if the text is not a number.
std::string normalisedCode(std::string_view text);
/// The type's tokens in lower case, a blank before each that needs one. Empty if the text has anything but words,
/// braces, commas, white space and comments. Throws Error for an open string.
std::string normalisedType(std::string_view text);

} // namespace DhclientConf

#endif
