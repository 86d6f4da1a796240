#ifndef KNOWNOPTIONS_H
#define KNOWNOPTIONS_H

#include <string_view>

/// What isc-dhcp-client 4.4.3-P1 knows of DHCPv4 without any declaration: generated from the definitions that are
/// marked as predefined, each of which the tests check with the client.
namespace DhclientConf {

/// What the client requests where no request statement says otherwise (dhclient.conf(5); in the order of its option
/// 55). Those of dhcp6 are the list of its DHCPv6 side: one statement sets both.
constexpr std::string_view BuiltInRequests[] = {"subnet-mask", "broadcast-address",  "time-offset",
                                                "routers",     "domain-name",        "domain-name-servers",
                                                "host-name",   "dhcp6.name-servers", "dhcp6.domain-search"};

/// The code of an option, 0 if the client knows none of that name.
int knownCode(std::string_view id);
/// The name of the option with that code, empty if the client knows none.
std::string_view knownName(int code);
/// The code that a name like "unknown-200" gives, 0 if the name is none of those. The client takes it in a list for
/// whatever option has the code.
int numberedCode(std::string_view id);

} // namespace DhclientConf

#endif
