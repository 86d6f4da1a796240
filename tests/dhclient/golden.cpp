#include "golden.h"

#include <QFile>

namespace {

QVector<Golden> goldens(const QString &name)
{
    QFile file(QStringLiteral(GOLDEN_PATH "/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no %s", qUtf8Printable(file.fileName()));
    QVector<Golden> result;
    QByteArray *section = nullptr;
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine()) {
        if (line.startsWith("== ")) {
            result.append(Golden());
            result.last().title = line.mid(3).trimmed();
            section = nullptr;
        } else if (line.startsWith("-- ")) {
            const QByteArray word = line.mid(3).trimmed();
            Golden &golden = result.last();
            section = word == "OLD" ? &golden.old : word == "COMMANDS" ? &golden.commands
                : word == "EXPECTED" ? &golden.expected : word == "ERROR" ? &golden.error : &golden.notes;
        } else if (section) {
            section->append(line.replace("<CR>", "\r"));
        }
    }
    for (Golden &golden : result) {
        for (QByteArray *text : {&golden.old, &golden.commands, &golden.expected, &golden.error, &golden.notes}) {
            if (text->endsWith("\n\n")) // the blank line before the next case
                text->chop(1);
            text->replace("<END>\n", "");
        }
    }
    return result;
}

} // namespace

QVector<Golden> allGoldens()
{
    return goldens(QStringLiteral("requests.txt")) + goldens(QStringLiteral("declarations.txt"));
}

std::vector<DhclientConf::Command> commandsOf(const QByteArray &lines)
{
    using DhclientConf::Command;
    std::vector<Command> result;
    for (const QByteArray &line : lines.split('\n')) {
        const QByteArray word = line.left(line.indexOf(' '));
        if (!word.isEmpty())
            result.push_back({word == "--add-request" ? Command::AddRequest : word == "--del-request"
                                  ? Command::DelRequest : word == "--add-new-option" ? Command::AddNewOption
                                                                                     : Command::DelNewOption,
                              line.mid(word.size() + 1).toStdString()});
    }
    return result;
}
