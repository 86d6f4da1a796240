#include "registrystore.h"
#include "trial.h"
#include "vorkan.h"

#include <sys/stat.h>

#include <future>
#include <thread>

using namespace std::chrono_literals;

class TestRegistry : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        root = std::make_unique<TrialRoot>();
        file.setFileName(root->path("/var/lib/vorkan/registry.db"));
        store = std::make_unique<RegistryStore>(file.fileName().toStdString());
    }

    void pendingUntilCommitted()
    {
        QVERIFY(!store->find("a") && !store->set("a", "x"));
        store->create("a", VorkanBoolType);
        QVERIFY(store->set("a", "é"));
        QVERIFY2(!file.exists(), "neither reading nor a pending change makes the file");
        const mode_t previous = ::umask(077);
        QVERIFY(store->commit());
        ::umask(previous);
        QVERIFY(file.permissions().testFlag(QFile::ReadOther) && !QFile::exists(file.fileName() + "-journal"));

        root->sql("CREATE TRIGGER refuse BEFORE UPDATE ON entry BEGIN SELECT RAISE(ABORT, 'written'); END");
        store->create("a", VorkanNumberType);
        store->create("0", VorkanNumberType);
        QCOMPARE(store->find("a")->value, "é");
        QVERIFY2(store->set("a", "é"), "an equal value is written too");
        const CapturedErrors errors;
        QVERIFY(!store->commit() && !store->commit());
        QCOMPARE(errors.text(), "Cannot write registry " + file.fileName() + ": written\n");
        root->sql("DROP TRIGGER refuse");
        QCOMPARE(root->sql("SELECT * FROM entry"), QStringList("a|10|é"));
        QVERIFY2(store->commit(), "the changes are still pending");
        QCOMPARE(root->sql("SELECT * FROM entry ORDER BY key"), QStringList({"0|7|", "a|10|é"}));
        root->sql("UPDATE entry SET value = 'ü'");
        QCOMPARE(store->find("a")->value, "ü");
    }

    /// A value that was set wins over one that another process made meanwhile, an empty one that was created does not.
    void otherWriters()
    {
        store->create("set", VorkanNumberType);
        store->set("set", "1");
        store->create("bare", VorkanNumberType);
        root->presetRegistry("('set', 7, '2'), ('bare', 7, '2')");
        Sqlite::Database other(file.fileName().toStdString(), 0ms);
        other.execute("BEGIN IMMEDIATE");
        const auto release = std::async(std::launch::async, [&] {
            std::this_thread::sleep_for(300ms);
            other.execute("COMMIT");
        });
        QVERIFY(store->commit());
        QCOMPARE(root->sql("SELECT value FROM entry ORDER BY key"), QStringList({"2", "1"}));
        store->create("new", VorkanBoolType);
        file.remove(); // while it is open
        QVERIFY(store->commit());
        QCOMPARE(root->sql("SELECT key FROM entry"), QStringList("new"));
        file.remove();
        QVERIFY(!store->find("new"));
    }

    /// A default must not be written over a choice that could not be read, not even once it could be.
    void unreadable()
    {
        root->write("/var/lib/vorkan", "");
        const CapturedErrors errors;
        QVERIFY(!store->find("a") && !store->find("b") && !store->isReadable());
        root->remove("/var/lib/vorkan");
        store->create("a", VorkanBoolType);
        QVERIFY(store->set("a", "1") && !store->commit());
        const QString reason = ": Not a directory; the stored choices are unknown, and nothing is stored\n";
        QCOMPARE(errors.text(), "Cannot read registry " + file.fileName() + reason);
    }

private:
    std::unique_ptr<TrialRoot> root;
    QFile file;
    std::unique_ptr<RegistryStore> store;
};

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
