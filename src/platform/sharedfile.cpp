#include "platform/sharedfile.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform
{

namespace
{

// Filling a large fresh buffer in small pages faults once every 4 KB, which costs
// more than the read itself; in huge pages a document of tens of megabytes reads
// several times faster.
void AdviseHugePages(void* data, size_t size)
{
    constexpr uintptr_t kHuge = uintptr_t(2) << 20;
    const uintptr_t begin = (reinterpret_cast<uintptr_t>(data) + kHuge - 1) & ~(kHuge - 1);
    const uintptr_t end = (reinterpret_cast<uintptr_t>(data) + size) & ~(kHuge - 1);
    if (end > begin)
        ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

void SetError(int* error, int value)
{
    if (error)
        *error = value;
}

int RetryingLock(int fd, int command, struct flock& lock)
{
    int rc;
    do
        rc = ::fcntl(fd, command, &lock);
    while (rc == -1 && errno == EINTR);
    return rc;
}

struct flock MakeLock(short type, int64_t start, int64_t length)
{
    struct flock lock{};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(start);
    lock.l_len = static_cast<off_t>(length);
    lock.l_pid = 0; // required for open-file-description locks
    return lock;
}

// Locks that the file system does not support at all: such a file is used without
// coordination rather than never being writable.
bool LockingUnsupported(int err) { return err == ENOLCK || err == EINVAL || err == EOPNOTSUPP; }

} // namespace

SharedFile::SharedFile(std::string path, int fd, bool readOnly)
    : m_path(std::move(path)), m_fd(fd), m_readOnly(readOnly)
{
}

SharedFile::~SharedFile()
{
    if (m_fd >= 0)
        ::close(m_fd); // drops the locks of this open file description
}

std::unique_ptr<SharedFile> SharedFile::OpenShared(const std::string& path, bool create, int* error)
{
    SetError(error, 0);
    int flags = O_RDWR | O_CLOEXEC;
    if (create)
        flags |= O_CREAT;
    int fd = ::open(path.c_str(), flags, 0666);
    int openError = fd < 0 ? errno : 0;
    if (fd >= 0)
    {
        struct stat st{};
        if (::fstat(fd, &st) == 0 && !S_ISREG(st.st_mode))
        {
            ::close(fd);
            SetError(error, EISDIR);
            return nullptr;
        }
        struct flock hold = MakeLock(F_WRLCK, kHoldOffset, 1);
        if (RetryingLock(fd, F_OFD_SETLK, hold) == 0)
            return std::unique_ptr<SharedFile>(new SharedFile(path, fd, false));
        const int lockError = errno;
        if (LockingUnsupported(lockError))
            return std::unique_ptr<SharedFile>(new SharedFile(path, fd, false));
        // Somebody else holds it for writing.
        ::close(fd);
        openError = lockError;
    }
    if (create)
    {
        SetError(error, openError);
        return nullptr;
    }
    fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
    {
        SetError(error, errno);
        return nullptr;
    }
    struct stat st{};
    if (::fstat(fd, &st) == 0 && !S_ISREG(st.st_mode))
    {
        ::close(fd);
        SetError(error, EISDIR);
        return nullptr;
    }
    return std::unique_ptr<SharedFile>(new SharedFile(path, fd, true));
}

bool SharedFile::ReadAll(std::vector<uint8_t>& bytes, int* error) const
{
    SetError(error, 0);
    bytes.clear();
    // A shared lock below the hold byte waits out a save in progress elsewhere, so that
    // a reader never sees a half-written file.
    struct flock lock = MakeLock(F_RDLCK, 0, kHoldOffset);
    const bool locked = RetryingLock(m_fd, F_OFD_SETLKW, lock) == 0;
    if (!locked && !LockingUnsupported(errno))
    {
        SetError(error, errno);
        return false;
    }
    bool ok = true;
    struct stat st{};
    if (::fstat(m_fd, &st) == 0 && st.st_size > 0)
    {
        bytes.reserve(static_cast<size_t>(st.st_size));
        AdviseHugePages(bytes.data(), bytes.capacity());
    }
    uint8_t buffer[1 << 16];
    off_t offset = 0;
    for (;;)
    {
        const ssize_t n = ::pread(m_fd, buffer, sizeof buffer, offset);
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            SetError(error, errno);
            ok = false;
            break;
        }
        if (n == 0)
            break;
        bytes.insert(bytes.end(), buffer, buffer + n);
        offset += n;
    }
    if (locked)
    {
        struct flock unlock = MakeLock(F_UNLCK, 0, kHoldOffset);
        RetryingLock(m_fd, F_OFD_SETLK, unlock);
    }
    if (!ok)
        bytes.clear();
    return ok;
}

bool SharedFile::LockForWriting(int* error)
{
    SetError(error, 0);
    if (m_readOnly)
    {
        SetError(error, EBADF);
        return false;
    }
    struct flock lock = MakeLock(F_WRLCK, 0, kHoldOffset);
    if (RetryingLock(m_fd, F_OFD_SETLKW, lock) == 0 || LockingUnsupported(errno))
        return true;
    SetError(error, errno);
    return false;
}

void SharedFile::UnlockAfterWriting()
{
    // Only the range below the hold byte: the hold itself stays.
    struct flock unlock = MakeLock(F_UNLCK, 0, kHoldOffset);
    RetryingLock(m_fd, F_OFD_SETLK, unlock);
}

bool SharedFile::Rewrite(const uint8_t* data, size_t size, int* error)
{
    SetError(error, 0);
    if (m_readOnly)
    {
        SetError(error, EBADF);
        return false;
    }
    // Writing over the old contents reuses their blocks and cached pages, where cutting
    // the file to 0 first would free them all and allocate them again.
    size_t written = 0;
    while (written < size)
    {
        const ssize_t n = ::pwrite(m_fd, data + written, size - written, static_cast<off_t>(written));
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            SetError(error, errno);
            return false;
        }
        if (n == 0)
        {
            SetError(error, EIO);
            return false;
        }
        written += static_cast<size_t>(n);
    }
    if (::ftruncate(m_fd, static_cast<off_t>(size)) != 0)
    {
        SetError(error, errno);
        return false;
    }
    return Flush(error);
}

bool SharedFile::Flush(int* error)
{
    SetError(error, 0);
    if (m_readOnly)
        return true;
    if (::fsync(m_fd) != 0)
    {
        SetError(error, errno);
        return false;
    }
    return true;
}

bool SharedFile::CopyFile(const std::string& from, const std::string& to, int* error)
{
    SetError(error, 0);
    std::error_code ec;
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, ec);
    if (ec)
    {
        SetError(error, ec.value());
        return false;
    }
    // The copy must be on the disk before the original is cut to length 0.
    const int fd = ::open(to.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
    {
        SetError(error, errno);
        return false;
    }
    const bool synced = ::fsync(fd) == 0;
    const int syncError = errno;
    ::close(fd);
    if (!synced)
    {
        SetError(error, syncError);
        return false;
    }
    SyncDirectoryOf(to);
    return true;
}

bool SharedFile::DeleteFile(const std::string& path, int* error)
{
    SetError(error, 0);
    if (::unlink(path.c_str()) == 0 || errno == ENOENT)
    {
        SyncDirectoryOf(path);
        return true;
    }
    SetError(error, errno);
    return false;
}

void SharedFile::SyncDirectoryOf(const std::string& path)
{
    std::filesystem::path dir = std::filesystem::path(path).parent_path();
    if (dir.empty())
        dir = ".";
    const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    ::fsync(fd); // best effort: some file systems refuse to sync a directory
    ::close(fd);
}

} // namespace platform
