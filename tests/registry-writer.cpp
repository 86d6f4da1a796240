// Commits whole batches to the registry of the root prefix for the registry's tests: every round sets all the
// keys of one prefix to the round's number and prints the number once the batch is committed.
//
// Arguments: key prefix, number of keys, number of rounds.

#include "vorkanclient.h"

#include <cstdlib>
#include <iostream>

int main(int argc, char **argv)
{
    if (argc != 4)
        return 2;
    const QString prefix = QString::fromUtf8(argv[1]);
    const int keys = std::atoi(argv[2]);
    const int rounds = std::atoi(argv[3]);
    for (int round = 1; round <= rounds; ++round) {
        VorkanClient client;
        for (int i = 0; i < keys; ++i) {
            const QString key = prefix + QString::number(i);
            if (client.contains(key) != 0)
                client.create(key, _RegEntryType{VorkanNumberType});
            client.set(key, QString::number(round), _RegEntryParam());
        }
        if (client.commit(QString()) != 0)
            return 1;
        std::cout << round << std::endl;
    }
    return 0;
}
