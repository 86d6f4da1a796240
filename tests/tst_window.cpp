// The window around the option table: details, buttons, keyboard, menu and notes.

#include "vapplyokcancelpanel.h"
#include "windowtest.h"

#include <QLabel>
#include <QMessageBox>
#include <QTimer>
#include <QToolTip>

#include <functional>

class TestWindow : public WindowTest
{
    Q_OBJECT

private slots:
    void init() { forgetChoicesAndValues(); }

    void tabReachesTheButtonsInTheirOrder()
    {
        open({{"a", 1}, {"b", 2}});
        QVERIFY(hasLabel("DHCP Option Manager"));
        const auto *panel = window->findChild<VApplyOkCancelPanel *>();
        const QList<QWidget *> inOrder = {window->findChild<QComboBox *>(), panel->applyButton(), panel->okButton(),
                                          panel->cancelButton()};
        for (const QWidget *next : inOrder) {
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

    void typingAndTheFindFieldGoToTheRow()
    {
        open({{"start", 12}, {"print", 120}, {"proxy", 130}, {"quiet", 1, Hidden}});
        type("130");
        QCOMPARE(currentName(), "proxy");
        table->setCurrentCell(0, RequestedColumn);
        press(Qt::Key_F, Qt::ControlModifier);
        type("ROX");
        QCOMPARE(currentName(), "proxy");
        press(Qt::Key_A, Qt::ControlModifier);
        type("r"); // in all three
        press(Qt::Key_Down);
        QCOMPARE(currentName(), "start");
        press(Qt::Key_Up);
        QCOMPARE(currentName(), "proxy");
        press(Qt::Key_A, Qt::ControlModifier);
        type("quiet"); // not in this view
        QCOMPARE(QToolTip::text(), "QUIET is listed under \"Show All Options\".");
        press(Qt::Key_Escape);
        QCOMPARE(currentName(), "proxy");
        QCOMPARE(QApplication::focusWidget(), table);
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

    void noteOfAFaultInTheConfiguration()
    {
        open({{"custom", 1}});
        root.program("/usr/sbin/kiro-dhclient-edit", "echo 'line 5: <b>' >&2; echo more >&2; exit 1");
        window->examineMachine();
        QTRY_VERIFY(hasLabel("Nothing is applied until this is corrected: line 5: <b>"));
    }

    /// The last one: a registry that could not be read is not read again.
    void unknownChoicesAreNotApplied()
    {
        root.write("/var/lib/vorkan/registry.db", QByteArray(2000, '#'));
        open({{"custom", 1}});
        QVERIFY(hasLabel("The stored choices cannot be read (file is not a database). What the window shows may differ "
                         "from them; nothing is stored or applied until the program is started again."));
        click("custom", RequestedColumn);
        window->apply();
        QCOMPARE(root.calls(1), QStringList("dhclient '-1'"));
    }

private:
    bool hasLabel(const QString &text) const
    {
        const QList<QLabel *> labels = window->findChildren<QLabel *>();
        return std::any_of(labels.begin(), labels.end(),
                           [&](const QLabel *label) { return label->text() == text && label->isVisible(); });
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
