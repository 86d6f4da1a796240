#include "realclient.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <cstring>

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int ProcessTimeout = 15000; // ms
constexpr int PacketTimeout = 8000;   // ms; the client sends at once, or not at all
const QString ClientEnd = QStringLiteral("client0");
const QString ServerEnd = QStringLiteral("server0");

/// The parameter request list of an Ethernet frame that holds a client's DHCP message; empty for any other.
QList<int> requestList(const QByteArray &frame)
{
    constexpr int etherType = 12;
    constexpr int ip = 14;
    constexpr int udp = ip + 20; // the client sends no IP options
    constexpr int cookie = udp + 8 + 236;
    const auto byte = [&frame](int offset) { return static_cast<quint8>(frame.at(offset)); };
    const bool isDhcp = frame.size() >= cookie + 4
                        && frame.mid(etherType, 3) == QByteArray("\x08\x00\x45", 3) // IPv4
                        && byte(ip + 9) == IPPROTO_UDP
                        && frame.mid(udp + 2, 2) == QByteArray("\x00\x43", 2) // to port 67
                        && frame.mid(cookie, 4) == "\x63\x82\x53\x63";
    if (!isDhcp)
        return {};
    QList<int> codes;
    int offset = cookie + 4;
    while (offset + 1 < frame.size() && byte(offset) != 255) {
        if (byte(offset) == 0) {
            ++offset;
            continue;
        }
        const QByteArray value = frame.mid(offset + 2, byte(offset + 1));
        if (byte(offset) == 55) { // in several pieces when it is long (RFC 3396)
            for (const char code : value)
                codes << static_cast<quint8>(code);
        }
        offset += 2 + byte(offset + 1);
    }
    return codes;
}

/// Everything that arrives at an interface.
class Listener
{
public:
    explicit Listener(const QString &interface)
        : m_socket(socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, htons(ETH_P_ALL)))
    {
        sockaddr_ll address = {};
        address.sll_family = AF_PACKET;
        address.sll_protocol = htons(ETH_P_ALL);
        address.sll_ifindex = static_cast<int>(if_nametoindex(interface.toLatin1().constData()));
        m_bound = bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    }
    ~Listener() { close(m_socket); }
    bool isBound() const { return m_bound; }

    /// The next frame; empty after the time-out in ms.
    QByteArray frame(int timeout) const
    {
        pollfd waiting = {m_socket, POLLIN, 0};
        if (poll(&waiting, 1, timeout) != 1)
            return {};
        QByteArray content(4096, '\0');
        const ssize_t size = recv(m_socket, content.data(), static_cast<size_t>(content.size()), 0);
        content.truncate(static_cast<int>(qMax<ssize_t>(size, 0)));
        return content;
    }

private:
    Q_DISABLE_COPY(Listener)
    int m_socket;
    bool m_bound = false;
};

} // namespace

RealClient::RealClient()
{
    const QString copy = m_directory.filePath(QStringLiteral("client"));
    for (const char *path : {"/usr/sbin/dhclient", "/sbin/dhclient"}) {
        if (m_program.isEmpty() && QFile::copy(QString::fromLatin1(path), copy))
            m_program = copy;
    }
    // What this thread starts from here on sees the namespace only.
    m_ownNetwork = geteuid() == 0 && unshare(CLONE_NEWNET) == 0;
}

QSet<QString> RealClient::words() const
{
    QFile file(m_program);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray content = file.readAll();
    const auto isNameCharacter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
    };
    QSet<QString> words;
    int start = 0;
    for (int end = 0; end < content.size(); ++end) {
        if (isNameCharacter(content.at(end)))
            continue;
        for (int from = start; content.at(end) == '\0' && end - from > 1; ++from) {
            if (content.at(from) >= 'a')
                words << QString::fromLatin1(content.mid(from, end - from));
        }
        start = end + 1;
    }
    return words;
}

