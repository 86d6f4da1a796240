#ifndef STANDARDERROR_H
#define STANDARDERROR_H

#include <QString>

/// Keeps back what anything in the process writes to standard error while it lives, libraries below Qt included,
/// and writes it out at the end unless text() has taken it. Where that cannot be set up, nothing is kept back.
class WithheldStandardError
{
public:
    WithheldStandardError();
    ~WithheldStandardError();

    /// What was written so far; it is not written out any more.
    QString text();

private:
    Q_DISABLE_COPY(WithheldStandardError)
    QByteArray take();

    int m_standardError = -1; // the real one
    int m_store = -1;
};

#endif
