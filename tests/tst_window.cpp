// The window around the option table: details, buttons, keyboard and mouse, looks, and what a screen reader learns.

#include "configurationpageheader.h"
#include "vapplyokcancelpanel.h"
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
        root.write("/etc/dhcp", ""); // in place of a directory, a file takes even root's right to write below it
        open({"a 1", "b 2", "c 3", "d 4", "e 5", "f 6", "g 7"});
        root.remove("/etc/dhcp");
        const QHeaderView *rows = table->verticalHeader();
        QVERIFY(!rows->isVisible() && table->sizeHint().height() > rows->length());
        QVERIFY(table->horizontalHeader()->minimumHeight() >= 2 * table->fontMetrics().height()); // in every style
        QString columns;
        for (int column = RequestedColumn; column < KeyColumn; ++column) {
            const QTableWidgetItem *heading = table->horizontalHeaderItem(column);
            columns += heading->data(Qt::AccessibleTextRole).toString() + ':' + heading->toolTip().section(' ', 0, 0)
                       + '|';
        }
        QCOMPARE(columns, QString("Requested:Checked|DHCP Code:DHCP|Name:|Info:Click|Current Value:Current|"));
        const auto labels = window->findChild<ConfigurationPageHeader *>()->findChildren<QLabel *>();
        const QLabel *icon = labels.at(0);
        const QLabel *note = labels.at(1);
        const QLabel *title = labels.at(2);
        QVERIFY(icon->isVisible() && !icon->pixmap(Qt::ReturnByValue).isNull());
        QVERIFY(title->text() == "DHCP Option Manager" && title->font().bold());
        QVERIFY(note->isVisible() && note->wordWrap() && note->text().contains("choices are stored but not applied"));
        const auto place = [&](const QWidget *widget) { return widget->mapTo(window.get(), QPoint(0, 0)); };
        QVERIFY(place(icon).x() < place(title).x() && place(title).y() < place(note).y());
        QVERIFY(place(note).y() < place(table).y() && place(table).y() < place(selector).y());
        auto *panel = window->findChild<VApplyOkCancelPanel *>();
        const QList<QWidget *> row = {selector, panel->applyButton(), panel->okButton(), panel->cancelButton()};
        for (int i = 0; i < 4; ++i) {
            key(Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), row.at(i));
            QVERIFY(i == 0 || place(row.at(i)).x() >= place(row.at(i - 1)).x() + row.at(i - 1)->width());
        }
        QVERIFY(place(selector).x() < 50 && place(panel->applyButton()).x() > 2 * selector->width()); // the stretch
        QVERIFY(panel->minimumSizeHint().width() < panel->sizeHint().width() - 20); // the selector gives way
        QVERIFY(!panel->findChild<QLabel *>()->isVisible() && table->accessibleName() == "DHCP options");
        const auto purpose = QAccessible::queryAccessibleInterface(selector)->relations(QAccessible::Label);
        QCOMPARE(purpose.value(0).first->text(QAccessible::Name), QString("Options to show"));
    }

    void details_data()
    {
        addRows(R"(
            windows-name=W windows-type=Byte description=D example=E standard-option=yes ; 224 ; 210 ; Standard 250|Last 224|Name: I|Windows W|Windows Byte|Linux i|Linux text|Description: D|Example: E|Standard Yes
             ; 250 ; 210 ; Standard 250|Name: I|Windows Unknown|Linux i|Linux text|Standard Ostrel Extension
            linux-predefined=yes default=no ; 224 ; 250 ; Fixed 250|Name: I|Windows Unknown|Linux i|Linux text|Standard Ostrel Extension)");
    }

    void details()
    {
        QFETCH(QStringList, cells);
        const QString &shown = cells.at(2);
        // Of equal codes the first in the list is described, also for the other one's row.
        open({"i 250 " + cells.at(0), "other " + shown + ' ' + cells.at(0)});
        options.at(0)->appliedCode = cells.at(1).toUInt();
        table->changeViewMode(ShowAll);
        cell("i", CodeColumn)->setText(shown);
        const QString whole = QString("<i>Details on DHCP Option %1 -- I:</i>|%2| ").arg(shown, cells.at(3));
        for (int column = NameColumn; column < KeyColumn; ++column)
            QCOMPARE(boxOpenedBy([&] { click(1, column); }), column == InfoColumn ? whole : QString());
        for (const int pressed : {Qt::Key_Return, Qt::Key_F1, Qt::Key_Enter, Qt::Key_Space}) {
            table->setCurrentCell(1, pressed == Qt::Key_F1 ? RequestedColumn : InfoColumn);
            QCOMPARE(boxOpenedBy([&] { key(pressed, Qt::KeypadModifier); }), whole);
            QVERIFY(!table->item(1, InfoColumn)->isSelected());
        }
    }

    void buttons()
    {
        open({"b 200", "c 250"});
        QVERIFY(!window->findChild<ConfigurationPageHeader *>()->findChildren<QLabel *>().at(1)->isVisible());
        // A button's letter works while a code is being typed, and takes the code along.
        table->setCurrentCell(0, CodeColumn);
        for (const int digit : {Qt::Key_2, Qt::Key_4, Qt::Key_0})
            key(digit);
        QApplication::setOverrideCursor(Qt::CrossCursor); // apply's own is to come on top of it
        key(Qt::Key_A, Qt::AltModifier);
        QVERIFY(eventually([&] { return root.recorded().join('\n').contains("--add-new-option|b 240 text"); }));
        QVERIFY(!boxOpenedBy([&] { key(Qt::Key_F1); }).isEmpty()); // it has not quit
        // When the tool runs, the requested state is in the registry, and the client has not been started.
        root.installRecorder("/usr/sbin/kiro-dhclient-edit",
                             "[ \"$(sqlite3 \"$KIRO_DHCP_MGR_ROOT/var/lib/vorkan/registry.db\""
                             " \"SELECT value FROM entry WHERE key = 'root/DHCP/Req_b'\")\" = 0 ] || exit\n"
                             "[ \"$(grep -c . \"$KIRO_DHCP_MGR_ROOT/recorded\")\" = 2 ] || exit");
        click(0, RequestedColumn);
        for (const int letter : {Qt::Key_C, Qt::Key_O}) {
            QCOMPARE(root.recorded(2).count(), 2);
            QTimer::singleShot(0, this, [&] { key(letter, Qt::AltModifier); });
            QCOMPARE(QApplication::exec(), 0);
        }
        QVERIFY(eventually([&] { return root.recorded().join('\n').contains("|b 240 text|--del-request|b"); }));
        const QCursor *cursor = QApplication::overrideCursor();
        QVERIFY(cursor && cursor->shape() == Qt::CrossCursor);
    }

    /// What is typed in the table, or after "/" in the field of Ctrl+F, and the row found. "." lets time pass, "^"
    /// and others are keys.
    void find()
    {
        open({"start 100", "asset 10 default=no", "print 120", "proof 12 hide-option=yes", "proxy 121 default=no"});
        cell("asset", NameColumn)->setText("Pri box");
        table->sortByColumn(KeyColumn, Qt::DescendingOrder);
        key(Qt::Key_F, Qt::ControlModifier);
        auto *field = table->findChild<QLineEdit *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(field->placeholderText() + field->accessibleName(), QString("FindFind an option"));
        QVERIFY(field->isClearButtonEnabled() && field->width() > 100);
        const QHash<QChar, int> keys = {{'/', Qt::Key_F},
                                        {'^', Qt::Key_Up},
                                        {'v', Qt::Key_Down},
                                        {'+', Qt::Key_Enter},
                                        {'\r', Qt::Key_Return}};
        const QString lines =
            "p proxy,P proxy,pr proxy,px proxy,pri print,pri  asset,pp print,pppp proxy,p.p print,p.s start,"
            "x start,pri.  print,10 asset,12 proxy,120 print,0120 print,/set asset,/BOX asset,/21 start,"
            "/120 print,/10\r asset,/010 asset,/pr proxy,/p\rr print,/p\r+v proxy,/p^ asset,/set\x1b.p proxy";
        for (const QString &line : lines.split(',')) {
            table->setFocus();
            QVERIFY(!field->isVisible());
            table->setCurrentCell(row("start"), RequestedColumn);
            const QString typed = line.section(' ', 0, -2);
            for (const QChar c : QString('.' + typed)) {
                if (keys.contains(c))
                    key(keys.value(c), c == '/' ? Qt::ControlModifier : Qt::NoModifier);
                else if (c != '.')
                    QTest::keyClick(window->windowHandle(), c.toLatin1());
                QApplication::setKeyboardInputInterval(c == '.' ? 0 : 1000000);
            }
            QCOMPARE(QString(typed + ' ' + table->item(table->currentRow(), KeyColumn)->text()), line);
            QCOMPARE(field->isVisible(), typed.startsWith('/') && !typed.contains('\x1b'));
            QCOMPARE(field->palette().color(QPalette::Base) != QPalette().color(QPalette::Base), typed == "/21");
            window->resize(window->width() + 5, window->height());
            QCOMPARE(field->geometry().right(), table->viewport()->geometry().right() - 1);
        }
        QVERIFY(!cell("print", RequestedColumn)->checkState()); // by the blank that did not go on with a name
    }

    /// Light and dark, the text of an option that is not requested can be read, in the current row too: on white, grey
    /// that differs by 136 has a contrast of 4.5:1.
    void readable()
    {
        open({"grey 1 default=no", "black 2"});
        cell("grey", ValueColumn)->setText(QString(200, QChar(0x2588))); // full blocks
        for (const auto base : {Qt::white, Qt::black}) {
            QPalette palette(base); // with text in the other one
            palette.setColor(QPalette::Disabled, QPalette::Text, base);
            table->setPalette(palette);
            for (const int current : {0, 1}) {
                table->setCurrentCell(current, RequestedColumn);
                const QImage cell = seen("grey");
                QCOMPARE(cell.pixelColor(0, 0) != QColor(base), current == 0); // the current row is tinted
                const int contrast = qAbs(qGray(cell.pixel(cell.rect().center())) - qGray(cell.pixel(0, 0)));
                QVERIFY2(contrast > 136 && contrast < 200, qPrintable(QString::number(contrast)));
            }
        }
    }

    /// Some styles dim a window that has not the keyboard.
    void requestedRowKeepsItsColour()
    {
        open({"requested 1"});
        cell("requested", ValueColumn)->setText(QString(200, QChar(0x2588)));
        QPalette palette(Qt::white);
        palette.setColor(QPalette::Inactive, QPalette::Text, Qt::lightGray);
        table->setPalette(palette);
        QApplication::setActiveWindow(nullptr);
        const QImage image = seen("requested");
        QCOMPARE(image.pixelColor(image.rect().center()), QColor(Qt::black));
    }

    /// Numbers keep their order in a layout from right to left. What is cut, and that only, is whole in a tooltip.
    void values()
    {
        root.setValue("value", "x='1 888888'");
        open({"value 1", "long 2 default=no"});
        window->setLayoutDirection(Qt::RightToLeft);
        const QImage cell = seen("value");
        const int width = table->fontMetrics().horizontalAdvance("1 888888");
        const QImage text = cell.copy(cell.width() - width, 0, width, cell.height());
        const QImage thirds = text.scaled(3, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY(qGray(thirds.pixel(0, 0)) > qGray(thirds.pixel(2, 0)));
        const QRegularExpression whole("^<p>\u200eldaps://&lt;b&gt;l+\u200bl.{900,1100}\u2026</p>$");
        const QString value = "ldaps://<b>" + QString(5000, 'l');
        root.setValue("long", "x='" + value.toUtf8() + "'");
        table->refreshValues();
        QPoint place;
        for (const QString name : {"value", "long"}) {
            place = table->visualItemRect(this->cell(name, ValueColumn)).center();
            QHelpEvent asking(QEvent::ToolTip, place, table->viewport()->mapToGlobal(place));
            QApplication::sendEvent(table->viewport(), &asking);
            const QString seen = QToolTip::text();
            QVERIFY(name == "value" ? seen.isEmpty() : seen.contains(whole));
        }
        QVERIFY(!table->wordWrap()); // it would cut a line at its first break
        // Values and names can be copied, those of options that are not requested, too.
        for (const auto &[row, column, expected] :
             {std::tuple(1, ValueColumn, value), {0, NameColumn, "VALUE"}, {0, CodeColumn, "001"}}) {
            click(row, column);
            key(Qt::Key_C, Qt::ControlModifier);
            QCOMPARE(QApplication::clipboard()->text(), expected);
        }
        for (const char letter : {'v', 'n', 'd'}) {
            const bool byMouse = letter == 'v';
            QContextMenuEvent asking(byMouse ? QContextMenuEvent::Mouse : QContextMenuEvent::Keyboard, place);
            QApplication::sendEvent(byMouse ? table->viewport() : table, &asking);
            QWidget *menu = QApplication::activePopupWidget();
            QVERIFY(menu && (byMouse || table->rect().contains(table->mapFromGlobal(menu->pos()))));
            const QString box = boxOpenedBy([&] { QTest::keyClick(menu, letter); });
            QCOMPARE(QApplication::clipboard()->text(), byMouse ? value : "LONG");
            QCOMPARE(box.contains("LONG"), letter == 'd');
        }
    }

    void noteNamesManagersAndFault()
    {
        root.write("/proc/7/comm", "NetworkManager\n");
        root.write("/proc/8/comm", "dhcpcd\n");
        for (const auto &[name, flags, index, isManaged] :
             {std::tuple("eth0", "0x1003", "1", "true"), // up, and can broadcast
              {"eth1", "0x1003", "2", "false"},
              {"eth2", "0x1002", "3", "true"}, // down
              {"lo", "0x9", "4", "true"}}) {
            root.write(QString("/sys/class/net/%1/flags").arg(name), flags);
            root.write(QString("/sys/class/net/%1/ifindex").arg(name), index);
            root.write(QString("/run/NetworkManager/devices/%1").arg(index), QByteArray("managed=") + isManaged);
        }
        open({"a 1"});
        root.installRecorder("/usr/sbin/kiro-dhclient-edit", "echo 'line 5: <b>' >&2; echo more >&2; exit 1");
        window->examineMachine();
        const QString note =
            "NetworkManager manages eth0 with a DHCP client of its own: choices have no effect there.\n"
            "dhcpcd is running: choices have no effect on the interfaces that it manages.\n"
            "Nothing is applied until this is corrected: line 5: <b>";
        QVERIFY(eventually([&] { return shows(note); }));
    }

    /// The last one: a registry that could not be read is not read again.
    void unknownChoicesAreNotApplied()
    {
        root.write("/var/lib/vorkan/registry.db", QByteArray(2000, '#'));
        open({"a 1"});
        QVERIFY(
            shows("The stored choices cannot be read (file is not a database). What the window shows may differ from "
                  "them; nothing is stored or applied until the program is started again."));
        click(0, RequestedColumn);
        window->apply();
        QCOMPARE(root.recorded(1), QStringList("dhclient|-1"));
    }

private:
    bool shows(const QString &note) const
    {
        const QList<QLabel *> labels = window->findChildren<QLabel *>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel *label) {
            return label->text() == note && label->textFormat() == Qt::PlainText && label->isVisible();
        });
    }

    /// The text of the box that opens while `act` runs, and of each line the first word and what is bold; empty without
    /// a box. Each opens over the middle of the window, with its title and icon.
    QString boxOpenedBy(const std::function<void()> &act)
    {
        QString texts;
        QTimer closer;
        closer.callOnTimeout([&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box)
                return;
            QApplication::processEvents(); // which place it
            box->accept();
            texts = box->text();
            for (const QString &line : box->informativeText().split("<br />"))
                texts += '|' + line.section(' ', 0, 0) + ' ' + line.section("<b>", 1, 1).section("</b>", 0, 0);
            QCOMPARE(QString("<i>" + box->accessibleName() + "</i>"), box->text());
            QVERIFY(box->windowTitle() == "DHCP Option Manager" && !box->windowIcon().isNull());
            QCOMPARE(box->icon(), QMessageBox::Information);
            QCOMPARE(box->windowHandle()->transientParent(), window->windowHandle());
            QVERIFY((box->geometry().center() - window->geometry().center()).manhattanLength() < 20);
        });
        closer.start(10);
        act();
        QApplication::processEvents();
        QApplication::setActiveWindow(window.get()); // again, where nobody manages windows
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
