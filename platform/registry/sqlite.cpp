#include "sqlite.h"

#include <sqlite3.h>

#include <cstring>

namespace Sqlite {

Database::Database(const std::string &path, std::chrono::milliseconds patience) : handle(nullptr, sqlite3_close)
{
    // Without the CREATE flag: a reader must not create an empty file. SQLite itself falls back to read-only access if
    // the file cannot be written.
    sqlite3 *opened = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    handle.reset(opened);
    if (result != SQLITE_OK)
        fail();
    sqlite3_busy_timeout(opened, static_cast<int>(patience.count()));
}

void Database::fail() const
{
    // SQLite gives no handle when it is out of memory; its functions accept that.
    const int code = sqlite3_errcode(handle.get());
    const int systemError = handle ? sqlite3_system_errno(handle.get()) : 0;
    // "unable to open database file" alone does not say why.
    if ((code == SQLITE_CANTOPEN || code == SQLITE_IOERR) && systemError != 0)
        throw Error(std::strerror(systemError));
    throw Error(sqlite3_errmsg(handle.get()));
}

Statement Database::prepare(const char *sql)
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v3(handle.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK)
        fail();
    return Statement(*this, statement);
}

void Database::execute(const char *sql)
{
    if (sqlite3_exec(handle.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

bool Database::hasTable(const char *name)
{
    Statement query = prepare("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1");
    query.bind(1, QString::fromUtf8(name));
    return query.step();
}

Statement::Statement(Database &database, sqlite3_stmt *handle) : database(&database), handle(handle, sqlite3_finalize)
{
}

void Statement::bind(int index, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    if (sqlite3_bind_text(handle.get(), index, utf8.constData(), utf8.size(), SQLITE_TRANSIENT) != SQLITE_OK)
        database->fail();
}

void Statement::bind(int index, qint64 number)
{
    if (sqlite3_bind_int64(handle.get(), index, number) != SQLITE_OK)
        database->fail();
}

bool Statement::step()
{
    switch (sqlite3_step(handle.get())) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        database->fail();
    }
}

void Statement::reset()
{
    sqlite3_reset(handle.get());
}

QString Statement::text(int column) const
{
    const auto *utf8 = reinterpret_cast<const char *>(sqlite3_column_text(handle.get(), column));
    return QString::fromUtf8(utf8, sqlite3_column_bytes(handle.get(), column));
}

qint64 Statement::number(int column) const
{
    return sqlite3_column_int64(handle.get(), column);
}

Transaction::Transaction(Database &database) : database(database)
{
    // The write lock at once: taking it later, from a read lock, can fail instead of waiting.
    database.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    if (!isOpen)
        return;
    try {
        database.execute("ROLLBACK");
    } catch (const Error &) {
        // SQLite has rolled back by itself, as it does when the disk is full.
    }
}

void Transaction::commit()
{
    database.execute("COMMIT");
    isOpen = false;
}

} // namespace Sqlite
