#include "registrystore.h"
#include "trial.h"
#include "vorkan.h"

#include <sys/stat.h>

#include <future>

class TestRegistry : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        root = std::make_unique<TrialRoot>();
        file = root->path("/var/lib/vorkan/registry.db");
        store = std::make_unique<RegistryStore>(file.toStdString());
    }

    void changesArePendingUntilTheyAreCommitted()
    {
        QVERIFY(!store->set("entry", "x")); // there is none
        store->create("entry", VorkanBoolType);
        QVERIFY(store->set("entry", "é"));
        QCOMPARE(store->find("entry")->value, "é");
        QVERIFY(!QFile::exists(file));
        QVERIFY(store->commit());
        QCOMPARE(root->stored("entry"), "é");
        root->store("entry", VorkanBoolType, "other");
        QCOMPARE(store->find("entry")->value, "other");
    }

    void everybodyMayReadTheRegistry()
    {
        const mode_t previous = ::umask(077);
        store->create("entry", VorkanBoolType);
        QVERIFY(store->commit());
        ::umask(previous);
        QVERIFY(QFile::permissions(file).testFlag(QFile::ReadOther));
    }

    void failedCommitKeepsTheChangesAndIsReportedOnce()
    {
        root->store("old", VorkanBoolType, "1");
        root->registry().exec("CREATE TRIGGER refuse BEFORE UPDATE ON entry BEGIN SELECT RAISE(ABORT, 'no'); END");
        store->create("new", VorkanBoolType);
        store->set("new", "1");
        store->set("old", "0");
        const CapturedErrors errors;
        QVERIFY(!store->commit());
        QVERIFY(!store->commit());
        QCOMPARE(errors.text(), "Cannot write registry " + file + ": no\n");
        QCOMPARE(root->stored("new"), "none"); // all of them or none
        root->registry().exec("DROP TRIGGER refuse");
        QVERIFY(store->commit());
        QCOMPARE(root->stored("new"), "1");
        QCOMPARE(root->stored("old"), "0");
    }

    /// A value that was set wins over one that another process made meanwhile, an empty one that was created does not.
    void commitWaitsForAnotherProcessAndKeepsItsEntries()
    {
        store->create("set", VorkanNumberType);
        store->set("set", "1");
        store->create("created", VorkanNumberType);
        SQLite::Database other = root->registry();
        other.exec("BEGIN IMMEDIATE; INSERT INTO entry VALUES('set', 7, '2'), ('created', 7, '2')");
        const auto release = std::async(std::launch::async, [&] {
            QTest::qSleep(300);
            other.exec("COMMIT");
        });
        QVERIFY(store->commit());
        QCOMPARE(root->stored("set"), "1");
        QCOMPARE(root->stored("created"), "2");
    }

private:
    std::unique_ptr<TrialRoot> root;
    QString file;
    std::unique_ptr<RegistryStore> store;
};

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
