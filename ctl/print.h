#ifndef PRINT_H
#define PRINT_H

#include <QList>

class DhcpOption;

/// One line for each option: requested, code, name, value. Aligned and cut to the width of a terminal, else with tabs
/// between the four.
void printList(const QList<DhcpOption *> &options);
void printListAsJson(const QList<DhcpOption *> &options);

/// All about one option, a line for each fact.
void printDetails(const DhcpOption &option);
void printDetailsAsJson(const DhcpOption &option);

#endif
