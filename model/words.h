#ifndef WORDS_H
#define WORDS_H

#include <QString>

#include <algorithm>
#include <initializer_list>

// How the names and the vocabularies of the definition format are compared: whole, ignoring case; nothing is trimmed.

inline bool isWord(const QString &text, const char *word)
{
    return text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

inline bool isOneOf(const QString &text, std::initializer_list<const char *> words)
{
    return std::any_of(words.begin(), words.end(), [&](const char *word) { return isWord(text, word); });
}

#endif
