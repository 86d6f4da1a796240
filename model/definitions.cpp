#include "definitions.h"

#include "dhcpoption.h"
#include "qtpaths.h"
#include "vorkanclient.h"

#include <QDir>

#include <iostream>
#include <memory>

namespace {

constexpr char definitionDirectory[] = "/usr/share/kiro-dhcp-mgr";

void report(const char *what, const QString &path)
{
    std::cerr << what << path.toStdString() << std::endl;
}

/// Null when it cannot be used.
std::unique_ptr<DhcpOption> read(const QString &path, QObject *owner)
{
    std::unique_ptr<DhcpOption> option;
    try {
        option = std::make_unique<DhcpOption>(path, owner);
    } catch (DhcpOption::ExceptionType reason) {
        report(reason == DhcpOption::FileNotReadable   ? "DhcpOption: File not readable for "
               : reason == DhcpOption::FileParseFailed ? "DhcpOption: File parse failed for "
                                                       : "DhcpOption: Unknown exception for ",
               path);
    } catch (...) {
        report("Unexpected exception from DhcpOption for ", path);
    }
    if (option && option->code != 0 && !option->localizedText(QString(), option->names).isEmpty())
        return option;
    report("Parse error, file ignored: ", path);
    return nullptr;
}

} // namespace

Definitions Definitions::load(QObject *owner)
{
    Definitions definitions;
    const QDir directory(Paths::resolved(definitionDirectory));
    if (!directory.exists()) {
        report("Cannot read config directory ", directory.path());
        definitions.isDirectoryMissing = true;
        return definitions;
    }
    // The records look up their entries with clients of their own; within this one's life they share a view of the
    // registry. Without it the load takes a fifth longer.
    const VorkanClient registry;
    const QStringList names = directory.entryList({QStringLiteral("*.xml")});
    for (const QString &name : names) {
        const QString path = directory.path() + QLatin1Char('/') + name;
        if (std::unique_ptr<DhcpOption> option = read(path, owner))
            definitions.options.append(option.release());
        else
            definitions.leftOut.append(path);
    }
    return definitions;
}
