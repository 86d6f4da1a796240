#ifndef DHCPTABLE_H
#define DHCPTABLE_H

#include "optioncell.h"

#include <QHash>
#include <QIcon>
#include <QList>
#include <QTableWidget>

class DhcpOption;
class QLabel;
class TableKeys;
class VCheckBox;
class VGui;
class VWidgetContainer;
class VorkanClient;

/// Which options the table shows. The numbers are the view selector's item indexes.
enum ViewMode_t {
    ShowCustom = 0, ///< those that the client does not know by itself and that are not hidden
    ShowCommon = 1, ///< those that are not hidden
    ShowAll = 2
};

/// The option table: one row per option.
///
/// The user ticks the options to request and edits the codes of those that the client does not predefine. Each
/// option's requested state is also held by a check box that is bound to the registry and never shown.
///
/// Sorting stays enabled, so a row moves when a cell of the sorted column is written. Rows are known by the text
/// of their hidden last column, the option's client name, never by their number. An option whose client name
/// another one has already is reported on standard error, and its row is left without cells.
class DhcpTable : public QTableWidget
{
    Q_OBJECT

public:
    /// Makes the registry entries that are missing, from the options' defaults, and commits them. The options, the
    /// page and the container are not owned and must outlive the table.
    DhcpTable(const QList<DhcpOption *> &options, VGui *gui, VWidgetContainer *container, ViewMode_t mode,
              QWidget *parent);
    ~DhcpTable() override;

    /// Takes over what is being typed into a cell, as if the user had pressed Enter.
    void finishEditing();

    /// Shows the values that the client has received by now.
    void refreshValues();

    /// Applies every option whose requested state or code has changed since it was last applied, every Normal and
    /// AlwaysOn option when forced, and commits stored codes. The requested states are stored by the container.
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
    void setHeaders();
    DhcpOption *optionAt(int row) const;
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
    TableKeys *keys;
    QLabel *emptyHint;
    QIcon infoIcon;
    QIcon pencilIcon;
};

#endif
