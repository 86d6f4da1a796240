// Building the table, and its views.

#include "dhcptable.h"

#include "currentcell.h"
#include "dhcpoption.h"
#include "optiondelegate.h"
#include "rowfinder.h"
#include "rowmenu.h"
#include "vcheckbox.h"
#include "vgui.h"
#include "vorkanclient.h"
#include "vwidgetcontainer.h"

#include "qtpaths.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QScreen>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

#include <iostream>

namespace {

constexpr char pencilIconPath[] = "/usr/share/icons/kiro-icons/16x16/pencil.png";
constexpr int LeastRows = 8;   // in sight, if half of the screen has room for them
constexpr int ExtraWidth = 40; // room for the frame and a scroll bar
constexpr int CodeDigits = 3;
constexpr int ValueShare = 3; // of the screen's width a value gets a third at most

bool isLeftOut(const DhcpOption &option, ViewMode_t mode)
{
    return (mode != ShowAll && option.hideOption) || (mode == ShowCustom && option.linuxPredefined);
}

QTableWidgetItem *makeCell(const QString &text, Qt::ItemFlags flags, Qt::Alignment alignment)
{
    auto *cell = new OptionCell(text);
    cell->setFlags(flags);
    cell->setTextAlignment(alignment | Qt::AlignVCenter);
    return cell;
}

} // namespace

DhcpTable::DhcpTable(const QList<DhcpOption *> &options, VGui *gui, VWidgetContainer *container, ViewMode_t mode,
                     QWidget *parent)
    : QTableWidget(parent)
    , options(options)
    , gui(gui)
    , container(container)
    , current(new CurrentCell(this))
    , emptyHint(new QLabel(viewport()))
{
    setAccessibleName(tr("DHCP options"));
    setItemDelegate(new OptionDelegate(this));
    setWordWrap(false); // a long word would be cut after its first break
    // Tab is to leave the table for the buttons; the arrow keys move between its cells.
    setTabKeyNavigation(false);
    // The whole current row is tinted.
    connect(this, &QTableWidget::currentCellChanged, viewport(), QOverload<>::of(&QWidget::update));
    emptyHint->setAlignment(Qt::AlignCenter);
    emptyHint->setWordWrap(true);
    auto *hintLayout = new QVBoxLayout(viewport());
    hintLayout->addWidget(emptyHint);
    populate(mode);
}

void DhcpTable::populate(ViewMode_t mode)
{
    setRowCount(options.count());
    setColumnCount(KeyColumn + 1);
    setColumnHidden(KeyColumn, true);

    infoIcon = QApplication::style()->standardPixmap(QStyle::SP_MessageBoxInformation);
    pencilIcon = QIcon(Paths::resolved(pencilIconPath));
    {
        VorkanClient registry;
        bool needsCommit = false;
        for (int row = 0; row < options.count(); ++row) {
            DhcpOption *option = options.at(row);
            if (isLeftOut(*option, mode))
                setRowHidden(row, true);
            if (addOption(row, option, registry))
                needsCommit = true;
        }
        if (needsCommit)
            registry.commit(QString());
    }

    setHeaders();
    // Before sorting is enabled, so that it comes before the sorting.
    connect(horizontalHeader(), &QHeaderView::sortIndicatorChanged, this, &DhcpTable::noteBoxes);
    setSortingEnabled(true);
    verticalHeader()->hide();
    sortByColumn(CodeColumn, Qt::AscendingOrder);
    fitToView();

    int width = columnCount() + ExtraWidth;
    for (int column = RequestedColumn; column <= ValueColumn; ++column)
        width += columnWidth(column);
    setMinimumWidth(width);
    const int height = horizontalHeader()->minimumHeight() + LeastRows * verticalHeader()->defaultSectionSize();
    setMinimumHeight(qMin(height, screen()->availableGeometry().height() / 2));
    setSizeAdjustPolicy(AdjustToContents);
    // Once the window has its first size, which is by the columns' contents.
    QTimer::singleShot(0, this,
                       [this] { horizontalHeader()->setSectionResizeMode(ValueColumn, QHeaderView::Stretch); });

    auto *menu = new RowMenu(this, current);
    connect(menu, &RowMenu::detailsRequested, this, &DhcpTable::showInfo);
    connect(menu, &RowMenu::findRequested, new RowFinder(this, current, [this](int row) { return viewWith(row); }),
            &RowFinder::openField);

    // Last, so that building the rows is not taken for the user's editing.
    connect(this, &QTableWidget::cellChanged, this, &DhcpTable::dataChange);
    connect(this, &QTableWidget::cellClicked, this, &DhcpTable::showInfo);
}

