#include "registrystore.h"
#include "trial.h"
#include "vorkan.h"

#include <sys/stat.h>

#include <future>

class TestRegistry : public QObject
{
    Q_OBJECT

private slots:
    void pendingUntilCommitted()
    {
        StoreRoot root;
        QVERIFY(!root.store.find("a") && !root.store.set("a", "x") && root.store.commit());
        root.store.create("a", VorkanBoolType);
        QVERIFY(root.store.set("a", "é"));
        QVERIFY2(!root.file.exists(), "neither reading nor a pending change makes the file");
        const mode_t previous = ::umask(077);
        QVERIFY(root.store.commit());
        ::umask(previous);
        QVERIFY(root.file.permissions().testFlag(QFile::ReadOther));
        QVERIFY(!QFile::exists(root.file.fileName() + "-journal"));

        root.sql("CREATE TRIGGER refuse BEFORE UPDATE ON entry BEGIN SELECT RAISE(ABORT, 'written'); END");
        root.store.create("a", VorkanNumberType);
        root.store.create("0", VorkanNumberType);
        QCOMPARE(root.store.find("a")->value, "é");
        QVERIFY2(root.store.set("0", "") && root.store.set("a", "é"), "an equal value is written too");
        const CapturedErrors errors;
        QVERIFY(!root.store.commit() && !root.store.commit());
        QCOMPARE(errors.text(), "Cannot write registry " + root.file.fileName() + ": written\n");
        root.sql("DROP TRIGGER refuse");
        QCOMPARE(root.sql("SELECT * FROM entry"), QStringList("a|10|é"));
        QVERIFY2(root.store.commit(), "the changes are still pending");
        QCOMPARE(root.sql("SELECT * FROM entry ORDER BY key"), QStringList({"0|7|", "a|10|é"}));
        root.sql("UPDATE entry SET value = 'ü'");
        QCOMPARE(root.store.find("a")->value, "ü");
    }

    /// A value that was set wins over one that another process made meanwhile, an empty one that was created does not.
    void otherWriters()
    {
        StoreRoot root;
        root.store.create("set", VorkanNumberType);
        root.store.set("set", "1");
        root.store.create("bare", VorkanNumberType);
        root.sql("INSERT INTO entry VALUES('set', 7, '2'), ('bare', 7, '2')");
        SQLite::Database other(root.file.fileName().toStdString(), SQLite::OPEN_READWRITE);
        other.exec("BEGIN IMMEDIATE");
        const auto release = std::async(std::launch::async, [&] {
            QTest::qSleep(300);
            other.exec("COMMIT");
        });
        QVERIFY(root.store.commit());
        QCOMPARE(root.sql("SELECT value FROM entry ORDER BY key"), QStringList({"2", "1"}));
        root.store.create("new", VorkanBoolType);
        root.file.remove(); // while it is open
        QVERIFY(root.store.commit());
        QCOMPARE(root.sql("SELECT key FROM entry"), QStringList("new"));
        root.file.remove();
        root.write("/var/lib/vorkan/registry.db", ""); // an empty registry
        QVERIFY(!root.store.find("new") && !root.store.find("set") && root.store.isReadable());
    }

private:
    struct StoreRoot : TrialRoot
    {
        QFile file{path("/var/lib/vorkan/registry.db")};
        RegistryStore store{file.fileName().toStdString()};
    };
};

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
