#include "leaseevent.h"

#include "clientfacts.h"
#include "posix.h"
#include "procfs.h"
#include "showntext.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace {

using Kind = LeaseEvent::Kind;

constexpr std::pair<std::string_view, Kind> Reasons[] = {{"BOUND", Kind::Bound},    {"REBOOT", Kind::Bound},
                                                         {"TIMEOUT", Kind::Bound},  {"RENEW", Kind::Renewed},
                                                         {"REBIND", Kind::Renewed}, {"EXPIRE", Kind::Lost},
                                                         {"FAIL", Kind::Lost},      {"RELEASE", Kind::Lost},
                                                         {"STOP", Kind::Lost},      {"V6ONLY", Kind::Lost}};

// The client sets these in addition to the options, from the message's fixed part or by its own calculation.
constexpr std::string_view NotOptions[] = {"expiry",         "filename",    "ip_address",
                                           "network_number", "next_server", "server_name"};

/// The option's name with dashes; empty when the variable does not begin so, or is not about an option.
std::string optionOf(const std::string &variable, const std::string &prefix)
{
    if (variable.compare(0, prefix.size(), prefix) != 0)
        return {};
    const std::string name = variable.substr(prefix.size());
    const bool isOption = !name.empty() && std::isalnum(static_cast<unsigned char>(name.front()))
                          && std::all_of(name.begin(), name.end(),
                                         [](unsigned char c) { return std::isalnum(c) || c == '_'; })
                          && std::find(std::begin(NotOptions), std::end(NotOptions), name) == std::end(NotOptions);
    return isOption ? ClientFacts::fileName(name) : std::string();
}

/// True if no interface has the address; false if that cannot be determined.
bool isMissing(const std::string &address)
{
    sockaddr_in local = {};
    local.sin_family = AF_INET;
    ::inet_pton(AF_INET, address.c_str(), &local.sin_addr);
    const Posix::Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    return ::bind(socket.get(), reinterpret_cast<const sockaddr *>(&local), sizeof local) != 0
           && errno == EADDRNOTAVAIL;
}

} // namespace

LeaseEvent LeaseEvent::fromEnvironment(const std::string &environment)
{
    LeaseEvent event;
    std::string reason;
    std::string address;
    std::istringstream variables(environment);
    for (std::string variable; std::getline(variables, variable, '\0');) {
        const std::size_t equals = variable.find('=');
        if (equals == std::string::npos)
            continue;
        const std::string name = variable.substr(0, equals);
        const std::string value = variable.substr(equals + 1);
        if (name == "reason") {
            reason = value;
        } else if (name == "interface") {
            event.interface = value;
        } else if (name == "pid") {
            event.pid = Procfs::parsePid(value);
        } else if (name == "new_ip_address") {
            address = value;
        } else if (const std::string option = optionOf(name, "new_"); !option.empty()) {
            event.options[option] = shownText(value);
        } else if (const std::string asked = optionOf(name, "requested_"); !asked.empty()) {
            event.requested.insert(asked);
        }
    }

    const auto found = std::find_if(std::begin(Reasons), std::end(Reasons),
                                    [&](const auto &known) { return known.first == reason; });
    if (found == std::end(Reasons) || event.interface.empty())
        throw std::runtime_error("the environment of the script holds no event of a DHCP client");
    event.kind = found->second;
    // The script tries a remembered lease, and removes the address again when no router answers.
    if (reason == "TIMEOUT" && isMissing(address))
        event.kind = Kind::Lost;
    if (event.kind == Kind::Lost)
        event.options.clear();
    return event;
}
