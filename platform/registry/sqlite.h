#ifndef SQLITE_H
#define SQLITE_H

#include <QString>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

/// The few things that the registry needs of SQLite, with C++ lifetimes. Every failure is a Sqlite::Error.
namespace Sqlite {

class Error : public std::runtime_error
{
public:
    enum Kind {
        ReadOnly, ///< what was asked for takes the right to write
        Other
    };

    explicit Error(const std::string &reason, Kind kind = Other);
    Kind kind() const { return m_kind; }

private:
    Kind m_kind;
};

class Statement;

/// A connection to an existing file, for reading and, where the file's rights allow it, writing.
class Database
{
public:
    /// Waits up to `busyTimeout` wherever another process holds a lock.
    Database(const std::string &path, std::chrono::milliseconds busyTimeout);
    Statement prepare(const char *sql);
    void execute(const char *sql);
    bool hasTable(const char *name);

private:
    friend class Statement;
    struct Close { void operator()(sqlite3 *handle) const; };
    [[noreturn]] void fail() const;

    std::unique_ptr<sqlite3, Close> m_handle;
};

/// A prepared statement. Rewinds on reset(), which every round of bind and step must end with: a statement left
/// in mid-read keeps the file locked.
class Statement
{
public:
    void bind(int index, const QString &text);
    void bind(int index, qint64 number);
    /// Returns true while there is a row.
    bool step();
    void reset();
    QString text(int column) const;
    qint64 number(int column) const;

private:
    friend class Database;
    struct Finalize { void operator()(sqlite3_stmt *handle) const; };
    Statement(Database &database, sqlite3_stmt *handle);

    Database *m_database;
    std::unique_ptr<sqlite3_stmt, Finalize> m_handle;
};

/// A write transaction that rolls back unless it was committed.
class Transaction
{
public:
    /// Immediate keeps other writers out, Exclusive readers too.
    enum Lock { Immediate, Exclusive };

    explicit Transaction(Database &database, Lock lock = Immediate);
    ~Transaction();
    void commit();

private:
    Q_DISABLE_COPY(Transaction)
    Database &m_database;
    bool m_open = true;
};

} // namespace Sqlite

#endif
