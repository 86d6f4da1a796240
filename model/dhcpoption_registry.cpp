// The option's entries in the configuration registry.

#include "dhcpoption.h"
#include "vorkanclient.h"

QString DhcpOption::registryBranch()
{
    return QLatin1String(VorkanRootName) + QLatin1String("/DHCP");
}

void DhcpOption::buildKeys()
{
    const QString branch = registryBranch();
    requestKey = QString(branch + QLatin1String("/Req_%1")).arg(linuxName);
    codeKey = QString(branch + QLatin1String("/Code_%1")).arg(linuxName);
}

void DhcpOption::readStoredCode()
{
    if (VorkanClient().contains(codeKey) != 0)
        return;
    QString value;
    VorkanClient().get(codeKey, value, _RegEntryParam(), QString());
    bool isNumber = false;
    const quint32 storedCode = value.toUInt(&isNumber, 10);
    if (isNumber)
        code = storedCode;
}

void DhcpOption::writeStoredCode() const
{
    VorkanClient client;
    if (client.contains(codeKey) != 0)
        client.create(codeKey, _RegEntryType{VorkanNumberType});
    client.set(codeKey, QString::number(code), _RegEntryParam());
}
