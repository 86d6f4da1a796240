// Edits random configurations of the kind that people write as the program does, and reads from the wire what the
// real client requests before and after.
// Usage: property TOOL [FILES [SEED]]; file number n has the seed SEED + n. A single file is always shown.

#include "realclient.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr unsigned Workers = 8; // the client mostly waits for the kernel

struct Option
{
    std::string name;
    int code = 0;
    std::string type;
    bool predefined = false;
};
using Options = std::vector<Option>;

Options definitions()
{
    Options options;
    const std::filesystem::directory_iterator directory(OPTIONS_DIRECTORY);
    for (const std::filesystem::path &path : std::set<std::filesystem::path>(begin(directory), end(directory))) {
        const std::string text = Posix::readFile(path, 1 << 20).value();
        const std::size_t type = text.find("<linux-type>") + 12;
        options.push_back({path.stem().string().substr(4), std::stoi(path.stem()),
                           text.substr(type, text.find('<', type) - type),
                           text.find("<linux-predefined>Yes") != std::string::npos});
    }
    return options;
}

/// The table of grammar.txt; what the file says of itself becomes symbols that stand for nothing. Trial knows the
/// symbols that are missing there.
std::map<std::string, std::vector<std::string>> grammar()
{
    std::map<std::string, std::vector<std::string>> table;
    std::istringstream lines(Posix::readFile(GRAMMAR_PATH, 1 << 20).value());
    std::string line;
    std::string symbol;
    while (std::getline(lines, line)) {
        for (std::size_t at = 0; (at = line.find('\\', at)) != std::string::npos; ++at)
            line.replace(at, 2, 1, line[at + 1] == 'n' ? '\n' : line[at + 1] == 't' ? '\t' : '\\');
        if (line.compare(0, 2, "  ") == 0)
            table[symbol].push_back(line.substr(2));
        else
            symbol = line;
    }
    return table;
}

const std::map<std::string, std::vector<std::string>> Grammar = grammar();

/// One call of the edit tool as the program makes it.
struct Edit
{
    std::string name;
    int code; ///< in the end
    bool requested;
    std::string arguments; ///< as for a shell
};

/// A random configuration, what is done to it, and what comes of that.
class Trial
{
public:
    Trial(unsigned seed, const Options &options, const std::string &directory) : random(seed), directory(directory)
    {
        for (const Option &option : options) {
            if (option.predefined)
                codes[option.name].insert(option.code);
        }
        while (predefined.size() < 8 || custom.size() < 3) {
            const Option &option = oneOf(options);
            if (Grammar.count(option.type))
                (option.predefined ? predefined : custom).push_back(option);
        }
        custom.resize(3);
        custom.push_back({"corp-proxy", 200, "text", false}); // of no definition
        text = expanded("file");
        if (chance(3))
            text.resize(below(text.size() + 1));
        if (chance(10) && !text.empty())
            text.pop_back(); // the last line's end
        for (std::size_t end = chance(8) ? 0 : text.size(); (end = text.find('\n', end)) != std::string::npos; end += 2)
            text.insert(end, "\r");
        for (std::size_t count = 1 + below(4); count > 0; --count)
            edits.push_back(edit());
    }

    std::string text;
    std::map<std::string, std::string> included; ///< by path
    std::vector<std::string> untouchable;        ///< statements and comments, perhaps of an included file
    std::vector<Edit> edits;
    std::map<std::string, std::set<int>> codes; ///< that definitions, declarations and edits give a name

    std::string report;
    RealClient::Heard before, after;
    std::map<std::string, Edit> done; ///< the last edit of each option
    std::set<std::string> noted;      ///< options with a note
    std::set<std::string> dropped;    ///< options that an edit dropped, perhaps for a while

    bool isSound() const { return before.complaints.empty(); }

private:
    std::size_t below(std::size_t end) { return random() % end; }
    bool chance(std::size_t percent) { return below(100) < percent; }
    template <typename Item>
    const Item &oneOf(const std::vector<Item> &items)
    {
        return items[below(items.size())];
    }

