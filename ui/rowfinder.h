#ifndef ROWFINDER_H
#define ROWFINDER_H

#include <QElapsedTimer>
#include <QObject>

#include <functional>

class CurrentCell;
class QKeyEvent;
class QLineEdit;
class QTableWidget;

/// Finds a visible row of the option table, also one that is disabled.
///
/// Letters typed in the table find the next row whose name begins with them, digits the row of that code, except
/// in a code cell that can be edited, where both begin an edit. The field opens over the table's corner: it finds what
/// is typed there anywhere in a name or the client's name, or at the beginning of a code; Enter and the arrow keys go
/// on to further rows, Escape closes it.
class RowFinder : public QObject
{
    Q_OBJECT

public:
    /// Becomes a child of the table. `viewWith` says in which view a hidden row is shown.
    RowFinder(QTableWidget *table, CurrentCell *current, std::function<QString(int row)> viewWith);

    void openField();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Q_DISABLE_COPY(RowFinder)
    using Matches = std::function<bool(int row)>;

    bool handleTableKey(const QKeyEvent &event);
    bool handleFieldKey(const QKeyEvent &event);
    bool isTyping() const;
    void findTyped(const QString &text);
    void findInField(int from, int step);
    bool find(int from, int step, const Matches &matches);
    QString foundElsewhere(const Matches &matches) const;
    QString text(int row, int column) const;
    void placeField();

    QTableWidget *table;
    CurrentCell *current;
    std::function<QString(int row)> viewWith;
    QLineEdit *field = nullptr;
    QString typed;
    QElapsedTimer sinceTyped;
};

#endif
