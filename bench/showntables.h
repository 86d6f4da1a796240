#ifndef SHOWNTABLES_H
#define SHOWNTABLES_H

#include "bench.h"

#include "dhcpapp.h"
#include "dhcptable.h"
#include "mainwindow.h"
#include "vapplication.h"

namespace Bench {

/// The program's window and beside it a plain table that shows the same.
struct ShownTables
{
    ShownTables(int &argc, char **argv) : application(argc, argv, true, true, true)
    {
        app.mainWindow()->show();
        QCoreApplication::processEvents();
        copyTable(ours, plain);
        plain.show();
        QCoreApplication::processEvents();
    }

    VApplication application;
    const DhcpApp app{false, false};
    DhcpTable &ours = *app.mainWindow()->optionTable();
    QTableWidget plain;
    const int rounds = QCoreApplication::arguments().value(1).toInt();
};

} // namespace Bench

#endif
