// The window around the option table: details, buttons, keyboard, menu and notes.

#include "configurationpageheader.h"
#include "vapplyokcancelpanel.h"
#include "windowtest.h"

#include <QAccessible>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>
#include <QToolTip>

#include <functional>

class TestWindow : public WindowTest
{
    Q_OBJECT

private slots:
    void partsAreThereAndReachedByTab()
    {
        open({{"a", 1}, {"b", 2}});
        QVERIFY(hasLabel("DHCP Option Manager"));
        QCOMPARE(QAccessible::queryAccessibleInterface(table)->text(QAccessible::Name), "DHCP options");
        QStringList headings;
        for (int column = RequestedColumn; column < KeyColumn; ++column)
            headings << table->horizontalHeaderItem(column)->text();
        QCOMPARE(headings, QStringList({"Requested", "DHCP\nCode", "Name", "Info", "Current\nValue"}));
        auto *selector = window->findChild<QComboBox *>();
        QCOMPARE(selector->currentText(), "Show Custom Options");
        const auto *panel = window->findChild<VApplyOkCancelPanel *>();
        for (QWidget *next :
             {static_cast<QWidget *>(selector), static_cast<QWidget *>(panel->applyButton()),
              static_cast<QWidget *>(panel->okButton()), static_cast<QWidget *>(panel->cancelButton())}) {
            press(Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), next);
        }
    }

    void detailsOfACustomOption()
    {
        open({{"custom", 250,
               "<windows-name>WN</windows-name><windows-type>Byte</windows-type><description>D</description>"
               "<example>E</example><standard-option>yes</standard-option>"}});
        options.first()->appliedCode = 224;
        const QString box = boxOpenedBy([&] { click("custom", InfoColumn); });
        QCOMPARE(box, "<i>Details on DHCP Option 250 -- CUSTOM:</i>\n"
                      "Standard DHCP Code: <b>250</b><br />Last Applied DHCP Code: <b>224</b><br />"
                      "Name: <b>CUSTOM</b><br />Windows DHCP Option Name: <b>WN</b><br />"
                      "Windows DHCP Option Type: <b>Byte</b><br />Linux DHCP Option Name: <b>custom</b><br />"
                      "Linux DHCP Option Type: <b>text</b><br />Description: <b>D</b><br />Example: <b>E</b><br />"
                      "Standard DHCP Option?  <b>Yes<b><br />");
    }

    void detailsOfAnOptionThatTheClientKnows()
    {
        open({{"known", 3, QByteArray(Predefined) + NotRequested}});
        table->changeViewMode(ShowAll);
        const QString box = boxOpenedBy([&] { click("known", InfoColumn); });
        QCOMPARE(box, "<i>Details on DHCP Option 3 -- KNOWN:</i>\n"
                      "Fixed DHCP Code: <b>3</b><br />Name: <b>KNOWN</b><br />"
                      "Windows DHCP Option Type: <b>Unknown</b><br />Linux DHCP Option Name: <b>known</b><br />"
                      "Linux DHCP Option Type: <b>text</b><br />Standard DHCP Option?  <b>Ostrel Extension<b><br />");
    }

    /// Of equal codes the first option in the list is described, for the other one's row too.
    void detailsByCode()
    {
        open({{"first", 250}, {"second", 251}});
        cell("second", CodeColumn)->setText("250");
        QVERIFY(boxOpenedBy([&] { click("second", InfoColumn); }).contains("FIRST"));
    }

    void detailsAreOpenedBy_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<int>("column");
        QTest::addColumn<bool>("opens");
        QTest::newRow("F1") << Qt::Key_F1 << int(NameColumn) << true;
        QTest::newRow("Return on the picture") << Qt::Key_Return << int(InfoColumn) << true;
        QTest::newRow("Space on the picture") << Qt::Key_Space << int(InfoColumn) << true;
        QTest::newRow("Space on the box") << Qt::Key_Space << int(RequestedColumn) << false;
    }

    void detailsAreOpenedBy()
    {
        QFETCH(Qt::Key, key);
        QFETCH(int, column);
        open({{"custom", 1}});
        table->setCurrentCell(0, column);
        QTEST(!boxOpenedBy([&] { press(key); }).isEmpty(), "opens");
    }

    void applyTakesOverACodeThatIsBeingTyped()
    {
        open({{"custom", 200}});
        table->setCurrentCell(0, CodeColumn);
        type("240");
        press(Qt::Key_A, Qt::AltModifier);
        QTRY_COMPARE(root.stored("root/DHCP/Code_custom"), "240");
        QVERIFY(root.calls(2).join('\n').contains("'--add-new-option' 'custom 240 text'"));
        QVERIFY(!QApplication::overrideCursor());
    }

    /// The tool finds the choice in the registry, and the client is started after all tools.
    void okStoresAppliesStartsTheClientAndQuits()
    {
        open({{"first", 1}, {"second", 2}});
        root.program("/usr/sbin/kiro-dhclient-edit",
                     "sqlite3 $KIRO_DHCP_MGR_ROOT/var/lib/vorkan/registry.db"
                     " \"SELECT key, value FROM entry WHERE key = 'root/DHCP/Req_second'\""
                     " >>$KIRO_DHCP_MGR_ROOT/record.log\n");
        click("second", RequestedColumn);
        QTimer::singleShot(0, this, [&] { press(Qt::Key_O, Qt::AltModifier); });
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(root.calls(2), QStringList({"root/DHCP/Req_second|0", "dhclient '-1'"}));
    }

    void cancelQuitsAndAppliesNothing()
    {
        open({{"custom", 1}});
        click("custom", RequestedColumn);
        QTimer::singleShot(0, this, [&] { press(Qt::Key_C, Qt::AltModifier); });
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(root.stored("root/DHCP/Req_custom"), "1");
        QCOMPARE(root.calls(0), QStringList());
    }

    void nameOrCodeThatIsTypedInTheTable_data()
    {
        QTest::addColumn<QByteArray>("typed");
        QTest::addColumn<QString>("found");
        QTest::newRow("start of a name") << QByteArray("pri") << "print";
        QTest::newRow("blank within a name") << QByteArray("top b") << "top box";
        QTest::newRow("same letter again") << QByteArray("pp") << "proxy";
        QTest::newRow("whole code") << QByteArray("12") << "short";
        QTest::newRow("start of a code") << QByteArray("25") << "proxy";
        QTest::newRow("code with a zero") << QByteArray("0120") << "print";
        QTest::newRow("unknown") << QByteArray("x") << "start";
        QTest::newRow("hidden") << QByteArray("q") << "start";
    }

    void nameOrCodeThatIsTypedInTheTable()
    {
        QFETCH(QByteArray, typed);
        openForSearch();
        QApplication::setKeyboardInputInterval(60000); // however slow the machine
        type(typed);
        QTEST(currentName(), "found");
    }

    void findField_data()
    {
        QTest::addColumn<QByteArray>("typed");
        QTest::addColumn<QList<Qt::Key>>("keys");
        QTest::addColumn<QString>("found");
        using Keys = QList<Qt::Key>;
        QTest::newRow("part of a name") << QByteArray("rox") << Keys() << "proxy";
        QTest::newRow("code") << QByteArray("120") << Keys() << "print";
        QTest::newRow("next") << QByteArray("pr") << Keys{Qt::Key_Return} << "proxy";
        QTest::newRow("first after the last") << QByteArray("pr") << Keys{Qt::Key_Down, Qt::Key_Down} << "print";
        QTest::newRow("previous") << QByteArray("pr") << Keys{Qt::Key_Up} << "proxy";
        QTest::newRow("hidden") << QByteArray("quiet") << Keys() << "start";
    }

    void findField()
    {
        QFETCH(QByteArray, typed);
        QFETCH(QList<Qt::Key>, keys);
        openForSearch();
        press(Qt::Key_F, Qt::ControlModifier);
        type(typed);
        for (const Qt::Key key : keys)
            press(key);
        QTEST(currentName(), "found");
        auto *field = table->findChild<QLineEdit *>();
        const bool isMissed = field->palette().color(QPalette::Base) != QPalette().color(QPalette::Base);
        QCOMPARE(isMissed, typed == "quiet");
        QCOMPARE(QToolTip::text(), isMissed ? "QUIET is listed under \"Show All Options\"." : "");
        press(Qt::Key_Escape);
        QVERIFY(!field->isVisible());
        QCOMPARE(QApplication::focusWidget(), table);
    }

    void longValueIsWholeInItsToolTip()
    {
        const QString value = "ldaps://<b>" + QString(200, 'l');
        root.setValue("long", value.toUtf8());
        root.setValue("short", "1");
        open({{"long", 1}, {"short", 2}});
        QCOMPARE(toolTip("short"), "");
        QVERIFY(toolTip("long").contains("ldaps://&lt;b&gt;l"));
        QCOMPARE(toolTip("long").count('l'), value.count('l') + 1); // that of "&lt;" too
    }

    void copies_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("copied");
        QTest::newRow("code") << int(CodeColumn) << "007";
        QTest::newRow("name") << int(NameColumn) << "CUSTOM";
        QTest::newRow("value") << int(ValueColumn) << "1.2.3.4";
    }

    void copies()
    {
        QFETCH(int, column);
        root.setValue("custom", "1.2.3.4");
        open({{"custom", 7}});
        click("custom", column);
        press(Qt::Key_C, Qt::ControlModifier);
        QTEST(QApplication::clipboard()->text(), "copied");
    }

    void menuCopiesTheValueOfARowThatIsNotRequested()
    {
        root.setValue("off", "x");
        open({{"on", 1}, {"off", 2, NotRequested}});
        QContextMenuEvent asking(QContextMenuEvent::Mouse, table->visualItemRect(cell("off", ValueColumn)).center());
        QApplication::sendEvent(table->viewport(), &asking);
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_V);
        QVERIFY(eventually([] { return QApplication::clipboard()->text() == "x"; }));
    }

    void noteOfMissingRights()
    {
        root.write("/etc/dhcp", ""); // in place of a directory, a file takes even root's right to write below it
        open({{"custom", 1}});
        root.remove("/etc/dhcp");
        QVERIFY(hasLabel("Not a directory: choices are stored but not applied."));
    }

    void noteOfManagersAndOfAFault()
    {
        root.write("/proc/7/comm", "NetworkManager\n");
        root.write("/proc/8/comm", "dhcpcd\n");
        addInterface("eth0", 1, "0x1003", "true"); // up, and can broadcast
        addInterface("eth1", 2, "0x1003", "false");
        addInterface("eth2", 3, "0x1002", "true"); // down
        addInterface("lo", 4, "0x9", "true");
        open({{"custom", 1}});
        root.program("/usr/sbin/kiro-dhclient-edit", "echo 'line 5: <b>' >&2; echo more >&2; exit 1");
        window->examineMachine();
        QVERIFY(eventually([&] {
            return hasLabel("NetworkManager manages eth0 with a DHCP client of its own: choices have no effect there.\n"
                            "dhcpcd is running: choices have no effect on the interfaces that it manages.\n"
                            "Nothing is applied until this is corrected: line 5: <b>");
        }));
    }

    /// The last one: a registry that could not be read is not read again.
    void unknownChoicesAreNotApplied()
    {
        root.write("/var/lib/vorkan/registry.db", QByteArray(2000, '#'));
        const CapturedErrors errors;
        open({{"custom", 1}});
        QVERIFY(hasLabel("The stored choices cannot be read (file is not a database). What the window shows may differ "
                         "from them; nothing is stored or applied until the program is started again."));
        click("custom", RequestedColumn);
        window->apply();
        QCOMPARE(root.calls(1), QStringList("dhclient '-1'"));
    }

