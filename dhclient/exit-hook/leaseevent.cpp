#include "leaseevent.h"

#include "showntext.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>

#include <algorithm>
#include <charconv>
#include <memory>

namespace {

constexpr std::string_view Prefix = "new_";
constexpr std::size_t LongestOptionName = 200;

// These the client sets beside the options, from the fixed part of the message or by its own reckoning.
constexpr std::string_view NoOptions[]
    = {"expiry", "filename", "ip_address", "network_number", "next_server", "server_name"};

bool isLetterOrDigit(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
        || (character >= '0' && character <= '9');
}

bool isOptionName(std::string_view name)
{
    return !name.empty() && name.size() <= LongestOptionName && isLetterOrDigit(name.front())
        && std::all_of(name.begin(), name.end(),
                       [](char c) { return isLetterOrDigit(c) || c == '_' || c == '-'; })
        && std::find(std::begin(NoOptions), std::end(NoOptions), name) == std::end(NoOptions);
}

/// Whether the kernel lets an interface have the name, and a record's line can begin with it.
bool isInterfaceName(std::string_view name)
{
    return !name.empty() && name.size() < IF_NAMESIZE && name != "." && name != ".." && name != "#"
        && std::none_of(name.begin(), name.end(), [](char c) {
               return c == '/' || static_cast<unsigned char>(c) <= ' ' || c == '\x7F';
           });
}

pid_t parsedPid(std::string_view text)
{
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), pid);
    return error == std::errc() && end == text.data() + text.size() && pid > 1 ? pid : 0;
}

/// Whether an existing interface is without the address. Unknown counts as no.
bool lacksAddress(const std::string &interface, const std::string &address)
{
    in_addr wanted = {};
    ifaddrs *list = nullptr;
    if (::if_nametoindex(interface.c_str()) == 0 || ::inet_pton(AF_INET, address.c_str(), &wanted) != 1
        || ::getifaddrs(&list) != 0)
        return false;
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> holder(list, ::freeifaddrs);
    for (const ifaddrs *entry = list; entry; entry = entry->ifa_next) {
        if (entry->ifa_addr && entry->ifa_addr->sa_family == AF_INET && interface == entry->ifa_name
            && reinterpret_cast<const sockaddr_in *>(entry->ifa_addr)->sin_addr.s_addr == wanted.s_addr)
            return false;
    }
    return true;
}

LeaseEvent::Kind kindOf(std::string_view reason)
{
    using Kind = LeaseEvent::Kind;
    constexpr std::pair<std::string_view, Kind> Reasons[]
        = {{"BOUND", Kind::Bound},   {"REBOOT", Kind::Bound},   {"TIMEOUT", Kind::Bound},
           {"RENEW", Kind::Renewed}, {"REBIND", Kind::Renewed}, {"EXPIRE", Kind::Lost},
           {"FAIL", Kind::Lost},     {"RELEASE", Kind::Lost},   {"STOP", Kind::Lost},
           {"V6ONLY", Kind::Lost}};
    for (const auto &[name, kind] : Reasons) {
        if (name == reason)
            return kind;
    }
    return Kind::Ignored;
}

} // namespace

LeaseEvent LeaseEvent::fromEnvironment(std::string_view variables)
{
    LeaseEvent event;
    std::string reason;
    std::string address;
    while (!variables.empty()) {
        const std::string_view variable = variables.substr(0, variables.find('\0'));
        variables.remove_prefix(std::min(variable.size() + 1, variables.size()));
        const std::size_t equals = variable.find('=');
        if (equals == std::string_view::npos)
            continue;
        std::string_view name = variable.substr(0, equals);
        const std::string_view value = variable.substr(equals + 1);
        if (name == "reason") {
            reason = value;
        } else if (name == "interface") {
            event.interface = value;
        } else if (name == "pid") {
            event.pid = parsedPid(value);
        } else if (name == "new_ip_address") {
            address = value;
        } else if (name.substr(0, Prefix.size()) == Prefix && isOptionName(name.substr(Prefix.size()))) {
            std::string fileName(name.substr(Prefix.size()));
            std::replace(fileName.begin(), fileName.end(), '_', '-');
            event.options.insert_or_assign(std::move(fileName), shownText(value));
        }
    }

    if (!isInterfaceName(event.interface))
        return event;
    event.kind = kindOf(reason);
    // The script tries a remembered lease, and takes the address away again when no router answers.
    if (reason == "TIMEOUT" && lacksAddress(event.interface, address))
        event.kind = Kind::Lost;
    return event;
}
