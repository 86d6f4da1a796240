#include "instancelock.h"

#include "paths.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

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

InstanceLock::InstanceLock(const std::string &programName) : name(programName + '-' + std::to_string(::geteuid()))
{
    if (Paths::hasRoot())
        name += '-' + std::to_string(std::hash<std::string>()(Paths::resolve("")));
}

InstanceLock::State InstanceLock::acquire(bool asksToShow)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path + 1, sizeof(address.sun_path) - 1); // after a null byte: an abstract name
    const auto *generic = reinterpret_cast<const sockaddr *>(&address);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());

    for (int attempt = 0; attempt < 100; ++attempt) {
        Posix::Descriptor candidate(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        if (::bind(candidate.get(), generic, size) == 0 && ::listen(candidate.get(), SOMAXCONN) == 0) {
            socket = std::move(candidate);
            return State::Acquired;
        }
        if (errno == EADDRINUSE && ::connect(candidate.get(), generic, size) == 0) {
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
    reason = "socket @" + name + ": " + std::strerror(errno);
    return State::Failed;
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
