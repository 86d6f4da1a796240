#include "addresses.h"

#include "posix.h"

#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>

#include <array>

std::vector<Address> addresses()
{
    struct
    {
        nlmsghdr header;
        ifaddrmsg message;
    } request = {};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = RTM_GETADDR;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.message.ifa_family = AF_INET;
    const Posix::Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    if (!socket || ::send(socket.get(), &request, sizeof request, 0) < 0)
        Posix::fail("ask for", "the addresses");

    std::vector<Address> addresses;
    alignas(nlmsghdr) std::array<char, 32768> answer = {};
    for (;;) {
        ssize_t size = ::recv(socket.get(), answer.data(), answer.size(), 0);
        if (size < 0)
            Posix::fail("receive", "the addresses");
        for (auto *message = reinterpret_cast<const nlmsghdr *>(answer.data()); NLMSG_OK(message, size);
             message = NLMSG_NEXT(message, size)) {
            if (message->nlmsg_type != RTM_NEWADDR)
                return addresses; // NLMSG_DONE, or an error
            const auto *header = static_cast<const ifaddrmsg *>(NLMSG_DATA(message));
            auto left = IFA_PAYLOAD(message);
            for (const rtattr *attribute = IFA_RTA(header); RTA_OK(attribute, left);
                 attribute = RTA_NEXT(attribute, left)) {
                char name[IF_NAMESIZE] = "";
                const auto *lifetimes = static_cast<const ifa_cacheinfo *>(RTA_DATA(attribute));
                if (attribute->rta_type == IFA_CACHEINFO && ::if_indextoname(header->ifa_index, name))
                    addresses.push_back(
                        {name, lifetimes->ifa_valid == UINT32_MAX, std::chrono::seconds(lifetimes->ifa_valid)});
            }
        }
    }
}