QStringList RealClient::arguments(const QByteArray &configuration, const QString &interface) const
{
    const auto write = [this](const QString &name, const QByteArray &content) -> QString {
        QFile file(m_directory.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qUtf8Printable(file.fileName()));
        return file.fileName();
    };
    return {QStringLiteral("-d"), QStringLiteral("-1"), QStringLiteral("-4"),
            QStringLiteral("-cf"), write(QStringLiteral("conf"), configuration),
            QStringLiteral("-lf"), write(QStringLiteral("leases"), QByteArray()),
            QStringLiteral("-pf"), m_directory.filePath(QStringLiteral("pid")),
            QStringLiteral("-sf"), QStringLiteral("/bin/true"), interface};
}

QByteArray RealClient::complaints(const QByteArray &configuration) const
{
    // It reads its configuration first and then finds no such interface.
    // Into a file: it writes piece by piece, and each would wait for the reader of a pipe.
    QFile errors(m_directory.filePath(QStringLiteral("errors")));
    QProcess client;
    client.setStandardErrorFile(errors.fileName());
    client.start(m_program, arguments(configuration, QStringLiteral("nosuchif0")));
    if (!client.waitForFinished(ProcessTimeout) || !errors.open(QIODevice::ReadOnly))
        qFatal("the client does not end");
    const QByteArray said = errors.readAll();
    if (client.exitStatus() != QProcess::NormalExit)
        return "the client crashed\n" + said;
    if (!said.contains("interface index"))
        return "the client did not come to its interface\n" + said;
    const int first = said.indexOf(m_directory.path().toUtf8());
    return first < 0 ? QByteArray() : said.mid(first);
}

QSet<QString> RealClient::known(const QSet<QString> &names) const
{
    const QStringList asked = names.values();
    QByteArray configuration;
    for (const QString &name : asked)
        configuration += "request " + name.toLatin1() + ";\n";
    const QString said = QString::fromLatin1(complaints(configuration));
    const QRegularExpression line(QStringLiteral("/conf line (\\d+): "));
    QSet<QString> accepted = names;
    for (QRegularExpressionMatchIterator it = line.globalMatch(said); it.hasNext();) {
        const int number = it.next().captured(1).toInt();
        accepted.remove(asked.value(number - 1));
    }
    return accepted;
}

bool RealClient::makeInterfaces(QString &reason) const
{
    if (!m_ownNetwork) {
        reason = QStringLiteral("no right to make a network namespace");
        return false;
    }
    if (if_nametoindex(ClientEnd.toLatin1().constData()) != 0)
        return true; // from an earlier call
    const QList<QStringList> commands = {
        {QStringLiteral("link"), QStringLiteral("add"), ClientEnd, QStringLiteral("type"),
         QStringLiteral("veth"), QStringLiteral("peer"), QStringLiteral("name"), ServerEnd},
        {QStringLiteral("link"), QStringLiteral("set"), ClientEnd, QStringLiteral("up")},
        {QStringLiteral("link"), QStringLiteral("set"), ServerEnd, QStringLiteral("up")},
    };
    for (const QStringList &command : commands) {
        QProcess ip;
        ip.start(QStringLiteral("ip"), command);
        if (!ip.waitForFinished(ProcessTimeout) || ip.exitCode() != 0) {
            reason = QStringLiteral("no pair of interfaces: ") + QString::fromUtf8(ip.readAllStandardError());
            return false;
        }
    }
    return true;
}

QList<int> RealClient::requestedCodes(const QByteArray &configuration, QString &reason) const
{
    if (!makeInterfaces(reason))
        return {};
    const Listener listener(ServerEnd);
    if (!listener.isBound()) {
        reason = QStringLiteral("no right to listen: ") + QString::fromLocal8Bit(strerror(errno));
        return {};
    }
    QProcess client;
    client.start(m_program, arguments(configuration, ClientEnd));
    QList<int> codes;
    QElapsedTimer timer;
    timer.start();
    while (codes.isEmpty() && timer.elapsed() < PacketTimeout)
        codes = requestList(listener.frame(PacketTimeout));
    client.kill();
    client.waitForFinished(ProcessTimeout);
    return codes;
}