    std::string expanded(const std::string &symbol)
    {
        if (symbol == "name")
            return chance(3) ? "dhcp6.name-servers" : chance(3) ? "unknown-" + expanded("number") : expanded("option");
        if (symbol == "option" || symbol == "custom") {
            const bool isDeclared = symbol == "option" && !declared.empty() && chance(35);
            last = oneOf(symbol == "custom" ? custom : isDeclared ? declared : predefined);
            std::string name = last.name;
            if (chance(6))
                std::transform(name.begin() + 1, name.end(), name.begin() + 1, ::toupper);
            return name;
        }
        if (symbol == "number")
            return std::to_string(oneOf(chance(50) ? predefined : custom).code);
        if (symbol == "code") {
            declared.push_back(last);
            const int code = chance(75) ? last.code : 200 + static_cast<int>(below(50));
            codes[last.name].insert(code);
            return std::to_string(code);
        }
        if (symbol == "type")
            return last.type;
        if (symbol == "included") {
            const std::string path = directory + "/included-" + std::to_string(included.size());
            included[path]; // taken, should it include others
            included[path] = included.size() < 4 ? expanded("statements") : "";
            return path;
        }
        std::string text = oneOf(Grammar.at(symbol == "value" ? last.type : symbol));
        for (std::size_t begin = 0; (begin = text.find('<', begin)) != std::string::npos;) {
            const std::size_t length = text.find('>', begin) + 1 - begin;
            const std::string replacement = expanded(text.substr(begin + 1, length - 2));
            text.replace(begin, length, replacement);
            begin += replacement.size();
        }
        if (symbol == "setting" || symbol == "keyword" || symbol == "comment" || symbol == "top")
            untouchable.push_back(text);
        return text;
    }

    Edit edit()
    {
        const bool isCustom = chance(60);
        const Option &option = oneOf(isCustom ? custom : predefined);
        Edit edit = {option.name, option.code, chance(60), ""};
        const auto specify = [&](bool adds, int code) {
            codes[option.name].insert(code);
            edit.arguments += std::string(adds ? " --add" : " --del") + "-new-option '" + option.name + ' '
                              + std::to_string(code) + ' ' + option.type + "'";
        };
        if (isCustom) {
            const int edited = 150 + static_cast<int>(below(100));
            const int applied = chance(80) ? option.code : edited;
            if (chance(40))
                edit.code = chance(50) ? applied : edited;
            if (edit.code != option.code)
                specify(false, option.code);
            if (applied != edit.code)
                specify(false, applied);
            specify(edit.requested, edit.code);
        }
        edit.arguments += (edit.requested ? " --add-request " : " --del-request ") + option.name;
        return edit;
    }

    std::mt19937 random;
    std::string directory;
    Options predefined, custom; ///< that most of it is about
    Options declared;           ///< so far
    Option last;                ///< that was named
};

/// What the threads share.
struct Counts
{
    std::atomic<unsigned> started, sound, changed, noted, refused, wrong;
};

/// Does a trial; returns what the tool did wrong, if anything.
std::string carryOut(const RealClient &client, const std::string &tool, Trial &trial, Counts &counts)
{
    const std::string conf = client.directory + "/etc/dhcp/dhclient.conf";
    const auto file = [&conf] { // the text, and what changes when it is written again
        struct stat status = {};
        stat(conf.c_str(), &status);
        return std::make_pair(Posix::readFile(conf, 1 << 20).value_or("no file"), status.st_ino);
    };
    const auto call = [&](const Edit &edit) {
        const std::string command = "'" + tool + "'" + edit.arguments;
        const std::string output = client.directory + "/said";
        const std::string root = "KIRO_DHCP_MGR_ROOT='" + client.directory + "' ";
        const int status = std::system((root + "timeout 20 " + command + " >" + output + " 2>&1").c_str());
        const std::string said = Posix::readFile(output, 1 << 20).value();
        if (said.find("kiro-dhclient-edit: note: ") != std::string::npos)
            trial.noted.insert(edit.name);
        trial.report += command + "\n" + said + "status " + std::to_string(WEXITSTATUS(status)) + '\n';
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    };

    trial.report = "=== OLD\n" + trial.text + '\n';
    for (const auto &[path, text] : trial.included) {
        Posix::replaceFile(path, text, Posix::Replacement::Cached);
        trial.report += "=== " + path + '\n' + text + '\n';
    }
    Posix::replaceFile(conf, trial.text, Posix::Replacement::Cached);
    trial.before = client.run(conf);
    trial.report += trial.before.complaints + "\n=== COMMANDS\n";
    for (const Edit &edit : trial.edits) {
        const auto old = file();
        const int status = call(edit);
        const auto edited = file();
        if (status == 0) {
            trial.done.insert_or_assign(edit.name, edit);
            if (!edit.requested)
                trial.dropped.insert(edit.name);
            if (call(edit) != 0 || file() != edited)
                return "the same again is refused, or writes again";
            continue;
        }
        if ((status != 1 && status != 2) || edited != old)
            return "refused in a wrong way";
        if (trial.isSound())
            return "a sound file is refused";
        ++counts.refused;
    }
    const std::string text = file().first;
    const bool changed = text != trial.text;
    trial.after = changed ? client.run(conf) : trial.before;
    trial.report += "=== NEW\n" + text + '\n' + trial.after.complaints + '\n';
    // Debian 13's client ends with a segmentation fault over some lists of names by number.
    if (trial.after.requested.size() < trial.before.requested.size() && text.find("unknown-") != std::string::npos) {
        trial.after = trial.before;
        trial.done.clear();
    }
    for (const std::string &statement : trial.untouchable) {
        if (trial.text.find(statement) != std::string::npos && text.find(statement) == std::string::npos)
            return "changes " + statement;
    }
    counts.sound += trial.isSound();
    counts.changed += changed;
    counts.noted += !trial.noted.empty();
    return trial.isSound() && !trial.after.complaints.empty() ? "the client complains of the edited file" : "";
}

