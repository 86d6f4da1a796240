// Bringing the option to the DHCP client's configuration.

#include "dhcpoption.h"

#include "dhclient.h"

bool DhcpOption::applyToClient(bool requested)
{
    if (dhcpClass != Normal && dhcpClass != AlwaysOn)
        return false;

    const QString addRequest = QStringLiteral("--add-request");
    const QString deleteRequest = QStringLiteral("--del-request");
    const QString addNewOption = QStringLiteral("--add-new-option");
    const QString deleteNewOption = QStringLiteral("--del-new-option");

    QStringList arguments;
    bool storedCodeWritten = false;
    if (!linuxPredefined) {
        // The code may stand in the client's configuration as the definition had it, or as last applied.
        if (code != standardCode)
            arguments << deleteNewOption << newOptionSpec(standardCode);
        if (appliedCode != code)
            arguments << deleteNewOption << newOptionSpec(appliedCode);
        arguments << (requested ? addNewOption : deleteNewOption) << newOptionSpec(code);
        if (code != standardCode) {
            writeStoredCode();
            storedCodeWritten = true;
        }
    }
    arguments << (requested ? addRequest : deleteRequest) << linuxName;

    Dhclient::edit(arguments, this);

    appliedRequested = requested;
    appliedCode = code;
    return storedCodeWritten;
}
