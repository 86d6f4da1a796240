// The value that the DHCP client last received for the option.

#include "clientfacts.h"
#include "dhcpoption.h"
#include "paths.h"
#include "posix.h"

#include <QBuffer>
#include <QFile>
#include <QTextCodec>
#include <QTextStream>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

/// No DHCP message is longer, however its values are written. Longer files are read up to here.
constexpr int MaximumSize = 64 * 1024;

/// The content of the option's variable file: the first readable one, under the name with dashes or as it is. Empty
/// without one.
QByteArray readVariableFile(const QString &linuxName)
{
    const std::string name = QFile::encodeName(linuxName).toStdString();
    const std::string dashedName = ClientFacts::fileName(name);
    for (const char *interface : ClientFacts::ValueDirectories) {
        const std::string directory = Paths::resolve(ClientFacts::ValuesDirectory) + '/' + interface + '/';
        for (const std::string &candidate : {dashedName, name}) {
            // Opening shows whether it is readable, at half the cost of asking first. It does not wait for the other
            // end of a pipe.
            const std::string path = directory + candidate;
            const Posix::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
            if (file) {
                char content[MaximumSize];
                const ssize_t size = ::read(file.get(), content, sizeof content);
                return QByteArray(content, static_cast<int>(std::max<ssize_t>(size, 0)));
            }
            // With any other error the file is readable, but cannot be opened.
            if (errno != ENOENT && errno != ENOTDIR && errno != EACCES && errno != ELOOP && errno != ENAMETOOLONG)
                return {};
            if (dashedName == name)
                break;
        }
    }
    return {};
}

/// The first line that assigns something; null without one.
QString assignmentLine(QTextStream &stream)
{
    while (!stream.atEnd()) {
        stream.skipWhiteSpace();
        const QString line = stream.readLine();
        if (!line.startsWith(QLatin1Char('#')) && line.contains(QLatin1Char('=')))
            return line;
    }
    return {};
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

    QByteArray content = readVariableFile(linuxName);
    QBuffer buffer(&content);
    buffer.open(QIODevice::ReadOnly | QIODevice::Text);
    QTextStream stream(&buffer);
    static QTextCodec *const utf8 = QTextCodec::codecForName("UTF-8");
    stream.setCodec(utf8);
    const QString line = assignmentLine(stream);
    if (line.isNull())
        return;
    currentValue = unquoted(line.mid(line.indexOf(QLatin1Char('=')) + 1));
}
