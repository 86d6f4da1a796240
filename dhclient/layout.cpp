#include "layout.h"

#include <algorithm>

namespace DhclientConf {

namespace {

constexpr std::size_t LongestLine = 78;
constexpr std::string_view Indent = "    ";
constexpr std::string_view Blanks = " \t\r";

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

std::string_view lineEnd(std::string_view text)
{
    const std::size_t first = text.find('\n');
    return first != std::string_view::npos && first > 0 && text[first - 1] == '\r' ? "\r\n" : "\n";
}

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

std::string withAbove(std::string_view text, const Statement &statement, std::string_view added)
{
    std::string line = indentation(text, statement.range.begin);
    line.append(added).append(lineEnd(text));
    return inserted(text, lineStart(text, statement.range.begin), line);
}

std::string withBelow(std::string_view text, const Statement &statement, std::string_view added)
{
    const std::size_t end = lineBreak(text, statement.range.end);
    const std::size_t rest = text.find_first_not_of(Blanks, statement.range.end);
    if (rest < end && text[rest] != '#')
        return inserted(text, statement.range.end, std::string(" ").append(added));
    if (end == text.size())
        return withAtEnd(text, added);
    std::string line = indentation(text, statement.range.begin);
    return inserted(text, end + 1, line.append(added).append(lineEnd(text)));
}

std::string withAtEnd(std::string_view text, std::string_view added)
{
    std::string result(text);
    if (!text.empty() && text.back() != '\n')
        result.append(lineEnd(text));
    return result.append(added).append(lineEnd(text));
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
    const std::vector<Name> &names = list.names;
    const Name &name = names[index];
    const std::string_view statement = text.substr(list.range.begin, list.range.end - list.range.begin);
    if (list.also && names.size() == 1 && statement.find('#') == std::string_view::npos)
        return without(text, list);
    const bool isFirst = index == 0;
    const bool isLast = index + 1 == names.size();
    const std::size_t before = isFirst ? list.keywordEnd : names[index - 1].range.end;
    const std::size_t next = isLast ? list.range.end - 1 : names[index + 1].range.begin;
    const bool endsLine = text.substr(name.range.end, next - name.range.end).find('\n') != std::string_view::npos;
    if (!isFirst && (isLast || endsLine) && holdsOnly(text, before, name.range.begin, Separators))
        return replaced(text, {before, name.range.end}, {});
    if (!isLast && holdsOnly(text, name.range.end, next, Separators))
        return replaced(text, {name.range.begin, next}, {});
    // The only one, or among comments, which stay.
    std::size_t comma = name.comma;
    if (isLast && !isFirst && comma == std::string::npos)
        comma = names[index - 1].comma;
    std::string result(text);
    if (comma != std::string::npos && comma >= name.range.end)
        result.erase(comma, 1);
    const bool isBare = isFirst && isLast && holdsOnly(text, before, name.range.begin, Separators);
    const std::size_t begin = isBare ? before : name.range.begin;
    result.erase(begin, name.range.end - begin);
    if (result[begin] == ' ' && result[begin - 1] == ' ')
        result.erase(begin, 1);
    if (comma < name.range.begin)
        result.erase(comma, 1);
    return result;
}

std::string requestStatement(const std::vector<std::string_view> &names, std::string_view lineEnd)
{
    std::string result = "request";
    std::size_t width = result.size();
    for (const std::string_view name : names) {
        if (name != names.front())
            result += ',';
        if (width + 2 + name.size() + 1 > LongestLine) {
            result.append(lineEnd).append(Indent);
            width = Indent.size();
        } else {
            result += ' ';
            width += 2;
        }
        result += name;
        width += name.size();
    }
    return result + ';';
}

} // namespace DhclientConf
