#include "registrystore.h"

#include "paths.h"
#include "posix.h"

#include <SQLiteCpp/Transaction.h>
#include <SQLiteCpp/VariadicBind.h>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <system_error>

namespace {

constexpr char StorePath[] = "/var/lib/vorkan/registry.db";

} // namespace

RegistryStore &RegistryStore::instance()
{
    static RegistryStore store(Paths::resolve(StorePath));
    return store;
}

RegistryStore::RegistryStore(std::string path) : path(std::move(path)) {}

void RegistryStore::setPatience(std::chrono::milliseconds duration)
{
    patience = duration;
    close(); // a connection keeps the patience that it was opened with
}

void RegistryStore::holdView()
{
    ++viewHolders;
}

void RegistryStore::releaseView()
{
    if (--viewHolders == 0)
        endView();
}

void RegistryStore::endView()
{
    if (!inView)
        return;
    inView = false;
    try {
        database->exec("COMMIT");
    } catch (const SQLite::Exception &) {
        close(); // which ends every transaction
    }
}

std::optional<RegistryStore::Entry> RegistryStore::find(const QString &key)
{
    const auto change = pending.constFind(key);
    if (change != pending.constEnd())
        return change->removed ? std::nullopt : std::optional(change->entry);
    try {
        if (!openForReading())
            return std::nullopt;
        std::optional<Entry> entry;
        select->bind(1, key.toStdString());
        if (select->executeStep())
            entry = Entry{select->getColumn(0).getUInt(), QString::fromStdString(select->getColumn(1).getString())};
        select->reset(); // left in mid-read it would keep the file locked
        return entry;
    } catch (const SQLite::Exception &error) {
        giveUp(reasonOf(error));
        return std::nullopt;
    }
}

void RegistryStore::create(const QString &key, quint32 type)
{
    if (!find(key))
        pending.insert(key, Change{Entry{type, QString()}, false});
}

bool RegistryStore::set(const QString &key, const QString &value)
{
    std::optional<Entry> entry = find(key);
    if (!entry)
        return false;
    entry->value = value;
    pending.insert(key, Change{*entry, true});
    return true;
}

void RegistryStore::remove(const QString &key)
{
    pending.insert(key, Change{{}, false, true});
}

bool RegistryStore::commit()
{
    if (pending.isEmpty())
        return true;
    if (!isReadable())
        return false;
    try {
        write();
    } catch (const SQLite::Exception &error) {
        report("Cannot write registry ", reasonOf(error));
        return false;
    } catch (const std::system_error &error) {
        report("Cannot write registry ", error.what());
        return false;
    }
    pending.clear();
    lastReport.clear();
    return true;
}

bool RegistryStore::isWritable() const
{
    return Paths::isWritable(path);
}

/// False when there is nothing to read: no file, no table, or a store that was given up.
bool RegistryStore::openForReading()
{
    if (!isReadable())
        return false;
    if (inView)
        return true;
    if (database && !isSameFile())
        close();
    if (!database) {
        if (::access(path.c_str(), F_OK) != 0 && errno == ENOENT)
            return false;
        open();
    }
    if (!select) {
        if (!database->tableExists("entry"))
            return false;
        select.emplace(*database, "SELECT type, value FROM entry WHERE key = ?1");
    }
    if (viewHolders > 0) {
        database->exec("BEGIN");
        inView = true;
    }
    return true;
}

void RegistryStore::open()
{
    // Not created here: a reader must not make an empty file. SQLite itself falls back to read-only access if the file
    // cannot be written.
    database.emplace(path, SQLite::OPEN_READWRITE, static_cast<int>(patience.count()));
    struct stat status = {};
    ::stat(path.c_str(), &status);
    device = status.st_dev;
    inode = status.st_ino;
}

void RegistryStore::close()
{
    inView = false;
    select.reset();
    database.reset();
}

/// False when the file was removed or replaced since it was opened, as by a restore from a backup.
bool RegistryStore::isSameFile() const
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && status.st_dev == device && status.st_ino == inode;
}

/// An empty file is an empty database to SQLite; made here, so that its mode does not depend on the umask.
void RegistryStore::ensureFile() const
{
    Posix::makeDirectories(Posix::parentOf(path));
    const Posix::Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (file)
        ::fchmod(file.get(), 0644);
    else if (errno != EEXIST)
        Posix::fail("make", path);
}

void RegistryStore::write()
{
    endView();
    if (database && !isSameFile())
        close();
    if (!database) {
        ensureFile();
        open();
    }
    database->exec("PRAGMA journal_mode = DELETE");
    // EXTRA also flushes the directory after the journal is gone, the moment at which the commit counts.
    database->exec("PRAGMA synchronous = EXTRA");

    // The write lock at once: taking it later, from a read lock, can fail instead of waiting.
    SQLite::Transaction transaction(*database, SQLite::TransactionBehavior::IMMEDIATE);
    database->exec("CREATE TABLE IF NOT EXISTS entry("
                   "key TEXT PRIMARY KEY, type INTEGER NOT NULL, value TEXT NOT NULL)");
    // Another process may have made the entry since it was looked up here: a value that was set wins over it, an
    // empty one that was only created does not.
    SQLite::Statement insert(*database, "INSERT OR IGNORE INTO entry(key, type, value) VALUES(?1, ?2, ?3)");
    SQLite::Statement update(*database, "UPDATE entry SET value = ?2 WHERE key = ?1");
    SQLite::Statement erase(*database, "DELETE FROM entry WHERE key = ?1");
    for (auto change = pending.cbegin(); change != pending.cend(); ++change) {
        const std::string key = change.key().toStdString();
        const std::string value = change->entry.value.toStdString();
        if (change->removed) {
            erase.bind(1, key);
            erase.exec();
            erase.reset();
            continue;
        }
        SQLite::bind(insert, key, change->entry.type, value);
        insert.exec();
        insert.reset();
        if (change->valueSet) {
            SQLite::bind(update, key, value);
            update.exec();
            update.reset();
        }
    }
    transaction.commit();
}

/// "unable to open database file" alone does not say why.
std::string RegistryStore::reasonOf(const SQLite::Exception &error) const
{
    const int code = error.getErrorCode();
    int systemError = 0;
    if (code == SQLITE_CANTOPEN || code == SQLITE_IOERR)
        systemError = database ? sqlite3_system_errno(database->getHandle())
                               : (::access(path.c_str(), R_OK) == 0 ? 0 : errno);
    return systemError == 0 ? error.what() : std::strerror(systemError);
}

void RegistryStore::giveUp(const std::string &reason)
{
    report("Cannot read registry ", reason + "; the stored choices are unknown, and nothing is stored");
    readError = reason;
    close();
}

void RegistryStore::report(const char *what, const std::string &reason)
{
    std::string line = what + path + ": " + reason;
    if (line == lastReport)
        return;
    std::cerr << line << std::endl;
    lastReport = std::move(line);
}
