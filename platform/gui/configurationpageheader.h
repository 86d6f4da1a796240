#ifndef CONFIGURATIONPAGEHEADER_H
#define CONFIGURATIONPAGEHEADER_H

#include <QWidget>

class QLabel;

/// The head of a configuration page: an icon, the page's title and perhaps a note.
class ConfigurationPageHeader : public QWidget
{
    Q_OBJECT

public:
    /// `ruled` draws a line between the header and the page below it.
    ConfigurationPageHeader(const QString &title, bool ruled, QWidget *parent);

    /// A null pixmap leaves the header without an icon.
    void setTitleIcon(const QPixmap &pixmap);
    /// Plain text below the title; an empty one leaves no room.
    void setNote(const QString &text);

private:
    Q_DISABLE_COPY(ConfigurationPageHeader)
    QLabel *icon;
    QLabel *note;
};

#endif
