// Switches the view of the shown window's table, and hides the same rows of an equal plain table.
// Usage: views ROUNDS
// Prints the milliseconds of ours and of the plain table for all three switches, one line per round.

#include "showntables.h"

#include <array>
#include <vector>

namespace {

std::vector<bool> hiddenRows(const QTableWidget &table)
{
    std::vector<bool> hidden;
    for (int row = 0; row < table.rowCount(); ++row)
        hidden.push_back(table.isRowHidden(row));
    return hidden;
}

void hideRows(QTableWidget &table, const std::vector<bool> &hidden)
{
    table.setUpdatesEnabled(false);
    for (int row = 0; row < table.rowCount(); ++row)
        table.setRowHidden(row, hidden[static_cast<std::size_t>(row)]);
    table.setUpdatesEnabled(true);
    table.resizeColumnsToContents();
}

} // namespace

int main(int argc, char **argv)
{
    Bench::ShownTables tables(argc, argv);
    DhcpTable &ours = tables.ours;
    QTableWidget &plain = tables.plain;

    constexpr std::array<ViewMode_t, 3> modes = {ShowCommon, ShowAll, ShowCustom};
    std::array<std::vector<bool>, 3> hidden;
    for (const ViewMode_t mode : modes) {
        ours.changeViewMode(mode);
        hidden[mode] = hiddenRows(ours);
    }
    if (hidden[ShowCustom] == hidden[ShowCommon] || hidden[ShowCommon] == hidden[ShowAll])
        qFatal("the views do not differ");

    for (int round = tables.rounds; round > 0; --round) {
        double oursTime = 0;
        double plainTime = 0;
        for (const ViewMode_t mode : modes) {
            oursTime += Bench::duration([&] {
                ours.changeViewMode(mode);
                QCoreApplication::processEvents();
            });
            plainTime += Bench::duration([&] {
                hideRows(plain, hidden[mode]);
                QCoreApplication::processEvents();
            });
            if (hiddenRows(ours) != hidden[mode] || hiddenRows(plain) != hidden[mode])
                qFatal("a view shows other rows than before");
        }
        std::printf("%.3f %.3f\n", oursTime, plainTime);
    }
    return 0;
}
