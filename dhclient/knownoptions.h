#ifndef KNOWNOPTIONS_H
#define KNOWNOPTIONS_H

#include <string_view>

// What isc-dhcp-client 4.4.3-P1 knows without any declaration. Names are those of dhcp-options(5), each asked of
// the client itself, which knows some more (auto-config, vivco, v4-captive-portal) and not all (the space
// "agent" belongs to the server). Ids as in Name::id.

namespace DhclientConf {

/// What the client asks for where no request statement says otherwise (dhclient.conf(5); the order is the one
/// of its option 55). The dhcp6 ones are the list of its DHCPv6 side: one statement sets both.
constexpr std::string_view BuiltInRequests[] = {
    "subnet-mask", "broadcast-address", "time-offset", "routers", "domain-name", "domain-name-servers", "host-name",
    "dhcp6.name-servers", "dhcp6.domain-search"};

bool isKnownOption(std::string_view id);
bool isKnownSpace(std::string_view space);
/// Whether the client can have the values of that space inside an option; another one ends it when it reads the
/// declaration, or when it first sends something (each asked of the client itself).
bool canBeEncapsulated(std::string_view space);

/// Whether the client takes the name for one by number, sound or not, before it looks for an option of that name.
bool isReadAsNumber(std::string_view id);
/// Names like "unknown-228", which the client takes in a list for whatever option has that code, and leaves out
/// of what it sends while none has.
bool isNumberedOption(std::string_view id);
/// The code of such a name of DHCPv4, 0 if it is none.
int numberedCode(std::string_view id);

/// How an option's value is written, a letter per part: I IPv4 address or host name, J IPv6 address, b, s and l
/// numbers of 8, 16 and 32 bits, f boolean, t text, X string or hexadecimal data, d domain name, D quoted domain
/// names; "a" behind a part for an array of it, "A" at the end for an array of all. From dhcp-options(5), and each
/// letter tried on the client (which takes some options as text that the page calls strings). Empty where nothing
/// is known, or where the option has no value.
std::string_view knownFormat(std::string_view id);

/// The code of a DHCPv4 option that the client knows, 0 if it knows none of that name.
int knownCode(std::string_view id);
/// The name of the DHCPv4 option that the client knows under that code, empty if it knows none.
std::string_view knownName(int code);

} // namespace DhclientConf

#endif
