#include "option.h"

#include "knownoptions.h"

#include <algorithm>
#include <iterator>

namespace DhclientConf {

bool Option::isBuiltIn() const
{
    return std::find(std::begin(BuiltInRequests), std::end(BuiltInRequests), id) != std::end(BuiltInRequests);
}

bool Option::isNumbered(const Name &name) const
{
    return code != 0 && numberedCode(name.id) == code;
}

bool Option::isIn(const Step &list) const
{
    const std::vector<Name> &names = list.statement->names;
    return std::any_of(names.begin(), names.end(), [this](const Name &name) { return isNamed(name); });
}

bool Option::isIn(const Context &context) const
{
    return (context.isBuiltIn() && isBuiltIn())
           || std::any_of(context.lists.begin(), context.lists.end(), [this](const Step &list) { return isIn(list); });
}

} // namespace DhclientConf
