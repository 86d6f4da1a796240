#include "layout.h"

#include <algorithm>

namespace DhclientConf {

namespace {

constexpr std::size_t LongestLine = 78;
constexpr std::string_view Indent = "    ";
constexpr std::string_view Blanks = " \t\r";

// "\r\n" if the first line ends so.
std::string_view lineEnd(std::string_view text)
{
    const std::size_t first = text.find('\n');
    return first != std::string_view::npos && first > 0 && text[first - 1] == '\r' ? "\r\n" : "\n";
}

std::size_t lineStart(std::string_view text, std::size_t position)
{
    return position == 0 ? 0 : text.rfind('\n', position - 1) + 1; // npos + 1 is 0
}

std::size_t lineBreak(std::string_view text, std::size_t position)
{
    return std::min(text.find('\n', position), text.size());
}

bool holdsOnly(std::string_view text, std::size_t begin, std::size_t end, std::string_view characters)
{
    return text.substr(begin, end - begin).find_first_not_of(characters) == std::string_view::npos;
}

bool startsLine(std::string_view text, std::size_t position)
{
    return holdsOnly(text, lineStart(text, position), position, Blanks);
}

std::string indentation(std::string_view text, std::size_t position)
{
    const std::size_t start = lineStart(text, position);
    const std::size_t end = std::min(text.find_first_not_of(" \t", start), text.size());
    return std::string(text.substr(start, end - start));
}

std::size_t column(std::string_view text, std::size_t position)
{
    std::size_t result = 0;
    for (std::size_t i = lineStart(text, position); i < position; ++i)
        result = text[i] == '\t' ? result / 8 * 8 + 8 : result + 1;
    return result;
}

std::string inserted(std::string_view text, std::size_t position, std::string_view added)
{
    return replaced(text, {position, position}, added);
}

} // namespace

std::string replaced(std::string_view text, Range range, std::string_view replacement)
{
    std::string result(text.substr(0, range.begin));
    return result.append(replacement).append(text.substr(range.end));
}

std::string without(std::string_view text, const Statement &statement)
{
    Range range = statement.range;
    const std::size_t end = lineBreak(text, range.end);
    const bool endsLine = holdsOnly(text, range.end, end, Blanks);
    if (endsLine && startsLine(text, range.begin))
        range = {lineStart(text, range.begin), std::min(end + 1, text.size())};
    else if (endsLine)
        range.begin = text.find_last_not_of(Blanks, range.begin - 1) + 1;
    else
        range.end = text.find_first_not_of(Blanks, range.end);
    return replaced(text, range, {});
}

std::string withStatement(std::string_view text, std::size_t position, std::string_view added)
{
    const std::string line(added);
    const std::string end(lineEnd(text));
    if (position < text.size() && !startsLine(text, position))
        return inserted(text, position, line + ' ');
    if (position < text.size())
        return inserted(text, lineStart(text, position), indentation(text, position) + line + end);
    return std::string(text) + (text.empty() || text.back() == '\n' ? "" : end) + line + end;
}

std::string withName(std::string_view text, const Statement &list, std::string_view name)
{
    if (list.names.empty())
        return inserted(text, list.keywordEnd, std::string(" ").append(name));
    const Range last = list.names.back().range;
    std::string added = ", ";
    if (column(text, last.end) + added.size() + name.size() + 1 > LongestLine) {
        // As the list's last line is indented, if it has more than its first one.
        const bool continued = lineStart(text, last.begin) != lineStart(text, list.range.begin);
        added = "," + std::string(lineEnd(text))
                + (continued ? indentation(text, last.begin) : indentation(text, list.range.begin).append(Indent));
    }
    return inserted(text, last.end, added.append(name));
}

std::string withoutName(std::string_view text, const Statement &list, std::size_t index)
{
    constexpr std::string_view Separators = ", \t\r\n\v\f";
    const std::vector<Word> &names = list.names;
    const Word &name = names[index];
    const bool isFirst = index == 0;
    const bool isLast = index + 1 == names.size();
    const std::size_t before = isFirst ? list.keywordEnd : names[index - 1].range.end;
    const std::size_t next = isLast ? list.range.end - 1 : names[index + 1].range.begin;
    const bool endsLine = text.substr(name.range.end, next - name.range.end).find('\n') != std::string_view::npos;
    const bool isBareBefore = holdsOnly(text, before, name.range.begin, Separators);
    const bool isBareBehind = holdsOnly(text, name.range.end, next, Separators);
    if (isFirst && isLast && isBareBefore && isBareBehind)
        return list.also ? without(text, list) : replaced(text, {before, next}, {});
    if (!isFirst && (isLast || endsLine) && isBareBefore)
        return replaced(text, {before, name.range.end}, {});
    if (!isLast && isBareBehind)
        return replaced(text, {name.range.begin, next}, {});
    // Among comments, which stay.
    std::string result(text);
    const std::size_t comma = isLast && !isFirst ? names[index - 1].comma : name.comma;
    if (comma != std::string::npos && comma > name.range.begin)
        result.erase(comma, 1);
    result.erase(name.range.begin, name.range.end - name.range.begin);
    if (comma < name.range.begin)
        result.erase(comma, 1);
    return result;
}

} // namespace DhclientConf
