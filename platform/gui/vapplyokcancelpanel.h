#ifndef VAPPLYOKCANCELPANEL_H
#define VAPPLYOKCANCELPANEL_H

#include <QPushButton>
#include <QWidget>

class QHBoxLayout;

/// The button row at the foot of a configuration page.
class VApplyOkCancelPanel : public QWidget
{
    Q_OBJECT

public:
    enum Button { Apply = 1, Ok = 2, Cancel = 4 };

    VApplyOkCancelPanel(QFlags<Button> buttons, QWidget *parent);

    /// Puts a stretch at the front of the row.
    void prependStretch(int factor);
    /// Puts a widget at the front of the row and takes ownership of it.
    void prependWidget(QWidget *widget);

    /// Null for a button that was not asked for.
    QPushButton *applyButton() const { return apply; }
    QPushButton *okButton() const { return ok; }
    QPushButton *cancelButton() const { return cancel; }

private:
    Q_DISABLE_COPY(VApplyOkCancelPanel)
    QPushButton *addButton(const QString &text);

    QHBoxLayout *row;
    QPushButton *apply = nullptr;
    QPushButton *ok = nullptr;
    QPushButton *cancel = nullptr;
};

#endif
