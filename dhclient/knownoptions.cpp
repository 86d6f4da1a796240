#include "knownoptions.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace DhclientConf {

namespace {

struct KnownOption
{
    std::string_view id;
    int code;                ///< 0 outside DHCPv4
    std::string_view format; ///< see knownFormat()
};

// By code, as seen in option 55 of what the client sends.
constexpr KnownOption Dhcp[] = {
    {"subnet-mask", 1, "I"}, {"time-offset", 2, "l"}, {"routers", 3, "IA"}, {"time-servers", 4, "IA"},
    {"ien116-name-servers", 5, "IA"}, {"domain-name-servers", 6, "IA"}, {"log-servers", 7, "IA"},
    {"cookie-servers", 8, "IA"}, {"lpr-servers", 9, "IA"}, {"impress-servers", 10, "IA"},
    {"resource-location-servers", 11, "IA"}, {"host-name", 12, "t"}, {"boot-size", 13, "s"},
    {"merit-dump", 14, "t"}, {"domain-name", 15, "t"}, {"swap-server", 16, "I"}, {"root-path", 17, "t"},
    {"extensions-path", 18, "t"}, {"ip-forwarding", 19, "f"}, {"non-local-source-routing", 20, "f"},
    {"policy-filter", 21, "IIA"}, {"max-dgram-reassembly", 22, "s"}, {"default-ip-ttl", 23, "b"},
    {"path-mtu-aging-timeout", 24, "l"}, {"path-mtu-plateau-table", 25, "sA"}, {"interface-mtu", 26, "s"},
    {"all-subnets-local", 27, "f"}, {"broadcast-address", 28, "I"}, {"perform-mask-discovery", 29, "f"},
    {"mask-supplier", 30, "f"}, {"router-discovery", 31, "f"}, {"router-solicitation-address", 32, "I"},
    {"static-routes", 33, "IIA"}, {"trailer-encapsulation", 34, "f"}, {"arp-cache-timeout", 35, "l"},
    {"ieee802-3-encapsulation", 36, "f"}, {"default-tcp-ttl", 37, "b"}, {"tcp-keepalive-interval", 38, "l"},
    {"tcp-keepalive-garbage", 39, "f"}, {"nis-domain", 40, "t"}, {"nis-servers", 41, "IA"},
    {"ntp-servers", 42, "IA"}, {"vendor-encapsulated-options", 43, "X"}, {"netbios-name-servers", 44, "IA"},
    {"netbios-dd-server", 45, "IA"}, {"netbios-node-type", 46, "b"}, {"netbios-scope", 47, "t"},
    {"font-servers", 48, "IA"}, {"x-display-manager", 49, "IA"}, {"dhcp-requested-address", 50, "I"},
    {"dhcp-lease-time", 51, "l"}, {"dhcp-option-overload", 52, "b"}, {"dhcp-message-type", 53, "b"},
    {"dhcp-server-identifier", 54, "I"}, {"dhcp-parameter-request-list", 55, "bA"},
    {"dhcp-message", 56, "t"}, {"dhcp-max-message-size", 57, "s"}, {"dhcp-renewal-time", 58, "l"},
    {"dhcp-rebinding-time", 59, "l"}, {"vendor-class-identifier", 60, "X"},
    {"dhcp-client-identifier", 61, "X"}, {"nwip-domain", 62, "t"}, {"nwip-suboptions", 63, "X"},
    {"nisplus-domain", 64, "t"}, {"nisplus-servers", 65, "IA"}, {"tftp-server-name", 66, "t"},
    {"bootfile-name", 67, "t"}, {"mobile-ip-home-agent", 68, "IA"}, {"smtp-server", 69, "IA"},
    {"pop-server", 70, "IA"}, {"nntp-server", 71, "IA"}, {"www-server", 72, "IA"},
    {"finger-server", 73, "IA"}, {"irc-server", 74, "IA"}, {"streettalk-server", 75, "IA"},
    {"streettalk-directory-assistance-server", 76, "IA"}, {"user-class", 77, "t"},
    {"slp-directory-agent", 78, "fIa"}, {"slp-service-scope", 79, "ft"}, {"fqdn", 81, "X"},
    {"relay-agent-information", 82, "X"}, {"nds-servers", 85, "IA"}, {"nds-tree-name", 86, "t"},
    {"nds-context", 87, "t"}, {"bcms-controller-names", 88, "D"}, {"bcms-controller-address", 89, "IA"},
    {"client-last-transaction-time", 91, "l"}, {"associated-ip", 92, "IA"}, {"pxe-system-type", 93, "sA"},
    {"pxe-interface-id", 94, "bbb"}, {"pxe-client-id", 97, "bX"}, {"uap-servers", 98, "t"},
    {"geoconf-civic", 99, "X"}, {"pcode", 100, "t"}, {"tcode", 101, "t"}, {"v6-only-preferred", 108, "l"},
    {"netinfo-server-address", 112, "IA"}, {"netinfo-server-tag", 113, "t"}, {"default-url", 114, "t"},
    {"auto-config", 116, "b"}, {"name-service-search", 117, "sA"}, {"subnet-selection", 118, "I"},
    {"domain-search", 119, "D"}, {"vivco", 124, "X"}, {"vivso", 125, "X"}, {"pana-agent", 136, "IA"},
    {"v4-lost", 137, "d"}, {"capwap-ac-v4", 138, "IA"}, {"sip-ua-cs-domains", 141, "D"},
    {"ipv4-address-andsf", 142, "IA"}, {"rdnss-selection", 146, "bIID"}, {"tftp-server-address", 150, "IA"},
    {"v4-portparams", 159, ""}, {"v4-captive-portal", 160, "t"}, {"loader-configfile", 209, "t"},
    {"loader-pathprefix", 210, "t"}, {"loader-reboottime", 211, "l"}, {"option-6rd", 212, "bbJIa"},
    {"v4-access-domain", 213, "d"},
};

// With their option space; in order, for the search.
constexpr KnownOption Others[] = {
    {"client.dummy-client-parm", 0, ""}, {"dhcp6.aftr-name", 0, "d"}, {"dhcp6.bcms-server-a", 0, "JA"},
    {"dhcp6.bcms-server-d", 0, "D"}, {"dhcp6.bootfile-param", 0, "X"}, {"dhcp6.bootfile-url", 0, "t"},
    {"dhcp6.capwap-ac-v6", 0, "JA"}, {"dhcp6.client-arch-type", 0, "sA"}, {"dhcp6.client-data", 0, "X"},
    {"dhcp6.client-id", 0, "X"}, {"dhcp6.client-linklayer-addr", 0, "X"}, {"dhcp6.clt-time", 0, "l"},
    {"dhcp6.dhcp4-o-dhcp6-server", 0, "JA"}, {"dhcp6.dhcpv4-msg", 0, "X"}, {"dhcp6.domain-search", 0, "D"},
    {"dhcp6.elapsed-time", 0, "s"}, {"dhcp6.ero", 0, "sA"}, {"dhcp6.erp-local-domain-name", 0, "d"},
    {"dhcp6.fqdn", 0, "X"}, {"dhcp6.geoconf-civic", 0, "X"}, {"dhcp6.ia-addr", 0, "X"},
    {"dhcp6.ia-na", 0, "X"}, {"dhcp6.ia-pd", 0, "X"}, {"dhcp6.ia-prefix", 0, "X"}, {"dhcp6.ia-ta", 0, "X"},
    {"dhcp6.inf-max-rt", 0, "l"}, {"dhcp6.info-refresh-time", 0, "l"}, {"dhcp6.interface-id", 0, "X"},
    {"dhcp6.ipv6-address-andsf", 0, "JA"}, {"dhcp6.link-address", 0, "J"}, {"dhcp6.lq-client-link", 0, "JA"},
    {"dhcp6.lq-query", 0, "X"}, {"dhcp6.lq-relay-data", 0, "JX"}, {"dhcp6.name-servers", 0, "JA"},
    {"dhcp6.new-posix-timezone", 0, "t"}, {"dhcp6.new-tzdb-timezone", 0, "t"}, {"dhcp6.nii", 0, "bbb"},
    {"dhcp6.nis-domain-name", 0, "D"}, {"dhcp6.nis-servers", 0, "JA"}, {"dhcp6.nisp-domain-name", 0, "D"},
    {"dhcp6.nisp-servers", 0, "JA"}, {"dhcp6.oro", 0, "sA"}, {"dhcp6.pana-agent", 0, "JA"},
    {"dhcp6.preference", 0, "b"}, {"dhcp6.rapid-commit", 0, ""}, {"dhcp6.rdnss-selection", 0, ""},
    {"dhcp6.reconf-accept", 0, ""}, {"dhcp6.reconf-msg", 0, ""}, {"dhcp6.relay-id", 0, "X"},
    {"dhcp6.relay-msg", 0, "X"}, {"dhcp6.relay-source-port", 0, "s"}, {"dhcp6.remote-id", 0, "X"},
    {"dhcp6.server-id", 0, "X"}, {"dhcp6.sip-servers-addresses", 0, "JA"},
    {"dhcp6.sip-servers-names", 0, "D"}, {"dhcp6.sip-ua-cs-list", 0, "D"}, {"dhcp6.sntp-servers", 0, "JA"},
    {"dhcp6.solmax-rt", 0, "l"}, {"dhcp6.status-code", 0, ""}, {"dhcp6.subscriber-id", 0, "X"},
    {"dhcp6.unicast", 0, "J"}, {"dhcp6.v6-access-domain", 0, "d"}, {"dhcp6.v6-captive-portal", 0, "t"},
    {"dhcp6.v6-lost", 0, "d"}, {"dhcp6.vendor-opts", 0, "X"}, {"fqdn.domainname", 0, "t"},
    {"fqdn.encoded", 0, "f"}, {"fqdn.fqdn", 0, "t"}, {"fqdn.hostname", 0, "t"},
    {"fqdn.no-client-update", 0, "f"}, {"fqdn.rcode1", 0, "b"}, {"fqdn.rcode2", 0, "b"},
    {"fqdn.server-update", 0, "f"}, {"isc.media", 0, "t"}, {"isc.update-assist", 0, "X"},
    {"isc6.4o6-interface", 0, "t"}, {"isc6.4o6-source-address", 0, ""}, {"isc6.media", 0, "t"},
    {"isc6.update-assist", 0, "X"}, {"nwip.autoretries", 0, "b"}, {"nwip.autoretry-secs", 0, "b"},
    {"nwip.illegal-1", 0, ""}, {"nwip.illegal-2", 0, ""}, {"nwip.illegal-3", 0, ""},
    {"nwip.illegal-4", 0, ""}, {"nwip.nearest-nwip-server", 0, "IA"}, {"nwip.nsq-broadcast", 0, "f"},
    {"nwip.nwip-1-1", 0, "f"}, {"nwip.preferred-dss", 0, "IA"}, {"nwip.primary-dss", 0, "I"},
    {"vendor-class.isc", 0, "X"}, {"vendor.isc", 0, "X"}, {"vsio.isc", 0, "X"},
};

constexpr std::string_view Spaces[] = {
    "client", "dhcp", "dhcp6", "fqdn", "fqdn6-if-you-see-me-its-a-bug-bug-bug", "isc", "isc6", "nwip",
    "vendor", "vendor-class", "vsio",
};

const KnownOption *otherOption(std::string_view id)
{
    const auto isBefore = [](const KnownOption &option, std::string_view key) { return option.id < key; };
    const auto found = std::lower_bound(std::begin(Others), std::end(Others), id, isBefore);
    return found != std::end(Others) && found->id == id ? found : nullptr;
}

// The code of a name "unknown-..." of any option space, -1 if it is none.
int numberBehindPrefix(std::string_view word)
{
    constexpr std::string_view prefix = "unknown-";
    constexpr std::size_t longest = 9; // digits
    if (word.substr(0, prefix.size()) != prefix)
        return -1;
    word.remove_prefix(prefix.size());
    if (word.empty() || word.size() > longest || word.find_first_not_of("0123456789") != std::string_view::npos)
        return -1;
    return std::stoi(std::string(word));
}

} // namespace

