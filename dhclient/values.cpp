#include "values.h"

namespace DhclientConf {

namespace {

bool isAny(char c, std::string_view set)
{
    return set.find(c) != std::string_view::npos;
}

// Takes what the set allows, and more of it behind a sign.
bool takeJoined(std::string_view &value, std::string_view set, char sign)
{
    if (value.empty() || !isAny(value.front(), set))
        return false;
    value.remove_prefix(1);
    while (value.size() > 1 && value[0] == sign && isAny(value[1], set))
        value.remove_prefix(2);
    return true;
}

bool takeOne(std::string_view &value, std::string_view set)
{
    return takeJoined(value, set, '\0');
}

bool takePart(std::string_view &value, char letter)
{
    switch (letter) {
    case 'I':
    case 'd':
        if (!takeJoined(value, "NHW", '.'))
            return false;
        if (!value.empty() && value.front() == '.')
            value.remove_prefix(1);
        return true;
    case 'J': {
        const std::size_t end = value.find_first_not_of("NHW:.");
        const bool any = value.substr(0, end).find(':') != std::string_view::npos;
        value.remove_prefix(end == std::string_view::npos ? value.size() : end);
        return any;
    }
    case 'n':
        return takeOne(value, "NH");
    case 'f':
        return takeOne(value, "W");
    case 't':
        return takeOne(value, "SWH");
    case 'X':
        return takeOne(value, "S") || takeJoined(value, "NHW", ':');
    default:
        return takeJoined(value, "S", ',');
    }
}

} // namespace

std::string formatOf(std::string_view type)
{
    std::string format;
    bool array = false;
    while (!type.empty()) {
        const std::size_t end = type.find_first_of(" ,");
        const std::string_view word = type.substr(0, end);
        type.remove_prefix(end == std::string_view::npos ? type.size() : end + 1);
        if (word == "array" && !format.empty())
            return {};
        if (word == "encapsulate")
            return {};
        array = array || word == "array";
        if (word == "boolean")
            format += 'f';
        else if (word == "integer")
            format += 'n';
        else if (word == "ip-address")
            format += 'I';
        else if (word == "ip6-address")
            format += 'J';
        else if (word == "text")
            format += 't';
        else if (word == "string")
            format += 'X';
        else if (word == "domain-name")
            format += 'd';
        else if (word == "domain-list")
            format += 'D';
    }
    return array ? format + 'A' : format;
}

bool fits(std::string_view value, std::string_view format)
{
    if (format.empty())
        return true;
    const bool array = format.back() == 'A';
    if (array)
        format.remove_suffix(1);
    for (;;) {
        for (const char letter : format) {
            if (!takePart(value, letter))
                return false;
        }
        if (!array || value.empty() || value.front() != ',')
            return value.empty();
        value.remove_prefix(1);
    }
}

} // namespace DhclientConf
