// The closed vocabularies of the option-definition files. Words are compared whole, ignoring case;
// nothing is trimmed.

#include "configparser.h"
#include "dhcpoption.h"
#include "words.h"

#include <algorithm>
#include <initializer_list>

namespace {

bool isOneOf(const QString &text, std::initializer_list<const char *> words)
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
    QString word = type;
    word.remove(QStringLiteral(" Array"), Qt::CaseInsensitive);
    return isOneOf(word, {"Byte", "Word", "Long", "Long Integer", "Ip Address", "String", "Binary", "Encapsulated"});
}

/// Refuses only what is known not to work: arrays of text and encapsulated options. Any other word is left to
/// the client, which may know more types than this table.
bool ConfigParser::isValidLinuxType(const QString &type)
{
    QString word = type;
    const bool isArray = removePrefix(word, "array of ");
    removePrefix(word, "unsigned ");
    removePrefix(word, "signed ");
    if (isOneOf(word, {"text", "string"}))
        return !isArray;
    return !word.startsWith(QLatin1String("encapsulate"), Qt::CaseInsensitive);
}

bool DhcpOption::parseBool(const QString &text, bool &value)
{
    const bool isTrue = isOneOf(text, {"On", "True", "Yes", "Enabled"});
    if (!isTrue && !isOneOf(text, {"Off", "False", "No", "Disabled"}))
        return false;
    value = isTrue;
    return true;
}

bool DhcpOption::setDhcpClass(const QString &text)
{
    if (isOneOf(text, {"Normal", "Standard", "User-Controlled"}))
        dhcpClass = Normal;
    else if (isWord(text, "Managed"))
        dhcpClass = Managed;
    else if (isOneOf(text, {"Always-On", "Always On"}))
        dhcpClass = AlwaysOn;
    else if (isOneOf(text, {"Always-Off", "Always Off"}))
        dhcpClass = AlwaysOff;
    else
        return false;
    return true;
}
