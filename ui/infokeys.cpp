#include "infokeys.h"

#include <QKeyEvent>
#include <QTableWidget>

InfoKeys::InfoKeys(QTableWidget *table, int column)
    : QObject(table)
    , m_table(table)
    , m_column(column)
{
    table->installEventFilter(this);
}

bool InfoKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || m_table->currentColumn() != m_column)
        return QObject::eventFilter(watched, event);
    const auto *keyEvent = static_cast<QKeyEvent *>(event);
    if (keyEvent->modifiers() & ~Qt::KeypadModifier)
        return QObject::eventFilter(watched, event);
    switch (keyEvent->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
    case Qt::Key_Select:
        emit pressed(m_table->currentRow(), m_column);
        return true;
    default:
        return QObject::eventFilter(watched, event);
    }
}
