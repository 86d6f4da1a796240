#include "rights.h"

#include "edittool.h"
#include "registrystore.h"

#include <unistd.h>

#include <iostream>

void reportMissingRights()
{
    if (::geteuid() == 0)
        return;
    RegistryStore &registry = RegistryStore::instance();
    const bool isStored = registry.isWritable();
    const bool isApplied = EditTool::mayEdit();
    if (isStored && isApplied)
        return;
    std::cerr << "Without the rights of root, choices are not ";
    if (!isStored) {
        registry.setKnownUnwritable();
        std::cerr << "stored in " << registry.path();
    }
    if (!isStored && !isApplied)
        std::cerr << " and not ";
    if (!isApplied)
        std::cerr << "applied to the DHCP client";
    std::cerr << std::endl;
}
