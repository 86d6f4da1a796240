// Gives the exit hook's parts arbitrary environments of the client's script and arbitrary records, and stops
// when what they make of them is not sound. A first byte "!" starts a record of folders, a NUL, one of clients,
// a NUL, and the interfaces that then ask for a folder; all else is an environment.

#include "bindings.h"
#include "files.h"
#include "leaseevent.h"
#include "valuefolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace {

using Values = std::map<std::string, std::string>;

std::string folder;

[[noreturn]] void fail(const char *what, const std::string &which)
{
    std::fprintf(stderr, "%s: <%s>\n", what, which.c_str());
    std::abort();
}

/// By the C library's tables, not by those of the code that is tested.
bool isOneLineOfText(const std::string &text)
{
    std::mbstate_t state = {};
    for (std::size_t i = 0; i < text.size();) {
        wchar_t character = 0;
        const std::size_t length = std::mbrtowc(&character, text.data() + i, text.size() - i, &state);
        const bool turnsDirection
            = (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
        if (length == 0 || length > text.size() - i || std::iswcntrl(static_cast<std::wint_t>(character)) != 0
            || turnsDirection)
            return false;
        i += length;
    }
    return true;
}

bool isFileName(const std::string &name)
{
    return !name.empty() && name.size() < 256 && name[0] != '-'
        && std::all_of(name.begin(), name.end(), [](unsigned char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
           });
}

Values filesOf(const std::string &path)
{
    Values files;
    for (const auto &entry : std::filesystem::directory_iterator(path)) {
        std::ifstream file(entry.path(), std::ios::binary);
        files[entry.path().filename()] = std::string((std::istreambuf_iterator<char>(file)), {});
    }
    return files;
}

void readEnvironment(std::string_view variables)
{
    const LeaseEvent event = LeaseEvent::fromEnvironment(variables);
    if (event.kind != LeaseEvent::Kind::Ignored
        && (event.interface.empty() || event.interface.size() > 15
            || event.interface.find_first_of(std::string_view("/ \t\n\0", 5)) != std::string::npos))
        fail("no interface", event.interface);
    if (event.pid < 0 || event.pid == 1)
        fail("no client", std::to_string(event.pid));
    Values expected;
    for (const auto &[name, text] : event.options) {
        if (!isFileName(name))
            fail("no file name", name);
        if (!isOneLineOfText(text))
            fail("not to be shown", text);
        std::string variable = name;
        std::replace(variable.begin(), variable.end(), '-', '_');
        expected[name] = "new_" + variable + "='" + text + "'\n";
    }
    // The folder still holds the values of the inputs before.
    ValueFolder::fill(folder + "/eth0", event.options);
    if (filesOf(folder + "/eth0") != expected)
        fail("other files than values", std::to_string(expected.size()));
}

void readRecord(std::string_view input)
{
    const auto part = [&input] {
        const std::string_view first = input.substr(0, input.find('\0'));
        input.remove_prefix(std::min(first.size() + 1, input.size()));
        return std::string(first);
    };
    std::ofstream(folder + "/.interfaces", std::ios::binary) << part();
    std::ofstream(folder + "/.clients", std::ios::binary) << part();
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    Bindings bindings(folder, descriptor.get());
    std::set<std::string> interfaces;
    while (!input.empty()) {
        // Only such names come this far.
        const std::string name = part().substr(0, 15);
        if (name.empty() || name == "#"
            || std::any_of(name.begin(), name.end(), [](unsigned char c) { return c <= ' '; }))
            continue;
        interfaces.insert(name);
        Bindings::Binding &binding = bindings.take(name);
        binding.owner = Client::running(::getpid());
        if ((name == "eth0" || name == "eth1") && binding.folder != name)
            fail("an interface lost its own folder", name);
    }
    if (!bindings.save())
        fail("not saved", folder);
    Bindings again(folder, descriptor.get());
    std::set<std::string> taken;
    for (const std::string &name : interfaces) {
        const std::string path = bindings.folderOf(name);
        if (!path.empty() && path != folder + "/eth0" && path != folder + "/eth1")
            fail("a strange folder", path);
        if (!path.empty() && !taken.insert(path).second)
            fail("one folder for two", name);
        if (again.folderOf(name) != path)
            fail("another folder next time", name);
        const Bindings::Binding *binding = again.find(name);
        if (!binding || !binding->owner.isAlive())
            fail("the client was forgotten", name);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    if (!std::setlocale(LC_ALL, "C.UTF-8"))
        std::abort();
    folder = std::filesystem::temp_directory_path() / "fuzz-XXXXXX";
    if (!::mkdtemp(folder.data()) || !Files::makeFolders(folder + "/eth0") || !Files::makeFolders(folder + "/eth1"))
        std::abort();
    ::setenv("KIRO_DHCP_MGR_ROOT", folder.c_str(), 1); // keeps complaints out of the system's log
    std::atexit([] { std::filesystem::remove_all(folder); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    if (!input.empty() && input[0] == '!')
        readRecord(input.substr(1));
    else
        readEnvironment(input);
    return 0;
}
