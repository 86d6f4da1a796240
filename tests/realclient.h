#ifndef REALCLIENT_H
#define REALCLIENT_H

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QStringList>
#include <QTemporaryDir>

/// The DHCP client of this machine, run from a copy under another path, where its AppArmor profile does not
/// hold, and in a network namespace of its own where rights allow. No address is taken and no hook is run.
class RealClient
{
public:
    RealClient();

    bool isInstalled() const { return !m_program.isEmpty(); }
    /// Words that the client's program contains and that could be names of options, tails of longer words
    /// included: the linker lets a string share the end of another.
    QSet<QString> words() const;

    /// What the client says about a configuration when it reads it. The configuration is not used.
    QByteArray complaints(const QByteArray &configuration) const;
    /// Those of the names that the client accepts in a request without a declaration.
    QSet<QString> known(const QSet<QString> &names) const;

    /// Codes in the parameter request list of the first packet that the client sends under the configuration.
    /// Empty, with the reason, when it could not be seen.
    QList<int> requestedCodes(const QByteArray &configuration, QString &reason) const;

private:
    Q_DISABLE_COPY(RealClient)

    QStringList arguments(const QByteArray &configuration, const QString &interface) const;
    bool makeInterfaces(QString &reason) const;

    QTemporaryDir m_directory;
    QString m_program;
    bool m_ownNetwork = false;
};

#endif
