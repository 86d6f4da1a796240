#ifndef STATEMENTS_H
#define STATEMENTS_H

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

/// An option's name where the text writes it.
struct Name
{
    std::string id; ///< in lower case, without the space "dhcp": what the client compares names by
    Range range;
    int line = 0;
    std::size_t comma = std::string::npos; ///< the offset of the comma after it in a list
};

/// A statement of dhclient.conf(5), as far as the editor looks into it.
struct Statement
{
    enum Kind : unsigned char {
        Opaque,      ///< anything that is not listed below: `names` are the options that it uses
        Request,     ///< [also] request: `names` is the list
        Require,     ///< [also] require: `names` is the list
        Declaration, ///< option NAME code N = TYPE: `names` holds the name; `value` is the type as of normalisedType(),
                     ///< empty where the client would not accept it
        Include,     ///< include "FILE": `value` is the path
        Block        ///< interface and pseudo blocks: `value` says which, quotes included; `body` holds the statements
    };

    Kind kind = Opaque;
    bool also = false;
    bool sends = false; ///< a send statement, which gives the server the first of `names`
    int line = 0;
    Range range;                ///< from its first token to its last, the ";" or "}"
    std::size_t keywordEnd = 0; ///< of a list: the end of "request" or "require"
    std::vector<Name> names;
    std::string value;

    // Of a declaration.
    Range codeRange;
    Range typeRange;
    int code = 0; ///< as of sentCode()

    std::vector<Statement> body;
};

/// The statements of a configuration, in order. Throws Error for a text without structure: an open string or brace, a
/// "}" too many, a last statement without its ";", a broken list.
/// `inBlock` is for a file that is included inside an interface block: only the client's top level has declarations
/// and such blocks.
std::vector<Statement> parse(std::string_view text, bool inBlock = false);

bool isNumber(std::string_view text); ///< decimal
/// What the client sends for a code: the low byte of the written number (measured).
int sentCode(std::string_view digits);

/// The id of a text that is an option name and nothing else; empty if it is not.
std::string parseName(std::string_view text);

} // namespace DhclientConf

#endif
