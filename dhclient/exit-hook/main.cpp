// Records what a DHCP client received. Called by the client's exit hook with the process number of the script
// that sources it; the client's event is in that process's first environment.

#include "bindings.h"
#include "files.h"
#include "leaseevent.h"
#include "paths.h"
#include "procfs.h"
#include "valuefolder.h"
#include "window.h"

#include <fcntl.h>
#include <sys/file.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <iostream>

namespace {

constexpr char VariableDirectory[] = "/var/lib/dhcp3/vars";

/// So that no file that is opened later gets one of their numbers.
void fillStandardDescriptors()
{
    int descriptor = ::open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDWR);
    if (descriptor >= 0)
        ::close(descriptor);
}

LeaseEvent eventOf(const char *script)
{
    const std::string variables
        = Procfs::isOurs() ? Procfs::read(std::atoi(script), "environ") : std::string();
    if (variables.compare(0, 7, "reason=") == 0
        || variables.find(std::string("\0reason=", 8)) != std::string::npos)
        return LeaseEvent::fromEnvironment(variables);
    // Somebody has sourced the hook in a shell of their own.
    std::string exported;
    for (char **variable = environ; *variable; ++variable)
        exported.append(*variable).push_back('\0');
    return LeaseEvent::fromEnvironment(exported);
}

/// The lock under which one hook at a time works. Its file is never removed. Not waited for without end: the
/// client stands still meanwhile.
bool lock(int file)
{
    constexpr int Attempts = 500;
    constexpr timespec Pause = {0, 10'000'000};
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        if (::flock(file, LOCK_EX | LOCK_NB) == 0)
            return true;
        if (errno != EWOULDBLOCK && errno != EINTR)
            return false;
        ::nanosleep(&Pause, nullptr);
    }
    return false;
}

/// False when the event changes nothing.
bool record(const LeaseEvent &event, const std::string &directory, int descriptor)
{
    Bindings bindings(directory, descriptor);
    const Client client = Client::running(event.pid);
    Bindings::Binding *binding = bindings.find(event.interface);
    if (binding && binding->owner != client && binding->owner.isAlive()) {
        // One that has ended meanwhile took part in a race and lost it; one in another network has another interface
        // of the same name.
        const bool takesOver = event.kind == LeaseEvent::Kind::Bound && client.isAlive()
            && binding->owner.isInOurNetwork();
        if (!takesOver)
            return false;
    }

    if (event.kind == LeaseEvent::Kind::Lost) {
        if (binding)
            binding->isBound = false;
    } else {
        binding = &bindings.take(event.interface);
        binding->owner = client;
        binding->isBound = true;
    }
    if (!bindings.save())
        Files::complain(directory, errno);

    const std::string folder = bindings.folderOf(event.interface);
    if (!folder.empty()) {
        if (event.kind == LeaseEvent::Kind::Lost)
            ValueFolder::clear(folder);
        else
            ValueFolder::fill(folder, event.options);
    }
    if (event.kind != LeaseEvent::Kind::Lost)
        client.endEarlierOnes(bindings.owners());
    return !folder.empty();
}

int run(const char *script)
{
    const LeaseEvent event = eventOf(script);
    if (event.kind == LeaseEvent::Kind::Ignored)
        return EXIT_SUCCESS;

    const std::string directory = Paths::resolve(VariableDirectory);
    if (!Files::makeFolders(directory)) {
        Files::complain(directory, errno);
        return EXIT_FAILURE;
    }
    {
        const Descriptor folder(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        const Descriptor lockFile(
            ::openat(folder.get(), ".lock", O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (lockFile.get() < 0 || !lock(lockFile.get())) {
            Files::complain(directory + "/.lock", errno);
            return EXIT_FAILURE;
        }
        if (!record(event, directory, folder.get()))
            return EXIT_SUCCESS;
    }
    Window::refresh();
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char *argv[])
{
    fillStandardDescriptors();
    try {
        return run(argc > 1 ? argv[1] : "");
    } catch (const std::exception &exception) {
        std::cerr << "record-lease: " << exception.what() << std::endl;
        return EXIT_FAILURE;
    }
}
