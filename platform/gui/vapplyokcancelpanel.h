#ifndef VAPPLYOKCANCELPANEL_H
#define VAPPLYOKCANCELPANEL_H

#include <QPushButton>
#include <QWidget>

class QHBoxLayout;

/// Apply, OK and Cancel, or some of them, below a page; the page lays its own widgets out before them.
class VApplyOkCancelPanel : public QWidget
{
    Q_OBJECT

public:
    enum Button { Apply = 1, Ok = 2, Cancel = 4 };

    VApplyOkCancelPanel(QFlags<Button> buttons, QWidget *parent);

    // Both go before everything that the row holds already.
    void prependStretch(int factor);
    void prependWidget(QWidget *widget); ///< becomes a child of the panel

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
