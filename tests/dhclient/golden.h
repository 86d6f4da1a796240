#ifndef GOLDEN_H
#define GOLDEN_H

#include "edit.h"

#include <QByteArray>
#include <QVector>

/// One case of requests.txt or declarations.txt, where the form is told.
struct Golden
{
    QByteArray title;
    QByteArray old, commands, expected, error, notes;
};

QVector<Golden> allGoldens();

/// One command to a line, as the tool takes them.
std::vector<DhclientConf::Command> commandsOf(const QByteArray &lines);

#endif
