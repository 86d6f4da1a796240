// The details box of an option.

#include "dhcptable.h"

#include "dhcpoption.h"

#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextDocumentFragment>
#include <QTimer>
#include <QWindow>

#include <algorithm>

namespace {

constexpr int TextWidth = 500; // of a message box, in pixels

/// Makes the informative text scroll if it would be higher than that.
void scrollIfLong(QMessageBox &box, int height)
{
    auto *label = box.findChild<QLabel *>(QStringLiteral("qt_msgbox_informativelabel"));
    if (!label || label->heightForWidth(TextWidth) <= height)
        return;
    auto *area = new QScrollArea(&box);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setMinimumSize(TextWidth + area->verticalScrollBar()->sizeHint().width(), height);
    delete box.layout()->replaceWidget(label, area);
    label->setFixedWidth(TextWidth);
    area->setWidget(label);
}

} // namespace

void DhcpTable::showInfo(int row, int column)
{
    QTableWidgetItem *infoCell = item(row, InfoColumn);
    if (column != InfoColumn || !infoCell)
        return;
    infoCell->setSelected(false);

    const quint32 shownCode = item(row, CodeColumn)->text().toUInt(nullptr, 10);
    const auto option = std::find_if(options.cbegin(), options.cend(),
                                     [shownCode](const DhcpOption *candidate) { return candidate->code == shownCode; });
    if (option == options.cend())
        return;
    const DhcpOption &shown = **option;
    const QString name = shown.localizedText(QString(), shown.names);

    QMessageBox box;
    box.setIcon(QMessageBox::Information);
    box.setText(tr("<i>Details on DHCP Option %1 -- %2:</i>", "First arg is DHCP code; second is name")
                    .arg(shownCode)
                    .arg(name));
    box.setAccessibleName(QTextDocumentFragment::fromHtml(box.text()).toPlainText());
    box.setInformativeText(details(shown, shownCode));
    box.setStandardButtons(QMessageBox::Ok);
    scrollIfLong(box, screen()->availableGeometry().height() / 2);
    // A parent would do this too, but change more than that.
    QWidget *below = window();
    box.setWindowTitle(below->windowTitle());
    box.setWindowIcon(below->windowIcon());
    box.winId();
    box.windowHandle()->setTransientParent(below->windowHandle());
    // It has its size once it is shown.
    QTimer::singleShot(0, &box, [&box, below] {
        const QPoint place = below->frameGeometry().center() - box.frameGeometry().center() + box.pos();
        const QRect screen = below->screen()->availableGeometry();
        box.move(qMax(place.x(), screen.left()), qMax(place.y(), screen.top()));
    });
    box.exec();
}

QString DhcpTable::details(const DhcpOption &option, quint32 shownCode)
{
    QString text;
    if (option.linuxPredefined) {
        text += tr("Fixed DHCP Code: <b>%1</b><br />", "Fixed == unchanging, constant").arg(shownCode);
    } else {
        text += tr("Standard DHCP Code: <b>%1</b><br />", "Standard == normal").arg(option.standardCode);
        if (option.standardCode != option.appliedCode)
            text += tr("Last Applied DHCP Code: <b>%1</b><br />").arg(option.appliedCode);
    }
    text += tr("Name: <b>%1</b><br />").arg(option.localizedText(QString(), option.names));
    const auto addUnlessEmpty = [&text](const QString &line, const QString &value) {
        if (!value.isEmpty())
            text += line.arg(value);
    };
    addUnlessEmpty(tr("Windows DHCP Option Name: <b>%1</b><br />"), option.windowsName);
    addUnlessEmpty(tr("Windows DHCP Option Type: <b>%1</b><br />"), option.windowsType);
    addUnlessEmpty(tr("Linux DHCP Option Name: <b>%1</b><br />"), option.linuxName);
    addUnlessEmpty(tr("Linux DHCP Option Type: <b>%1</b><br />"), option.linuxType);
    addUnlessEmpty(tr("Description: <b>%1</b><br />"), option.localizedText(QString(), option.descriptions));
    addUnlessEmpty(tr("Example: <b>%1</b><br />"), option.example);
    text += tr("Standard DHCP Option?  ");
    // The second "<b>" is a slip, but a correction would orphan the translations of these texts.
    text += option.standardOption ? tr("<b>Yes<b><br />") : tr("<b>Ostrel Extension<b><br />");
    return text;
}
