#ifndef REGISTRYSTORE_H
#define REGISTRYSTORE_H

#include "sqlite.h"

#include <QMap>
#include <QString>

#include <optional>
#include <string>

/// The registry's file and what this process has changed but not yet committed.
///
/// The file is an SQLite database with one table, entry(key, type, value), readable by everybody, so that an
/// administrator can read and preset it with the sqlite3 shell. It keeps a rollback journal: with a write-ahead
/// log readers would need to write beside the file.
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

    /// The entry as this process sees it: a pending change first, then the file.
    std::optional<Entry> find(const QString &key);
    void create(const QString &key, quint32 type);
    bool set(const QString &key, const QString &value);
    /// See VorkanClient::commit().
    bool commit(const QString &path);

private:
    Q_DISABLE_COPY(RegistryStore)

    struct Change
    {
        Entry entry;
        bool valueSet;
    };

    bool openForReading();
    void ensureFile() const;
    void write(const QMap<QString, Change> &changes);
    void giveUp(const char *reason);

    std::string m_path;
    // Members go in reverse order: the statement must be finalised before its connection closes.
    std::optional<Sqlite::Database> m_database;
    std::optional<Sqlite::Statement> m_select;
    QMap<QString, Change> m_pending;
    // Once part of the file could not be read, what it holds is unknown: writing defaults over it could lose
    // somebody's choices.
    bool m_unusable = false;
};

#endif
