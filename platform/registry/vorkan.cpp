#include "vorkan.h"

#include "registrystore.h"

Vorkan::Vorkan()
{
    RegistryStore::instance().holdView();
}

Vorkan::~Vorkan()
{
    RegistryStore::instance().releaseView();
}

bool Vorkan::isReadable()
{
    return RegistryStore::instance().isReadable();
}

void Vorkan::setPatience(std::chrono::milliseconds patience)
{
    RegistryStore::instance().setPatience(patience);
}

int Vorkan::get(const QString &key, QString &value, const _RegEntryParam & /*param*/, const QString &defaultValue)
{
    const std::optional<RegistryStore::Entry> entry = RegistryStore::instance().find(key);
    value = entry ? entry->value : defaultValue;
    return entry ? 0 : 1;
}
