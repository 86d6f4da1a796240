#include "configparser.h"

#include "dhcpoption.h"
#include "words.h"

#include <QSet>

#include <iostream>

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

} // namespace

/// An element of the definition format: its name and what stores its value in the record, which is false for a
/// value that is refused.
struct ConfigParser::Element
{
    const char *name;
    bool (*store)(const ConfigParser &parser, const QString &value);

    template <QString DhcpOption::*field>
    static bool text(const ConfigParser &parser, const QString &value)
    {
        parser.option->*field = value;
        return true;
    }

    template <QString DhcpOption::*field, bool (*isValid)(const QString &)>
    static bool checkedText(const ConfigParser &parser, const QString &value)
    {
        return isValid(value) && text<field>(parser, shared(value));
    }

    template <QHash<QString, QString> DhcpOption::*field>
    static bool localText(const ConfigParser &parser, const QString &value)
    {
        (parser.option->*field).insert(shared(parser.language()), value);
        return true;
    }

    template <bool DhcpOption::*field>
    static bool flag(const ConfigParser &parser, const QString &value)
    {
        return parser.option->parseBool(value, parser.option->*field);
    }

    /// One and the same copy of a text that most definitions repeat.
    static QString shared(const QString &text)
    {
        static QSet<QString> texts;
        return *texts.insert(text);
    }

    static bool nothing(const ConfigParser & /*parser*/, const QString & /*value*/) { return true; }

    static bool code(const ConfigParser &parser, const QString &value)
    {
        bool isNumber = false;
        const quint32 code = value.toUInt(&isNumber, 0);
        if (isNumber)
            parser.option->standardCode = code;
        return isNumber;
    }

    static bool dhcpClass(const ConfigParser &parser, const QString &value)
    {
        return parser.option->setDhcpClass(value);
    }

    static const Element all[14];
};

const ConfigParser::Element ConfigParser::Element::all[] = {
    {"dhcp-option", nothing},
    {"code", code},
    {"name", localText<&DhcpOption::names>},
    {"windows-name", text<&DhcpOption::windowsName>},
    {"windows-type", checkedText<&DhcpOption::windowsType, isValidWindowsType>},
    {"linux-name", text<&DhcpOption::linuxName>},
    {"linux-type", checkedText<&DhcpOption::linuxType, isValidLinuxType>},
    {"dhcp-class", dhcpClass},
    {"description", localText<&DhcpOption::descriptions>},
    {"example", text<&DhcpOption::example>},
    {"default", flag<&DhcpOption::requestedByDefault>},
    {"standard-option", flag<&DhcpOption::standardOption>},
    {"hide-option", flag<&DhcpOption::hideOption>},
    {"linux-predefined", flag<&DhcpOption::linuxPredefined>},
};

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
    --depth;
    // Records live as long as the program; so would the spare capacity that collecting leaves in the text.
    elementText.squeeze();
    const QString value = elementText;
    elementText.clear();
    if (value.isEmpty())
        std::cerr << "<" << localName.toStdString() << "> element without a value" << std::endl;
    for (const Element &element : Element::all) {
        if (!isWord(localName, element.name))
            continue;
        if (element.store(*this, value))
            return true;
        std::cerr << "Bad <" << element.name << "> element: '" << value.toStdString() << "'" << std::endl;
        return false;
    }
    std::cerr << "Unrecognized element '" << localName.toStdString() << "'" << std::endl;
    return false;
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
