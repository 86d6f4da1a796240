#ifndef REGISTRYSTORE_H
#define REGISTRYSTORE_H

#include <QMap>
#include <QString>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>

/// The registry's file and what this process has changed but not yet committed.
///
/// The file is an SQLite database with one table, entry(key, type, value), readable by everybody, so that an
/// administrator can read and preset it with the sqlite3 shell. It keeps a rollback journal: with a write-ahead
/// log readers would need to write beside the file.
///
/// What fails is reported on standard error, one line for a reason, not one for each call.
class RegistryStore
{
public:
    struct Entry
    {
        quint32 type;
        QString value;
    };

    /// The process's store.
    static RegistryStore &instance();

    explicit RegistryStore(std::string path);

    /// How long reads and commits wait for a lock, from the next one on.
    void setPatience(std::chrono::milliseconds duration);

    /// Between these two, which nest, all reads see the same state of the file. A commit begins a new one.
    void holdView();
    void releaseView();

    /// The entry as this process sees it: a pending change first, then the file.
    std::optional<Entry> find(const QString &key);
    void create(const QString &key, quint32 type);
    bool set(const QString &key, const QString &value);
    void remove(const QString &key);
    /// See VorkanClient::commit().
    bool commit();

    /// Whether this process has the right to write the file.
    bool isWritable() const;
    /// False once an entry could not be read. What it holds is unknown then: a default that is written over it could
    /// lose somebody's choice, so nothing is read or written any more.
    bool isReadable() const { return readError.empty(); }
    /// Why an entry could not be read; empty while none failed.
    const std::string &whyUnreadable() const { return readError; }

private:
    Q_DISABLE_COPY(RegistryStore)

    struct Change
    {
        Entry entry;
        bool valueSet = false;
        bool removed = false;
    };

    bool openForReading();
    void endView();
    void open();
    void close();
    bool isSameFile() const;
    void ensureFile() const;
    void write();
    std::string reasonOf(const SQLite::Exception &error) const;
    void giveUp(const std::string &reason);
    void report(const char *what, const std::string &reason);

    std::string path;
    std::chrono::milliseconds patience{10000};
    // Members go in reverse order: the statement must be finalised before its connection closes.
    std::optional<SQLite::Database> database;
    std::optional<SQLite::Statement> select;
    int viewHolders = 0;
    bool inView = false; // a read transaction is open
    dev_t device = 0;
    ino_t inode = 0;
    QMap<QString, Change> pending;
    std::string readError;
    std::string lastReport;
};

#endif
