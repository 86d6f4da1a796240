#ifndef INFOKEYS_H
#define INFOKEYS_H

#include <QObject>

class QTableWidget;

/// Lets the keyboard do what a click does: Enter or Space on a cell of one column of a table.
///
/// The key goes no further, so that the table does not also take it for the start of an edit or for an
/// activation.
class InfoKeys : public QObject
{
    Q_OBJECT

public:
    /// Becomes a child of the table.
    InfoKeys(QTableWidget *table, int column);

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void pressed(int row, int column);

private:
    Q_DISABLE_COPY(InfoKeys)
    QTableWidget *m_table;
    int m_column;
};

#endif
