#ifndef STATEMENTS_H
#define STATEMENTS_H

#include "parser/lexer.h"

#include <string>
#include <string_view>
#include <vector>

namespace DhclientConf {

/// A token of a literal value.
struct Word
{
    char kind; ///< S string, N number, H word that starts with a digit, W other word; a sign is itself
    std::string text;
};

/// An option's name where the text writes it.
struct Name
{
    std::string id;    ///< lower case, without blanks and without the space "dhcp": what names are compared by
    std::size_t begin; ///< byte offsets into the text
    std::size_t end;
    int line;
    std::size_t comma; ///< where the comma behind it stands in a list, npos where none stands
    std::vector<Word> value; ///< the literal value that it is given, if any
};

struct Statement
{
    enum Kind : unsigned char {
        Request,     ///< [also] request: `names` is the list
        Require,     ///< [also] require: `names` is the list
        Declaration, ///< option N code C = T: `names` holds N
        Space,       ///< option space S: `word` is S in lower case
        Include,     ///< `word` is the path
        Block,       ///< interface and pseudo: `word` tells which, `body` holds its statements
        Other        ///< anything else
    };

    Kind kind = Other;
    bool also = false;
    bool pseudo = false;
    bool send = false; ///< a send statement: the client gives the server the option that it uses first
    int line = 0;
    std::size_t begin = 0; ///< of its first token
    std::size_t end = 0;   ///< behind its last token, the ";" or "}"
    std::size_t keywordEnd = 0; ///< of a list: behind "request" or "require"
    std::size_t bodyEnd = 0;    ///< of a block: where its "}" stands
    std::vector<Name> names;
    std::vector<Name> uses; ///< options that it uses otherwise, in its blocks and expressions too
    std::string word;

    // Of a declaration: where code and type stand, and what they say.
    std::size_t codeBegin = 0, codeEnd = 0;
    std::size_t typeBegin = 0, typeEnd = 0;
    std::string code;         ///< decimal digits, no leading zeros
    std::string type;         ///< in lower case, one blank between tokens
    std::string encapsulated; ///< the option space that the type names, if any

    std::vector<Statement> body;
};

/// What a declaration's code and type say, from an argument's or a file's tokens.
struct OptionType
{
    std::string text;         ///< in lower case, one blank between tokens
    std::string encapsulated; ///< the option space that it names, if any
};

/// The statements of a configuration file, in order. Throws SyntaxError for what the client would refuse in
/// structure: it skips to the next ";" then, and so drops more than the faulty statement.
/// The grammar is that of dhclient.conf(5), dhcp-options(5) and dhcp-eval(5), checked against the client.
/// `inBlock` tells of a file that is included inside a block, and so may hold only what may stand there.
std::vector<Statement> parse(std::string_view text, bool inBlock = false);

/// Reads a type as dhcp-options(5) writes it ("array of unsigned integer 8"); throws SyntaxError unless the
/// whole text is one.
OptionType parseType(std::string_view text);

/// The id of a name as a command's argument gives it, empty if it is none: letters, digits, "-" and "_", not
/// digits alone, perhaps after an option space and a dot.
std::string parseName(std::string_view text);

} // namespace DhclientConf

#endif
