#ifndef WORDS_H
#define WORDS_H

#include <QString>

/// Whether the text is the word, ignoring case: how every name and vocabulary word of the definition format is
/// compared.
inline bool isWord(const QString &text, const char *word)
{
    // Folding case changes no length, and most words already differ in theirs.
    const QLatin1String latin1(word);
    return text.size() == latin1.size() && (text == latin1 || text.compare(latin1, Qt::CaseInsensitive) == 0);
}

#endif
