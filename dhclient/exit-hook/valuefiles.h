#ifndef VALUEFILES_H
#define VALUEFILES_H

#include <functional>
#include <map>
#include <string>

/// Makes the directory hold these values, one file for each, by file name, and no other that `isOutdated` accepts;
/// subdirectories stay. A reader sees a file's old content or the new, and a value that has not changed is not written.
/// A value that cannot be written is reported, and then has no file rather than an old one. Throws std::system_error
/// when the directory cannot be made or listed.
void writeValueFiles(const std::string &directory, const std::map<std::string, std::string> &values,
                     const std::function<bool(const std::string &)> &isOutdated);

#endif
