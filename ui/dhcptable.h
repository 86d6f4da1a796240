#ifndef DHCPTABLE_H
#define DHCPTABLE_H

#include "optioncell.h"

#include <QHash>
#include <QIcon>
#include <QList>
#include <QTableWidget>

class CurrentCell;
class DhcpOption;
class QLabel;
class VCheckBox;
class VGui;
class VWidgetContainer;
class VorkanClient;

/// What the view selector offers, in its order.
enum ViewMode_t {
    ShowCustom = 0, ///< neither known to the client nor hidden
    ShowCommon = 1, ///< not hidden
    ShowAll = 2
};

/// The user's view of the options, and what carries their choices into the registry and to the client.
///
/// A tick has to reach the registry, but a cell cannot be bound to it: behind each box stands a VCheckBox that is
/// never shown.
///
/// Writing to the sorted column moves the row. So a row number is good until the next write only; the hidden
/// KeyColumn tells which option a row is of. Of definitions that share a client name the first one counts, and the
/// others are rows without cells.
class DhcpTable : public QTableWidget
{
    Q_OBJECT

public:
    /// Writes to the registry: options that it does not have yet are stored with their defaults. The options, the page
    /// and the container are not owned and must outlive the table.
    DhcpTable(const QList<DhcpOption *> &options, VGui *gui, VWidgetContainer *container, ViewMode_t mode,
              QWidget *parent);

    /// Takes over what is being typed into a cell, as if the user had pressed Enter.
    void finishEditing();

    /// Shows the values that the client has received by now.
    void refreshValues();

    /// Runs the edit tool once for each option that has something to apply, or whenever it may have when forced. Codes
    /// are stored here, requested states by the container, which must have done so before.
    void applyOptions(bool force);

public slots:
    /// A mode outside the enumeration changes nothing.
    void changeViewMode(ViewMode_t mode);
    void changeViewMode(int mode);

private slots:
    void dataChange(int row, int column);
    void showInfo(int row, int column);

private:
    Q_DISABLE_COPY(DhcpTable)

    void populate(ViewMode_t mode);
    bool addOption(int row, DhcpOption *option, VorkanClient &registry);
    void addCells(int row, DhcpOption &option, bool requested);
    QTableWidgetItem *requestedCell(const DhcpOption &option, bool requested);
    void noteBoxes();
    void setHeaders();
    DhcpOption *optionAt(int row) const;
    QString viewWith(int row) const;
    void fitColumns();
    void fitToView();
    static QString details(const DhcpOption &option, quint32 shownCode);
    void requestedChanged(int row);
    void codeChanged(int row);

    QList<DhcpOption *> options;
    VGui *gui;
    VWidgetContainer *container;
    QHash<QString, VCheckBox *> checkBoxes; ///< by client name; owned by the page
    QHash<QString, DhcpOption *> optionsByLinuxName;
    CurrentCell *current;
    QLabel *emptyHint;
    QIcon infoIcon;
    QIcon pencilIcon;
};

#endif
