#include "check.h"

#include "choices.h"
#include "clientfacts.h"
#include "definitions.h"
#include "dhcpoption.h"
#include "networkmanagers.h"
#include "qtpaths.h"
#include "vorkan.h"

#include <QHash>
#include <QProcess>

namespace {

enum EditStatus { Done = 0, FileFault = 1, NotAnswered = 2, WouldChange = 3 };

/// The edit tool's exit status, and what it has to say.
int edit(const QStringList &arguments, QStringList &lines)
{
    QProcess tool;
    tool.start(Paths::resolved("/usr/sbin/kiro-dhclient-edit"), arguments, QIODevice::ReadOnly);
    if (!tool.waitForFinished() || tool.exitStatus() != QProcess::NormalExit) {
        lines.append(QStringLiteral("cannot run kiro-dhclient-edit: ") + tool.errorString());
        return FileFault;
    }
    lines += QString::fromLocal8Bit(tool.readAllStandardError()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    return tool.exitCode();
}

bool isInConfiguration(const DhcpOption &option)
{
    QStringList notes;
    return edit(QStringList(QStringLiteral("--dry-run")) + option.editCommands(isRequested(option)), notes) == Done;
}

QString faultOf(DhcpOption &option)
{
    const QString name = option.linuxName;
    const quint32 stored = option.code;
    if (stored != option.standardCode) {
        option.code = option.appliedCode = option.standardCode;
        const bool hasStandardCode = isInConfiguration(option);
        option.code = option.appliedCode = stored;
        if (hasStandardCode)
            return QStringLiteral(
                       "%1: code %2 is applied, but %3 is stored; \"kiro-dhcpctl set %1 %4 --code standard\" "
                       "keeps the first, \"kiro-dhcpctl apply\" the second")
                .arg(name)
                .arg(option.standardCode)
                .arg(stored)
                .arg(isRequested(option) ? QStringLiteral("on") : QStringLiteral("off"));
    }
    return QStringLiteral("%1: %2, but %3 says otherwise; run \"kiro-dhcpctl apply\"")
        .arg(name, isRequested(option) ? QStringLiteral("on") : QStringLiteral("off"),
             Paths::resolved(ClientFacts::Configuration));
}

} // namespace

QStringList notInConfiguration(const Definitions &definitions)
{
    QList<DhcpOption *> applied;
    QStringList all(QStringLiteral("--dry-run"));
    for (DhcpOption *option : definitions.options) {
        if (option->dhcpClass != Normal && option->dhcpClass != AlwaysOn)
            continue;
        applied.append(option);
        all += option->editCommands(isRequested(*option));
    }
    QStringList lines;
    if (applied.isEmpty())
        return lines;
    const int status = edit(all, lines);
    if (status == Done)
        return {};
    if (status == WouldChange)
        lines.clear();
    for (DhcpOption *option : applied) {
        if (status == WouldChange && !isInConfiguration(*option))
            lines.append(faultOf(*option));
    }
    return lines;
}

QStringList faults(const Definitions &definitions)
{
    QStringList lines;
    if (definitions.isDirectoryMissing)
        return {QStringLiteral("no option definitions are installed")};
    for (const QString &path : definitions.leftOut)
        lines.append(QStringLiteral("this definition cannot be used: ") + path);

    QHash<quint32, QString> names;
    for (const DhcpOption *option : definitions.options) {
        if (!isRequested(*option))
            continue;
        if (names.contains(option->code))
            lines.append(QStringLiteral("%1 and %2 are both requested under code %3")
                             .arg(names[option->code], option->linuxName)
                             .arg(option->code));
        names.insert(option->code, option->linuxName);
    }
    if (!Vorkan::isReadable()) {
        lines.append(QStringLiteral("the stored choices cannot be read"));
        return lines;
    }
    lines += NetworkManagers::atWork();
    QStringList complaints;
    if (edit({}, complaints) != FileFault)
        complaints += notInConfiguration(definitions);
    return lines + complaints;
}
