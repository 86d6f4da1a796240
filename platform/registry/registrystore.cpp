#include "registrystore.h"

#include "paths.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>

namespace {

constexpr char StorePath[] = "/var/lib/vorkan/registry.db";

[[noreturn]] void failWithErrno()
{
    throw Sqlite::Error(std::strerror(errno));
}

class Descriptor
{
public:
    explicit Descriptor(int descriptor)
        : m_descriptor(descriptor)
    {
        if (m_descriptor < 0)
            failWithErrno();
    }
    ~Descriptor() { ::close(m_descriptor); }
    operator int() const { return m_descriptor; }

private:
    Q_DISABLE_COPY(Descriptor)
    int m_descriptor;
};

std::string parentOf(const std::string &path)
{
    const std::string::size_type slash = path.find_last_of('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

void syncDirectory(const std::string &path)
{
    const Descriptor directory(::open(path.empty() ? "/" : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (::fsync(directory) != 0)
        failWithErrno();
}

/// While it lives, what is made has exactly the mode that is asked for, short of writing by others.
class PlainUmask
{
public:
    PlainUmask() : m_previous(::umask(022)) {}
    ~PlainUmask() { ::umask(m_previous); }

private:
    Q_DISABLE_COPY(PlainUmask)
    mode_t m_previous;
};

/// Makes the directory and its missing parents.
void makeDirectory(const std::string &path)
{
    if (path.empty() || ::access(path.c_str(), F_OK) == 0)
        return;
    const std::string parent = parentOf(path);
    makeDirectory(parent);
    if (::mkdir(path.c_str(), 0755) != 0 && errno != EEXIST)
        failWithErrno();
    syncDirectory(parent);
}

} // namespace

RegistryStore &RegistryStore::instance()
{
    static RegistryStore store(Paths::resolve(StorePath));
    return store;
}

RegistryStore::RegistryStore(std::string path)
    : m_path(std::move(path))
{
}

void RegistryStore::holdView()
{
    ++m_viewHolders;
}

void RegistryStore::releaseView()
{
    if (--m_viewHolders == 0)
        endView();
}

void RegistryStore::endView()
{
    if (!m_inView)
        return;
    m_inView = false;
    try {
        m_database->execute("COMMIT");
    } catch (const Sqlite::Error &) {
        close(); // which ends every transaction
    }
}

std::optional<RegistryStore::Entry> RegistryStore::find(const QString &key)
{
    const auto change = m_pending.constFind(key);
    if (change != m_pending.constEnd())
        return change->entry;
    try {
        if (!openForReading())
            return std::nullopt;
        std::optional<Entry> entry;
        m_select->bind(1, key);
        if (m_select->step())
            entry = Entry{static_cast<quint32>(m_select->number(0)), m_select->text(1)};
        m_select->reset();
        return entry;
    } catch (const Sqlite::Error &error) {
        giveUp(error);
        return std::nullopt;
    }
}

void RegistryStore::create(const QString &key, quint32 type)
{
    if (!find(key))
        m_pending.insert(key, Change{Entry{type, QString()}, false});
}

bool RegistryStore::set(const QString &key, const QString &value)
{
    std::optional<Entry> entry = find(key);
    if (!entry)
        return false;
    // Nothing to write: a durable commit costs more than many an apply has to do besides.
    if (entry->value == value && !m_pending.contains(key))
        return true;
    entry->value = value;
    m_pending.insert(key, Change{*entry, true});
    return true;
}

bool RegistryStore::commit(const QString &path)
{
    QMap<QString, Change> changes;
    for (auto change = m_pending.cbegin(); change != m_pending.cend(); ++change) {
        if (path.isEmpty() || change.key() == path || change.key().startsWith(path + QLatin1Char('/')))
            changes.insert(change.key(), *change);
    }
    if (changes.isEmpty())
        return true;
    if (m_unusable)
        return false;
    try {
        write(changes);
    } catch (const Sqlite::Error &error) {
        if (!m_knownUnwritable)
            report("Cannot write registry ", error.what());
        return false;
    }
    for (auto change = changes.cbegin(); change != changes.cend(); ++change)
        m_pending.remove(change.key());
    m_lastReport.clear();
    return true;
}

bool RegistryStore::isWritable() const
{
    return Paths::isWritable(m_path);
}

/// False when there is nothing to read: no file, no table, or a store that was given up.
bool RegistryStore::openForReading()
{
    if (m_unusable)
        return false;
    if (m_inView)
        return true;
    if (m_database && !isSameFile())
        close();
    if (!m_database) {
        if (::access(m_path.c_str(), F_OK) != 0 && errno == ENOENT)
            return false;
        open();
    }
    if (!m_select) {
        if (!m_database->hasTable("entry"))
            return false;
        m_select.emplace(m_database->prepare("SELECT type, value FROM entry WHERE key = ?1"));
    }
    if (m_viewHolders > 0) {
        m_database->execute("BEGIN");
        m_inView = true;
    }
    return true;
}

void RegistryStore::open()
{
    m_database.emplace(m_path, m_busyTimeout);
    m_database->execute("PRAGMA cache_size = -128");
    struct stat status = {};
    ::stat(m_path.c_str(), &status);
    m_device = status.st_dev;
    m_inode = status.st_ino;
}

void RegistryStore::close()
{
    m_inView = false;
    m_select.reset();
    m_database.reset();
}

/// False when the file was removed or replaced since it was opened, as by a restore from a backup.
bool RegistryStore::isSameFile() const
{
    struct stat status = {};
    return ::stat(m_path.c_str(), &status) == 0 && status.st_dev == m_device && status.st_ino == m_inode;
}

/// An empty file is an empty database to SQLite; made here, so that its mode does not depend on the umask.
void RegistryStore::ensureFile() const
{
    const PlainUmask umask;
    makeDirectory(parentOf(m_path));
    const Descriptor file(::open(m_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
}

void RegistryStore::write(const QMap<QString, Change> &changes)
{
    endView();
    if (m_database && !isSameFile())
        close();
    if (!m_database) {
        ensureFile();
        open();
    }
    m_database->execute("PRAGMA journal_mode = DELETE");
    // EXTRA also flushes the folder after the journal is gone, the moment at which the commit counts.
    m_database->execute("PRAGMA synchronous = EXTRA");

    Sqlite::Transaction transaction(*m_database);
    m_database->execute("CREATE TABLE IF NOT EXISTS entry("
                        "key TEXT PRIMARY KEY, type INTEGER NOT NULL, value TEXT NOT NULL)");
    // Another process may have made the entry since it was looked up here: a value that was set wins over it, an
    // empty one that was only created does not.
    Sqlite::Statement insert = m_database->prepare(
        "INSERT OR IGNORE INTO entry(key, type, value) VALUES(?1, ?2, ?3)");
    Sqlite::Statement update = m_database->prepare("UPDATE entry SET value = ?2 WHERE key = ?1");
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
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

void RegistryStore::giveUp(const Sqlite::Error &error)
{
    // Recovering after a killed writer is a write, and SQLite's own words for it would puzzle.
    const std::string reason = error.kind() == Sqlite::Error::ReadOnly
        ? "it needs recovery, which takes the right to write" : error.what();
    report("Cannot read registry ", reason + "; going on as if it were empty, and storing nothing");
    m_unusable = true;
    close();
}

void RegistryStore::report(const char *what, const std::string &reason)
{
    std::string line = what + m_path + ": " + reason;
    if (line == m_lastReport)
        return;
    std::cerr << line << std::endl;
    m_lastReport = std::move(line);
}
