#include "choices.h"

#include "dhcpoption.h"
#include "vorkanclient.h"

namespace {

quint32 wantedCode(const DhcpOption &option, const Choice &choice)
{
    if (choice.code.isNull())
        return option.code;
    return choice.code == QLatin1String("standard") ? option.standardCode : choice.code.toUInt();
}

} // namespace

bool isRequested(const DhcpOption &option)
{
    if (option.dhcpClass != Normal)
        return option.dhcpClass != AlwaysOff;
    QString state;
    const bool isMissing = VorkanClient().get(option.requestKey, state, _RegEntryParam(), QString()) != 0;
    return isMissing ? option.requestedByDefault : state == QLatin1String("1");
}

QString refusal(const DhcpOption &option, const Choice &choice)
{
    if (option.dhcpClass == Managed)
        return QStringLiteral("it is managed by another control panel");
    if (option.dhcpClass == AlwaysOff)
        return QStringLiteral("it is never requested");
    if (option.dhcpClass == AlwaysOn && !choice.requested)
        return QStringLiteral("it is always requested");
    const quint32 code = wantedCode(option, choice);
    if (!choice.code.isNull() && (code < 1 || code > 254))
        return QStringLiteral("\"%1\" is no code from 1 to 254").arg(choice.code);
    if (option.linuxPredefined && code != option.standardCode)
        return QStringLiteral("its code is fixed: dhclient knows the option by itself");
    return QString();
}

Stored store(DhcpOption &option, const Choice &choice)
{
    VorkanClient registry;
    bool isChanged = false;
    if (choice.requested != isRequested(option)) {
        registry.create(option.requestKey, _RegEntryType{VorkanBoolType});
        registry.set(option.requestKey, choice.requested ? QStringLiteral("1") : QStringLiteral("0"), _RegEntryParam());
        isChanged = true;
    }
    const quint32 code = wantedCode(option, choice);
    const bool isStored = registry.contains(option.codeKey) == 0;
    if (!choice.code.isNull() && code == option.standardCode && isStored) {
        registry.remove(option.codeKey);
        isChanged = true;
    } else if (code != option.code) {
        registry.create(option.codeKey, _RegEntryType{VorkanNumberType});
        registry.set(option.codeKey, QString::number(code), _RegEntryParam());
        isChanged = true;
    }
    option.code = code;
    if (!VorkanClient::isReadable() || registry.commit(QString()) != 0)
        return Stored::Failed;
    return isChanged ? Stored::Changed : Stored::Unchanged;
}
