// The bare counterpart of a start: a window with a table. Usage: bare-window ROWS

#include "bench.h"

#include <QApplication>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QMainWindow window;
    auto *table = new QTableWidget(QCoreApplication::arguments().value(1).toInt(), 6, &window);
    Bench::fill(*table);
    window.setCentralWidget(table);
    const Bench::FirstPaint firstPaint(table->viewport());
    window.show();
    return QApplication::exec();
}
