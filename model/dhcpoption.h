#ifndef DHCPOPTION_H
#define DHCPOPTION_H

#include "dhcpclass.h"

#include <QHash>
#include <QObject>
#include <QStringList>

/// One DHCP option: its definition, the user's stored choices, and the value that the client last received.
///
/// Built whole from one option-definition file, or not at all. The table and the details read the members
/// directly and change them through the operations below, but for appliedRequested, which the table sets when it
/// shows the option. Used on the GUI thread only.
class DhcpOption : public QObject
{
    Q_OBJECT

public:
    enum ExceptionType {
        FileNotReadable = 1, ///< the file cannot be opened
        FileParseFailed = 2  ///< not well-formed or incomplete; reported on standard error
    };

    /// Reads the definition, the stored code and the current value. Throws an ExceptionType by value. With an
    /// empty file name nothing is read and the record stays blank.
    DhcpOption(const QString &fileName, QObject *parent);

    /// The text for a language tag such as de_DE, the empty tag meaning the system locale; falls back to the
    /// language without its encoding and country, then to English. Empty when there is none of these.
    QString localizedText(const QString &language, const QHash<QString, QString> &texts) const;

    /// Takes a code typed by the user, decimal 1 to 255; false, and no change, for anything else.
    bool setCode(const QString &text);

    /// The argument that declares the option to the edit tool under the given code: "NAME CODE TYPE".
    QString newOptionSpec(unsigned int code) const;

    /// Reads again the value that the client last received.
    void readCurrentValue();

    /// The edit tool's arguments that bring the option into the client's configuration, or out of it.
    QStringList editCommands(bool requested) const;

    /// Applies the requested state and the code in effect to the client's configuration. Waits for the edit tool
    /// for 2 s at most; whether it succeeded is not reported. True when a stored code was written to the registry:
    /// the caller owes a commit. Options of the other classes than Normal and AlwaysOn are left alone.
    bool applyToClient(bool requested);

    /// The branch of the configuration registry below which the options' entries are.
    static QString registryBranch();

    /// Word parsers of the definition reader: false, and no change, when the text is none of their words.
    bool parseBool(const QString &text, bool &value);
    bool setDhcpClass(const QString &text);

    QString currentValue;     ///< "N/A", translated, when the client received none
    quint32 code = 0;         ///< in effect: the definition's, the stored one, or what the user has typed since
    quint32 standardCode = 0; ///< the definition's; not 0. DHCP has 1 to 254 for options (RFC 2132), unchecked here
    QHash<QString, QString> names; ///< by language tag
    QString windowsName;
    QString windowsType = QStringLiteral("Unknown");
    QString linuxName; ///< the client's name of the option: its identity everywhere
    QString linuxType; ///< as in dhcp-options(5); may be empty for a predefined option
    DhcpClass_t dhcpClass = Normal;
    QHash<QString, QString> descriptions; ///< by language tag
    QString example;
    bool requestedByDefault = true;
    bool standardOption = false;
    bool hideOption = false;
    bool linuxPredefined = false;  ///< the client knows the option: its code is fixed
    bool appliedRequested = false; ///< as last shown at start or applied; the table sets it first
    quint32 appliedCode = 0;
    QString requestKey; ///< registry key of the requested state
    QString codeKey;    ///< registry key of the stored code

private:
    Q_DISABLE_COPY(DhcpOption)

    void loadDefinition(const QString &fileName);
    bool parseFile(const QString &fileName);
    bool isComplete(const QString &fileName) const;
    void buildKeys();
    void readStoredCode();
    void writeStoredCode() const;
};

#endif
