// What the program does from its start to the first paint of its table.

#include "dhcpapp.h"
#include "dhcptable.h"
#include "firstpaint.h"
#include "mainwindow.h"
#include "vapplication.h"

int main(int argc, char **argv)
{
    VApplication application(argc, argv, true, true, true);
    application.exitIfRunning();
    const DhcpApp app(false, false);
    const FirstPaint firstPaint(app.mainWindow()->optionTable()->viewport());
    app.mainWindow()->setVisible(true);
    return QApplication::exec();
}
