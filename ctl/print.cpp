#include "print.h"

#include "choices.h"
#include "dhcpoption.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace {

QTextStream &out()
{
    static QTextStream stream(stdout);
    stream.setCodec("UTF-8");
    return stream;
}

QString nameOf(DhcpClass_t dhcpClass)
{
    switch (dhcpClass) {
    case Managed:
        return QStringLiteral("managed");
    case AlwaysOn:
        return QStringLiteral("always-on");
    case AlwaysOff:
        return QStringLiteral("always-off");
    default:
        return QStringLiteral("normal");
    }
}

QString titleOf(const DhcpOption &option)
{
    return option.localizedText(QString(), option.names);
}

bool hasValue(const DhcpOption &option)
{
    return option.currentValue != DhcpOption::tr("N/A", "Short for Not Available.  Should be brief.");
}

/// A server may send anything; on a terminal it must do nothing.
QString escaped(const QString &text)
{
    QString result;
    for (const QChar &character : text) {
        if (character.isPrint())
            result += character;
        else
            result += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
    }
    return result;
}

QJsonObject object(const DhcpOption &option)
{
    return {{QStringLiteral("name"), option.linuxName},
            {QStringLiteral("title"), titleOf(option)},
            {QStringLiteral("code"), qint64{option.code}},
            {QStringLiteral("standard_code"), qint64{option.standardCode}},
            {QStringLiteral("requested"), isRequested(option)},
            {QStringLiteral("class"), nameOf(option.dhcpClass)},
            {QStringLiteral("predefined"), option.linuxPredefined},
            {QStringLiteral("value"), hasValue(option) ? QJsonValue(option.currentValue) : QJsonValue()}};
}

} // namespace

void printList(const QList<DhcpOption *> &options)
{
    winsize terminal = {};
    const bool isTerminal = ::isatty(STDOUT_FILENO) != 0 && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &terminal) == 0;
    int longestName = 0;
    for (const DhcpOption *option : options)
        longestName = std::max(longestName, escaped(option->linuxName).size());
    for (const DhcpOption *option : options) {
        const QString requested = isRequested(*option) ? QStringLiteral("on") : QStringLiteral("off");
        const QString code = QString::number(option->code);
        const QString name = escaped(option->linuxName);
        const QString value = escaped(option->currentValue);
        if (!isTerminal)
            out() << requested << '\t' << code << '\t' << name << '\t' << value << '\n';
        else
            out() << QStringLiteral("%1 %2 %3 %4")
                         .arg(requested, -3)
                         .arg(code, 3)
                         .arg(name, -longestName)
                         .arg(value)
                         .left(terminal.ws_col > 0 ? terminal.ws_col : 80)
                  << '\n';
    }
    out().flush();
}

void printListAsJson(const QList<DhcpOption *> &options)
{
    QJsonArray array;
    for (const DhcpOption *option : options)
        array.append(object(*option));
    out() << QString::fromUtf8(QJsonDocument(array).toJson());
    out().flush();
}

void printDetails(const DhcpOption &option)
{
    const auto line = [](const char *heading, const QString &text) {
        if (!text.isEmpty())
            out() << QString::fromLatin1(heading).leftJustified(24) << escaped(text) << '\n';
    };
    const QString yes = QStringLiteral("yes");
    const QString no = QStringLiteral("no");
    line("Name:", titleOf(option));
    line("dhclient's name:", option.linuxName);
    line("dhclient's type:", option.linuxType);
    line("Windows name:", option.windowsName);
    line("Windows type:", option.windowsType);
    line("Requested:", isRequested(option) ? yes : no);
    line("Class:", nameOf(option.dhcpClass));
    line("Code:", QString::number(option.code));
    line("Standard code:", QString::number(option.standardCode));
    line("Code can be changed:", option.linuxPredefined ? no : yes);
    line("Standard DHCP option:", option.standardOption ? yes : no);
    line("Current value:", option.currentValue);
    line("Description:", option.localizedText(QString(), option.descriptions).simplified());
    line("Example:", option.example);
    out().flush();
}

void printDetailsAsJson(const DhcpOption &option)
{
    QJsonObject details = object(option);
    details.insert(QStringLiteral("type"), option.linuxType);
    details.insert(QStringLiteral("windows_name"), option.windowsName);
    details.insert(QStringLiteral("windows_type"), option.windowsType);
    details.insert(QStringLiteral("description"), option.localizedText(QString(), option.descriptions));
    details.insert(QStringLiteral("example"), option.example);
    details.insert(QStringLiteral("standard_option"), option.standardOption);
    out() << QString::fromUtf8(QJsonDocument(details).toJson());
    out().flush();
}
