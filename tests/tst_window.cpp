// The window around the option table: details, buttons, keyboard and mouse, looks, and what a screen reader learns.

#include "configurationpageheader.h"
#include "windowtest.h"

#include <QAccessible>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMessageBox>
#include <QScreen>
#include <QTimer>
#include <QToolTip>
#include <QWindow>

#include <functional>

class TestWindow : public WindowTest
{
    Q_OBJECT

private slots:
    /// The Tab key reaches everything in the order of the layout, and leaves the table again.
    void layout()
    {
        open({"a 1", "b 2", "c 3", "d 4", "e 5", "f 6", "g 7"});
        const QHeaderView *rows = table->verticalHeader();
        QVERIFY(!rows->isVisible() && table->sizeHint().height() > rows->length());
        QVERIFY(table->horizontalHeader()->minimumHeight() >= 2 * table->fontMetrics().height()); // in every style
        auto *header = window->findChild<ConfigurationPageHeader *>();
        const QList<QLabel *> labels = header->findChildren<QLabel *>();
        QVERIFY(!labels.at(0)->pixmap(Qt::ReturnByValue).isNull() && !labels.at(1)->isVisible());
        const auto place = [&](const QWidget *widget) { return widget->mapTo(window.get(), QPoint(0, 0)); };
        QVERIFY(place(header).y() < place(table).y() && place(table).y() < place(selector).y());
        int end = 0;
        const QList<QWidget *> row = {selector, panel->applyButton(), panel->okButton(), panel->cancelButton()};
        for (QWidget *next : row) {
            key(Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), next);
            QVERIFY(place(next).x() >= end);
            end = place(next).x() + next->width();
        }
        QVERIFY(place(selector).x() < 50 && place(panel->applyButton()).x() > 2 * selector->width()); // the stretch
        QVERIFY(panel->minimumSizeHint().width() < panel->sizeHint().width() - 20); // the selector gives way
    }

    /// In place of a directory, a file takes even root's right to write below it.
    void note()
    {
        root.write("/etc/dhcp", "");
        open({});
        root.remove("/etc/dhcp");
        const QLabel *note = window->findChild<ConfigurationPageHeader *>()->findChildren<QLabel *>().at(1);
        QVERIFY(note->isVisible() && note->text().contains("choices are stored but not applied"));
    }

    void details_data()
    {
        addRows(R"(
            <windows-name>W</windows-name> <windows-type>Byte</windows-type> <description>D</description> <example>E</example> <standard-option>yes</standard-option> ; 224 ; 210 ; Standard 250|Last 224|Name: I|Windows W|Windows Byte|Linux i|Linux text|Description: D|Example: E|Standard Yes
             ; 250 ; 210 ; Standard 250|Name: I|Windows Unknown|Linux i|Linux text|Standard Ostrel Extension
            known off ; 224 ; 250 ; Fixed 250|Name: I|Windows Unknown|Linux i|Standard Ostrel Extension)");
    }

    void details()
    {
        QFETCH(QStringList, cells);
        const QString &shown = cells.at(2);
        // Of equal codes the first in the list is described, also for the other one's row.
        open({"i 250 " + cells.at(0), "other " + shown + ' ' + cells.at(0)});
        options.at(0)->appliedCode = cells.at(1).toUInt();
        selector->setCurrentIndex(ShowAll);
        cell("i", CodeColumn)->setText(shown);
        const QString whole = QString("<i>Details on DHCP Option %1 -- I:</i>|%2| ").arg(shown, cells.at(3));
        for (int column = NameColumn; column < KeyColumn; ++column)
            QCOMPARE(boxOpenedBy([&] { click(1, column); }), column == InfoColumn ? whole : QString());
        for (const int pressed : {Qt::Key_Return, Qt::Key_F1, Qt::Key_Enter, Qt::Key_Space}) {
            table->setCurrentCell(1, InfoColumn);
            const auto press = [&] { key(pressed, pressed == Qt::Key_Enter ? Qt::KeypadModifier : Qt::NoModifier); };
            QCOMPARE(boxOpenedBy(press), whole);
            QVERIFY(!table->item(1, InfoColumn)->isSelected());
        }
    }

    void buttons()
    {
        open({"b 200"});
        // A button's letter works while a code is being typed, and takes the code along.
        table->setCurrentCell(0, CodeColumn);
        for (const int digit : {Qt::Key_2, Qt::Key_4, Qt::Key_0})
            key(digit);
        key(Qt::Key_A, Qt::AltModifier);
        QVERIFY(recorded(2).at(1).contains("--add-new-option|b 240 text"));
        root.forgetRecorded();
        // By the time the tool runs, the requested state is in the registry.
        root.installRecorder("/usr/sbin/kiro-dhclient-edit",
                             "[ \"$(sqlite3 \"$KIRO_DHCP_MGR_ROOT/var/lib/vorkan/registry.db\""
                             " \"SELECT value FROM entry WHERE key = 'root/DHCP/Req_b'\")\" = 0 ] || exit");
        click(0, RequestedColumn);
        for (QPushButton *button : {panel->cancelButton(), panel->okButton()}) {
            QCOMPARE(root.recorded(), QStringList());
            QTimer::singleShot(0, button, &QPushButton::click);
            QCOMPARE(QApplication::exec(), 0);
        }
        panel->applyButton()->click(); // of what has been applied, nothing is left
        const QString call =
            "kiro-dhclient-edit|--del-new-option|b 200 text|--del-new-option|b 240 text|--del-request|b";
        QCOMPARE(recorded(3), QStringList({"dhclient|-1", "dhclient|-1", call}));
        QVERIFY(!QApplication::overrideCursor());
    }

    /// The keyboard always has a cell to start from, and never one that is disabled or not shown.
    void keyboardCell()
    {
        open({"fixed 1 always-on", "known 2 known"});
        for (const Qt::SortOrder order : {Qt::DescendingOrder, Qt::AscendingOrder}) {
            QCOMPARE(table->currentItem(), cell("fixed", CodeColumn));
            key(Qt::Key_S, Qt::ControlModifier);
            QCOMPARE(table->horizontalHeader()->sortIndicatorSection(), int(CodeColumn));
            QCOMPARE(table->horizontalHeader()->sortIndicatorOrder(), order);
            table->changeViewMode(ShowAll);
            table->setCurrentCell(row("known"), RequestedColumn);
            table->changeViewMode(ShowCustom);
        }
    }

    /// What is typed in the table, or after "/" in the field of Ctrl+F, and the row found. "." lets time pass, "^" is
    /// the key Up.
    void find()
    {
        open({"start 100", "asset 1 off", "print 120", "proof 12 hidden", "proxy 121 off"});
        cell("asset", NameColumn)->setText("Inventory");
        table->sortByColumn(KeyColumn, Qt::DescendingOrder);
        key(Qt::Key_F, Qt::ControlModifier);
        auto *field = table->findChild<QLineEdit *>(QString(), Qt::FindDirectChildrenOnly);
        const QString lines = "p proxy,P proxy,pr proxy,pri print,pp print,ppp proxy,p.p print,pri.i asset,x start,"
                              "1 asset,12 proxy,120 print,0120 print,/set asset,/INV asset,/21 start,/120 print,"
                              "/001 asset,/p\r print,/p\r\r proxy,/p^ print,/set\x1b.p proxy";
        for (const QString &line : lines.split(',')) {
            table->setFocus();
            QVERIFY(!field->isVisible());
            table->setCurrentCell(row("start"), RequestedColumn);
            const QString typed = line.section(' ', 0, 0);
            for (const QChar c : QString('.' + typed)) {
                if (c == '/')
                    key(Qt::Key_F, Qt::ControlModifier);
                else if (c == '^')
                    key(Qt::Key_Up);
                else if (c != '.')
                    QTest::keyClick(QApplication::focusWidget(), c.toLatin1());
                QApplication::setKeyboardInputInterval(c == '.' ? 0 : 1000000);
            }
            QCOMPARE(QString(typed + ' ' + table->item(table->currentRow(), KeyColumn)->text()), line);
            QCOMPARE(field->isVisible(), typed.startsWith('/') && !typed.contains('\x1b'));
            QCOMPARE(field->palette().color(QPalette::Base) != QPalette().color(QPalette::Base), typed == "/21");
            QCOMPARE(field->geometry().right(), table->viewport()->geometry().right() - 1);
        }
    }

    /// Of rows that are not requested, too.
    void copying()
    {
        root.setValue("second", "x=received");
        open({"first 1", "second 2 off"});
        const auto copied = [] { return QApplication::clipboard()->text(); };
        for (const auto &[row, column, text] : {std::tuple(1, ValueColumn, "received"), {0, NameColumn, "First"}}) {
            click(row, column);
            key(Qt::Key_C, Qt::ControlModifier);
            QCOMPARE(copied(), QString(text));
        }
        const QPoint place = table->visualItemRect(cell("second", ValueColumn)).center();
        for (const char letter : {'v', 'n', 'd'}) {
            QContextMenuEvent asking(letter == 'v' ? QContextMenuEvent::Mouse : QContextMenuEvent::Keyboard, place);
            QApplication::sendEvent(letter == 'v' ? table->viewport() : table, &asking);
            QVERIFY(QApplication::activePopupWidget());
            const QString box = boxOpenedBy([&] { QTest::keyClick(QApplication::activePopupWidget(), letter); });
            QCOMPARE(copied(), QString(letter == 'v' ? "received" : "Second"));
            QCOMPARE(box.contains("Second"), letter == 'd');
        }
    }

    /// Light and dark, the text of an option that is not requested can be read, in the current row too: on white, grey
    /// that differs by 136 has a contrast of 4.5:1.
    void readable()
    {
        open({"grey 1 off", "black 2"});
        table->setFont(QFont(QString(), 30)); // strokes wider than a pixel
        for (const auto &[text, base] : {std::pair(Qt::black, Qt::white), {Qt::white, Qt::black}}) {
            QPalette palette(base);
            palette.setColor(QPalette::Text, text);
            palette.setColor(QPalette::Base, base);
            palette.setColor(QPalette::Disabled, QPalette::Text, base);
            table->setPalette(palette);
            for (const int current : {0, 1}) {
                table->setCurrentCell(current, RequestedColumn);
                const QImage cell = seen("grey");
                QCOMPARE(cell.pixelColor(0, 0) != QColor(base), current == 0); // the current row is tinted
                int strongest = 0;
                const int background = qGray(cell.pixel(0, 0));
                for (int i = 0; i < cell.width() * cell.height(); ++i) {
                    const int grey = qGray(cell.pixel(i % cell.width(), i / cell.width()));
                    strongest = qMax(strongest, qAbs(grey - background));
                }
                QVERIFY2(strongest > 136 && strongest < 200, qPrintable(QString::number(strongest)));
            }
        }
    }

    /// Numbers keep their order in a layout from right to left. What is cut, and that only, is whole in a tooltip.
    void values()
    {
        root.setValue("value", "x='1 888888'");
        open({"value 1", "long 2"});
        window->setLayoutDirection(Qt::RightToLeft);
        const QImage cell = seen("value");
        const int width = table->fontMetrics().horizontalAdvance("1 888888");
        const QImage text = cell.copy(cell.width() - width, 0, width, cell.height());
        const QImage thirds = text.scaled(3, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY(qGray(thirds.pixel(0, 0)) > qGray(thirds.pixel(2, 0)));
        root.setValue("long", "x='ldaps://<b>" + QByteArray(5000, 'l') + "'");
        table->refreshValues();
        for (const QString name : {"value", "long"}) {
            const QPoint place = table->visualItemRect(this->cell(name, ValueColumn)).center();
            QHelpEvent asking(QEvent::ToolTip, place, table->viewport()->mapToGlobal(place));
            QApplication::sendEvent(table->viewport(), &asking);
            const QString seen = QToolTip::text();
            QVERIFY(name == "value" ? seen.isEmpty() : seen.contains("ldaps://&lt;b&gt;lll") && seen.size() < 2000);
        }
        QVERIFY(!table->wordWrap()); // it would cut a line at its first break
    }

    /// The cells as a screen reader asks for them: name and description.
    void spoken()
    {
        open({"spoken 200", "fixed 201 known always-off"});
        selector->setCurrentIndex(ShowAll);
        QAccessibleInterface *view = QAccessible::queryAccessibleInterface(table);
        QStringList cells;
        for (const int index : {0, 1, 4, 5, 7, 8}) {
            QAccessibleInterface *cell = view->tableInterface()->cellAt(index / 5, index % 5);
            cells << cell->text(QAccessible::Name) + '|' + cell->text(QAccessible::Description);
        }
        QCOMPARE(cells, QStringList({"Requested: Spoken|", "DHCP Code: 200|Editable", "Current Value: N/A|",
                                     "Requested: Never|Disabled", "Name: Fixed|Disabled", "Info: Fixed|"}));
        const auto purpose = QAccessible::queryAccessibleInterface(selector)->relations(QAccessible::Label);
        QCOMPARE(purpose.value(0).first->text(QAccessible::Name), QString("Options to show"));
    }

private:
    /// The text of the box that opens while `act` runs, and of each line the first word and what is bold; empty without
    /// a box. Each opens over the middle of the window, with its title and icon.
    QString boxOpenedBy(const std::function<void()> &act)
    {
        QString texts;
        const auto look = [&](QMessageBox *box) {
            box->accept();
            texts = box->text();
            for (const QString &line : box->informativeText().split("<br />"))
                texts += '|' + line.section(' ', 0, 0) + ' ' + line.section("<b>", 1, 1).section("</b>", 0, 0);
            const QString spoken = QAccessible::queryAccessibleInterface(box)->text(QAccessible::Name);
            QCOMPARE(QString("<i>" + spoken + "</i>"), box->text());
            QCOMPARE(box->windowTitle(), QString("DHCP Option Manager"));
            QVERIFY(!box->windowIcon().isNull());
            QCOMPARE(box->windowHandle()->transientParent(), window->windowHandle());
            QVERIFY((box->geometry().center() - window->geometry().center()).manhattanLength() < 20);
        };
        QTimer closer;
        connect(&closer, &QTimer::timeout, [&] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
                QTimer::singleShot(0, box, [box, look] { look(box); }); // once it has been placed
        });
        closer.start(10);
        act();
        QApplication::processEvents();
        return texts;
    }

    /// The value cell as it is on the screen, without its frame.
    QImage seen(const QString &name) const
    {
        QApplication::processEvents();
        const QRect place = table->visualItemRect(cell(name, ValueColumn)).adjusted(2, 2, -2, -2);
        const QPoint corner = table->viewport()->mapTo(window.get(), QPoint(0, 0));
        return window->screen()->grabWindow(window->winId()).toImage().copy(place.translated(corner));
    }
};

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
