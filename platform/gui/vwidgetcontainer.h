#ifndef VWIDGETCONTAINER_H
#define VWIDGETCONTAINER_H

#include <QList>
#include <QObject>

class VWidget;

/// Collects the fields of a page that are stored together.
class VWidgetContainer : public QObject
{
    Q_OBJECT

public:
    explicit VWidgetContainer(QObject *parent);

    /// The field is not owned and must outlive the last validate().
    void addWidget(VWidget *widget);

    /// Stores every field whose state differs from its registry entry and commits once, only when one differed.
    /// Returns false when the commit failed; the reason is on standard error then.
    bool validate();

private:
    Q_DISABLE_COPY(VWidgetContainer)
    QList<VWidget *> widgets;
};

#endif
