#ifndef CHOICES_H
#define CHOICES_H

#include <QString>

class DhcpOption;

/// Whether the option is requested by what is stored, or by default. Not what an apply has brought to the client.
bool isRequested(const DhcpOption &option);

/// What a person asks for one option.
struct Choice
{
    bool requested = false;
    QString code; ///< as typed: a number or "standard"; null to leave it
};

/// Why the option cannot have that choice; empty if it can.
QString refusal(const DhcpOption &option, const Choice &choice);

enum class Stored { Changed, Unchanged, Failed };
/// Stores the choice; `option` then has its code. What failed is reported on standard error.
Stored store(DhcpOption &option, const Choice &choice);

#endif
