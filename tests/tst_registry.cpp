#include "paths.h"
#include "registrystore.h"
#include "trial.h"
#include "vorkanclient.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>

#include <sys/stat.h>

namespace {

const QString StorePath = QStringLiteral("/var/lib/vorkan/registry.db");

int mode(const QString &path)
{
    struct stat status = {};
    ::stat(QFile::encodeName(path).constData(), &status);
    return status.st_mode & 07777;
}

} // namespace

class TestRegistry : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<TrialRoot>();
        m_store = std::make_unique<RegistryStore>(Paths::resolve(StorePath.toStdString()));
    }

    void pendingUntilCommitted()
    {
        const mode_t previous = ::umask(077);
        RegistryStore &store = *m_store;
        QVERIFY(!store.find(QStringLiteral("root/A")));
        QVERIFY2(!store.set(QStringLiteral("root/A"), QStringLiteral("x")), "an entry that does not exist");
        store.create(QStringLiteral("root/A"), VorkanBoolType);
        QVERIFY(store.set(QStringLiteral("root/A"), QStringLiteral("1")));
        QCOMPARE(store.find(QStringLiteral("root/A"))->value, QStringLiteral("1"));
        QVERIFY2(!QFile::exists(m_root->path(StorePath)), "reading and pending changes make no file");

        QVERIFY(store.commit());
        ::umask(previous);
        QCOMPARE(m_root->sql(QStringLiteral("SELECT * FROM entry")), QStringList(QStringLiteral("root/A|10|1")));
        QCOMPARE(mode(m_root->path(StorePath)), 0644);
        QCOMPARE(mode(m_root->path(QStringLiteral("/var/lib/vorkan"))), 0755);
        QVERIFY(!QFile::exists(m_root->path(StorePath + QStringLiteral("-journal"))));

        store.create(QStringLiteral("root/A"), VorkanNumberType);
        QVERIFY(store.commit());
        QCOMPARE(m_root->sql(QStringLiteral("SELECT * FROM entry")), QStringList(QStringLiteral("root/A|10|1")));
    }

    void readsWhatOthersWrite()
    {
        QVERIFY(!m_store->find(QStringLiteral("root/A")));
        m_root->presetRegistry(QStringLiteral("('root/A', 7, 'é')"));
        QCOMPARE(m_store->find(QStringLiteral("root/A"))->value, QStringLiteral("é"));
        m_root->sql(QStringLiteral("UPDATE entry SET value = '210'"));
        QCOMPARE(m_store->find(QStringLiteral("root/A"))->value, QStringLiteral("210"));
    }

    void createdElsewhereMeanwhile()
    {
        m_store->create(QStringLiteral("root/set"), VorkanNumberType);
        m_store->set(QStringLiteral("root/set"), QStringLiteral("1"));
        m_store->create(QStringLiteral("root/bare"), VorkanNumberType);
        RegistryStore other(Paths::resolve(StorePath.toStdString()));
        for (const auto *key : {"root/set", "root/bare"}) {
            other.create(QString::fromUtf8(key), VorkanNumberType);
            other.set(QString::fromUtf8(key), QStringLiteral("2"));
        }
        QVERIFY(other.commit());
        QVERIFY(m_store->commit());
        QCOMPARE(m_root->sql(QStringLiteral("SELECT key, value FROM entry ORDER BY key")),
                 QStringList({QStringLiteral("root/bare|2"), QStringLiteral("root/set|1")}));
    }

    void unusableStore_data()
    {
        QTest::addColumn<QByteArray>("content"); // null: a directory stands in the file's place
        QTest::addColumn<QString>("reason");
        QTest::newRow("not a database") << QByteArray("# no database, but somebody's notes\n").repeated(40)
                                        << QStringLiteral("file is not a database");
        QTest::newRow("a directory") << QByteArray() << QStringLiteral("Is a directory");
    }

    void unusableStore()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        if (content.isNull())
            QDir().mkpath(m_root->path(StorePath));
        else
            m_root->write(StorePath, content);

        const CapturedErrors errors;
        QVERIFY(!m_store->find(QStringLiteral("root/A")));
        QVERIFY(!m_store->find(QStringLiteral("root/B")));
        m_store->create(QStringLiteral("root/A"), VorkanBoolType);
        QVERIFY(m_store->find(QStringLiteral("root/A")));
        QVERIFY(!m_store->commit());
        QCOMPARE(errors.text(), m_unreadable.arg(m_root->path(StorePath), reason));
        if (!content.isNull()) {
            QFile file(m_root->path(StorePath));
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(file.readAll(), content);
        }
    }

    /// A default must not be written over a choice that could not be read, not even once it could be.
    void lockedWhileRead()
    {
        m_root->presetRegistry(QStringLiteral("('root/A', 10, '0')"));
        m_store->setPatience(std::chrono::milliseconds(50));
        Sqlite::Database other(Paths::resolve(StorePath.toStdString()), std::chrono::milliseconds(0));
        const CapturedErrors errors;
        {
            other.execute("BEGIN EXCLUSIVE");
            QVERIFY(!m_store->find(QStringLiteral("root/A")));
            QVERIFY(!m_store->find(QStringLiteral("root/B")));
            other.execute("COMMIT");
        }
        m_store->create(QStringLiteral("root/A"), VorkanBoolType);
        QVERIFY(m_store->set(QStringLiteral("root/A"), QStringLiteral("1")));
        QVERIFY(!m_store->commit());
        QCOMPARE(errors.text(), m_unreadable.arg(m_root->path(StorePath), QStringLiteral("database is locked")));
        QCOMPARE(m_root->sql(QStringLiteral("SELECT value FROM entry")), QStringList(QStringLiteral("0")));
    }

    void viewWhileHeld()
    {
        m_store->create(QStringLiteral("root/A"), VorkanBoolType);
        QVERIFY(m_store->commit());
        RegistryStore other(Paths::resolve(StorePath.toStdString()));
        other.setPatience(std::chrono::milliseconds(20));
        QVERIFY(other.set(QStringLiteral("root/A"), QStringLiteral("2")));

        m_store->holdView();
        m_store->holdView();
        QCOMPARE(m_store->find(QStringLiteral("root/A"))->value, QString());
        m_store->releaseView();
        {
            const CapturedErrors errors;
            QVERIFY2(!other.commit(), "the view is held");
        }
        QVERIFY(m_store->set(QStringLiteral("root/A"), QStringLiteral("1")));
        QVERIFY2(m_store->commit(), "a commit of its own ends the view");
        m_store->releaseView();
        QVERIFY(other.commit());
        QCOMPARE(m_store->find(QStringLiteral("root/A"))->value, QStringLiteral("2"));
    }

    void replacedWhileOpen()
    {
        m_store->create(QStringLiteral("root/A"), VorkanBoolType);
        QVERIFY(m_store->commit() && m_store->find(QStringLiteral("root/A")));
        m_root->remove(StorePath);
        QVERIFY(!m_store->find(QStringLiteral("root/A")));
        m_store->create(QStringLiteral("root/B"), VorkanBoolType);
        m_root->presetRegistry(QStringLiteral("('root/C', 10, '0')"));
        QVERIFY(m_store->find(QStringLiteral("root/C")) && m_store->commit());
        QCOMPARE(m_root->sql(QStringLiteral("SELECT count(*) FROM entry")), QStringList(QStringLiteral("2")));
    }

    void typeNumbers()
    {
        const QStringList names = QString::fromUtf8(VorkanTypeNames).split(QLatin1Char(','));
        QCOMPARE(names.at(VorkanNumberType), QStringLiteral("number"));
        QCOMPARE(names.at(VorkanBoolType), QStringLiteral("bool"));
    }

    void fullDisk()
    {
        // A limit on file sizes stands in for the disk.
        QProcess writer;
        writer.start(QStringLiteral("sh"), {QStringLiteral("-c"),
                                            QStringLiteral("trap '' XFSZ; ulimit -f 8; exec \"$@\""),
                                            QStringLiteral("sh"), QStringLiteral(WRITER_PATH),
                                            QStringLiteral("root/K"), QStringLiteral("2000"), QStringLiteral("1")});
        QVERIFY(writer.waitForFinished());
        QCOMPARE(writer.exitCode(), 1);
        const QByteArray line = writer.readAllStandardError();
        QVERIFY2(line.startsWith("Cannot write registry " + m_root->path(StorePath).toUtf8() + ": "), line);
        QCOMPARE(line.count('\n'), 1);
        QVERIFY(!m_store->find(QStringLiteral("root/K0")));
    }

    void twoWritersAtOnce()
    {
        QProcess writers[2];
        for (int i = 0; i < 2; ++i)
            writers[i].start(QStringLiteral(WRITER_PATH),
                             {QStringLiteral("root/%1/").arg(i), QStringLiteral("50"), QStringLiteral("20")});
        for (QProcess &writer : writers) {
            QVERIFY(writer.waitForFinished());
            QCOMPARE(writer.exitCode(), 0);
            QCOMPARE(writer.readAllStandardError(), QByteArray());
        }
        QCOMPARE(m_root->sql(QStringLiteral("SELECT count(*), min(value), max(value) FROM entry")),
                 QStringList(QStringLiteral("100|20|20")));
    }

    void killedInMidCommit()
    {
        // Each kill falls somewhere into an endless run of commits. What is left must be one whole batch, and
        // none older than the last one that was reported as committed.
        int lastSeen = 0;
        for (int i = 0; i < 25; ++i) {
            QProcess writer;
            writer.start(QStringLiteral(WRITER_PATH),
                         {QStringLiteral("root/K"), QStringLiteral("300"), QStringLiteral("1000000")});
            QVERIFY(writer.waitForReadyRead());
            QTest::qWait(QRandomGenerator::global()->bounded(30));
            writer.kill();
            QVERIFY(writer.waitForFinished());
            const QByteArray reported = writer.readAllStandardOutput().trimmed();
            const int committed = reported.mid(reported.lastIndexOf('\n') + 1).toInt();
            lastSeen = committed;

            RegistryStore store(Paths::resolve(StorePath.toStdString()));
            const int first = store.find(QStringLiteral("root/K0"))->value.toInt();
            QVERIFY2(first >= committed, qPrintable(QStringLiteral("%1 < %2").arg(first).arg(committed)));
            for (int key = 1; key < 300; ++key)
                QCOMPARE(store.find(QStringLiteral("root/K%1").arg(key))->value.toInt(), first);
        }
        QVERIFY(lastSeen > 0);
    }

private:
    const QString m_unreadable = QStringLiteral(
        "Cannot read registry %1: %2; the stored choices are unknown, and nothing is stored\n");
    std::unique_ptr<TrialRoot> m_root;
    std::unique_ptr<RegistryStore> m_store;
};

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
