#include "instancelock.h"

#include "paths.h"

#include <sys/socket.h>
#include <unistd.h>

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

InstanceLock::InstanceLock(const std::string &program) : program(program) {}

InstanceLock::State InstanceLock::acquire(bool asksToShow)
{
    const Paths::InstanceSocket own = Paths::instanceSocket(program);
    const auto *address = reinterpret_cast<const sockaddr *>(&own.address);

    for (int attempt = 0; attempt < 100; ++attempt) {
        Posix::Descriptor candidate(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        if (::bind(candidate.get(), address, own.size) == 0 && ::listen(candidate.get(), SOMAXCONN) == 0) {
            socket = std::move(candidate);
            return State::Acquired;
        }
        if (errno == EADDRINUSE && ::connect(candidate.get(), address, own.size) == 0) {
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
    reason = "socket @" + std::string(own.address.sun_path + 1) + ": " + std::strerror(errno);
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