/// True when a registry entry was made that waits for a commit.
bool DhcpTable::addOption(int row, DhcpOption *option, VorkanClient &registry)
{
    const QString &name = option->linuxName;
    if (optionsByLinuxName.contains(name) || checkBoxes.contains(name)) {
        std::cerr << "Error: linux-name repeated: '" << name.toStdString() << "'" << std::endl;
        return false;
    }
    optionsByLinuxName.insert(name, option);

    const bool missing = registry.contains(option->requestKey) != 0;
    auto *checkBox = new VCheckBox(gui, option->requestKey);
    container->addWidget(checkBox);
    checkBoxes.insert(name, checkBox);
    QAbstractButton *button = checkBox->fieldWidget();
    if (missing)
        button->setChecked(option->requestedByDefault);
    if (option->dhcpClass != Normal)
        button->setChecked(option->dhcpClass != AlwaysOff);

    const bool requested = button->isChecked();
    if (missing) {
        registry.create(option->requestKey, _RegEntryType{VorkanBoolType});
        registry.set(option->requestKey, requested ? QStringLiteral("1") : QStringLiteral("0"), _RegEntryParam());
    }
    option->appliedRequested = requested;
    addCells(row, *option, requested);
    return missing;
}

void DhcpTable::addCells(int row, DhcpOption &option, bool requested)
{
    const Qt::ItemFlags rowFlags = requested ? Qt::ItemIsEnabled : Qt::NoItemFlags;
    setItem(row, RequestedColumn, requestedCell(option, requested));

    auto *code = makeCell(QStringLiteral("%1").arg(option.code, CodeDigits, 10, QLatin1Char('0')), rowFlags,
                          Qt::AlignRight);
    if (!option.linuxPredefined) {
        code->setFlags(rowFlags | Qt::ItemIsSelectable | Qt::ItemIsEditable);
        code->setIcon(pencilIcon);
        QFont bold;
        bold.setBold(true);
        code->setFont(bold);
    }
    setItem(row, CodeColumn, code);

    auto *name = makeCell(option.localizedText(QString(), option.names), rowFlags, Qt::AlignLeft);
    if (!option.standardOption) {
        QFont italic;
        italic.setItalic(true);
        name->setFont(italic);
    }
    setItem(row, NameColumn, name);

    auto *info = makeCell(QString(), Qt::ItemIsSelectable | Qt::ItemIsEnabled, Qt::AlignHCenter);
    info->setIcon(infoIcon);
    setItem(row, InfoColumn, info);
    setItem(row, ValueColumn, makeCell(option.currentValue, rowFlags, Qt::AlignLeft));
    setItem(row, KeyColumn, new QTableWidgetItem(option.linuxName));
}

QTableWidgetItem *DhcpTable::requestedCell(const DhcpOption &option, bool requested)
{
    QString text;
    QString toolTip;
    switch (option.dhcpClass) {
    case Normal:
        break;
    case AlwaysOn:
        text = tr("Always", "String to designate option is always requested.  Must be short!");
        toolTip = tr("This option is <i>always</i> requested from the DHCP server");
        break;
    case AlwaysOff:
        text = tr("Never", "This option is never requested.  Must be short!");
        toolTip = tr("This option is <i>never</i> requested from the DHCP server");
        break;
    case Managed:
        text = QStringLiteral("*");
        toolTip = tr("This option is managed by another control panel (e.g. Networking)");
        break;
    }
    const bool isUsersChoice = option.dhcpClass == Normal;
    auto *cell = makeCell(text, isUsersChoice ? Qt::ItemIsUserCheckable | Qt::ItemIsEnabled : Qt::NoItemFlags,
                          Qt::AlignHCenter);
    if (isUsersChoice)
        cell->setCheckState(requested ? Qt::Checked : Qt::Unchecked);
    else
        cell->setToolTip(toolTip);
    return cell;
}

void DhcpTable::noteBoxes()
{
    for (int row = 0; row < rowCount(); ++row) {
        if (auto *cell = static_cast<OptionCell *>(item(row, RequestedColumn)))
            cell->noteBox();
    }
}

