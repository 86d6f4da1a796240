#include "rowfinder.h"

#include "currentcell.h"
#include "optioncell.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTableWidget>
#include <QToolTip>

namespace {

constexpr int FieldCharacters = 28;

} // namespace

RowFinder::RowFinder(QTableWidget *table, CurrentCell *current, std::function<QString(int row)> viewWith)
    : QObject(table)
    , table(table)
    , current(current)
    , viewWith(std::move(viewWith))
{
    table->installEventFilter(this);
    table->viewport()->installEventFilter(this); // which is resized after the table
}

bool RowFinder::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress: {
        const auto &key = *static_cast<QKeyEvent *>(event);
        return watched == field ? handleFieldKey(key) : watched == table && handleTableKey(key);
    }
    case QEvent::FocusOut: {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (watched == field && reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            field->hide();
        return false;
    }
    case QEvent::Resize:
        if (watched == table->viewport() && field)
            placeField();
        return false;
    default:
        return false;
    }
}

bool RowFinder::handleTableKey(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers others = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const QChar first = event.text().isEmpty() ? QChar() : event.text().at(0);
    // A blank or a hyphen goes on with a name that is being typed; a blank would tick the box that the first word
    // found.
    const bool goesOn = isTyping() && !typed.at(0).isDigit() && first.isPrint();
    if ((event.modifiers() & others) || !(first.isLetterOrNumber() || goesOn))
        return false;
    const QTableWidgetItem *cell = table->currentItem();
    if (cell && isEditable(cell->flags()))
        return false;
    findTyped(event.text());
    return true;
}

bool RowFinder::isTyping() const
{
    return sinceTyped.isValid() && sinceTyped.elapsed() < QApplication::keyboardInputInterval();
}

void RowFinder::findTyped(const QString &text)
{
    const bool goesOn = isTyping();
    typed = goesOn ? typed + text : text;
    sinceTyped.start();
    const int row = table->currentRow();
    const QString code = QString::number(typed.toInt()); // without leading zeros
    if (typed.at(0).isDigit()) {
        if (!find(0, 1, [&](int candidate) { return this->text(candidate, CodeColumn) == code; }))
            find(0, 1, [&](int candidate) { return this->text(candidate, CodeColumn).startsWith(code); });
        return;
    }
    const auto beginsWith = [this](const QString &start) {
        return [this, start](int candidate) {
            return this->text(candidate, NameColumn).startsWith(start, Qt::CaseInsensitive);
        };
    };
    if (find(goesOn ? row : row + 1, 1, beginsWith(typed)))
        return;
    // The same letter again goes on to the next row.
    if (typed.count(typed.at(0), Qt::CaseInsensitive) == typed.size())
        find(row + 1, 1, beginsWith(typed.left(1)));
}

void RowFinder::openField()
{
    if (!field) { // its icon takes time that the start can do without
        field = new QLineEdit(table);
        field->setPlaceholderText(tr("Find"));
        field->setAccessibleName(tr("Find an option"));
        field->setClearButtonEnabled(true);
        field->installEventFilter(this);
        connect(field, &QLineEdit::textEdited, this, [this] { findInField(table->currentRow(), 1); });
    }
    table->setFocus(); // takes over a code that is being typed
    placeField();
    field->show();
    field->raise();
    field->selectAll();
    field->setFocus();
}

/// Over the header's end, where it hides no row.
void RowFinder::placeField()
{
    const QRect viewport = table->viewport()->geometry();
    const int width = qMin(viewport.width(), field->fontMetrics().averageCharWidth() * FieldCharacters);
    const QRect corner(viewport.right() - width, 0, width,
                       qMax(table->horizontalHeader()->height(), field->sizeHint().height()));
    field->setGeometry(QStyle::visualRect(table->layoutDirection(), viewport, corner));
}

bool RowFinder::handleFieldKey(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Escape:
        table->setFocus();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Down:
        findInField(table->currentRow() + 1, 1);
        return true;
    case Qt::Key_Up:
        findInField(table->currentRow() - 1, -1);
        return true;
    default:
        return false;
    }
}

void RowFinder::findInField(int from, int step)
{
    const QString wanted = field->text();
    const auto matches = [&](int row) {
        return text(row, NameColumn).contains(wanted, Qt::CaseInsensitive)
               || text(row, KeyColumn).contains(wanted, Qt::CaseInsensitive) || text(row, CodeColumn).startsWith(wanted)
               || table->item(row, CodeColumn)->text().startsWith(wanted);
    };
    const bool matched = wanted.isEmpty() || find(from, step, matches);
    QToolTip::showText(field->mapToGlobal(field->rect().bottomLeft()), matched ? QString() : foundElsewhere(matches),
                       field);
    QPalette palette;
    if (!matched) {
        palette.setColor(QPalette::Base, Qt::darkRed);
        palette.setColor(QPalette::Text, Qt::white);
    }
    field->setPalette(palette);
}

/// Looks at every row once, from row `from` on and around the end of the table.
bool RowFinder::find(int from, int step, const Matches &matches)
{
    const int rows = table->rowCount();
    for (int i = 0; i < rows; ++i) {
        const int row = (from + i * step + rows) % rows;
        if (row >= 0 && !table->isRowHidden(row) && table->item(row, KeyColumn) && matches(row)) {
            current->goTo(row, RequestedColumn);
            return true;
        }
    }
    return false;
}

/// Where a row that matches but is not shown is to be seen; empty if there is none.
QString RowFinder::foundElsewhere(const Matches &matches) const
{
    for (int row = 0; row < table->rowCount(); ++row) {
        if (table->item(row, KeyColumn) && matches(row))
            return viewWith(row);
    }
    return QString();
}

/// The cell's text; a code without leading zeros.
QString RowFinder::text(int row, int column) const
{
    const QString content = table->item(row, column)->text();
    return column == CodeColumn ? QString::number(content.toInt()) : content;
}
