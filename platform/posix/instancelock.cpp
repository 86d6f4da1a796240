#include "instancelock.h"

#include "paths.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <functional>

namespace {

ucred peerOf(int socket)
{
    ucred peer = {};
    peer.uid = static_cast<uid_t>(-1);
    socklen_t size = sizeof(peer);
    ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size);
    return peer;
}

} // namespace

InstanceLock::InstanceLock(const std::string &program)
{
    std::string name = program + '-' + std::to_string(::geteuid());
    if (Paths::hasRoot())
        name += '-' + std::to_string(std::hash<std::string>()(Paths::resolve("")));
    address.sun_family = AF_UNIX;
    const std::size_t length = name.copy(address.sun_path + 1, sizeof(address.sun_path) - 1);
    addressSize = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + length); // after a null byte
}

InstanceLock::State InstanceLock::acquire(bool asksToShow)
{
    const auto *own = reinterpret_cast<const sockaddr *>(&address);
    for (int attempt = 0; attempt < 100; ++attempt) {
        Posix::Descriptor candidate(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        if (::bind(candidate.get(), own, addressSize) == 0 && ::listen(candidate.get(), SOMAXCONN) == 0) {
            socket = std::move(candidate);
            return State::Acquired;
        }
        if (errno == EADDRINUSE && ::connect(candidate.get(), own, addressSize) == 0) {
            const ucred peer = peerOf(candidate.get());
            if (peer.uid != ::geteuid()) {
                errno = EPERM; // anybody may take any name
                break;
            }
            if (asksToShow)
                ::send(candidate.get(), "", 1, MSG_NOSIGNAL);
            holderPid = peer.pid;
            return State::Held;
        }
        if (errno != ECONNREFUSED && errno != EAGAIN)
            break;
        ::usleep(20000); // the holder has bound but does not listen yet, or has just ended
    }
    reason = "socket @" + std::string(address.sun_path + 1) + ": " + std::strerror(errno);
    return State::Failed;
}

pid_t InstanceLock::currentHolder() const
{
    const Posix::Descriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (::connect(connection.get(), reinterpret_cast<const sockaddr *>(&address), addressSize) != 0)
        return 0;
    const ucred peer = peerOf(connection.get());
    return peer.uid == ::geteuid() ? peer.pid : 0; // anybody may take any name
}

bool InstanceLock::isAskedToShow()
{
    const Posix::Descriptor start(::accept4(socket.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!start || peerOf(start.get()).uid != ::geteuid())
        return false;
    const timeval patience = {1, 0}; // it asks at once or ends
    ::setsockopt(start.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    char byte = 0;
    return ::recv(start.get(), &byte, 1, 0) == 1;
}
