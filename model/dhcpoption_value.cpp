// The value that the DHCP client last received for the option.

#include "dhcpoption.h"

#include "paths.h"

#include <QFile>
#include <QTextCodec>
#include <QTextStream>

#include <fcntl.h>

namespace {

constexpr char FirstVariableDirectory[] = "/var/lib/dhcp3/vars/eth0";
constexpr char SecondVariableDirectory[] = "/var/lib/dhcp3/vars/eth1";

/// Opens the option's variable file: the first readable one, under the name with dashes or as it is. -1 without
/// one. To open is to ask whether it is readable, at half the price of asking first.
int openVariableFile(const QString &linuxName)
{
    const QByteArray name = QFile::encodeName(linuxName);
    QByteArray dashedName = name;
    dashedName.replace('_', '-');
    for (const char *fixedPath : {FirstVariableDirectory, SecondVariableDirectory}) {
        const std::string directory = Paths::resolve(fixedPath) + '/';
        for (const QByteArray &candidate : {dashedName, name}) {
            const int descriptor = ::open((directory + candidate.constData()).c_str(), O_RDONLY | O_CLOEXEC);
            if (descriptor >= 0)
                return descriptor;
            if (dashedName == name)
                break;
        }
    }
    return -1;
}

/// The first line that assigns something; null without one.
QString assignmentLine(QTextStream &stream)
{
    // At the end the line is null. To ask atEnd() would cost a system call for every file.
    for (;;) {
        stream.skipWhiteSpace();
        const QString line = stream.readLine();
        if (line.isNull())
            return line;
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')) && line.contains(QLatin1Char('=')))
            return line;
    }
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

    const int descriptor = openVariableFile(linuxName);
    QFile file;
    if (descriptor < 0 || !file.open(descriptor, QIODevice::ReadOnly | QIODevice::Text, QFile::AutoCloseHandle))
        return;
    QTextStream stream(&file);
    static QTextCodec *const utf8 = QTextCodec::codecForName("UTF-8");
    stream.setCodec(utf8);
    const QString line = assignmentLine(stream);
    if (line.isNull())
        return;
    currentValue = unquoted(line.mid(line.indexOf(QLatin1Char('=')) + 1));
}
