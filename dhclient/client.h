#ifndef CLIENT_H
#define CLIENT_H

#include <string>
#include <vector>

namespace DhclientConf {

struct Complaint
{
    std::string reason; ///< in the client's words, printable
    int line;           ///< from 1; 0 if it is about none
};

/// What the client says about a configuration.
struct Answer
{
    std::vector<Complaint> complaints; ///< one without a line if it crashed, or read for longer than it may
    std::string obstacle;              ///< why it could not be asked; empty if it was
};

/// Has the installed client, the one below the root prefix, read the file, and waits 0.8 s at most. The client only
/// reads: it starts nothing, logs nothing, asks no server and needs no rights.
Answer askClient(const std::string &file);

} // namespace DhclientConf

#endif
