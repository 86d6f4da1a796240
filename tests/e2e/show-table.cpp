// Prints the option table as the window shows it, a line per row: client name, "on" or "off" as it is to be
// requested, code, current value.

#include "dhcpapp.h"
#include "dhcptable.h"
#include "mainwindow.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "minimal");
    const QApplication application(argc, argv);
    const DhcpApp app(false, true);
    const DhcpTable *table = app.mainWindow()->optionTable();
    for (int row = 0; row < table->rowCount(); ++row) {
        const auto text = [&](OptionColumn column) { return table->item(row, column)->text().toUtf8(); };
        const QTableWidgetItem *requested = table->item(row, RequestedColumn);
        // A fixed class shows its word instead of a box, and "Managed" is not for this program to request.
        const bool isOn = requested->data(Qt::CheckStateRole).isValid() ? requested->checkState() == Qt::Checked
                                                                        : requested->text() == QLatin1String("Always");
        std::printf("%s %s %d %s\n", text(KeyColumn).constData(), isOn ? "on" : "off", text(CodeColumn).toInt(),
                    text(ValueColumn).constData());
    }
    return 0;
}
