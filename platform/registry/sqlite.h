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

struct Error : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

class Statement;

/// A connection to an existing file, for reading and, where the file's rights allow it, writing.
class Database
{
public:
    /// Waits up to `patience` wherever another process holds a lock.
    Database(const std::string &path, std::chrono::milliseconds patience);
    Statement prepare(const char *sql);
    void execute(const char *sql);
    bool hasTable(const char *name);

private:
    friend class Statement;
    [[noreturn]] void fail() const;

    std::unique_ptr<sqlite3, int (*)(sqlite3 *)> handle;
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
    Statement(Database &database, sqlite3_stmt *handle);

    Database *database;
    std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> handle;
};

/// A write transaction that rolls back unless it was committed.
class Transaction
{
public:
    explicit Transaction(Database &database);
    ~Transaction();
    void commit();

private:
    Q_DISABLE_COPY(Transaction)
    Database &database;
    bool isOpen = true;
};

} // namespace Sqlite

#endif
