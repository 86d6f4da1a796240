#include "showntext.h"

#include <cstddef>

namespace {

struct Range
{
    char32_t first;
    char32_t last;
};

// Controls, invisible format characters, line and paragraph separators, private use, noncharacters, what is
// beyond Unicode. The two joiners U+200C and U+200D are left out: Persian, the Indic scripts and composed
// pictographs are written with them.
constexpr Range Unshown[]
    = {{0x00, 0x1F},     {0x7F, 0x9F},       {0xAD, 0xAD},       {0x061C, 0x061C},   {0x115F, 0x1160},
       {0x180E, 0x180E}, {0x200B, 0x200B},   {0x200E, 0x200F},   {0x2028, 0x202E},   {0x2060, 0x206F},
       {0x3164, 0x3164}, {0xD800, 0xF8FF},   {0xFDD0, 0xFDEF},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},
       {0xFFF0, 0xFFFB}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0x1FFFFF}};

bool isShown(char32_t character)
{
    for (const Range &range : Unshown) {
        if (character >= range.first && character <= range.last)
            return false;
    }
    return (character & 0xFFFE) != 0xFFFE;
}

constexpr std::string_view EscapedByClient = "\"'$`\\|&";

bool isOctal(char character, char last)
{
    return character >= '0' && character <= last;
}

std::string unescaped(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view rest = text.substr(i);
        if (rest[0] == '\\' && rest.size() >= 4 && isOctal(rest[1], '3') && isOctal(rest[2], '7')
            && isOctal(rest[3], '7')) {
            bytes += static_cast<char>((rest[1] - '0') * 64 + (rest[2] - '0') * 8 + (rest[3] - '0'));
            i += 3;
        } else if (rest[0] == '\\' && rest.size() >= 2
                   && EscapedByClient.find(rest[1]) != std::string_view::npos) {
            bytes += rest[1];
            ++i;
        } else {
            bytes += rest[0];
        }
    }
    return bytes;
}

struct Character
{
    char32_t value;
    std::size_t length; ///< in bytes; 0: no character begins here
};

/// The character at the begin of `bytes`, which has at least one. Overlong forms count as none.
Character firstCharacter(std::string_view bytes)
{
    const auto at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned lead = at(0);
    if (lead < 0x80)
        return {lead, 1};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length)
        return {0, 0};
    char32_t value = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0u) != 0x80u)
            return {0, 0};
        value = (value << 6) | (at(i) & 0x3Fu);
    }
    constexpr char32_t Least[] = {0, 0, 0x80, 0x800, 0x10000};
    return value < Least[length] ? Character{0, 0} : Character{value, length};
}

void appendOctal(std::string &text, char character)
{
    const auto byte = static_cast<unsigned char>(character);
    text += '\\';
    for (int shift = 6; shift >= 0; shift -= 3)
        text += static_cast<char>('0' + ((byte >> shift) & 7));
}

} // namespace

std::string shownText(std::string_view escaped)
{
    const std::string bytes = unescaped(escaped);
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        const Character character = firstCharacter(std::string_view(bytes).substr(i));
        if (character.length > 0 && isShown(character.value)) {
            text.append(bytes, i, character.length);
            i += character.length;
        } else {
            appendOctal(text, bytes[i]);
            ++i;
        }
    }
    return text;
}
