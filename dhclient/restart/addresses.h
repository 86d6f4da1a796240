#ifndef ADDRESSES_H
#define ADDRESSES_H

#include <chrono>
#include <string>
#include <vector>

/// An IPv4 address of this network namespace; see rtnetlink(7).
struct Address
{
    std::string interface;
    bool isFixed = false;                     ///< without a lifetime, which a DHCP client sets
    std::chrono::seconds remainingLifetime{}; ///< until the kernel drops it
};

/// Throws std::system_error.
std::vector<Address> addresses();

#endif
