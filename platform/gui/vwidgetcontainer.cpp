#include "vwidgetcontainer.h"

#include "vorkanclient.h"
#include "vwidget.h"

VWidgetContainer::VWidgetContainer(QObject *parent)
    : QObject(parent)
{
}

void VWidgetContainer::addWidget(VWidget *widget)
{
    m_widgets.append(widget);
}

bool VWidgetContainer::validate()
{
    VorkanClient client;
    bool changed = false;
    for (VWidget *widget : qAsConst(m_widgets)) {
        if (widget->store(client))
            changed = true;
    }
    return !changed || client.commit(QString()) == 0;
}
