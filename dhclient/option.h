#ifndef OPTION_H
#define OPTION_H

#include "reading.h"

#include <string>

namespace DhclientConf {

/// An option by its names in lists.
struct Option
{
    std::string id;
    int code; ///< 0 if none is known

    bool isBuiltIn() const;
    /// Whether a name is one like "unknown-200" with the option's code.
    bool isNumbered(const Name &name) const;
    bool isNamed(const Name &name) const { return name.id == id || isNumbered(name); }
    bool isIn(const Step &list) const;
    bool isIn(const Context &context) const;
};

/// A declaration as a command gives it.
struct NewOption
{
    std::string name; ///< as written
    std::string id;
    int code;
    std::string type; ///< as of normalisedType()

    bool isSame(const Statement &declaration) const { return declaration.code == code && declaration.value == type; }
};

inline bool isList(const Step &step)
{
    return step.statement->kind == Statement::Request || step.statement->kind == Statement::Require;
}

/// The file of an included statement, for notes.
inline std::string fileName(const Step &step)
{
    return "the included file \"" + *step.included + '"';
}

} // namespace DhclientConf

#endif
