// The bare counterpart of an update run: holds a table, starts one process per row. Usage: bare-update TOOL

#include "bench.h"

#include <QApplication>
#include <QProcess>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QString tool = QCoreApplication::arguments().value(1);
    QTableWidget table(150, 6);
    Bench::fill(table);
    for (int row = 0; row < table.rowCount(); ++row) {
        QProcess process;
        process.start(tool, {QStringLiteral("--add-request"), table.item(row, 0)->text()});
        if (!process.waitForFinished() || process.exitCode() != 0)
            qFatal("the tool failed");
    }
    return 0;
}