std::string_view knownFormat(std::string_view id)
{
    if (id.find('.') != std::string_view::npos) {
        const KnownOption *other = otherOption(id);
        return other ? other->format : std::string_view();
    }
    const auto found = std::find_if(std::begin(Dhcp), std::end(Dhcp),
                                    [id](const KnownOption &option) { return option.id == id; });
    return found == std::end(Dhcp) ? std::string_view() : found->format;
}

bool isKnownOption(std::string_view id)
{
    if (id.find('.') != std::string_view::npos)
        return otherOption(id) != nullptr;
    return knownCode(id) != 0;
}

bool isKnownSpace(std::string_view space)
{
    return std::binary_search(std::begin(Spaces), std::end(Spaces), space);
}

bool canBeEncapsulated(std::string_view space)
{
    return !isKnownSpace(space) || space == "client" || space == "dhcp6";
}

bool isReadAsNumber(std::string_view id)
{
    constexpr std::string_view Prefix = "unknown-";
    return id.substr(id.find('.') + 1).substr(0, Prefix.size()) == Prefix; // npos + 1 is 0
}

bool isNumberedOption(std::string_view id)
{
    const std::size_t dot = id.find('.');
    if (dot == std::string_view::npos)
        return numberedCode(id) != 0;
    return isKnownSpace(id.substr(0, dot)) && numberBehindPrefix(id.substr(dot + 1)) > 0;
}

int numberedCode(std::string_view id)
{
    const int code = numberBehindPrefix(id);
    return code > 0 && code < 255 ? code : 0;
}

int knownCode(std::string_view id)
{
    const auto found = std::find_if(std::begin(Dhcp), std::end(Dhcp),
                                    [id](const KnownOption &option) { return option.id == id; });
    return found == std::end(Dhcp) ? 0 : found->code;
}

std::string_view knownName(int code)
{
    const auto found = std::find_if(std::begin(Dhcp), std::end(Dhcp),
                                    [code](const KnownOption &option) { return option.code == code; });
    return found == std::end(Dhcp) ? std::string_view() : found->id;
}

} // namespace DhclientConf
