#include "registrystore.h"

#include "paths.h"
#include "posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>

namespace {

constexpr char StorePath[] = "/var/lib/vorkan/registry.db";

} // namespace

RegistryStore &RegistryStore::instance()
{
    static RegistryStore store(Paths::resolve(StorePath));
    return store;
}

RegistryStore::RegistryStore(std::string path) : path(std::move(path)) {}

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
        database->execute("COMMIT");
    } catch (const Sqlite::Error &) {
        close(); // which ends every transaction
    }
}

std::optional<RegistryStore::Entry> RegistryStore::find(const QString &key)
{
    const auto change = pending.constFind(key);
    if (change != pending.constEnd())
        return change->entry;
    try {
        if (!openForReading())
            return std::nullopt;
        std::optional<Entry> entry;
        select->bind(1, key);
        if (select->step())
            entry = Entry{static_cast<quint32>(select->number(0)), select->text(1)};
        select->reset();
        return entry;
    } catch (const Sqlite::Error &error) {
        giveUp(error.what());
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

bool RegistryStore::commit()
{
    if (pending.isEmpty())
        return true;
    if (!readable)
        return false;
    try {
        write();
    } catch (const std::runtime_error &error) {
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
    if (!readable)
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
        if (!database->hasTable("entry"))
            return false;
        select.emplace(database->prepare("SELECT type, value FROM entry WHERE key = ?1"));
    }
    if (viewHolders > 0) {
        database->execute("BEGIN");
        inView = true;
    }
    return true;
}

void RegistryStore::open()
{
    database.emplace(path, patience);
    database->execute("PRAGMA cache_size = -128");
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
    database->execute("PRAGMA journal_mode = DELETE");
    // EXTRA also flushes the directory after the journal is gone, the moment at which the commit counts.
    database->execute("PRAGMA synchronous = EXTRA");

    Sqlite::Transaction transaction(*database);
    database->execute("CREATE TABLE IF NOT EXISTS entry("
                      "key TEXT PRIMARY KEY, type INTEGER NOT NULL, value TEXT NOT NULL)");
    // Another process may have made the entry since it was looked up here: a value that was set wins over it, an
    // empty one that was only created does not.
    Sqlite::Statement insert = database->prepare("INSERT OR IGNORE INTO entry(key, type, value) VALUES(?1, ?2, ?3)");
    Sqlite::Statement update = database->prepare("UPDATE entry SET value = ?2 WHERE key = ?1");
    for (auto change = pending.cbegin(); change != pending.cend(); ++change) {
        insert.bind(1, change.key());
        insert.bind(2, qint64{change->entry.type});
        insert.bind(3, change->entry.value);
        insert.step();
        insert.reset();
        if (change->valueSet) {
            update.bind(1, change.key());
            update.bind(2, change->entry.value);
            update.step();
            update.reset();
        }
    }
    transaction.commit();
}

void RegistryStore::giveUp(const std::string &reason)
{
    report("Cannot read registry ", reason + "; the stored choices are unknown, and nothing is stored");
    readable = false;
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
