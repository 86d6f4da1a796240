#include "vcheckbox.h"

#include "vgui.h"
#include "vorkanclient.h"

namespace {

const QLatin1String True("1");
const QLatin1String False("0");

} // namespace

VCheckBox::VCheckBox(VGui *gui, const QString &key)
    : VWidget(gui, key)
{
    QString value;
    VorkanClient().get(key, value, _RegEntryParam(), QString());
    m_checked = value == True;
}

QAbstractButton *VCheckBox::fieldWidget()
{
    if (!m_button) {
        m_button = std::make_unique<QCheckBox>();
        m_button->setChecked(m_checked);
    }
    return m_button.get();
}

void VCheckBox::setChecked(bool checked)
{
    if (m_button)
        m_button->setChecked(checked);
    else
        m_checked = checked;
}

void VCheckBox::store(VorkanClient &client)
{
    const QString state = isChecked() ? True : False;
    QString stored;
    const bool missing = client.get(key(), stored, _RegEntryParam(), QString()) != 0;
    if (!missing && stored == state)
        return;
    if (missing)
        client.create(key(), _RegEntryType{VorkanBoolType});
    client.set(key(), state, _RegEntryParam());
}
