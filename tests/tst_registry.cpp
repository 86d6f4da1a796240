#include "paths.h"
#include "registrystore.h"
#include "trial.h"
#include "vorkan.h"

#include <QProcess>

#include <sys/stat.h>

#include <thread>

class TestRegistry : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        root = std::make_unique<TrialRoot>();
        path = Paths::resolve("/var/lib/vorkan/registry.db");
        file.setFileName(path.c_str());
        store = std::make_unique<RegistryStore>(path);
    }

    void pendingUntilCommitted()
    {
        QVERIFY(!store->find("a") && !store->set("a", "x"));
        store->create("a", VorkanBoolType);
        QVERIFY(store->set("a", "é"));
        QCOMPARE(store->find("a")->value, "é");
        QVERIFY2(!file.exists(), "neither reading nor a pending change makes the file");
        const mode_t previous = ::umask(077);
        QVERIFY(store->commit());
        ::umask(previous);
        store->create("a", VorkanNumberType);
        QCOMPARE(store->find("a")->value, "é");
        QVERIFY(store->commit());
        QCOMPARE(root->sql("SELECT * FROM entry"), QStringList("a|10|é"));
        root->sql("UPDATE entry SET value = 'ü'");
        QCOMPARE(store->find("a")->value, "ü");
        QVERIFY(file.permissions().testFlag(QFile::ReadOther) && !QFile::exists(file.fileName() + "-journal"));
    }

    /// A value that was set wins over one that another process made meanwhile, an empty one that was created does not.
    void createdElsewhereMeanwhile()
    {
        store->create("set", VorkanNumberType);
        store->set("set", "1");
        store->create("bare", VorkanNumberType);
        root->presetRegistry("('set', 7, '2'), ('bare', 7, '2')");
        QVERIFY(store->commit());
        QCOMPARE(root->sql("SELECT value FROM entry ORDER BY key"), QStringList({"2", "1"}));
    }

    /// A default must not be written over a choice that could not be read, not even once it could be.
    void unreadable_data()
    {
        addRows(R"(
            file is not a database ; seq 1000 >
            Is a directory ; mkdir
            Not a directory ; rm -r ${0%/*}; touch ${0%/*}; :
            database is locked ; :)");
    }

    void unreadable()
    {
        QFETCH(QStringList, cells);
        root->presetRegistry("('a', 10, '0')");
        Sqlite::Database other(path, std::chrono::milliseconds(0));
        other.execute("BEGIN EXCLUSIVE");
        if (cells.at(1) != ":")
            QProcess::execute("sh", {"-c", "rm $0; " + cells.at(1) + " $0", file.fileName()});
        store->setPatience(std::chrono::milliseconds(50));
        const CapturedErrors errors;
        QVERIFY(!store->find("a") && !store->find("b") && !store->isReadable());
        other.execute("COMMIT");
        store->create("a", VorkanBoolType);
        QVERIFY(store->set("a", "1") && !store->commit());
        QCOMPARE(errors.text(),
                 QString("Cannot read registry %1: %2; the stored choices are unknown, and nothing is stored\n")
                     .arg(file.fileName(), cells.at(0)));
    }

    void allOrNothing()
    {
        root->presetRegistry("('b', 7, '')");
        root->sql("CREATE TRIGGER refuse BEFORE UPDATE ON entry BEGIN SELECT RAISE(ABORT, 'written'); END");
        store->create("a", VorkanNumberType);
        QVERIFY2(store->set("b", ""), "an equal value is written too");
        const CapturedErrors errors;
        QVERIFY(!store->commit() && !store->commit());
        QCOMPARE(errors.text(), "Cannot write registry " + file.fileName() + ": written\n");
        QCOMPARE(root->sql("SELECT key FROM entry"), QStringList("b"));
        root->sql("DROP TRIGGER refuse");
        QVERIFY2(store->commit(), "the changes are still pending");
        QCOMPARE(root->sql("SELECT count(*) FROM entry"), QStringList("2"));
    }

    void waitsForAnotherWriter()
    {
        root->presetRegistry("('a', 7, '1')");
        Sqlite::Database other(path, std::chrono::milliseconds(0));
        other.execute("BEGIN IMMEDIATE");
        std::thread writer([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            other.execute("COMMIT");
        });
        const bool isStored = store->set("a", "2") && store->commit();
        writer.join();
        QVERIFY(isStored);
    }

    void replacedWhileOpen()
    {
        root->presetRegistry("('a', 7, '')");
        QVERIFY(store->find("a"));
        file.remove();
        QVERIFY(!store->find("a"));
        store->create("b", VorkanBoolType);
        root->presetRegistry("('c', 10, '0')");
        QVERIFY(store->find("c"));
        file.remove();
        QVERIFY(store->commit());
        QCOMPARE(root->sql("SELECT key FROM entry"), QStringList("b"));
    }

private:
    std::unique_ptr<TrialRoot> root;
    std::string path;
    QFile file;
    std::unique_ptr<RegistryStore> store;
};

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
