#include "vorkanclient.h"

#include "registrystore.h"

int VorkanClient::contains(const QString &key)
{
    return RegistryStore::instance().find(key) ? 0 : 1;
}

int VorkanClient::create(const QString &key, const _RegEntryType &type)
{
    RegistryStore::instance().create(key, type.type);
    return 0;
}

int VorkanClient::set(const QString &key, const QString &value, const _RegEntryParam & /*param*/)
{
    return RegistryStore::instance().set(key, value) ? 0 : 1;
}

int VorkanClient::commit(const QString & /*path*/)
{
    return RegistryStore::instance().commit() ? 0 : 1;
}

int VorkanClient::remove(const QString &key)
{
    RegistryStore::instance().remove(key);
    return 0;
}
