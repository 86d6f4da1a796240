#include "values.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace DhclientConf {

namespace {

// The client stores a number's remainder where the number is wider than its option, and says so.
constexpr long long Unbounded = -1;

bool isAny(char c, std::string_view set)
{
    return set.find(c) != std::string_view::npos;
}

bool isNumber(const Word &word, long long least, long long most)
{
    const bool negative = word.text.front() == '-';
    std::string digits = word.text.substr(negative ? 1 : 0);
    const bool hex = digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
    const bool octal = !hex && digits.size() > 1 && digits[0] == '0';
    if (hex)
        digits.erase(0, 2);
    const std::string_view allowed = hex ? "0123456789abcdefABCDEF" : octal ? "01234567" : "0123456789";
    if (!isAny(word.kind, "NH") || digits.empty() || digits.find_first_not_of(allowed) != std::string::npos)
        return false;
    const long long value = std::strtoll(digits.c_str(), nullptr, hex ? 16 : octal ? 8 : 10);
    return negative ? -value >= least : most == Unbounded || value <= most;
}

bool isHexByte(const Word &word)
{
    return isAny(word.kind, "NHW") && word.text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos
        && std::strtol(word.text.c_str(), nullptr, 16) <= 0xff;
}

bool isBoolean(const Word &word)
{
    const std::string text = lower(word.text);
    return text == "true" || text == "false" || text == "on" || text == "off";
}

// A quoted domain name; the escapes of its string are left to the client, so that one with them is none here.
bool isDomain(const Word &word)
{
    constexpr std::size_t longestLabel = 63;
    constexpr std::size_t longestDomain = 253;
    if (word.kind != 'S')
        return false;
    std::string_view name = std::string_view(word.text).substr(1, word.text.size() - 2);
    if (name.empty() || name == ".")
        return true;
    if (name.back() == '.')
        name.remove_suffix(1);
    if (name.size() > longestDomain || name.find('\\') != std::string_view::npos)
        return false;
    for (;;) {
        const std::size_t label = std::min(name.find('.'), name.size());
        if (label == 0 || label > longestLabel)
            return false;
        if (label == name.size())
            return true;
        name.remove_prefix(label + 1);
    }
}

/// Takes a value's parts from its front.
class Parts
{
public:
    explicit Parts(const std::vector<Word> &words) : m_words(words) {}

    bool atEnd() const { return m_next == m_words.size(); }
    bool takeSign(char sign) { return takeOne([sign](const Word &word) { return word.kind == sign; }); }
    bool take(char letter);

private:
    template<typename Test>
    bool takeOne(Test test)
    {
        if (atEnd() || !test(m_words[m_next]))
            return false;
        ++m_next;
        return true;
    }

    // What passes the test, and more of it behind a sign.
    template<typename Test>
    bool takeJoined(char sign, Test test)
    {
        if (!takeOne(test))
            return false;
        while (m_next + 1 < m_words.size() && m_words[m_next].kind == sign && test(m_words[m_next + 1]))
            m_next += 2;
        return true;
    }

    bool takeName();
    bool takeAddress();
    bool takeLongAddress();

    const std::vector<Word> &m_words;
    std::size_t m_next = 0;
};

bool Parts::takeName()
{
    if (!takeJoined('.', [](const Word &word) { return isAny(word.kind, "NHW"); }))
        return false;
    takeSign('.');
    return true;
}

bool Parts::takeAddress()
{
    const std::size_t begin = m_next;
    if (!takeName())
        return false;
    const auto first = m_words.begin() + static_cast<std::ptrdiff_t>(begin);
    if (first->kind != 'N')
        return true;
    const auto last = m_words.begin() + static_cast<std::ptrdiff_t>(m_next);
    return last - first == 7 && std::all_of(first, last, [](const Word &word) {
        return word.kind == '.' || isNumber(word, 0, 0xff);
    });
}

bool Parts::takeLongAddress()
{
    std::string text;
    while (!atEnd() && isAny(m_words[m_next].kind, "NHW:."))
        text += m_words[m_next++].text;
    in6_addr address = {};
    return inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

bool Parts::take(char letter)
{
    switch (letter) {
    case 'I':
        return takeAddress();
    case 'J':
        return takeLongAddress();
    case 'b':
        return takeOne([](const Word &word) { return isNumber(word, -0x80, 0xff); });
    case 's':
        return takeOne([](const Word &word) { return isNumber(word, -0x8000, 0xffff); });
    case 'l':
        return takeOne([](const Word &word) { return isNumber(word, -0x80000000LL, Unbounded); });
    case 'f':
        return takeOne(isBoolean);
    case 't':
        return takeOne([](const Word &word) { return isAny(word.kind, "SWH"); });
    case 'X':
        return takeSign('S') || takeJoined(':', isHexByte);
    case 'd':
        return takeName();
    default:
        return takeJoined(',', isDomain);
    }
}

} // namespace

std::string formatOf(std::string_view type)
{
    static constexpr std::pair<std::string_view, char> Atoms[]
        = {{"boolean", 'f'}, {"8", 'b'}, {"16", 's'}, {"32", 'l'}, {"ip-address", 'I'}, {"ip6-address", 'J'},
           {"text", 't'}, {"string", 'X'}, {"encapsulate", 'X'}, {"domain-name", 'd'}, {"domain-list", 'D'}};
    std::string format;
    char array = '\0'; // the letter that an array puts behind its atom
    bool all = false;
    while (!type.empty()) {
        const std::size_t end = type.find_first_of(" ,");
        const std::string_view word = type.substr(0, end);
        type.remove_prefix(end == std::string_view::npos ? type.size() : end + 1);
        char letter = '\0';
        if (word == "array") {
            array = 'a';
        } else if (word == "{") {
            all = array != '\0';
            array = '\0';
        } else {
            const auto atom = std::find_if(std::begin(Atoms), std::end(Atoms),
                                           [word](const auto &known) { return known.first == word; });
            letter = atom == std::end(Atoms) ? '\0' : atom->second;
        }
        if (letter == '\0')
            continue;
        format += letter;
        if (array != '\0')
            format += array;
        array = '\0';
        if (word == "encapsulate") // an option space's name may be one of the words above
            break;
    }
    return all ? format + 'A' : format;
}

bool fits(const std::vector<Word> &value, std::string_view format)
{
    if (format.empty())
        return false;
    const bool array = format.back() == 'A';
    if (array)
        format.remove_suffix(1);
    Parts parts(value);
    do {
        for (std::size_t i = 0; i < format.size(); ++i) {
            const bool several = i + 1 < format.size() && format[i + 1] == 'a';
            do {
                if (!parts.take(format[i]))
                    return false;
            } while (several && parts.takeSign(','));
            i += several ? 1 : 0;
        }
    } while (array && parts.takeSign(','));
    return parts.atEnd();
}

} // namespace DhclientConf
