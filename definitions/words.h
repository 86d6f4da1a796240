#ifndef WORDS_H
#define WORDS_H

#include <QString>

/// Whether the text is the word, the case of letters aside: the comparison of every name and vocabulary word of
/// the definition format.
inline bool isWord(const QString &text, const char *word)
{
    return text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

#endif
