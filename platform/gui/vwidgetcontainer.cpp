#include "vwidgetcontainer.h"

#include "vorkanclient.h"
#include "vwidget.h"

VWidgetContainer::VWidgetContainer(QObject *parent) : QObject(parent) {}

void VWidgetContainer::addWidget(VWidget *widget)
{
    widgets.append(widget);
}

bool VWidgetContainer::validate()
{
    VorkanClient client;
    for (VWidget *widget : qAsConst(widgets))
        widget->store(client);
    // Writes only when something is pending: what was stored just now, or before a commit that failed.
    return client.commit(QString()) == 0;
}