/// Compares what the client requests on one interface before and after; returns what is wrong.
std::string compare(const std::string &interface, Trial &trial)
{
    const auto asSet = [](const std::vector<int> &codes) { return std::set<int>(codes.begin(), codes.end()); };
    const std::set<int> old = asSet(trial.before.requested[interface]);
    const std::set<int> now = asSet(trial.after.requested[interface]);
    std::map<int, int> owners; // how many names a code has; the wire does not show which of them is requested
    for (const auto &[name, codes] : trial.codes) {
        for (const int code : codes)
            ++owners[code];
    }
    std::string wrong;
    std::set<int> touched;
    std::set<int> wanted;
    std::set<int> excused;
    bool repairs = false; // lists that the client dropped for an unknown name take effect when it is declared
    for (const auto &[name, edit] : trial.done) {
        const std::set<int> &own = trial.codes.at(name);
        const auto isIn = [&](const std::set<int> &list) {
            return std::any_of(own.begin(), own.end(), [&](int c) { return owners[c] == 1 && list.count(c); });
        };
        touched.insert(own.begin(), own.end());
        if (trial.noted.count(name))
            excused.insert(own.begin(), own.end());
        if (edit.requested)
            wanted.insert(edit.code);
        if (!trial.dropped.count(name) && isIn(old) && !isIn(now) && owners[edit.code] == 1)
            wrong = interface + " no longer requests " + name;
        repairs = repairs || trial.before.complaints.find("no option named " + name) != std::string::npos;
    }
    std::string expected = "EXPECTED " + interface + ':';
    std::string got = "GOT      " + interface + ':';
    for (int code = 1; code < 255; ++code) {
        const bool kept = old.count(code) && !touched.count(code);
        const bool expects = wanted.count(code) || kept;
        expected += expects ? ' ' + std::to_string(code) : "";
        got += now.count(code) ? ' ' + std::to_string(code) : "";
        if (expects == now.count(code) || (!expects && owners[code] > 1 && touched.count(code)))
            continue;
        if (kept && !repairs)
            wrong = interface + " no longer requests " + std::to_string(code);
        else if (trial.isSound() && !excused.count(code))
            wrong = interface + " is wrong in " + std::to_string(code) + ", and no note says why";
    }
    trial.report += expected + '\n' + got + '\n';
    return wrong;
}

void work(const std::string &tool, unsigned files, unsigned seed, Counts &counts)
{
    const std::vector<Option> options = definitions();
    const RealClient client;
    // The tool looks below its root for what the client includes by the same absolute path.
    std::filesystem::create_directories(client.directory + "/etc/dhcp");
    std::filesystem::create_directory(client.directory + "/tmp");
    std::filesystem::create_directory_symlink(client.directory, client.directory + client.directory);
    for (unsigned number = counts.started++; number < files; number = counts.started++) {
        Trial trial(seed + number, options, client.directory);
        std::string wrong;
        try {
            wrong = carryOut(client, tool, trial, counts);
            for (const char *interface : {"eth0", "wlan0", "eth1"})
                wrong = wrong.empty() ? compare(interface, trial) : wrong;
        } catch (const std::exception &error) {
            wrong = error.what();
        }
        counts.wrong += !wrong.empty();
        if (files == 1 || (!wrong.empty() && counts.wrong <= 10))
            std::cout << "\n====== seed " + std::to_string(seed + number) + ": " + wrong + '\n' + trial.report
                      << std::flush;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    const std::string tool = argc > 1 ? argv[1] : "";
    const unsigned files = argc > 2 ? static_cast<unsigned>(std::stoul(argv[2])) : 300;
    const unsigned seed = argc > 3 ? static_cast<unsigned>(std::stoul(argv[3])) : 1;
    const std::string obstacle = RealClient().obstacle;
    if (!obstacle.empty()) {
        std::cout << "Skipped: " << obstacle << '\n';
        return 77;
    }
    Counts counts = {};
    std::vector<std::thread> workers(std::min(Workers, files));
    for (std::thread &worker : workers)
        worker = std::thread(work, tool, files, seed, std::ref(counts)); // each in a namespace of its own
    for (std::thread &worker : workers)
        worker.join();
    std::cout << files << " files: " << counts.sound << " sound, " << counts.changed << " changed, " << counts.noted
              << " with notes, " << counts.refused << " calls refused, " << counts.wrong << " wrong\n";
    // Too few sound files would prove nothing.
    const bool enough = files < 100 || (counts.sound > files / 2 && counts.changed > files / 2);
    return enough && counts.wrong == 0 ? 0 : 1;
}
