// The bare counterpart of a start and of an update run: a table that shows itself, or starts a tool for each row.
// Usage: bare ROWS [TOOL]

#include "firstpaint.h"

#include <QApplication>
#include <QMainWindow>
#include <QProcess>
#include <QTableWidget>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QMainWindow window;
    auto *table = new QTableWidget(arguments.value(1).toInt(), 6, &window);
    for (int row = 0; row < table->rowCount(); ++row) {
        for (int column = 0; column < table->columnCount(); ++column)
            table->setItem(row, column, new QTableWidgetItem(QStringLiteral("Option %1").arg(row)));
    }
    if (arguments.size() > 2) {
        for (int row = 0; row < table->rowCount(); ++row)
            QProcess::execute(arguments[2], {QStringLiteral("--add-request"), table->item(row, 0)->text()});
        return 0;
    }
    window.setCentralWidget(table);
    const FirstPaint firstPaint(table->viewport());
    window.show();
    return QApplication::exec();
}
