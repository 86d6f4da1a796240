// The window around the option table: details, buttons, keyboard and mouse, looks, and what a screen reader learns.

#include "configurationpageheader.h"
#include "windowtrial.h"

#include <QAccessible>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDir>
#include <QHelpEvent>
#include <QMessageBox>
#include <QProcess>
#include <QScreen>
#include <QTimer>
#include <QToolTip>
#include <QWindow>

#include <cmath>
#include <functional>

namespace {

/// What `see` makes of each details box that opens while `act` runs.
QString boxOpenedBy(const std::function<void()> &act, const std::function<QString(QMessageBox *)> &see)
{
    QString seen;
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            seen += see(box);
            box->accept();
        }
    });
    closer.start(10);
    act();
    QApplication::processEvents();
    return seen;
}

/// The box's title, and of each of its lines the first word and what is bold.
QString textsOf(QMessageBox *box)
{
    QString texts = box->text();
    for (const QString &line : box->informativeText().split("<br />"))
        texts += '|' + line.section(' ', 0, 0) + ' ' + line.section("<b>", 1, 1).section("</b>", 0, 0);
    return texts;
}

/// The value cell as it is on the screen, without its frame.
QImage seen(const WindowTrial &trial, const QString &name)
{
    QApplication::processEvents();
    const QRect cell = trial.table->visualItemRect(trial.cell(name, ValueColumn)).adjusted(2, 2, -2, -2);
    const QPoint corner = trial.table->viewport()->mapTo(trial.window.get(), cell.topLeft());
    QScreen *screen = trial.window->screen();
    return screen->grabWindow(trial.window->winId(), corner.x(), corner.y(), cell.width(), cell.height()).toImage();
}

/// Of two greys or tints, as in the Web Content Accessibility Guidelines 2.
qreal contrast(const QColor &one, const QColor &other)
{
    const auto luminance = [](const QColor &color) {
        const auto linear = [](qreal value) { return std::pow((value + 0.055) / 1.055, 2.4); };
        return 0.05 + 0.21 * linear(color.redF()) + 0.72 * linear(color.greenF()) + 0.07 * linear(color.blueF());
    };
    return qMax(luminance(one), luminance(other)) / qMin(luminance(one), luminance(other));
}

QString spokenName(QObject *object)
{
    return QAccessible::queryAccessibleInterface(object)->text(QAccessible::Name);
}

} // namespace

class TestWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        root.write("/usr/share/pixmaps/kiro-dhcp.png", "");
        QVERIFY(QImage(48, 48, QImage::Format_RGB32).save(root.path("/usr/share/pixmaps/kiro-dhcp.png")));
    }

    /// The program itself shows it: the minimal platform can save what would be on a screen.
    void shown()
    {
        QProcess program;
        program.setWorkingDirectory(root.path("/"));
        program.start("env", {"QT_QPA_PLATFORM=minimal", "QT_DEBUG_BACKINGSTORE=1", PROGRAM_PATH});
        QVERIFY(eventually([&] { return QFile::exists(root.path("/output0000.png")); }));
        program.kill();
        program.waitForFinished();
    }

    void layout()
    {
        QList<WindowTrial::Definition> definitions;
        for (int i = 0; i < 7; ++i)
            definitions << WindowTrial::Definition{QString::number(i), i + 1, Custom};
        WindowTrial trial(root, definitions);
        trial.window->show(); // in a size of its own
        QVERIFY(trial.table->viewport()->rect().contains(trial.table->visualItemRect(trial.cell("6", 0))));
        QCOMPARE(trial.window->windowTitle(), QString("DHCP Option Manager"));
        QVERIFY(!trial.window->windowIcon().isNull());
        auto *header = trial.window->findChild<ConfigurationPageHeader *>();
        const QList<QLabel *> labels = header->findChildren<QLabel *>();
        QVERIFY(labels.at(0)->isVisible() && !labels.at(0)->pixmap(Qt::ReturnByValue).isNull());
        QCOMPARE(labels.at(2)->text(), trial.window->windowTitle());
        const QHeaderView *columns = trial.table->horizontalHeader();
        QVERIFY(!trial.table->verticalHeader()->isVisible());
        QVERIFY(columns->height() >= 2 * columns->fontMetrics().height());
        // The Tab key reaches everything in the order of the layout, and leaves the table again.
        trial.show();
        const QList<QWidget *> row = {trial.selector, trial.panel->applyButton(), trial.panel->okButton(),
                                      trial.panel->cancelButton()};
        const auto position = [&](QWidget *widget) { return widget->mapTo(trial.window.get(), QPoint(0, 0)); };
        for (int i = 0; i < row.count(); ++i) {
            trial.key(Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), row.at(i));
            QVERIFY(i == 0 || position(row.at(i)).x() >= position(row.at(i - 1)).x() + row.at(i - 1)->width());
        }
        QVERIFY(position(row.at(0)).x() < 50 && position(row.at(1)).x() > 2 * row.at(0)->width()); // the stretch
        QVERIFY(position(header).y() < position(trial.table).y());
        QVERIFY(position(trial.table).y() < position(trial.selector).y());
        QVERIFY(trial.panel->minimumSizeHint().width()
                < trial.panel->sizeHint().width() - 20); // the selector gives way
        QCOMPARE(spokenName(trial.table), QString("DHCP options"));
        const auto purpose = QAccessible::queryAccessibleInterface(trial.selector)->relations(QAccessible::Label);
        QCOMPARE(spokenName(purpose.value(0).first->object()), QString("Options to show"));
    }

    /// In place of a directory, a file takes even root's right to write below it.
    void notes()
    {
        const auto note = [this] {
            const WindowTrial trial(root, {});
            auto *label = trial.window->findChild<ConfigurationPageHeader *>()->findChildren<QLabel *>().at(1);
            return label->isVisibleTo(trial.window.get()) ? label->text() : QString();
        };
        QCOMPARE(note(), QString());
        root.write("/etc/dhcp", "");
        QVERIFY(note().contains("choices are stored but not applied"));
        QDir().rename(root.path("/var/lib/vorkan"), root.path("/aside"));
        root.write("/var/lib/vorkan", "");
        QVERIFY(note().contains("choices are neither stored nor applied"));
        root.remove("/etc/dhcp");
        QVERIFY(note().contains("choices are applied to the DHCP client but not stored"));
        root.remove("/var/lib/vorkan");
        QDir().rename(root.path("/aside"), root.path("/var/lib/vorkan"));
    }

    void emptyView()
    {
        WindowTrial trial(root, {{"empty", 3, Predefined}});
        trial.show();
        const auto *hint = trial.table->viewport()->findChild<QLabel *>();
        QVERIFY(hint->isVisible() && hint->text().contains("Choose another"));
        QVERIFY(trial.table->viewport()->rect().contains(hint->geometry()));
        trial.selector->setCurrentIndex(ShowCommon);
        QVERIFY(!hint->isVisible());
        WindowTrial none(root, {}, true);
        QVERIFY(none.table->viewport()->findChild<QLabel *>()->text().contains("No option definitions"));
        none.window->apply();
        QCOMPARE(none.recorded(1), QStringList("dhclient|-1"));
    }

    void details_data()
    {
        QTest::addColumn<QByteArray>("more");
        QTest::addColumn<quint32>("applied");
        QTest::addColumn<quint32>("shown");
        QTest::addColumn<QString>("expected");
        // clang-format off
        QTest::newRow("all") << Custom + "<windows-name>W</windows-name><windows-type>Byte</windows-type><description>D"
                                         "</description><example>E</example><standard-option>yes</standard-option>"
            << 224u << 210u << "Standard 250|Last 224|Name: I|Windows W|Windows Byte|Linux i|Linux text|Description: D"
                               "|Example: E|Standard Yes";
        QTest::newRow("custom") << Custom << 250u << 210u
            << "Standard 250|Name: I|Windows Unknown|Linux i|Linux text|Standard Ostrel Extension";
        QTest::newRow("known") << Predefined + Off << 224u << 250u
            << "Fixed 250|Name: I|Windows Unknown|Linux i|Standard Ostrel Extension";
        // clang-format on
    }

    void details()
    {
        QFETCH(QByteArray, more);
        QFETCH(QString, expected);
        QFETCH(quint32, applied);
        QFETCH(quint32, shown);
        // Of equal codes the first in the list is described, also for the other one's row.
        WindowTrial trial(root, {{"i", 250, more}, {"other", int(shown), more}});
        trial.options.at(0)->appliedCode = applied;
        trial.selector->setCurrentIndex(ShowAll);
        trial.show();
        QVERIFY(shown == 250 || trial.typeCode("i", QString::number(shown)));
        const QString whole = QString("<i>Details on DHCP Option %1 -- I:</i>|").arg(shown) + expected + "| ";
        for (int row = 0; row < 2; ++row) {
            for (int column = 1; column < 5; ++column)
                QCOMPARE(boxOpenedBy([&] { trial.click(row, column); }, textsOf), column == 3 ? whole : QString());
        }
        for (const int key : {Qt::Key_Return, Qt::Key_F1, Qt::Key_Enter, Qt::Key_Space}) {
            trial.table->setCurrentCell(1, InfoColumn);
            const Qt::KeyboardModifier modifier = key == Qt::Key_Enter ? Qt::KeypadModifier : Qt::NoModifier;
            QCOMPARE(boxOpenedBy([&] { trial.key(key, modifier); }, textsOf), whole);
            QVERIFY(!trial.table->item(1, InfoColumn)->isSelected());
        }
    }

    /// The box belongs to the window. And F1 is for the row that was clicked, also on a disabled cell.
    void detailsOfClicked()
    {
        WindowTrial trial(root, {{"c-1", 1, Custom}, {"c-2", 2, Custom + Off}});
        trial.show();
        trial.click(1, NameColumn);
        QVERIFY(boxOpenedBy([&] { trial.key(Qt::Key_Return); }, textsOf).isEmpty());
        const QString seen = boxOpenedBy(
            [&] { trial.key(Qt::Key_F1); },
            [&](QMessageBox *box) {
                const QPoint distance = box->geometry().center() - trial.window->geometry().center();
                const bool isBelow = box->windowHandle()->transientParent() == trial.window->windowHandle();
                return QStringList({box->windowTitle(), isBelow && distance.manhattanLength() < 20 ? "above it" : "",
                                    box->windowIcon().isNull() ? "" : "icon", spokenName(box)})
                    .join('|');
            });
        QCOMPARE(seen, QString("DHCP Option Manager|above it|icon|Details on DHCP Option 2 -- C-2:"));
        trial.key(Qt::Key_Space);
        QCOMPARE(trial.cell("c-2", 0)->checkState(), Qt::Checked);
    }

    void buttons()
    {
        WindowTrial trial(root, {{"button", 200, Custom}});
        trial.show();
        const auto runUntil = [&](const std::function<void()> &end) {
            trial.tick("button");
            QTimer::singleShot(0, trial.window.get(), end);
            QCOMPARE(QApplication::exec(), 0);
        };
        runUntil([&] { trial.window->close(); });
        trial.window->show();
        runUntil([&] { trial.panel->cancelButton()->click(); });
        QCOMPARE(root.recorded(), QStringList());
        // By the time the tool runs, the requested state is in the registry, and the cursor says "wait".
        root.installRecorder("/usr/sbin/kiro-dhclient-edit",
                             "[ \"$(sqlite3 \"$KIRO_DHCP_MGR_ROOT/var/lib/vorkan/registry.db\""
                             " \"SELECT value FROM entry WHERE key = 'root/DHCP/Req_button'\")\" = 0 ] || exit");
        trial.options.at(0)->installEventFilter(this);
        runUntil([&] { trial.panel->okButton()->click(); });
        trial.panel->applyButton()->click(); // of what has been applied, nothing is left
        QCOMPARE(trial.recorded(3),
                 QStringList({"kiro-dhclient-edit|--del-new-option|button 200 text|--del-request|button", "dhclient|-1",
                              "dhclient|-1"}));
        QCOMPARE(cursorAtTool, Qt::WaitCursor);
        QVERIFY(!QApplication::overrideCursor());
    }

    /// A button's letter works while a code is being typed, and takes the code along.
    void applyWhileEditing()
    {
        WindowTrial trial(root, {{"typing", 200, Custom}});
        trial.show();
        trial.table->setCurrentCell(0, CodeColumn);
        for (const int key : {Qt::Key_2, Qt::Key_4, Qt::Key_0})
            trial.key(key);
        trial.key(Qt::Key_A, Qt::AltModifier);
        QVERIFY(trial.recorded(2).at(0).contains("--add-new-option|typing 240 text"));
    }

    /// The keyboard always has a cell to start from, and never one that is not shown.
    void keyboardCell()
    {
        WindowTrial trial(root, {{"fixed", 1, Custom + classOf("always-on")}, {"known", 2, Predefined}});
        trial.show();
        QVERIFY(trial.table->currentRow() == 0 && trial.table->currentColumn() == 1); // the first cell is disabled
        trial.table->changeViewMode(ShowAll);
        trial.table->setCurrentCell(1, RequestedColumn);
        trial.table->changeViewMode(ShowCustom);
        QVERIFY(trial.table->currentRow() == 0 && trial.table->currentColumn() == 1);
        for (const Qt::SortOrder order : {Qt::DescendingOrder, Qt::AscendingOrder}) {
            trial.key(Qt::Key_S, Qt::ControlModifier);
            QCOMPARE(trial.table->horizontalHeader()->sortIndicatorSection(), 1);
            QCOMPARE(trial.table->horizontalHeader()->sortIndicatorOrder(), order);
        }
    }

    /// What is typed in the table, or after "/" in the field of Ctrl+F, and the row found. "." lets time pass.
    void find()
    {
        WindowTrial trial(root, {{"start", 100, Custom},
                                 {"asset", 1, Custom + Off},
                                 {"print", 120, Custom},
                                 {"proof", 12, Custom + Hidden},
                                 {"proxy", 121, Custom + Off}});
        trial.show();
        trial.cell("asset", NameColumn)->setText("Inventory");
        trial.table->sortByColumn(KeyColumn, Qt::DescendingOrder);
        trial.key(Qt::Key_F, Qt::ControlModifier);
        auto *field = trial.table->findChild<QLineEdit *>(QString(), Qt::FindDirectChildrenOnly);
        trial.table->setFocus();
        for (const QByteArray line :
             {"p proxy",    "P proxy",      "pr proxy",        "pri print", "pp print",   "ppp proxy",
              "p.p print",  "pri.i asset",  "x start",         "1 asset",   "12 proxy",   "120 print",
              "0120 print", "/set asset",   "/INV asset",      "/21 start", "/120 print", "/001 asset",
              "/p\r print", "/p\r\r proxy", "/set\x1b.p proxy"}) {
            trial.table->setCurrentCell(trial.row("start"), RequestedColumn);
            QApplication::setKeyboardInputInterval(0);
            for (const char key : line.left(line.indexOf(' '))) {
                if (key == '/')
                    trial.key(Qt::Key_F, Qt::ControlModifier);
                else if (key != '.')
                    QTest::keyClick(QApplication::focusWidget(), key);
                QApplication::setKeyboardInputInterval(key == '.' ? 0 : 1000000);
            }
            const QString found = trial.table->item(trial.table->currentRow(), KeyColumn)->text();
            QCOMPARE(line.left(line.indexOf(' ') + 1) + found, QString(line));
            QCOMPARE(field->isVisible(), line.startsWith('/') && !line.contains('\x1b'));
            if (field->isVisible()) {
                QCOMPARE(field->palette().color(QPalette::Base) == QPalette().color(QPalette::Base),
                         !line.startsWith("/21"));
                QCOMPARE(field->geometry().right(), trial.table->viewport()->geometry().right() - 1);
            }
            trial.table->setFocus();
            QVERIFY(!field->isVisible());
        }
    }

    /// Of rows that are not requested, too.
    void copying()
    {
        root.setValue("second", "x=received");
        WindowTrial trial(root, {{"first", 1, Custom}, {"second", 2, Custom + Off}});
        trial.show();
        const auto copied = [] { return QApplication::clipboard()->text(); };
        trial.click(1, ValueColumn);
        trial.key(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(copied(), QString("received"));
        trial.table->setCurrentCell(0, NameColumn);
        trial.key(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(copied(), QString("First"));
        const char *expected[] = {"received", "Second", "Second"};
        for (int action = 0; action < 3; ++action) {
            const QPoint place = trial.table->visualItemRect(trial.cell("second", ValueColumn)).center();
            QContextMenuEvent asking(action == 0 ? QContextMenuEvent::Mouse : QContextMenuEvent::Keyboard, place);
            QApplication::sendEvent(action == 0 ? trial.table->viewport() : trial.table, &asking);
            QWidget *menu = QApplication::activePopupWidget();
            QVERIFY(menu);
            const QString box = boxOpenedBy([&] { QTest::keyClick(menu, "vnd"[action]); }, textsOf);
            QCOMPARE(copied(), QString(expected[action]));
            QCOMPARE(box.contains("Second"), action == 2);
        }
    }

    /// Light and dark, the text of an option that is not requested can be read, in the current row too.
    void readable()
    {
        WindowTrial trial(root, {{"grey", 1, Custom + Off}, {"black", 2, Custom}});
        trial.show();
        QFont large = trial.table->font();
        large.setPixelSize(40); // strokes wider than a pixel
        trial.table->setFont(large);
        for (const auto &[text, base] : {std::pair(Qt::black, Qt::white), {Qt::white, Qt::black}}) {
            QPalette palette(base);
            palette.setColor(QPalette::Text, text);
            palette.setColor(QPalette::Base, base);
            palette.setColor(QPalette::Disabled, QPalette::Text, base);
            trial.table->setPalette(palette);
            for (const int current : {0, 1}) {
                trial.table->setCurrentCell(current, RequestedColumn);
                const QImage cell = seen(trial, "grey");
                QCOMPARE(cell.pixelColor(0, 0) != QColor(base), current == 0); // the current row is tinted
                qreal best = 1;
                for (int i = 0; i < cell.width() * cell.height(); ++i)
                    best = qMax(best, contrast(cell.pixel(i % cell.width(), i / cell.width()), cell.pixel(0, 0)));
                QVERIFY2(best > 4.5 && best < 12, qPrintable(QString::number(best)));
            }
        }
    }

    /// Numbers keep their order in a layout from right to left. What is cut, and that only, is whole in a tooltip.
    void values()
    {
        root.setValue("value", "x='1 888888'");
        WindowTrial trial(root, {{"value", 1, Custom}, {"long", 2, Custom}});
        trial.window->setLayoutDirection(Qt::RightToLeft);
        trial.show();
        const QImage cell = seen(trial, "value");
        const int width = trial.table->fontMetrics().horizontalAdvance("1 888888");
        const QImage text = cell.copy(cell.width() - width, 0, width, cell.height());
        const QImage thirds = text.scaled(3, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY(qGray(thirds.pixel(0, 0)) > qGray(thirds.pixel(2, 0)));
        const auto toolTip = [&](const QString &name) {
            const QPoint place = trial.table->visualItemRect(trial.cell(name, ValueColumn)).center();
            QHelpEvent asking(QEvent::ToolTip, place, trial.table->viewport()->mapToGlobal(place));
            QApplication::sendEvent(trial.table->viewport(), &asking);
            return QToolTip::text();
        };
        QVERIFY(toolTip("value").isEmpty());
        root.setValue("long", "x='ldaps://<b>" + QByteArray(5000, 'l') + "'");
        trial.table->refreshValues();
        QVERIFY(toolTip("long").contains("ldaps://&lt;b&gt;lll"));
        QVERIFY(QToolTip::text().size() < 2000);
        QVERIFY(!trial.table->wordWrap()); // it would cut a line at its first break
    }

    /// The cells as a screen reader asks for them: name and description.
    void accessibleCells()
    {
        WindowTrial trial(root, {{"spoken", 200, Custom}, {"fixed", 201, Predefined + classOf("always-off")}});
        trial.selector->setCurrentIndex(ShowAll);
        auto *table = QAccessible::queryAccessibleInterface(trial.table)->tableInterface();
        QString spoken;
        for (const int index : {0, 1, 4, 5, 7, 8}) {
            QAccessibleInterface *cell = table->cellAt(index / 5, index % 5);
            spoken += cell->text(QAccessible::Name) + '|' + cell->text(QAccessible::Description) + '\n';
        }
        QCOMPARE(spoken, QString("Requested: Spoken|\nDHCP Code: 200|Editable\nCurrent Value: N/A|\n"
                                 "Requested: Never|Disabled\nName: Fixed|Disabled\nInfo: Fixed|\n"));
        QCOMPARE(trial.table->horizontalHeaderItem(ValueColumn)->data(Qt::AccessibleTextRole).toString(),
                 QString("Current Value"));
    }

private:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::ChildAdded && QApplication::overrideCursor())
            cursorAtTool = QApplication::overrideCursor()->shape();
        return false;
    }

    Qt::CursorShape cursorAtTool = Qt::ArrowCursor;
    TrialRoot root;
};

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
