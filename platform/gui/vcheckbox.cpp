#include "vcheckbox.h"

#include "vgui.h"
#include "vorkanclient.h"

namespace {

const QLatin1String True("1");
const QLatin1String False("0");

} // namespace

VCheckBox::VCheckBox(VGui *gui, const QString &key) : VWidget(gui, key)
{
    QString value;
    VorkanClient().get(key, value, _RegEntryParam(), QString());
    button.setChecked(value == True);
}

void VCheckBox::store(VorkanClient &client)
{
    const QString state = button.isChecked() ? True : False;
    QString stored;
    const bool missing = client.get(key, stored, _RegEntryParam(), QString()) != 0;
    if (!missing && stored == state)
        return;
    if (missing)
        client.create(key, _RegEntryType{VorkanBoolType});
    client.set(key, state, _RegEntryParam());
}
