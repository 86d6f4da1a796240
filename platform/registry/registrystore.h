#ifndef REGISTRYSTORE_H
#define REGISTRYSTORE_H

#include "sqlite.h"

#include <QMap>
#include <QString>

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>

/// The registry's file and what this process has changed but not yet committed.
///
/// The file is an SQLite database with one table, entry(key, type, value), readable by everybody, so that an
/// administrator can read and preset it with the sqlite3 shell. It keeps a rollback journal: with a write-ahead
/// log readers would need to write beside the file.
///
/// What fails is told on standard error, one line for a reason, not one for each call.
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

    /// How long a read or a commit waits for another process that holds a lock.
    void setBusyTimeout(std::chrono::milliseconds busyTimeout) { m_busyTimeout = busyTimeout; }

    /// Between these two, which nest, all reads see the same state of the file. A commit begins a new one.
    void holdView();
    void releaseView();

    /// The entry as this process sees it: a pending change first, then the file.
    std::optional<Entry> find(const QString &key);
    void create(const QString &key, quint32 type);
    bool set(const QString &key, const QString &value);
    /// See VorkanClient::commit().
    bool commit(const QString &path);

    const std::string &path() const { return m_path; }
    /// Whether this process has the right to write the file.
    bool isWritable() const;
    /// The user knows that the file cannot be written: from now on failing commits are not told.
    void setKnownUnwritable() { m_knownUnwritable = true; }

private:
    Q_DISABLE_COPY(RegistryStore)

    struct Change
    {
        Entry entry;
        bool valueSet = false;
    };

    bool openForReading();
    void endView();
    void open();
    void close();
    bool isSameFile() const;
    void ensureFile() const;
    void write(const QMap<QString, Change> &changes);
    void giveUp(const Sqlite::Error &error);
    void report(const char *what, const std::string &reason);

    std::string m_path;
    std::chrono::milliseconds m_busyTimeout{10000};
    // Members go in reverse order: the statement must be finalised before its connection closes.
    std::optional<Sqlite::Database> m_database;
    std::optional<Sqlite::Statement> m_select;
    int m_viewHolders = 0;
    bool m_inView = false; // a read transaction is open
    dev_t m_device = 0;
    ino_t m_inode = 0;
    QMap<QString, Change> m_pending;
    // Once an entry could not be read, what it holds is unknown: a default that is written over it could lose
    // somebody's choice.
    bool m_unusable = false;
    std::string m_lastReport;
    bool m_knownUnwritable = false;
};

#endif
