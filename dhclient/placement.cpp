#include "placement.h"

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

bool isBlank(std::string_view text, std::size_t begin, std::size_t end)
{
    return text.substr(begin, end - begin).find_first_not_of(" \t\r\n\v\f") == std::string_view::npos;
}

bool startsLine(std::string_view text, std::size_t position)
{
    const std::size_t start = lineStart(text, position);
    return isBlank(text, start, position);
}

std::string_view indentation(std::string_view text, std::size_t position)
{
    const std::size_t start = lineStart(text, position);
    const std::size_t end = std::min(text.find_first_not_of(" \t", start), text.size());
    return text.substr(start, end - start);
}

std::size_t endOfLine(std::string_view text, std::size_t position)
{
    return std::min(text.find('\n', position), text.size());
}

std::size_t column(std::string_view text, std::size_t position)
{
    std::size_t result = 0;
    for (std::size_t i = lineStart(text, position); i < position; ++i)
        result = text[i] == '\t' ? result / 8 * 8 + 8 : result + 1;
    return result;
}

std::string joined(std::initializer_list<std::string_view> parts)
{
    std::string result;
    for (const std::string_view part : parts)
        result += part;
    return result;
}

} // namespace

std::string_view lineEnd(std::string_view text)
{
    const std::size_t first = text.find('\n');
    return first != std::string_view::npos && first > 0 && text[first - 1] == '\r' ? "\r\n" : "\n";
}

std::string replaced(std::string_view text, std::size_t begin, std::size_t end, std::string_view replacement)
{
    return joined({text.substr(0, begin), replacement, text.substr(end)});
}

std::string without(std::string_view text, const Statement &statement)
{
    std::size_t begin = statement.begin;
    std::size_t end = statement.end;
    const std::size_t lineBreak = endOfLine(text, end);
    if (startsLine(text, begin) && isBlank(text, end, lineBreak)) {
        begin = lineStart(text, begin);
        end = std::min(lineBreak + 1, text.size());
    } else if (isBlank(text, end, lineBreak)) {
        begin = text.find_last_not_of(" \t", begin - 1) + 1; // something stands before it on its line
    } else {
        end = std::min(text.find_first_not_of(Blanks, end), text.size());
    }
    return replaced(text, begin, end, {});
}

std::string withBefore(std::string_view text, const Statement &statement, std::string_view added)
{
    if (!startsLine(text, statement.begin))
        return replaced(text, statement.begin, statement.begin, joined({added, " "}));
    const std::size_t start = lineStart(text, statement.begin);
    return replaced(text, start, start, joined({indentation(text, start), added, lineEnd(text)}));
}

std::string withBehind(std::string_view text, const Statement &statement, std::string_view added)
{
    const std::size_t rest = text.find_first_not_of(Blanks, statement.end);
    if (rest != std::string_view::npos && text[rest] != '\n' && text[rest] != '#')
        return replaced(text, statement.end, statement.end, joined({" ", added}));
    const std::size_t lineBreak = endOfLine(text, statement.end);
    if (lineBreak == text.size())
        return withAtEnd(text, added);
    const std::string_view indent = startsLine(text, statement.begin) ? indentation(text, statement.begin)
                                                                      : std::string_view();
    return replaced(text, lineBreak + 1, lineBreak + 1, joined({indent, added, lineEnd(text)}));
}

std::string withAtEnd(std::string_view text, std::string_view added)
{
    const bool open = !text.empty() && text.back() != '\n';
    return joined({text, open ? lineEnd(text) : std::string_view(), added, lineEnd(text)});
}

std::string withInBlock(std::string_view text, const Statement &block, std::string_view added)
{
    const std::size_t brace = block.bodyEnd;
    if (!startsLine(text, brace)) {
        const bool blank = Blanks.find(text[brace - 1]) != std::string_view::npos;
        return replaced(text, brace, brace, joined({blank ? "" : " ", added, " "}));
    }
    std::string indent = joined({indentation(text, block.begin), Indent});
    for (const Statement &inner : block.body) {
        if (startsLine(text, inner.begin))
            indent = indentation(text, inner.begin);
    }
    const std::size_t start = lineStart(text, brace);
    return replaced(text, start, start, joined({indent, added, lineEnd(text)}));
}

