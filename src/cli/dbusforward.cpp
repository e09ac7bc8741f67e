#include "cli/dbusforward.h"

#include "platform/sharedfile.h"

#include <systemd/sd-bus.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <sys/stat.h>
#include <unistd.h>

namespace cli
{

namespace
{
// Another open file holds `path` for writing (the desktop program's hold lock). Only such
// files can be open in a program, so every other command stays off the bus entirely.
bool HeldElsewhere(const std::string& path)
{
    struct stat st
    {
    };
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
        return false;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct flock probe
    {
    };
    probe.l_type = F_WRLCK;
    probe.l_whence = SEEK_SET;
    probe.l_start = static_cast<off_t>(platform::SharedFile::kHoldOffset);
    probe.l_len = 1;
    const bool held = ::fcntl(fd, F_OFD_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
    ::close(fd);
    return held;
}

struct Bus
{
    sd_bus* bus = nullptr;
    ~Bus() { sd_bus_flush_close_unref(bus); }
};

struct Message
{
    sd_bus_message* m = nullptr;
    ~Message() { sd_bus_message_unref(m); }
};

struct Error
{
    sd_bus_error e = SD_BUS_ERROR_NULL;
    ~Error() { sd_bus_error_free(&e); }
};

bool TimedOut(int r, const sd_bus_error& e)
{
    return r == -ETIMEDOUT || sd_bus_error_has_name(&e, SD_BUS_ERROR_NO_REPLY) ||
           sd_bus_error_has_name(&e, SD_BUS_ERROR_TIMEOUT);
}

std::vector<std::string> ProgramNames(sd_bus* bus)
{
    Error error;
    Message reply;
    std::vector<std::string> names;
    if (sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "ListNames", &error.e, &reply.m, "") < 0)
        return names;
    char** list = nullptr;
    if (sd_bus_message_read_strv(reply.m, &list) < 0 || !list)
        return names;
    const std::string prefix = kInstanceNamePrefix;
    for (char** n = list; *n; ++n)
    {
        if (std::string(*n).rfind(prefix, 0) == 0)
            names.emplace_back(*n);
        std::free(*n);
    }
    std::free(list);
    return names;
}

void WriteAll(int fd, const void* data, size_t size)
{
    const char* p = static_cast<const char*>(data);
    while (size > 0)
    {
        const ssize_t n = ::write(fd, p, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return;
        p += n;
        size -= size_t(n);
    }
}

enum class Lookup
{
    holds,
    other,
    silent,
};

Lookup AskDocumentPath(sd_bus* bus, const std::string& name, const std::string& path)
{
    Error error;
    char* held = nullptr;
    const int r = sd_bus_get_property_string(bus, name.c_str(), DocumentObjectPath(path).c_str(),
                                             kDocumentInterface, "DocumentPath", &error.e, &held);
    if (r < 0)
        return TimedOut(r, error.e) ? Lookup::silent : Lookup::other;
    const bool same = held && path == held;
    std::free(held);
    return same ? Lookup::holds : Lookup::other;
}

int Run(sd_bus* bus, const std::string& name, const std::string& path, const CommandLine& line)
{
    std::vector<std::string> argv = line.words;
    if (line.preset == TerminalPrompter::Preset::yes)
        argv.push_back("--yes");
    else if (line.preset == TerminalPrompter::Preset::no)
        argv.push_back("--no");
    std::vector<char*> strv;
    for (std::string& a : argv)
        strv.push_back(a.data());
    strv.push_back(nullptr);
    std::string cwd(4096, '\0');
    if (!::getcwd(cwd.data(), cwd.size()))
        cwd = "/";
    cwd.resize(std::strlen(cwd.c_str()));

    Message call;
    Message reply;
    Error error;
    int r = sd_bus_message_new_method_call(
        bus, &call.m, name.c_str(), DocumentObjectPath(path).c_str(), kDocumentInterface, "Run");
    if (r >= 0)
        r = sd_bus_message_append_strv(call.m, strv.data());
    if (r >= 0)
        r = sd_bus_message_append(call.m, "s", cwd.c_str());
    if (r >= 0)
        r = sd_bus_call(bus, call.m, uint64_t(kRunTimeoutMs) * 1000, &error.e, &reply.m);
    if (r < 0)
    {
        if (TimedOut(r, error.e))
            std::cerr << "qvx: the desktop program holding '" << path << "' did not answer within "
                      << kRunTimeoutMs / 1000
                      << " seconds; look at the document before running the command again\n";
        else
            std::cerr << "qvx: the desktop program holding '" << path
                      << "' could not run the command: "
                      << (error.e.message ? error.e.message : std::strerror(-r)) << "\n";
        return 1;
    }
    int32_t status = 1;
    const void* out = nullptr;
    const void* err = nullptr;
    size_t outSize = 0;
    size_t errSize = 0;
    if (sd_bus_message_read(reply.m, "i", &status) < 0 ||
        sd_bus_message_read_array(reply.m, 'y', &out, &outSize) < 0 ||
        sd_bus_message_read_array(reply.m, 'y', &err, &errSize) < 0)
    {
        std::cerr << "qvx: the desktop program holding '" << path
                  << "' answered with something unreadable\n";
        return 1;
    }
    WriteAll(STDOUT_FILENO, out, outSize);
    WriteAll(STDERR_FILENO, err, errSize);
    return status;
}
} // namespace

std::optional<int> ForwardToProgram(const CommandLine& line)
{
    size_t used = 0;
    if (line.words.empty() || line.words[0] == "help")
        return std::nullopt;
    const Command* command = AllCommands().Find(line.words, used);
    if (!command || command->local)
        return std::nullopt;
    std::vector<std::string> held;
    for (size_t i = used; i < line.words.size(); ++i)
        if (line.words[i].rfind("-", 0) != 0 && HeldElsewhere(line.words[i]))
            held.push_back(CanonicalPath(line.words[i]));
    if (held.empty())
        return std::nullopt;

    Bus bus;
    if (sd_bus_open_user(&bus.bus) < 0)
        return std::nullopt;
    sd_bus_set_method_call_timeout(bus.bus, uint64_t(kLookupTimeoutMs) * 1000);

    std::string silentPath;
    for (const std::string& name : ProgramNames(bus.bus))
        for (const std::string& path : held)
        {
            const Lookup lookup = AskDocumentPath(bus.bus, name, path);
            if (lookup == Lookup::holds)
                return Run(bus.bus, name, path, line);
            if (lookup == Lookup::silent)
            {
                // One wait per program is enough.
                silentPath = path;
                break;
            }
        }
    if (!silentPath.empty())
    {
        std::cerr << "qvx: the desktop program that holds '" << silentPath
                  << "' does not answer (waited " << kLookupTimeoutMs / 1000
                  << " seconds); nothing was changed\n";
        return 1;
    }
    return std::nullopt;
}

} // namespace cli
