#include "optiontype.h"

#include "error.h"
#include "lexer.h"

namespace DhclientConf {

namespace {

/// The types of dhcp-options(5) with the bounds that the client sets: text, string and the domain types fill the rest
/// of an option, so they end a record and stand in no array.
class TypeParser
{
public:
    explicit TypeParser(std::string_view text) : lexer(text), token(lexer.next()) {}

    std::string parse()
    {
        const bool array = take("array");
        const bool sound = (!array || take("of")) && (isSign('{') ? record(array) : atom(array, true));
        return sound && token.kind == Token::End ? result : std::string();
    }

private:
    // The client stores a record's fields as up to 128 letters and drops the option otherwise (measured). No real
    // record is that long.
    static constexpr int MostFields = 32;

    bool isSign(char sign) const { return token.isSign(sign); }

    bool accept()
    {
        result.append(result.empty() || isSign(',') ? "" : " ").append(lower(token.text));
        token = lexer.next();
        return true;
    }

    bool take(std::string_view keyword) { return token.isWord(keyword) && accept(); }

    bool record(bool inArray)
    {
        accept();
        for (int fields = 1; fields <= MostFields; ++fields) {
            const bool array = !inArray && take("array");
            if ((array && !take("of")) || !atom(inArray || array, false))
                return false;
            if (isSign('}'))
                return accept();
            if (!isSign(',') || !accept())
                return false;
        }
        return false;
    }

    bool atom(bool inArray, bool alone)
    {
        if (take("boolean") || take("ip-address") || take("ip6-address"))
            return true;
        const bool hasSign = take("signed") || take("unsigned");
        if (take("integer"))
            return take("8") || take("16") || take("32");
        if (hasSign || inArray)
            return false;
        const bool domains = take("domain-list");
        if (domains)
            take("compressed");
        else if (take("encapsulate"))
            return token.kind == Token::Word && accept() && (alone || isSign('}'));
        return (domains || take("text") || take("string") || take("domain-name")) && (alone || isSign('}'));
    }

    Lexer lexer;
    Token token;
    std::string result;
};

} // namespace

std::string normalisedType(std::string_view text)
{
    try {
        return TypeParser(text).parse();
    } catch (const Error &) {
        return {}; // an open string
    }
}

bool isEncapsulation(const std::string &type)
{
    return type.find("encapsulate") != std::string::npos;
}

} // namespace DhclientConf
