#ifndef CONFIGURATIONPAGEHEADER_H
#define CONFIGURATIONPAGEHEADER_H

#include <QWidget>

class QLabel;

/// The head of a configuration page: an icon and the page's title.
class ConfigurationPageHeader : public QWidget
{
    Q_OBJECT

public:
    /// `ruled` draws a line between the header and the page below it.
    ConfigurationPageHeader(const QString &title, bool ruled, QWidget *parent);

    /// A null pixmap leaves the header without an icon.
    void setTitleIcon(const QPixmap &pixmap);

private:
    Q_DISABLE_COPY(ConfigurationPageHeader)
    QLabel *icon;
};

#endif
