#include "knownoptions.h"

#include <algorithm>
#include <iterator>

namespace DhclientConf {

namespace {

struct KnownOption
{
    std::string_view id;
    int code;
};

// By code, as seen in option 55 of what the client sends.
constexpr KnownOption Dhcp[] = {
    {"subnet-mask", 1}, {"time-offset", 2}, {"routers", 3}, {"time-servers", 4}, {"ien116-name-servers", 5},
    {"domain-name-servers", 6}, {"log-servers", 7}, {"cookie-servers", 8}, {"lpr-servers", 9},
    {"impress-servers", 10}, {"resource-location-servers", 11}, {"host-name", 12}, {"boot-size", 13},
    {"merit-dump", 14}, {"domain-name", 15}, {"swap-server", 16}, {"root-path", 17},
    {"extensions-path", 18}, {"ip-forwarding", 19}, {"non-local-source-routing", 20}, {"policy-filter", 21},
    {"max-dgram-reassembly", 22}, {"default-ip-ttl", 23}, {"path-mtu-aging-timeout", 24},
    {"path-mtu-plateau-table", 25}, {"interface-mtu", 26}, {"all-subnets-local", 27},
    {"broadcast-address", 28}, {"perform-mask-discovery", 29}, {"mask-supplier", 30},
    {"router-discovery", 31}, {"router-solicitation-address", 32}, {"static-routes", 33},
    {"trailer-encapsulation", 34}, {"arp-cache-timeout", 35}, {"ieee802-3-encapsulation", 36},
    {"default-tcp-ttl", 37}, {"tcp-keepalive-interval", 38}, {"tcp-keepalive-garbage", 39},
    {"nis-domain", 40}, {"nis-servers", 41}, {"ntp-servers", 42}, {"vendor-encapsulated-options", 43},
    {"netbios-name-servers", 44}, {"netbios-dd-server", 45}, {"netbios-node-type", 46},
    {"netbios-scope", 47}, {"font-servers", 48}, {"x-display-manager", 49}, {"dhcp-requested-address", 50},
    {"dhcp-lease-time", 51}, {"dhcp-option-overload", 52}, {"dhcp-message-type", 53},
    {"dhcp-server-identifier", 54}, {"dhcp-parameter-request-list", 55}, {"dhcp-message", 56},
    {"dhcp-max-message-size", 57}, {"dhcp-renewal-time", 58}, {"dhcp-rebinding-time", 59},
    {"vendor-class-identifier", 60}, {"dhcp-client-identifier", 61}, {"nwip-domain", 62},
    {"nwip-suboptions", 63}, {"nisplus-domain", 64}, {"nisplus-servers", 65}, {"tftp-server-name", 66},
    {"bootfile-name", 67}, {"mobile-ip-home-agent", 68}, {"smtp-server", 69}, {"pop-server", 70},
    {"nntp-server", 71}, {"www-server", 72}, {"finger-server", 73}, {"irc-server", 74},
    {"streettalk-server", 75}, {"streettalk-directory-assistance-server", 76}, {"user-class", 77},
    {"slp-directory-agent", 78}, {"slp-service-scope", 79}, {"fqdn", 81}, {"relay-agent-information", 82},
    {"nds-servers", 85}, {"nds-tree-name", 86}, {"nds-context", 87}, {"bcms-controller-names", 88},
    {"bcms-controller-address", 89}, {"client-last-transaction-time", 91}, {"associated-ip", 92},
    {"pxe-system-type", 93}, {"pxe-interface-id", 94}, {"pxe-client-id", 97}, {"uap-servers", 98},
    {"geoconf-civic", 99}, {"pcode", 100}, {"tcode", 101}, {"v6-only-preferred", 108},
    {"netinfo-server-address", 112}, {"netinfo-server-tag", 113}, {"default-url", 114},
    {"auto-config", 116}, {"name-service-search", 117}, {"subnet-selection", 118}, {"domain-search", 119},
    {"vivco", 124}, {"vivso", 125}, {"pana-agent", 136}, {"v4-lost", 137}, {"capwap-ac-v4", 138},
    {"sip-ua-cs-domains", 141}, {"ipv4-address-andsf", 142}, {"rdnss-selection", 146},
    {"tftp-server-address", 150}, {"v4-portparams", 159}, {"v4-captive-portal", 160},
    {"loader-configfile", 209}, {"loader-pathprefix", 210}, {"loader-reboottime", 211}, {"option-6rd", 212},
    {"v4-access-domain", 213},
};

// With their option space; in order, for the search.
constexpr std::string_view Others[] = {
    "client.dummy-client-parm", "dhcp6.aftr-name", "dhcp6.bcms-server-a", "dhcp6.bcms-server-d",
    "dhcp6.bootfile-param", "dhcp6.bootfile-url", "dhcp6.capwap-ac-v6", "dhcp6.client-arch-type",
    "dhcp6.client-data", "dhcp6.client-id", "dhcp6.client-linklayer-addr", "dhcp6.clt-time",
    "dhcp6.dhcp4-o-dhcp6-server", "dhcp6.dhcpv4-msg", "dhcp6.domain-search", "dhcp6.elapsed-time",
    "dhcp6.ero", "dhcp6.erp-local-domain-name", "dhcp6.fqdn", "dhcp6.geoconf-civic", "dhcp6.ia-addr",
    "dhcp6.ia-na", "dhcp6.ia-pd", "dhcp6.ia-prefix", "dhcp6.ia-ta", "dhcp6.inf-max-rt",
    "dhcp6.info-refresh-time", "dhcp6.interface-id", "dhcp6.ipv6-address-andsf", "dhcp6.link-address",
    "dhcp6.lq-client-link", "dhcp6.lq-query", "dhcp6.lq-relay-data", "dhcp6.name-servers",
    "dhcp6.new-posix-timezone", "dhcp6.new-tzdb-timezone", "dhcp6.nii", "dhcp6.nis-domain-name",
    "dhcp6.nis-servers", "dhcp6.nisp-domain-name", "dhcp6.nisp-servers", "dhcp6.oro", "dhcp6.pana-agent",
    "dhcp6.preference", "dhcp6.rapid-commit", "dhcp6.rdnss-selection", "dhcp6.reconf-accept",
    "dhcp6.reconf-msg", "dhcp6.relay-id", "dhcp6.relay-msg", "dhcp6.relay-source-port", "dhcp6.remote-id",
    "dhcp6.server-id", "dhcp6.sip-servers-addresses", "dhcp6.sip-servers-names", "dhcp6.sip-ua-cs-list",
    "dhcp6.sntp-servers", "dhcp6.solmax-rt", "dhcp6.status-code", "dhcp6.subscriber-id", "dhcp6.unicast",
    "dhcp6.v6-access-domain", "dhcp6.v6-captive-portal", "dhcp6.v6-lost", "dhcp6.vendor-opts",
    "fqdn.domainname", "fqdn.encoded", "fqdn.fqdn", "fqdn.hostname", "fqdn.no-client-update", "fqdn.rcode1",
    "fqdn.rcode2", "fqdn.server-update", "isc.media", "isc.update-assist", "isc6.4o6-interface",
    "isc6.4o6-source-address", "isc6.media", "isc6.update-assist", "nwip.autoretries",
    "nwip.autoretry-secs", "nwip.illegal-1", "nwip.illegal-2", "nwip.illegal-3", "nwip.illegal-4",
    "nwip.nearest-nwip-server", "nwip.nsq-broadcast", "nwip.nwip-1-1", "nwip.preferred-dss",
    "nwip.primary-dss", "vendor-class.isc", "vendor.isc", "vsio.isc",
};

constexpr std::string_view Spaces[] = {
    "client", "dhcp", "dhcp6", "fqdn", "fqdn6-if-you-see-me-its-a-bug-bug-bug", "isc", "isc6", "nwip",
    "vendor", "vendor-class", "vsio",
};

} // namespace

bool isKnownOption(std::string_view id)
{
    if (id.find('.') != std::string_view::npos)
        return std::binary_search(std::begin(Others), std::end(Others), id);
    return knownCode(id) != 0;
}

bool isKnownSpace(std::string_view space)
{
    return std::binary_search(std::begin(Spaces), std::end(Spaces), space);
}

bool isNumberedOption(std::string_view id)
{
    const std::size_t dot = id.find('.');
    if (dot != std::string_view::npos) {
        if (!isKnownSpace(id.substr(0, dot)))
            return false;
        id.remove_prefix(dot + 1);
    }
    constexpr std::string_view prefix = "unknown-";
    return id.size() > prefix.size() && id.substr(0, prefix.size()) == prefix
        && id.find_first_not_of("0123456789", prefix.size()) == std::string_view::npos;
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
