#include "mainwindow.h"

#include "clienttools.h"
#include "configurationpageheader.h"
#include "dhcpoption.h"
#include "dhcptable.h"
#include "networkmanagers.h"
#include "registrystore.h"
#include "vapplyokcancelpanel.h"
#include "vgui.h"
#include "vorkanclient.h"
#include "vwidgetcontainer.h"

#include "qtpaths.h"

#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QPixmap>
#include <QVBoxLayout>

#include <cerrno>
#include <cstring>

#include <unistd.h>

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
    panel = new VApplyOkCancelPanel(QFlags<VApplyOkCancelPanel::Button>(AllButtons), this);
    table = new DhcpTable(options, gui, container, ShowCustom, this);
    showNote(); // the table has read the choices

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

/// What the user cannot do here, and why; empty without an obstacle.
QString MainWindow::missingRights()
{
    int reason = 0;
    const bool isStored = RegistryStore::instance().isWritable();
    if (!isStored)
        reason = errno;
    const bool isApplied = ClientTools::mayEdit();
    if (!isApplied)
        reason = errno;
    if (reason == 0)
        return QString();
    const QString effect = isStored    ? tr("choices are stored but not applied.")
                           : isApplied ? tr("choices are applied but not stored.")
                                       : tr("choices are neither stored nor applied.");
    if (reason == EACCES && ::geteuid() != 0)
        return tr("Without root privileges, %1 Start the program from the menu or with sudo.").arg(effect);
    return tr("%1: %2", "First arg is the system's reason; second is one of the texts above")
        .arg(QString::fromLocal8Bit(std::strerror(reason)), effect);
}

void MainWindow::showNote()
{
    const RegistryStore &registry = RegistryStore::instance();
    QStringList lines = findings;
    if (!registry.isReadable())
        lines.prepend(
            tr("The stored choices cannot be read (%1). What the window shows may differ from them; nothing is "
               "stored or applied until the program is started again.")
                .arg(QString::fromStdString(registry.whyUnreadable())));
    else
        lines.prepend(missingRights());
    lines.removeAll(QString());
    header->setNote(lines.join(QLatin1Char('\n')));
}

void MainWindow::examineMachine()
{
    findings = NetworkManagers::atWork();
    showNote();
    ClientTools::check(this, [this](const QString &fault) {
        findings << tr("Nothing is applied until this is corrected: %1").arg(fault);
        showNote();
    });
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
    // What is shown must not replace choices that are unknown.
    if (VorkanClient::isReadable())
        table->applyOptions(forceApply);
    QApplication::restoreOverrideCursor();
    ClientTools::start();
    showNote();
}

void MainWindow::applyAndQuit()
{
    apply();
    QCoreApplication::quit();
}
