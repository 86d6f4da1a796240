#include "realclient.h"

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <stdexcept>

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::size_t Interfaces = 3;
constexpr int Patience = 30; // s; it sends within 0.1 s, on a busy machine later
constexpr char Setup[] = "ip link add eth0 type veth peer name eth1 && ip link add wlan0 type veth peer name wlan1 && "
                         "for name in eth0 eth1 wlan0 wlan1; do ip link set $name up || exit; done";

} // namespace

RealClient::RealClient() : directory(mkdtemp(std::string("/tmp/realclient-XXXXXX").data()))
{
    const char *installed = "/usr/sbin/dhclient";
    if (!std::filesystem::exists(installed))
        obstacle = "the DHCP client is not installed";
    else if (unshare(CLONE_NEWNET | CLONE_NEWNS) != 0 || std::system(Setup) != 0)
        obstacle = "no right to make network interfaces in a namespace";
    else
        std::filesystem::copy_file(installed, directory + "/client");
    // All that the interfaces send and receive.
    wire = Posix::Descriptor(socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, htons(ETH_P_ALL)));
}

RealClient::~RealClient()
{
    std::filesystem::remove_all(directory);
}

RealClient::Heard RealClient::run(const std::string &configuration) const
{
    char frame[4096];
    while (recv(wire.get(), frame, sizeof frame, 0) > 0) {} // left by an earlier run
    Posix::replaceFile(directory + "/leases", "", Posix::Replacement::Cached);
    const pid_t client = fork();
    if (client == 0) {
        // Not a pipe: it writes piece by piece and would wait for the reader of each.
        if (chdir(directory.c_str()) == 0 && std::freopen("errors", "w", stderr))
            execl("client", "dhclient", "-d", "-1", "-4", "-cf", configuration.c_str(), "-lf", "leases", "-pf", "pid",
                  "-sf", "/bin/true", "eth0", "wlan0", "eth1", nullptr);
        _exit(127);
    }
    Heard heard;
    siginfo_t ended = {};
    const std::time_t deadline = std::time(nullptr) + Patience;
    while (heard.requested.size() < Interfaces && ended.si_pid == 0 && std::time(nullptr) < deadline) {
        pollfd waiting = {wire.get(), POLLIN, 0};
        if (poll(&waiting, 1, 50) == 0) // ms
            waitid(P_PID, static_cast<id_t>(client), &ended, WEXITED | WNOHANG | WNOWAIT);
        sockaddr_ll sender = {};
        socklen_t length = sizeof sender;
        const ssize_t size = recvfrom(wire.get(), frame, sizeof frame, 0, reinterpret_cast<sockaddr *>(&sender),
                                      &length);
        const std::string_view sent(frame, sender.sll_pkttype == PACKET_OUTGOING && size > 0 ? std::size_t(size) : 0);
        const std::size_t cookie = sent.find("\x63\x82\x53\x63");
        const auto byte = [sent](std::size_t offset) { return static_cast<unsigned char>(sent[offset]); };
        char name[IF_NAMESIZE];
        if (cookie == std::string_view::npos || !if_indextoname(static_cast<unsigned>(sender.sll_ifindex), name))
            continue; // none of the client's
        std::vector<int> codes;
        for (std::size_t at = cookie + 4; at + 1 < sent.size() && byte(at) != 255; at += 2U + byte(at + 1)) {
            for (std::size_t i = 0; byte(at) == 55 && i < byte(at + 1); ++i)
                codes.push_back(byte(at + 2 + i));
        }
        heard.requested.emplace(name, codes);
    }
    kill(client, SIGKILL);
    waitpid(client, nullptr, 0);
    const Posix::Descriptor errors(open((directory + "/errors").c_str(), O_RDONLY | O_CLOEXEC));
    const std::string said = Posix::readAll(errors.get(), 1 << 24, "errors"); // endless over some open strings
    const std::size_t first = said.find(directory);
    if (ended.si_pid != 0 || heard.requested.size() < Interfaces) // some open strings make it read for ever
        heard.complaints = "ended or sent nothing\n" + said;
    else if (first != std::string::npos)
        heard.complaints = said.substr(first, said.find("\nListening on", first) - first);
    return heard;
}
