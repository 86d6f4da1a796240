// Applying the option to the DHCP client's configuration.

#include "dhcpoption.h"

#include "clienttools.h"

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
        // The client's configuration may have the definition's code, or the one that was applied last.
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

    ClientTools::edit(arguments, this);

    appliedRequested = requested;
    appliedCode = code;
    return storedCodeWritten;
}
