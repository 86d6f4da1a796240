#include "vgui.h"

VGui::VGui(const QString &path, QWidget *parent) : QObject(parent), path(path) {}
