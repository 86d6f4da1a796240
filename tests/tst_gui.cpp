#include "trial.h"
#include "vapplyokcancelpanel.h"
#include "vcheckbox.h"
#include "vgui.h"
#include "vorkanclient.h"
#include "vwidgetcontainer.h"

#include <QApplication>
#include <QTest>

class TestGui : public QObject
{
    Q_OBJECT

private slots:
    void boundCheckBoxes()
    {
        m_root.presetRegistry(QStringLiteral("('p/on', 10, '1'), ('p/off', 10, '0'), ('p/odd', 10, 'x')"));
        QWidget window;
        VWidgetContainer container(&window);
        VGui page(QStringLiteral("p"), &window);
        QHash<QString, VCheckBox *> boxes;
        for (const auto *name : {"on", "off", "odd", "missing"}) {
            const QString key = QStringLiteral("p/") + QString::fromUtf8(name);
            boxes.insert(key, new VCheckBox(&page, key));
            container.addWidget(boxes.value(key));
            QCOMPARE(boxes.value(key)->fieldWidget()->isChecked(), qstrcmp(name, "on") == 0);
        }
        QVERIFY2(window.findChildren<QAbstractButton *>().isEmpty(), "the boxes must not appear in the window");

        QVERIFY(container.validate()); // stores "x" as "0" and makes "missing"
        QCOMPARE(m_root.sql(QStringLiteral("SELECT * FROM entry ORDER BY key")),
                 QStringList({QStringLiteral("p/missing|10|0"), QStringLiteral("p/odd|10|0"),
                              QStringLiteral("p/off|10|0"), QStringLiteral("p/on|10|1")}));

        m_root.sql(QStringLiteral("CREATE TRIGGER refuse BEFORE UPDATE ON entry"
                                  " BEGIN SELECT RAISE(ABORT, 'written'); END"));
        QVERIFY2(container.validate(), "nothing differs, so nothing is written");
        boxes.value(QStringLiteral("p/off"))->fieldWidget()->setChecked(true);
        const CapturedErrors errors;
        QVERIFY(!container.validate());
        QVERIFY(errors.text().endsWith(QStringLiteral("registry.db: written\n")));
        m_root.sql(QStringLiteral("DROP TRIGGER refuse"));
        QVERIFY(container.validate()); // the change was still pending
        QCOMPARE(m_root.sql(QStringLiteral("SELECT value FROM entry WHERE key = 'p/off'")),
                 QStringList(QStringLiteral("1")));
    }

    void panelButtons()
    {
        const VApplyOkCancelPanel panel(VApplyOkCancelPanel::Ok, nullptr);
        QVERIFY(panel.okButton() && !panel.applyButton() && !panel.cancelButton());
    }

private:
    TrialRoot m_root;
};

QTEST_MAIN(TestGui)
#include "tst_gui.moc"