void DhcpTable::setHeaders()
{
    setHorizontalHeaderLabels({
        tr("Requested", "Whether the option is requested from the server.  Should be short."),
        tr("DHCP\nCode", "DHCP Option Code Number. Should be short."),
        tr("Name", "DHCP Option Name.  Should be short."),
        tr("Info", "Short string for 'Information'.  Should be short."),
        tr("Current\nValue", "Short column header to show current value of the option."),
        QStringLiteral("Option\nName"),
    });
    horizontalHeaderItem(RequestedColumn)
        ->setToolTip(tr("Checked if the DHCP option is to be requested from the DHCP server"));
    horizontalHeaderItem(CodeColumn)->setToolTip(tr("DHCP code.  This is modifiable for non-predefined options"));
    horizontalHeaderItem(InfoColumn)->setToolTip(tr("Click for detailed option information"));
    horizontalHeaderItem(ValueColumn)->setToolTip(tr("Current value returned from the DHCP server"));
    // Some styles size the header for one line.
    const QFontMetrics metrics = horizontalHeader()->fontMetrics();
    horizontalHeader()->setMinimumHeight(2 * (metrics.lineSpacing() + style()->pixelMetric(QStyle::PM_HeaderMargin)));
    // A screen reader would stop at the line breaks.
    for (int column = RequestedColumn; column <= ValueColumn; ++column) {
        QTableWidgetItem *header = horizontalHeaderItem(column);
        header->setData(Qt::AccessibleTextRole, header->text().simplified());
    }
}

/// The row's option; null for a row without cells.
DhcpOption *DhcpTable::optionAt(int row) const
{
    const QTableWidgetItem *key = item(row, KeyColumn);
    return key ? optionsByLinuxName.value(key->text()) : nullptr;
}

QString DhcpTable::viewWith(int row) const
{
    const DhcpOption *option = optionAt(row);
    const QString text = option->hideOption ? tr("%1 is listed under \"Show All Options\".")
                                            : tr("%1 is listed under \"Show Common Options\".");
    return text.arg(item(row, NameColumn)->text());
}

void DhcpTable::changeViewMode(ViewMode_t mode)
{
    changeViewMode(static_cast<int>(mode));
}

void DhcpTable::changeViewMode(int mode)
{
    if (mode < ShowCustom || mode > ShowAll)
        return;
    setUpdatesEnabled(false); // makes hiding many rows some twenty times faster
    for (int row = 0; row < rowCount(); ++row) {
        if (const DhcpOption *option = optionAt(row))
            setRowHidden(row, isLeftOut(*option, static_cast<ViewMode_t>(mode)));
    }
    setUpdatesEnabled(true);
    fitToView();
    current->ensure();
}

/// Fits the columns, but not so wide that the window outgrows the screen: what a server sends must not push the
/// buttons out of reach. The user can drag them wider.
void DhcpTable::fitColumns()
{
    const QHeaderView::ResizeMode mode = horizontalHeader()->sectionResizeMode(ValueColumn);
    horizontalHeader()->setSectionResizeMode(ValueColumn, QHeaderView::Interactive);
    resizeColumnsToContents();
    const int available = screen()->availableGeometry().width();
    setColumnWidth(ValueColumn, qMin(columnWidth(ValueColumn), available / ValueShare));
    int excess = columnCount() + ExtraWidth - available;
    for (int column = RequestedColumn; column <= ValueColumn; ++column)
        excess += columnWidth(column);
    // First down to the width of their headers, then below it.
    for (const bool belowHeader : {false, true}) {
        for (const int column : {ValueColumn, NameColumn}) {
            const QHeaderView *header = horizontalHeader();
            const int least = belowHeader ? header->minimumSectionSize() : header->sectionSizeHint(column);
            const int cut = qBound(0, excess, qMax(columnWidth(column) - least, 0));
            setColumnWidth(column, columnWidth(column) - cut);
            excess -= cut;
        }
    }
    horizontalHeader()->setSectionResizeMode(ValueColumn, mode);
}

void DhcpTable::fitToView()
{
    const bool isEmpty = verticalHeader()->hiddenSectionCount() == rowCount();
    const auto hideAll = [this](bool hide) {
        for (int row = 0; row < rowCount(); ++row)
            setRowHidden(row, hide);
    };
    if (isEmpty) // the columns are then wide enough for the other views
        hideAll(false);
    fitColumns();
    if (isEmpty)
        hideAll(true);
    emptyHint->setText(rowCount() == 0
                           ? tr("No usable option definitions found. Install some in /usr/share/kiro-dhcp-mgr "
                                "and start the program again.")
                           : tr("This view has no options. Choose another view below the table."));
    emptyHint->setVisible(isEmpty);
}