std::string withName(std::string_view text, const Statement &list, std::string_view name)
{
    if (list.names.empty())
        return replaced(text, list.keywordEnd, list.keywordEnd, joined({" ", name}));
    const Name &last = list.names.back();
    const std::size_t behind = column(text, last.end) + 2 + name.size() + 1; // ", ", the name and what follows
    if (behind <= LongestLine)
        return replaced(text, last.end, last.end, joined({", ", name}));
    // As the list's last line is indented, if it has more than its first one.
    const bool continued = lineStart(text, last.begin) != lineStart(text, list.begin);
    const std::string indent = continued ? std::string(indentation(text, last.begin))
                                         : joined({indentation(text, list.begin), Indent});
    return replaced(text, last.end, last.end, joined({",", lineEnd(text), indent, name}));
}

std::string withoutName(std::string_view text, const Statement &list, std::size_t index)
{
    const std::vector<Name> &names = list.names;
    const Name &name = names[index];
    const bool last = index + 1 == names.size();
    const auto onlyCommas = [&](std::size_t begin, std::size_t end) {
        return text.substr(begin, end - begin).find_first_not_of(", \t\r\n\v\f") == std::string_view::npos;
    };
    if (names.size() == 1) {
        const std::size_t end = name.comma == std::string::npos ? name.end : name.comma + 1;
        const bool bare = isBlank(text, list.keywordEnd, name.begin) && onlyCommas(name.end, list.end - 1);
        const std::string_view keywords = text.substr(list.begin, list.keywordEnd - list.begin);
        if (list.also && bare && keywords.find('#') == std::string_view::npos)
            return without(text, list);
        if (isBlank(text, list.keywordEnd, name.begin) && onlyCommas(name.end, end))
            return replaced(text, list.keywordEnd, end, {});
        std::string result = replaced(text, name.begin, name.end, {});
        if (name.comma != std::string::npos)
            result.erase(name.comma - (name.end - name.begin), 1);
        return result;
    }
    const bool lineBreakBehind = !last
        && text.substr(name.end, names[index + 1].begin - name.end).find('\n') != std::string_view::npos;
    if (index > 0 && (last || lineBreakBehind) && onlyCommas(names[index - 1].end, name.begin))
        return replaced(text, names[index - 1].end, name.end, {});
    if (!last && onlyCommas(name.end, names[index + 1].begin))
        return replaced(text, name.begin, names[index + 1].begin, {});
    // Comments stand around it: they stay.
    const std::size_t comma = last && name.comma == std::string::npos ? names[index - 1].comma : name.comma;
    std::string result(text);
    result.erase(std::max(comma, name.begin), comma > name.begin ? 1 : name.end - name.begin);
    return result.erase(std::min(comma, name.begin), comma > name.begin ? name.end - name.begin : 1);
}

std::string withoutNames(std::string_view text, const Statement &list, const std::vector<std::size_t> &indices)
{
    const std::vector<Name> &names = list.names;
    const auto between = [&](std::size_t first) {
        return text.substr(names[first].end, names[first + 1].begin - names[first].end);
    };
    const auto onlyCommas = [&](std::size_t first) {
        return between(first).find_first_not_of(", \t\r\n\v\f") == std::string_view::npos;
    };
    // Each with what is behind it, or, at the ends of lines, with what is before it: as withoutName() does.
    for (const bool behind : {true, false}) {
        std::string result;
        std::size_t copied = 0;
        std::size_t cuts = 0;
        for (const std::size_t index : indices) {
            if (index + 1 == names.size() || (!behind && index == 0))
                continue;
            const bool lineEnds = between(index).find('\n') != std::string_view::npos;
            if (lineEnds == behind || !onlyCommas(behind ? index : index - 1))
                continue;
            const std::size_t begin = behind ? names[index].begin : names[index - 1].end;
            result.append(text.substr(copied, begin - copied));
            copied = behind ? names[index + 1].begin : names[index].end;
            ++cuts;
        }
        if (cuts > 1)
            return result.append(text.substr(copied));
    }
    return withoutName(text, list, indices.back());
}

std::string listStatement(std::string_view keyword, const std::vector<std::string> &names, std::string_view lineEnd)
{
    std::string result(keyword);
    std::size_t width = result.size();
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0)
            result += ',';
        if (width + 2 + names[i].size() + 1 > LongestLine) {
            result.append(lineEnd).append(Indent);
            width = Indent.size();
        } else {
            result += ' ';
            width += 2;
        }
        result += names[i];
        width += names[i].size();
    }
    return result + ';';
}

} // namespace DhclientConf
