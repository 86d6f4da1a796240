// The value that the DHCP client last received for the option.

#include "dhcpoption.h"

#include "qtpaths.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>

namespace {

constexpr char FirstVariableDirectory[] = "/var/lib/dhcp3/vars/eth0";
constexpr char SecondVariableDirectory[] = "/var/lib/dhcp3/vars/eth1";

/// The option's variable file: the first readable one, under the name with dashes or as it is. Null without one.
QString variableFile(const QString &linuxName)
{
    QString dashedName = linuxName;
    dashedName.replace(QLatin1Char('_'), QLatin1Char('-'));
    for (const char *fixedPath : {FirstVariableDirectory, SecondVariableDirectory}) {
        const QString directory = Paths::resolved(fixedPath) + QLatin1Char('/');
        if (QFileInfo(directory + dashedName).isReadable())
            return directory + dashedName;
        if (dashedName != linuxName && QFileInfo(directory + linuxName).isReadable())
            return directory + linuxName;
    }
    return QString();
}

/// The first line that assigns something; null without one.
QString assignmentLine(QTextStream &stream)
{
    while (!stream.atEnd()) {
        stream.skipWhiteSpace();
        const QString line = stream.readLine();
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')) && line.contains(QLatin1Char('=')))
            return line;
    }
    return QString();
}

QString unquoted(const QString &text)
{
    for (const QLatin1Char quote : {QLatin1Char('\''), QLatin1Char('"')}) {
        if (text.startsWith(quote) && text.endsWith(quote))
            return text.mid(1, text.size() - 2);
    }
    return text;
}

} // namespace

void DhcpOption::readCurrentValue()
{
    currentValue = tr("N/A", "Short for Not Available.  Should be brief.");

    const QString path = variableFile(linuxName);
    if (path.isNull())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    const QString line = assignmentLine(stream);
    if (line.isNull())
        return;
    currentValue = unquoted(line.mid(line.indexOf(QLatin1Char('=')) + 1));
}
