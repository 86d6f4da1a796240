#include "vwidget.h"

#include "vgui.h"

VWidget::VWidget(VGui *gui, const QString &key) : QObject(gui), key(key) {}
