// Writes each accepted edit of a corpus as two files, N.old and N.new, for the real client's parser.
// Usage: replay FOLDER INPUT...

#include "input.h"

#include <fstream>
#include <iterator>

int main(int argc, char *argv[])
{
    for (int i = 2; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        const std::string data((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        const Input input = readInput(data);
        const auto nothing = [](const std::string &) { return std::optional<std::string>(); };
        const DhclientConf::Result result = DhclientConf::edit(input.text, input.commands, nothing);
        if (result.status != DhclientConf::Result::Done || result.text == input.text)
            continue;
        const std::string stem = std::string(argv[1]) + '/' + std::to_string(i);
        std::ofstream(stem + ".old", std::ios::binary) << input.text;
        std::ofstream(stem + ".new", std::ios::binary) << result.text;
    }
}
