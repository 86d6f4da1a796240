#include "knownoptions.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace DhclientConf {

namespace {

struct KnownOption
{
    std::string_view id;
    int code;
};

constexpr KnownOption KnownOptions[] = {
#include "knownoptions.inc"
};

} // namespace

int knownCode(std::string_view id)
{
    const auto found = std::find_if(std::begin(KnownOptions), std::end(KnownOptions),
                                    [id](const KnownOption &option) { return option.id == id; });
    return found == std::end(KnownOptions) ? 0 : found->code;
}

std::string_view knownName(int code)
{
    const auto found = std::find_if(std::begin(KnownOptions), std::end(KnownOptions),
                                    [code](const KnownOption &option) { return option.code == code; });
    return found == std::end(KnownOptions) ? std::string_view() : found->id;
}

int numberedCode(std::string_view id)
{
    constexpr std::string_view Prefix = "unknown-";
    int code = 0;
    if (id.substr(0, Prefix.size()) == Prefix)
        std::from_chars(id.data() + Prefix.size(), id.data() + id.size(), code);
    return code > 0 && code < 255 ? code : 0;
}

} // namespace DhclientConf
