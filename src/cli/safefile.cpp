#include "cli/safefile.h"

#include "cli/cliargs.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace cli
{

namespace
{
std::string Why(const std::string& what, const std::string& path)
{
    return "cannot " + what + " '" + path + "': " + std::strerror(errno);
}

bool WriteAll(int fd, std::string_view bytes)
{
    size_t done = 0;
    while (done < bytes.size())
    {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += size_t(n);
    }
    return true;
}

void SyncDirectory(const std::string& dir)
{
    const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0)
    {
        ::fsync(fd);
        ::close(fd);
    }
}
} // namespace

bool FileExists(const std::string& path)
{
    struct stat st
    {
    };
    return ::lstat(path.c_str(), &st) == 0;
}

bool SameFile(const std::string& a, const std::string& b)
{
    std::error_code ea, eb;
    const auto ca = std::filesystem::weakly_canonical(a, ea);
    const auto cb = std::filesystem::weakly_canonical(b, eb);
    if (ea || eb)
        return a == b;
    return ca == cb;
}

void WriteNewFile(const std::string& path, std::string_view bytes, bool replace)
{
    if (!replace && FileExists(path))
        throw CommandError("'" + path + "' already exists (use --force to replace it)");
    // Replacing the name of a device or a pipe would put a file where the system needs
    // the device (as root, even /dev/null).
    struct stat existing
    {
    };
    if (::stat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode))
        throw CommandError("'" + path + "' is not a regular file; write to a file instead");
    const std::filesystem::path target(path);
    const std::string dir =
        target.has_parent_path() ? target.parent_path().string() : std::string(".");
    std::string temp =
        (std::filesystem::path(dir) / ("." + target.filename().string() + ".XXXXXX")).string();
    const int fd = ::mkstemp(temp.data());
    if (fd < 0)
        throw CommandError(Why("create a file in", dir));
    // mkstemp makes the file private; an archive is an ordinary document.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd, 0666 & ~mask);
    if (!WriteAll(fd, bytes) || ::fsync(fd) != 0)
    {
        const std::string error = Why("write", temp);
        ::close(fd);
        ::unlink(temp.c_str());
        throw CommandError(error);
    }
    if (::close(fd) != 0)
    {
        const std::string error = Why("write", temp);
        ::unlink(temp.c_str());
        throw CommandError(error);
    }
    // Without --force a link refuses a file that appeared meanwhile; rename would replace it.
    const int moved =
        replace ? ::rename(temp.c_str(), path.c_str()) : ::link(temp.c_str(), path.c_str());
    if (moved != 0)
    {
        const std::string error = errno == EEXIST
                                      ? "'" + path + "' already exists (use --force to replace it)"
                                      : Why("create", path);
        ::unlink(temp.c_str());
        throw CommandError(error);
    }
    if (!replace)
        ::unlink(temp.c_str());
    SyncDirectory(dir);
}

} // namespace cli
