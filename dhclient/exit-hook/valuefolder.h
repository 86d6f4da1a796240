#ifndef VALUEFOLDER_H
#define VALUEFOLDER_H

#include <map>
#include <string>

/// The variable files of one interface. Everything in such a folder is ours, but for names that begin with a
/// dot and for folders.
namespace ValueFolder {

/// Makes the folder hold exactly these values, by file name. What cannot be written is told, and then has no
/// file rather than an old one.
void fill(const std::string &path, const std::map<std::string, std::string> &values);
/// Takes the values away.
void clear(const std::string &path);
/// Brings the values to another folder, whose own are dropped.
void move(const std::string &from, const std::string &to);

} // namespace ValueFolder

#endif
