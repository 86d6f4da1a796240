#include "standarderror.h"

#include <QFile>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

WithheldStandardError::WithheldStandardError()
{
    m_store = ::memfd_create("standard-error", MFD_CLOEXEC);
    m_standardError = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (m_store >= 0 && m_standardError >= 0)
        ::dup2(m_store, STDERR_FILENO);
}

WithheldStandardError::~WithheldStandardError()
{
    const QByteArray left = take();
    if (m_store >= 0 && m_standardError >= 0)
        ::dup2(m_standardError, STDERR_FILENO);
    if (m_standardError >= 0)
        ::close(m_standardError);
    if (m_store >= 0)
        ::close(m_store);
    QFile file;
    if (!left.isEmpty() && file.open(STDERR_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered))
        file.write(left);
}

QString WithheldStandardError::text()
{
    return QString::fromLocal8Bit(take());
}

QByteArray WithheldStandardError::take()
{
    QByteArray bytes;
    const off_t size = m_store < 0 ? 0 : ::lseek(m_store, 0, SEEK_CUR);
    if (size > 0) {
        bytes.resize(static_cast<int>(size));
        const ssize_t count = ::pread(m_store, bytes.data(), static_cast<size_t>(size), 0);
        bytes.resize(count > 0 ? static_cast<int>(count) : 0);
        ::lseek(m_store, 0, SEEK_SET);
    }
    return bytes;
}
