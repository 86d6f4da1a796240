#include "mainwindow.h"

#include "clienttools.h"
#include "configurationpageheader.h"
#include "dhcpoption.h"
#include "dhcptable.h"
#include "registrystore.h"
#include "vapplyokcancelpanel.h"
#include "vgui.h"
#include "vwidgetcontainer.h"

#include "qtpaths.h"

#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QPixmap>
#include <QVBoxLayout>

namespace {

constexpr char IconPath[] = "/usr/share/pixmaps/kiro-dhcp.png";
constexpr int StretchBeforeButtons = 1000;
constexpr int AllButtons = 7;
constexpr int SelectorCharacters = 12;

QPixmap windowPixmap()
{
    return QPixmap(Paths::resolved(IconPath));
}

} // namespace

MainWindow::MainWindow(const QList<DhcpOption *> &options, bool forceApply, QWidget *parent, Qt::WindowFlags flags)
    : QMainWindow(parent, flags)
    , options(options)
    , forceApply(forceApply)
    , title(tr("DHCP Option Manager"))
{
    setWindowTitle(title);
    setWindowIcon(windowPixmap());

    container = new VWidgetContainer(this);
    gui = new VGui(DhcpOption::registryBranch(), this);
    header = new ConfigurationPageHeader(title, true, nullptr);
    header->setTitleIcon(windowPixmap());
    header->setNote(missingRights());
    panel = new VApplyOkCancelPanel(QFlags<VApplyOkCancelPanel::Button>(AllButtons), this);
    table = new DhcpTable(options, gui, container, ShowCustom, this);

    viewSelector = new QComboBox;
    viewSelector->setAccessibleName(tr("Options to show"));
    viewSelector->addItem(tr("Show Custom Options"));
    viewSelector->addItem(tr("Show Common Options"));
    viewSelector->addItem(tr("Show All Options"));
    // On a small screen it gives way to the buttons.
    viewSelector->setMinimumWidth(viewSelector->fontMetrics().averageCharWidth() * SelectorCharacters);
    panel->prependStretch(StretchBeforeButtons);
    panel->prependWidget(viewSelector);
    // On Linux a combo box gives a screen reader its current text as its name; its purpose comes from its label. There
    // is no room for one, so it stays hidden.
    auto *viewLabel = new QLabel(viewSelector->accessibleName(), panel);
    viewLabel->setBuddy(viewSelector);
    viewLabel->hide();
    connect(viewSelector, QOverload<int>::of(&QComboBox::currentIndexChanged), table,
            QOverload<int>::of(&DhcpTable::changeViewMode));

    tableLayout = new QVBoxLayout;
    tableLayout->setContentsMargins(0, 0, 0, 0);
    tableLayout->addWidget(table, 1);
    tableLayout->addWidget(panel, 0);

    pageLayout = new QVBoxLayout;
    pageLayout->setContentsMargins(0, 0, 0, 0);
    pageLayout->addWidget(header, 0);
    pageLayout->addLayout(tableLayout, 0);

    centralFrame = new QFrame;
    centralFrame->setLayout(pageLayout);
    setCentralWidget(centralFrame);

    setTabOrder(table, viewSelector);
    setTabOrder(viewSelector, panel->applyButton());
    setTabOrder(panel->applyButton(), panel->okButton());
    setTabOrder(panel->okButton(), panel->cancelButton());

    connect(panel->cancelButton(), &QPushButton::clicked, qApp, &QCoreApplication::quit);
    connect(panel->applyButton(), &QPushButton::clicked, this, &MainWindow::apply);
    connect(panel->okButton(), &QPushButton::clicked, this, &MainWindow::applyAndQuit);
}

MainWindow::~MainWindow() = default;

/// What the user's rights do not allow; empty when they do.
QString MainWindow::missingRights()
{
    const bool isStored = RegistryStore::instance().isWritable();
    const bool isApplied = ClientTools::mayEdit();
    if (isStored && isApplied)
        return QString();
    if (isStored)
        return tr("Without the rights of root, choices are stored but not applied to the DHCP client.");
    if (isApplied)
        return tr("Without the rights of root, choices are applied to the DHCP client but not stored.");
    return tr("Without the rights of root, choices are neither stored nor applied to the DHCP client.");
}

void MainWindow::selectView(int mode)
{
    viewSelector->setCurrentIndex(mode);
}

void MainWindow::apply()
{
    // A button that is pressed by its letter does not take the focus from a code that is being typed.
    table->finishEditing();
    if (isVisible())
        QApplication::setOverrideCursor(Qt::WaitCursor);
    container->validate();
    table->applyOptions(forceApply);
    QApplication::restoreOverrideCursor();
    ClientTools::start();
}

void MainWindow::applyAndQuit()
{
    apply();
    QCoreApplication::quit();
}
