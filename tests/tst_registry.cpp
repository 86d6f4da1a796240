#include "registrystore.h"
#include "trial.h"
#include "vorkan.h"

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
        QFile::remove(file);
        root->store("entry", VorkanBoolType, "restored"); // in another file
        QCOMPARE(store->find("entry")->value, "restored");
    }

    void failedCommitKeepsTheChanges()
    {
        root->store("old", VorkanBoolType, "1");
        root->registry().exec("CREATE TRIGGER refuse BEFORE UPDATE ON entry BEGIN SELECT RAISE(ABORT, 'no'); END");
        store->create("new", VorkanBoolType);
        store->set("new", "1");
        store->set("old", "0");
        QVERIFY(!store->commit());
        QCOMPARE(root->stored("new"), "none"); // all of them or none
        root->registry().exec("DROP TRIGGER refuse");
        QVERIFY(store->commit());
        QCOMPARE(root->stored("new"), "1");
        QCOMPARE(root->stored("old"), "0");
    }

private:
    std::unique_ptr<TrialRoot> root;
    QString file;
    std::unique_ptr<RegistryStore> store;
};

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
