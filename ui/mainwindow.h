#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include <QList>
#include <QMainWindow>

class ConfigurationPageHeader;
class DhcpOption;
class DhcpTable;
class QComboBox;
class QFrame;
class QVBoxLayout;
class VApplyOkCancelPanel;
class VGui;
class VWidgetContainer;

/// The program's window: the option table between a page header and a button row.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Builds the window hidden, the table in its custom view. The options are not owned and must outlive the
    /// window. `forceApply` makes every apply take all options, changed or not.
    MainWindow(const QList<DhcpOption *> &options, bool forceApply, QWidget *parent = nullptr,
               Qt::WindowFlags flags = Qt::WindowFlags());
    ~MainWindow() override;

    DhcpTable *optionTable() const { return table; }

    /// Adds to the header's note what keeps choices from taking effect on this machine: other network managers, and a
    /// fault in the client's configuration, which comes later. For a window that is shown.
    void examineMachine();

    /// Selects a view as the user does with the view selector.
    void selectView(int mode);

public slots:
    /// Stores the requested states in the registry, applies the options to the client's configuration and starts
    /// the client, which reads it. Nothing waits for the client, and no failure is reported.
    void apply();

private slots:
    void applyAndQuit();

private:
    Q_DISABLE_COPY(MainWindow)

    static QString missingRights();
    void showNote();

    QList<DhcpOption *> options;
    bool forceApply;
    QString title;
    QStringList findings;
    VGui *gui;
    VWidgetContainer *container;
    ConfigurationPageHeader *header;
    VApplyOkCancelPanel *panel;
    QFrame *centralFrame;
    QVBoxLayout *tableLayout;
    QVBoxLayout *pageLayout;
    DhcpTable *table;
    QComboBox *viewSelector;
};

#endif
