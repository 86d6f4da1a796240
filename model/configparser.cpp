#include "configparser.h"

#include "dhcpoption.h"
#include "words.h"

#include <QHash>

#include <iostream>
#include <utility>

namespace {

constexpr int MaximumDepth = 256; // a definition has two levels

void report(const char *heading, const QXmlParseException &exception)
{
    std::cerr << heading << std::endl
              << "   " << exception.message().toStdString() << std::endl
              << "   Line: " << exception.lineNumber() << ", Column: " << exception.columnNumber() << std::endl
              << "   PublicID: '" << exception.publicId().toStdString() << "'" << std::endl
              << "   SystemID: '" << exception.systemId().toStdString() << "'" << std::endl;
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

ConfigParser::ConfigParser(DhcpOption *option) : option(option) {}

ConfigParser::~ConfigParser() = default;

bool ConfigParser::startElement(const QString & /*namespaceUri*/, const QString & /*localName*/,
                                const QString & /*qualifiedName*/, const QXmlAttributes &attributes)
{
    // Qt's reader calls itself for each level, until the stack ends.
    if (++depth > MaximumDepth)
        return false;
    elementText.clear();
    elementAttributes = attributes;
    return true;
}

bool ConfigParser::characters(const QString &text)
{
    elementText += text;
    return true;
}

bool ConfigParser::ignorableWhitespace(const QString & /*text*/)
{
    return true;
}

bool ConfigParser::endElement(const QString & /*namespaceUri*/, const QString &localName,
                              const QString & /*qualifiedName*/)
{
    static const QHash<QString, QString DhcpOption::*> texts = {{QStringLiteral("windows-name"),
                                                                 &DhcpOption::windowsName},
                                                                {QStringLiteral("linux-name"), &DhcpOption::linuxName},
                                                                {QStringLiteral("example"), &DhcpOption::example}};
    static const QHash<QString, QHash<QString, QString> DhcpOption::*> translations = {
        {QStringLiteral("name"), &DhcpOption::names},
        {QStringLiteral("description"), &DhcpOption::descriptions}};
    static const QHash<QString, bool DhcpOption::*> flags = {
        {QStringLiteral("default"), &DhcpOption::requestedByDefault},
        {QStringLiteral("standard-option"), &DhcpOption::standardOption},
        {QStringLiteral("hide-option"), &DhcpOption::hideOption},
        {QStringLiteral("linux-predefined"), &DhcpOption::linuxPredefined}};

    --depth;
    const QString value = std::exchange(elementText, QString());
    if (value.isEmpty())
        std::cerr << "<" << localName.toStdString() << "> element without a value" << std::endl;
    const QString element = localName.toCaseFolded();
    bool isAccepted = true;
    if (texts.contains(element)) {
        option->*texts[element] = value;
    } else if (translations.contains(element)) {
        (option->*translations[element]).insert(language(), value);
    } else if (flags.contains(element)) {
        isAccepted = option->parseBool(value, option->*flags[element]);
    } else if (element == QLatin1String("code")) {
        const quint32 code = value.toUInt(&isAccepted, 0);
        if (isAccepted)
            option->standardCode = code;
    } else if (element == QLatin1String("windows-type")) {
        isAccepted = isValidWindowsType(value);
        if (isAccepted)
            option->windowsType = value;
    } else if (element == QLatin1String("linux-type")) {
        isAccepted = isValidLinuxType(value);
        if (isAccepted)
            option->linuxType = value;
    } else if (element == QLatin1String("dhcp-class")) {
        isAccepted = option->setDhcpClass(value);
    } else if (element != QLatin1String("dhcp-option")) {
        std::cerr << "Unrecognized element '" << localName.toStdString() << "'" << std::endl;
        return false;
    }
    if (!isAccepted)
        std::cerr << "Bad <" << element.toStdString() << "> element: '" << value.toStdString() << "'" << std::endl;
    return isAccepted;
}

/// The value of the element's "lang" attribute, as written.
QString ConfigParser::language() const
{
    for (int i = 0; i < elementAttributes.count(); ++i) {
        if (isWord(elementAttributes.localName(i), "lang"))
            return elementAttributes.value(i);
    }
    return QStringLiteral("en");
}

QString ConfigParser::errorString() const
{
    return QStringLiteral("DHCP XML config file parse error");
}

bool ConfigParser::warning(const QXmlParseException &exception)
{
    report("XML parse warning:", exception);
    return true;
}

bool ConfigParser::error(const QXmlParseException &exception)
{
    report("XML parse error.", exception);
    return true;
}

bool ConfigParser::fatalError(const QXmlParseException &exception)
{
    report("XML parse fatal error.", exception);
    return false;
}

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
