#ifndef CONFIGPARSER_H
#define CONFIGPARSER_H

#include <QXmlDefaultHandler>

class DhcpOption;

/// Fills one option record from one option-definition file, driven by a QXmlSimpleReader.
///
/// The first element that is refused stops the parse, after a line on standard error; what was read before it
/// stays in the record. Whether the record is complete is for the record to check. Serves one parse.
class ConfigParser : public QXmlDefaultHandler
{
public:
    /// The record is not owned and must outlive the parse.
    explicit ConfigParser(DhcpOption *option);
    ~ConfigParser() override;

    bool startElement(const QString &namespaceUri, const QString &localName, const QString &qualifiedName,
                      const QXmlAttributes &attributes) override;
    bool endElement(const QString &namespaceUri, const QString &localName, const QString &qualifiedName) override;
    bool characters(const QString &text) override;
    bool ignorableWhitespace(const QString &text) override;
    QString errorString() const override;
    bool warning(const QXmlParseException &exception) override;
    bool error(const QXmlParseException &exception) override;
    bool fatalError(const QXmlParseException &exception) override;

private:
    Q_DISABLE_COPY(ConfigParser)

    QString language() const;
    static bool isValidWindowsType(const QString &type);
    static bool isValidLinuxType(const QString &type);

    DhcpOption *option;
    // The character data since the last tag, and the attributes of the last element that started.
    QString elementText;
    QXmlAttributes elementAttributes;
    int depth = 0; // of the elements that are open
};

#endif
