#ifndef DHCPCLASS_H
#define DHCPCLASS_H

/// Who decides whether an option is requested from the server.
enum DhcpClass_t {
    Normal = 0,   ///< the user
    Managed = 1,  ///< another control panel
    AlwaysOn = 2, ///< fixed: always requested
    AlwaysOff = 3 ///< fixed: never requested
};

#endif
