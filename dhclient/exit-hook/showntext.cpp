#include "showntext.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace {

struct Range
{
    char32_t first;
    char32_t last;
};

// Controls, invisible format characters, line and paragraph separators, private use, noncharacters, what is
// beyond Unicode. The two joiners U+200C and U+200D are left out: Persian, the Indic scripts and composed
// pictographs are written with them.
constexpr Range Unshown[] = {{0x00, 0x1F},       {0x7F, 0x9F},       {0xAD, 0xAD},       {0x061C, 0x061C},
                             {0x115F, 0x1160},   {0x180E, 0x180E},   {0x200B, 0x200B},   {0x200E, 0x200F},
                             {0x2028, 0x202E},   {0x2060, 0x206F},   {0x3164, 0x3164},   {0xD800, 0xF8FF},
                             {0xFDD0, 0xFDEF},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},   {0xFFF0, 0xFFFB},
                             {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0x1FFFFF}};

bool isShown(char32_t character)
{
    return std::none_of(std::begin(Unshown), std::end(Unshown),
                        [&](const Range &range) { return character >= range.first && character <= range.last; })
           && (character & 0xFFFE) != 0xFFFE;
}

/// Whether these are three digits of one byte.
bool isOctal(std::string_view digits)
{
    return digits.size() == 3 && digits[0] <= '3' && digits.find_first_not_of("01234567") == std::string_view::npos;
}

std::string unescaped(std::string_view text)
{
    constexpr std::string_view Escaped = "\"'$`\\|&";
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view next = text.substr(i + 1, 3);
        if (text[i] == '\\' && isOctal(next)) {
            bytes += static_cast<char>((next[0] - '0') * 64 + (next[1] - '0') * 8 + (next[2] - '0'));
            i += 3;
        } else if (text[i] == '\\' && !next.empty() && Escaped.find(next[0]) != std::string_view::npos) {
            bytes += next[0];
            ++i;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

/// The length of the UTF-8 character at the start of `bytes`, which are not empty; 0 when none starts there or when it
/// is not to be shown.
std::size_t shownLength(std::string_view bytes)
{
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned lead = at(0);
    if ((lead >= 0x80 && lead < 0xC0) || lead >= 0xF8)
        return 0;
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (bytes.size() < length)
        return 0;
    char32_t value = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0u) != 0x80u)
            return 0;
        value = (value << 6) | (at(i) & 0x3Fu);
    }
    constexpr char32_t Least[] = {0, 0, 0x80, 0x800, 0x10000};
    return value >= Least[length] && isShown(value) ? length : 0;
}

void appendOctal(std::string &text, char character)
{
    const auto byte = static_cast<unsigned char>(character);
    text += '\\';
    for (const int shift : {6, 3, 0})
        text += static_cast<char>('0' + ((byte >> shift) & 7));
}

} // namespace

std::string shownText(std::string_view escaped)
{
    const std::string bytes = unescaped(escaped);
    std::string text;
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t length = shownLength(std::string_view(bytes).substr(i));
        if (length == 0)
            appendOctal(text, bytes[i]);
        else
            text.append(bytes, i, length);
        i += std::max<std::size_t>(length, 1);
    }
    return text;
}
