// The closed vocabularies of the option-definition files. Words are compared whole and without regard to case;
// nothing is trimmed.

#include "configparser.h"
#include "dhcpoption.h"
#include "words.h"

#include <algorithm>
#include <array>

namespace {

template <typename Value>
struct Word
{
    const char *text;
    Value value;
};

/// Sets `value` to that of the word which `text` is; false, and no change, when it is none of them.
template <typename Value, std::size_t N>
bool lookUp(const std::array<Word<Value>, N> &words, const QString &text, Value &value)
{
    const auto word = std::find_if(words.begin(), words.end(),
                                   [&](const Word<Value> &candidate) { return isWord(text, candidate.text); });
    if (word == words.end())
        return false;
    value = word->value;
    return true;
}

template <std::size_t N>
bool isOneOf(const std::array<const char *, N> &words, const QString &text)
{
    return std::any_of(words.begin(), words.end(), [&](const char *word) { return isWord(text, word); });
}

bool removePrefix(QString &text, const char *prefix)
{
    const QLatin1String latin1(prefix);
    if (!text.startsWith(latin1, Qt::CaseInsensitive))
        return false;
    text.remove(0, latin1.size());
    return true;
}

} // namespace

bool ConfigParser::isValidWindowsType(const QString &type)
{
    static constexpr std::array<const char *, 8> words = {
        "Byte", "Word", "Long", "Long Integer", "Ip Address", "String", "Binary", "Encapsulated"};
    QString word = type;
    word.remove(QStringLiteral(" Array"), Qt::CaseInsensitive);
    return isOneOf(words, word);
}

/// Refuses only what is known not to work: arrays of text and encapsulated options. Any other word is left to
/// the client, which may know more types than this table.
bool ConfigParser::isValidLinuxType(const QString &type)
{
    static constexpr std::array<const char *, 6> words = {
        "boolean", "integer 8", "integer 16", "integer 32", "ip-address", "domain-list"};
    static constexpr std::array<const char *, 2> textWords = {"text", "string"};
    QString word = type;
    const bool isArray = removePrefix(word, "array of ");
    removePrefix(word, "unsigned ");
    removePrefix(word, "signed ");
    if (isOneOf(words, word))
        return true;
    if (isOneOf(textWords, word))
        return !isArray;
    return !word.startsWith(QLatin1String("encapsulate"), Qt::CaseInsensitive);
}

bool DhcpOption::parseBool(const QString &text, bool &value)
{
    static constexpr std::array<Word<bool>, 8> words = {{
        {"On", true}, {"True", true}, {"Yes", true}, {"Enabled", true},
        {"Off", false}, {"False", false}, {"No", false}, {"Disabled", false},
    }};
    return lookUp(words, text, value);
}

bool DhcpOption::setDhcpClass(const QString &text)
{
    static constexpr std::array<Word<DhcpClass_t>, 8> words = {{
        {"Normal", Normal}, {"Standard", Normal}, {"User-Controlled", Normal}, {"Managed", Managed},
        {"Always-On", AlwaysOn}, {"Always On", AlwaysOn},
        {"Always-Off", AlwaysOff}, {"Always Off", AlwaysOff},
    }};
    return lookUp(words, text, dhcpClass);
}
