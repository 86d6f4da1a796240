#include "dhcpoption.h"

#include "configparser.h"
#include "words.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

#include <iostream>

DhcpOption::DhcpOption(const QString &fileName, QObject *parent) : QObject(parent)
{
    if (!fileName.isEmpty())
        loadDefinition(fileName);
}

void DhcpOption::loadDefinition(const QString &fileName)
{
    const bool parsed = parseFile(fileName);
    // Checked even after a failed parse: whoever fixes the file wants to know everything at once.
    const bool complete = isComplete(fileName);
    if (!parsed || !complete)
        throw FileParseFailed;

    buildKeys();
    code = standardCode;
    if (!linuxPredefined)
        readStoredCode();
    appliedCode = code;
    readCurrentValue();
}

bool DhcpOption::parseFile(const QString &fileName)
{
    QFile file(fileName);
    // A pipe or a terminal would keep the start waiting.
    if (!QFileInfo(fileName).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        throw FileNotReadable;
    QXmlInputSource source(&file);
    QXmlSimpleReader reader;
    ConfigParser parser(this);
    reader.setContentHandler(&parser);
    return reader.parse(source);
}

bool DhcpOption::isComplete(const QString &fileName) const
{
    bool complete = true;
    const auto require = [&](bool present, const char *complaint) {
        if (present)
            return;
        std::cerr << complaint << fileName.toStdString() << std::endl;
        complete = false;
    };
    require(standardCode != 0, "Error:  No code specified in ");
    require(!linuxName.isEmpty(), "Error:  No <linux-name> specified in ");
    require(linuxPredefined || !linuxType.isEmpty(), "Error:  No <linux-type> specified in ");
    return complete;
}

QString DhcpOption::localizedText(const QString &language, const QHash<QString, QString> &texts) const
{
    QString tag = language.isEmpty() ? QLocale::system().name() : language;
    auto text = texts.constFind(tag);
    for (const char separator : {'.', '_'}) {
        if (text != texts.constEnd())
            return *text;
        const int position = tag.lastIndexOf(QLatin1Char(separator));
        if (position > 0) {
            tag.truncate(position);
            text = texts.constFind(tag);
        }
    }
    if (text != texts.constEnd())
        return *text;
    if (tag != QLatin1String("en"))
        return localizedText(QStringLiteral("en_US.UTF-8"), texts);
    return QString();
}

bool DhcpOption::setCode(const QString &text)
{
    bool isNumber = false;
    const quint32 number = text.toUInt(&isNumber, 10);
    if (!isNumber || number < 1 || number > 255)
        return false;
    code = number;
    return true;
}

QString DhcpOption::newOptionSpec(unsigned int code) const
{
    return linuxName + QLatin1Char(' ') + QString::number(code) + QLatin1Char(' ') + linuxType;
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
