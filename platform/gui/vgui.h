#ifndef VGUI_H
#define VGUI_H

#include <QWidget>

/// A page of registry-bound fields: names the branch that the page edits and owns its fields (VWidget), which
/// are its children.
class VGui : public QObject
{
    Q_OBJECT

public:
    /// `path` is the branch's registry key; `parent` is the window that owns the page.
    VGui(const QString &path, QWidget *parent);

    const QString path;

private:
    Q_DISABLE_COPY(VGui)
};

#endif
