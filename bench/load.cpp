// Loads every definition of the root, as records or with a reader that does nothing. Usage: load ours|bare
// Prints the milliseconds.

#include "bench.h"

#include "dhcpoption.h"
#include "paths.h"
#include "vorkanclient.h"

#include <QCoreApplication>
#include <QDir>
#include <QTextStream>
#include <QXmlDefaultHandler>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

#include <memory>
#include <vector>

namespace {

struct Files
{
    QString definition;
    QString value;
};

std::vector<Files> findFiles()
{
    const QDir definitions(QFile::decodeName(Paths::resolve("/usr/share/kiro-dhcp-mgr").c_str()));
    const QDir values(QFile::decodeName(Paths::resolve("/var/lib/dhcp3/vars/eth0").c_str()));
    std::vector<Files> files;
    const QFileInfoList entries = definitions.entryInfoList(QDir::Files);
    for (const QFileInfo &entry : entries)
        files.push_back({entry.filePath(), values.filePath(entry.completeBaseName())});
    return files;
}

void open(QFile &file)
{
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        qFatal("cannot read %s", qUtf8Printable(file.fileName()));
}

void loadBare(const std::vector<Files> &files)
{
    for (const Files &pair : files) {
        QFile definition(pair.definition);
        open(definition);
        QXmlInputSource source(&definition);
        QXmlSimpleReader reader;
        QXmlDefaultHandler handler;
        reader.setContentHandler(&handler);
        if (!reader.parse(source))
            qFatal("cannot parse %s", qUtf8Printable(pair.definition));

        QFile value(pair.value);
        open(value);
        QTextStream stream(&value);
        stream.setCodec("UTF-8");
        if (stream.readAll().isEmpty())
            qFatal("no value in %s", qUtf8Printable(pair.value));
    }
}

std::vector<std::unique_ptr<DhcpOption>> loadOurs(const std::vector<Files> &files)
{
    std::vector<std::unique_ptr<DhcpOption>> options;
    const VorkanClient registry; // as the application object loads them
    for (const Files &pair : files)
        options.push_back(std::make_unique<DhcpOption>(pair.definition, nullptr));
    return options;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const bool ours = QCoreApplication::arguments().value(1) == QLatin1String("ours");
    const std::vector<Files> files = findFiles();
    std::vector<std::unique_ptr<DhcpOption>> options;
    const auto load = [&](const std::vector<Files> &some) {
        if (ours)
            options = loadOurs(some);
        else
            loadBare(some);
    };
    // What only the first definitions of a process cost is part of its start, not of each definition.
    load({files.begin(), files.begin() + 8});
    std::printf("%.3f\n", Bench::duration([&] { load(files); }));
    return 0;
}
