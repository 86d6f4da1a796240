// kiro-dhcpctl: what the window offers, for a terminal and for scripts.

#include "check.h"
#include "choices.h"
#include "definitions.h"
#include "dhcpoption.h"
#include "instancelock.h"
#include "print.h"
#include "qtpaths.h"
#include "vorkan.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QProcess>

#include <algorithm>
#include <iostream>
#include <numeric>
#include <vector>

namespace {

enum Status { Done = 0, Failed = 1, WrongUsage = 2 };

int fail(Status status, const QString &line)
{
    std::cerr << "kiro-dhcpctl: " << line.toStdString() << std::endl;
    return status;
}

/// How many letters have to be added, removed or replaced to make the one text of the other.
int distance(const QString &one, const QString &other)
{
    std::vector<int> row(static_cast<std::size_t>(other.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const QChar &letter : one) {
        int diagonal = row[0]++;
        for (std::size_t i = 1; i < row.size(); ++i) {
            const int replaced = diagonal + (letter == other.at(static_cast<int>(i) - 1) ? 0 : 1);
            diagonal = row[i];
            row[i] = std::min({replaced, row[i] + 1, row[i - 1] + 1});
        }
    }
    return row.back();
}

DhcpOption *find(const Definitions &definitions, const QString &name)
{
    const auto found = std::find_if(definitions.options.begin(), definitions.options.end(),
                                    [&](const DhcpOption *option) { return option->linuxName == name; });
    return found == definitions.options.end() ? nullptr : *found;
}

int failUnknown(const Definitions &definitions, const QString &name)
{
    QStringList names;
    for (const DhcpOption *option : definitions.options)
        names.append(option->linuxName);
    std::stable_sort(names.begin(), names.end(), [&](const QString &one, const QString &other) {
        const auto farness = [&](const QString &candidate) {
            return candidate.contains(name) ? 0 : distance(name, candidate);
        };
        return farness(one) < farness(other);
    });
    return fail(WrongUsage, QStringLiteral("no option is called \"%1\"; the nearest are: %2")
                                .arg(name, QStringList(names.mid(0, 3)).join(QStringLiteral(", "))));
}

int list(const Definitions &definitions, bool all, bool asJson)
{
    QList<DhcpOption *> options = definitions.options;
    const auto isLeftOut = [&](const DhcpOption *option) { return option->hideOption && !all; };
    options.erase(std::remove_if(options.begin(), options.end(), isLeftOut), options.end());
    std::stable_sort(options.begin(), options.end(),
                     [](const DhcpOption *one, const DhcpOption *other) { return one->code < other->code; });
    (asJson ? printListAsJson : printList)(options);
    return Vorkan::isReadable() ? Done : Failed;
}

int set(const Definitions &definitions, const QString &name, const Choice &choice)
{
    DhcpOption *option = find(definitions, name);
    if (!option)
        return failUnknown(definitions, name);
    if (const QString reason = refusal(*option, choice); !reason.isEmpty())
        return fail(WrongUsage, name + QStringLiteral(": ") + reason);
    // It holds the choices that it has read, and its next apply would store them over this one.
    if (InstanceLock("kiro-dhcp-mgr").currentHolder() != 0)
        return fail(Failed,
                    QStringLiteral("kiro-dhcp-mgr is running; its next apply would undo this. Close it first."));
    const Stored stored = store(*option, choice);
    if (stored == Stored::Failed)
        return Failed;
    std::cout << name.toStdString() << ": " << (choice.requested ? "on" : "off") << ", code " << option->code
              << (stored == Stored::Changed ? " (changed)" : " (unchanged)") << std::endl;
    return Done;
}

int printFaults(const QStringList &lines)
{
    for (const QString &line : lines)
        std::cout << line.toStdString() << std::endl;
    return lines.isEmpty() ? Done : Failed;
}

int apply()
{
    const int status = QProcess::execute(Paths::resolved("/usr/bin/kiro-dhcp-mgr"), {QStringLiteral("--apply")});
    if (status < 0)
        return fail(Failed, QStringLiteral("cannot run kiro-dhcp-mgr"));
    return status == Done ? printFaults(notInConfiguration(Definitions::load(qApp))) : status;
}

int run(const QCommandLineParser &parser)
{
    const QStringList words = parser.positionalArguments();
    const QString command = words.value(0);
    const bool asJson = parser.isSet(QStringLiteral("json"));
    const auto has = [&](const char *name, int count) {
        return command == QLatin1String(name) && words.size() == count;
    };
    const auto allows = [&](const QStringList &options) {
        const QStringList names = parser.optionNames();
        return std::all_of(names.begin(), names.end(), [&](const QString &name) { return options.contains(name); });
    };
    const QString all = QStringLiteral("all");
    const QString json = QStringLiteral("json");
    const QString code = QStringLiteral("code");
    const bool isState = words.value(2) == QLatin1String("on") || words.value(2) == QLatin1String("off");
    if (has("list", 1) && allows({all, json}))
        return list(Definitions::load(qApp), parser.isSet(all), asJson);
    if (has("show", 2) && allows({json})) {
        const Definitions definitions = Definitions::load(qApp);
        const DhcpOption *option = find(definitions, words[1]);
        if (!option)
            return failUnknown(definitions, words[1]);
        (asJson ? printDetailsAsJson : printDetails)(*option);
        return Vorkan::isReadable() ? Done : Failed;
    }
    if (has("set", 3) && isState && allows({code}))
        return set(Definitions::load(qApp), words[1],
                   {words[2] == QLatin1String("on"), parser.isSet(code) ? parser.value(code) : QString()});
    if (has("check", 1) && allows({}))
        return printFaults(faults(Definitions::load(qApp)));
    if (has("apply", 1) && allows({}))
        return apply();
    return fail(WrongUsage, QStringLiteral("wrong arguments; see kiro-dhcpctl --help"));
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kiro-dhcpctl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PROGRAM_VERSION));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Chooses which DHCP options dhclient requests.\n\n"
                       "  list [--all] [--json]                     requested, code, name, value of each option\n"
                       "  show NAME [--json]                        all about one option\n"
                       "  set NAME on|off [--code N|--code standard]  store a choice, until the next apply\n"
                       "  check                                     whether everything is in place\n"
                       "  apply                                     bring the stored choices to dhclient\n\n"
                       "Exit status: 0 done, 1 it could not be done, or check found faults, 2 wrong usage,\n"
                       "3 kiro-dhcp-mgr was running at an apply."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption({QStringLiteral("all"), QStringLiteral("List the hidden options too.")});
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print JSON.")});
    parser.addOption({QStringLiteral("code"), QStringLiteral("The option's code."), QStringLiteral("N")});
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("One of the above."));
    if (!parser.parse(QCoreApplication::arguments()))
        return fail(WrongUsage, parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp();
    if (parser.isSet(QStringLiteral("version")))
        parser.showVersion();
    return run(parser);
}
