#include "sqlite.h"

#include <sqlite3.h>

#include <cstring>

namespace Sqlite {

Error::Error(const std::string &reason, Kind kind)
    : std::runtime_error(reason)
    , m_kind(kind)
{
}

void Database::Close::operator()(sqlite3 *handle) const
{
    sqlite3_close(handle);
}

Database::Database(const std::string &path, std::chrono::milliseconds busyTimeout)
{
    // Without the CREATE flag: whoever only reads must not leave an empty file behind. SQLite itself falls back
    // to reading where the file may not be written.
    sqlite3 *handle = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr);
    m_handle.reset(handle);
    if (result != SQLITE_OK)
        fail();
    sqlite3_busy_timeout(m_handle.get(), static_cast<int>(busyTimeout.count()));
}

void Database::fail() const
{
    const int systemError = m_handle ? sqlite3_system_errno(m_handle.get()) : ENOMEM;
    const int code = m_handle ? sqlite3_errcode(m_handle.get()) : SQLITE_NOMEM;
    // "unable to open database file" alone does not tell why.
    if ((code == SQLITE_CANTOPEN || code == SQLITE_IOERR) && systemError != 0)
        throw Error(std::strerror(systemError));
    throw Error(m_handle ? sqlite3_errmsg(m_handle.get()) : sqlite3_errstr(code),
                code == SQLITE_READONLY ? Error::ReadOnly : Error::Other);
}

Statement Database::prepare(const char *sql)
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v3(m_handle.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK)
        fail();
    return Statement(*this, statement);
}

void Database::execute(const char *sql)
{
    if (sqlite3_exec(m_handle.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

bool Database::hasTable(const char *name)
{
    Statement query = prepare("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1");
    query.bind(1, QString::fromUtf8(name));
    return query.step();
}

void Statement::Finalize::operator()(sqlite3_stmt *handle) const
{
    sqlite3_finalize(handle);
}

Statement::Statement(Database &database, sqlite3_stmt *handle)
    : m_database(&database)
    , m_handle(handle)
{
}

void Statement::bind(int index, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    if (sqlite3_bind_text(m_handle.get(), index, utf8.constData(), utf8.size(), SQLITE_TRANSIENT) != SQLITE_OK)
        m_database->fail();
}

void Statement::bind(int index, qint64 number)
{
    if (sqlite3_bind_int64(m_handle.get(), index, number) != SQLITE_OK)
        m_database->fail();
}

bool Statement::step()
{
    switch (sqlite3_step(m_handle.get())) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        m_database->fail();
    }
}

void Statement::reset()
{
    sqlite3_reset(m_handle.get());
}

QString Statement::text(int column) const
{
    const auto *utf8 = reinterpret_cast<const char *>(sqlite3_column_text(m_handle.get(), column));
    return QString::fromUtf8(utf8, sqlite3_column_bytes(m_handle.get(), column));
}

qint64 Statement::number(int column) const
{
    return sqlite3_column_int64(m_handle.get(), column);
}

Transaction::Transaction(Database &database, Lock lock)
    : m_database(database)
{
    // At once: taking the write lock later, from a read lock, can fail instead of waiting.
    m_database.execute(lock == Exclusive ? "BEGIN EXCLUSIVE" : "BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    if (!m_open)
        return;
    try {
        m_database.execute("ROLLBACK");
    } catch (const Error &) {
        // SQLite has rolled back by itself, as it does when the disk is full.
    }
}

void Transaction::commit()
{
    m_database.execute("COMMIT");
    m_open = false;
}

} // namespace Sqlite
