#ifndef CLIENTFACTS_H
#define CLIENTFACTS_H

#include <algorithm>
#include <string>

/// What the program and the tools around the DHCP client have to agree on. Paths are without a root prefix.
namespace ClientFacts {

inline constexpr char Configuration[] = "/etc/dhcp/dhclient.conf";

inline constexpr char Program[] = "/usr/sbin/dhclient";
/// As what the client is looked up on the search path, and with which argument it is started there.
inline constexpr char Name[] = "dhclient";
inline constexpr char OnceArgument[] = "-1";
/// A program of that name that has the clients that run ask again.
inline constexpr char RestarterDirectory[] = "/usr/libexec/kiro-dhcp-mgr";
inline constexpr char Restarter[] = "/usr/libexec/kiro-dhcp-mgr/dhclient";

/// Below it are the values of two interfaces, one file for each option.
inline constexpr char ValuesDirectory[] = "/var/lib/dhcp3/vars";
inline constexpr const char *ValueDirectories[] = {"eth0", "eth1"};

/// The option's name with dashes, which is also the name of its file: in variables the client writes "_".
inline std::string fileName(std::string variable)
{
    std::replace(variable.begin(), variable.end(), '_', '-');
    return variable;
}

/// The content of an option's file: one assignment. It is not for a shell: its reader removes exactly one pair of
/// quotes, so quotes in the value need no escaping.
inline std::string assignment(std::string fileName, const std::string &value)
{
    std::replace(fileName.begin(), fileName.end(), '-', '_');
    return "new_" + fileName + "='" + value + "'\n";
}

} // namespace ClientFacts

#endif
