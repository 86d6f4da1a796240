// Applying the option to the DHCP client's configuration.

#include "clienttools.h"
#include "dhcpoption.h"

QStringList DhcpOption::editCommands(bool requested) const
{
    const QString addNewOption = QStringLiteral("--add-new-option");
    const QString deleteNewOption = QStringLiteral("--del-new-option");
    QStringList commands;
    if (!linuxPredefined) {
        // The client's configuration may have the definition's code, or the one that was applied last.
        if (code != standardCode)
            commands << deleteNewOption << newOptionSpec(standardCode);
        if (appliedCode != code)
            commands << deleteNewOption << newOptionSpec(appliedCode);
        commands << (requested ? addNewOption : deleteNewOption) << newOptionSpec(code);
    }
    return commands << (requested ? QStringLiteral("--add-request") : QStringLiteral("--del-request")) << linuxName;
}

bool DhcpOption::applyToClient(bool requested)
{
    if (dhcpClass != Normal && dhcpClass != AlwaysOn)
        return false;
    const bool storesCode = !linuxPredefined && code != standardCode;
    if (storesCode)
        writeStoredCode();
    ClientTools::edit(editCommands(requested), this);
    appliedRequested = requested;
    appliedCode = code;
    return storesCode;
}
