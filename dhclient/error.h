#ifndef ERROR_H
#define ERROR_H

#include <stdexcept>
#include <string>

namespace DhclientConf {

/// Why an edit is refused; nothing may be written. what() is one line without its end.
class Error : public std::runtime_error
{
public:
    enum Fault {
        File = 1,   ///< the configuration is at fault
        Command = 2 ///< a command asks for what cannot be done
    };

    Error(Fault fault, const std::string &reason, int line = 0) : runtime_error(reason), fault(fault), line(line) {}

    Fault fault; ///< the exit status for it
    int line;    ///< of the edited file, from 1; 0 if it is about none
};

} // namespace DhclientConf

#endif
