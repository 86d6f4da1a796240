#ifndef INPUT_H
#define INPUT_H

#include "edit.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

/// What a fuzzer's input says: lines "+N", "-N", "N SPEC" and "D SPEC" are commands, the first line that is
/// none of them starts the configuration. After a first byte "!" the further bytes choose among pieces of such an
/// input, so that most inputs are files that the client takes.
struct Input
{
    std::vector<DhclientConf::Command> commands;
    std::string text;
};

class Expansion
{
public:
    explicit Expansion(std::string_view data) : m_data(data) {}

    std::string text()
    {
        static constexpr std::string_view commands[] = {
            "+@\n", "-@\n", "N @ 200 text\n", "N @ 210 array of ip-address\n", "D @ 200 text\n", "D @ 210 text\n",
            "N @ 220 encapsulate sp\n"};
        for (std::size_t left = 1 + next() % 4; left > 0; --left)
            add(commands[next() % std::size(commands)], false);
        while (!m_data.empty())
            addStatement();
        if (m_inBlock)
            m_text += "}";
        return m_text;
    }

private:
    std::size_t next()
    {
        if (m_data.empty())
            return 0;
        const char first = m_data.front();
        m_data.remove_prefix(1);
        return static_cast<unsigned char>(first);
    }

    // "@" stands for a name: usually one that the client knows at this place.
    void add(std::string_view piece, bool known = true)
    {
        static constexpr std::string_view names[] = {"routers", "ntp-servers", "host-name", "dhcp6.name-servers",
                                                     "foo", "bar", "inc", "sp.x"};
        for (const char c : piece) {
            if (c != '@') {
                m_text += c;
                continue;
            }
            const std::size_t choice = next();
            m_text += !known || choice > 0xf0 ? names[choice % 8]
                : m_declared.empty() || choice % 3 == 0 ? names[choice % 4]
                                                        : m_declared[choice % m_declared.size()];
        }
    }

    void addList(std::string_view keyword)
    {
        static constexpr std::string_view commas[] = {", ", ", ", ",\n\t", ",", " , ", " # a\n , # b\n    "};
        m_text += keyword;
        for (std::size_t left = next() % 5; left > 0; --left) {
            add("@");
            if (left > 1)
                m_text += commas[next() % std::size(commas)];
        }
        m_text += ';';
    }

    void declare(std::string_view name, std::string_view rest)
    {
        m_declared.emplace_back(name);
        m_text.append("option ").append(name).append(rest);
    }

    void addStatement()
    {
        static constexpr std::string_view ends[] = {"\n", "\n", "\r\n", " ", " # words\n", "\n\n"};
        const std::size_t choice = next() % 24;
        if (choice < 8)
            addList(choice < 3 ? "request " : choice < 6 ? "also request " : choice < 7 ? "require " : "also require ");
        else if (choice < 11 && !m_inBlock)
            declare(choice % 2 ? "foo" : "bar", next() % 2 ? " code 200 = text;" : " code 210 = array of ip-address;");
        else if (choice < 13 && !m_inBlock)
            m_inBlock = (m_text += next() % 4 ? "interface \"e0\" {" : "interface \"e1\" {", true);
        else if (choice < 15 && m_inBlock)
            m_inBlock = (m_text += "}", false);
        else if (choice < 17)
            add("supersede @ = \"x\";");
        else if (choice < 18)
            add("if exists @ { append domain-name \"z\"; }");
        else if (choice < 19 && !m_inBlock)
            m_text += "option space sp;", declare("sp.x", " code 3 = text;");
        else if (choice < 20)
            add("pseudo \"p\" \"e0\" { also request @; }");
        else if (choice < 22 && !m_inBlock)
            m_text.append("include \"/").append(1, "rdaebc"[next() % 6]).append("\";");
        else
            m_text += "timeout 5;";
        m_text += ends[next() % std::size(ends)];
    }

    std::string_view m_data;
    std::string m_text;
    std::vector<std::string> m_declared;
    bool m_inBlock = false;
};

inline Input readInput(std::string_view data)
{
    std::string pieces;
    if (!data.empty() && data.front() == '!') {
        pieces = Expansion(data.substr(1)).text();
        data = pieces;
    }
    using DhclientConf::Command;
    static constexpr std::pair<char, Command::Kind> kinds[] = {{'+', Command::AddRequest}, {'-', Command::DelRequest},
                                                               {'N', Command::AddNewOption},
                                                               {'D', Command::DelNewOption}};
    Input result;
    for (bool found = true; found && !data.empty() && result.commands.size() < 6;) {
        const std::string_view line = data.substr(0, data.find('\n'));
        found = false;
        for (const auto &[letter, kind] : kinds) {
            if (line.empty() || line.front() != letter)
                continue;
            found = true;
            const std::size_t skipped = line.size() > 1 && line[1] == ' ' ? 2 : 1;
            result.commands.push_back({kind, std::string(line.substr(skipped))});
            data.remove_prefix(std::min(line.size() + 1, data.size()));
        }
    }
    result.text = data;
    return result;
}

#endif