private:
    void openForSearch()
    {
        open({{"start", 100},
              {"short", 12},
              {"print", 120},
              {"proxy", 252},
              {"top box", 130, NotRequested},
              {"quiet", 140, Hidden}});
        table->setCurrentCell(row("start"), RequestedColumn);
    }

    void addInterface(const QString &name, int index, const QByteArray &flags, const QByteArray &isManaged) const
    {
        root.write("/sys/class/net/" + name + "/flags", flags);
        root.write("/sys/class/net/" + name + "/ifindex", QByteArray::number(index));
        root.write("/run/NetworkManager/devices/" + QString::number(index), "managed=" + isManaged);
    }

    bool hasLabel(const QString &text) const
    {
        const QList<QLabel *> labels = window->findChildren<QLabel *>();
        return std::any_of(labels.begin(), labels.end(),
                           [&](const QLabel *label) { return label->text() == text && label->isVisible(); });
    }

    QString toolTip(const QString &name) const
    {
        const QPoint place = table->visualItemRect(cell(name, ValueColumn)).center();
        QHelpEvent asking(QEvent::ToolTip, place, table->viewport()->mapToGlobal(place));
        QApplication::sendEvent(table->viewport(), &asking);
        return QToolTip::text();
    }

    /// The two texts of the box that opens while `act` runs; empty without one.
    static QString boxOpenedBy(const std::function<void()> &act)
    {
        QString texts;
        QTimer closer;
        closer.callOnTimeout([&] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                texts = box->text() + '\n' + box->informativeText();
                box->accept();
            }
        });
        closer.start(10);
        act();
        QApplication::processEvents();
        return texts;
    }
};

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
