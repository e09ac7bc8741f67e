#include "platform/sharedfile.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
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

// Another open file description holds a conflicting lock.
bool LockedElsewhere(int err)
{
    return err == EAGAIN || err == EACCES;
}

std::atomic<int64_t> g_waitLimitMs{SharedFile::kDefaultWaitLimit.count()};
SharedFile::WaitObserver g_waitObserver;

// Tells the observer about one wait, once it has really begun.
class WaitNotice
{
public:
    explicit WaitNotice(const std::string& path) : m_path(path) {}
    ~WaitNotice()
    {
        if (m_started && g_waitObserver)
            g_waitObserver(SharedFile::WaitEvent::finished, m_path);
    }
    void Started()
    {
        if (!m_started && g_waitObserver)
            g_waitObserver(SharedFile::WaitEvent::started, m_path);
        m_started = true;
    }

private:
    const std::string& m_path;
    bool m_started = false;
};

// Repeats `attempt` until it stops answering EAGAIN, sleeping a little longer each time
// (with some randomness, so that many waiting processes do not retry in step), for at
// most the wait limit; then ETIMEDOUT. `attempt` returns 0 or an errno value.
template <class Attempt> int WaitFor(const std::string& path, Attempt attempt)
{
    int result = attempt();
    if (result != EAGAIN)
        return result;
    WaitNotice notice(path);
    notice.Started();
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(g_waitLimitMs.load());
    thread_local std::minstd_rand random(std::random_device{}());
    std::chrono::microseconds pause(500);
    for (;;)
    {
        const auto now = std::chrono::steady_clock::now();
        if (now >= deadline)
            return ETIMEDOUT;
        const auto jittered = std::chrono::microseconds(
            pause.count() / 2 + std::uniform_int_distribution<int64_t>(0, pause.count())(random));
        std::this_thread::sleep_for(
            std::min<std::chrono::steady_clock::duration>(jittered, deadline - now));
        pause = std::min(pause * 2, std::chrono::microseconds(20000));
        result = attempt();
        if (result != EAGAIN)
            return result;
    }
}

// A non-waiting try at `lock`: 0, EAGAIN while another holds a conflicting lock, or
// the error.
int TryLock(int fd, struct flock lock)
{
    if (RetryingLock(fd, F_OFD_SETLK, lock) == 0)
        return 0;
    return LockedElsewhere(errno) ? EAGAIN : errno;
}

// Another open file description holds the lasting marker.
bool HeldLastingElsewhere(int fd)
{
    struct flock probe = MakeLock(F_WRLCK, SharedFile::kLastingOffset, 1);
    return ::fcntl(fd, F_OFD_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
}

} // namespace

void SharedFile::SetWaitLimit(std::chrono::milliseconds limit)
{
    g_waitLimitMs = std::max<int64_t>(0, limit.count());
}

std::chrono::milliseconds SharedFile::GetWaitLimit()
{
    return std::chrono::milliseconds(g_waitLimitMs.load());
}

void SharedFile::SetWaitObserver(WaitObserver observer)
{
    g_waitObserver = std::move(observer);
}

bool SharedFile::LockContents(int fd, bool forWriting, const std::string& path, int* error)
{
    SetError(error, 0);
    const struct flock lock = MakeLock(forWriting ? F_WRLCK : F_RDLCK, 0, kHoldOffset);
    const int result = WaitFor(path, [&] { return TryLock(fd, lock); });
    if (result == 0)
        return true;
    if (LockingUnsupported(result))
        return true;
    SetError(error, result);
    return false;
}

void SharedFile::UnlockContents(int fd)
{
    struct flock unlock = MakeLock(F_UNLCK, 0, kHoldOffset);
    RetryingLock(fd, F_OFD_SETLK, unlock);
}

SharedFile::SharedFile(std::string path, int fd, bool readOnly)
    : m_path(std::move(path)), m_fd(fd), m_readOnly(readOnly)
{
}

SharedFile::~SharedFile()
{
    if (m_fd >= 0)
        ::close(m_fd); // drops the locks of this open file description
}

std::unique_ptr<SharedFile> SharedFile::OpenShared(const std::string& path, bool create, int* error,
                                                   HoldKind kind)
{
    SetError(error, 0);
    int flags = O_RDWR | O_CLOEXEC;
    if (create)
        flags |= O_CREAT;
    int fd = ::open(path.c_str(), flags, 0666);
    int openError = fd < 0 ? errno : 0;
    HoldKind otherHolder = HoldKind::lasting;
    if (fd >= 0)
    {
        struct stat st{};
        if (::fstat(fd, &st) == 0 && !S_ISREG(st.st_mode))
        {
            ::close(fd);
            SetError(error, EISDIR);
            return nullptr;
        }
        const struct flock hold = MakeLock(F_WRLCK, kHoldOffset, 1);
        bool lasting = false;
        // A brief holder is about to let go: wait for it. A lasting one is not.
        const int result = WaitFor(path,
                                   [&]
                                   {
                                       const int r = TryLock(fd, hold);
                                       if (r == EAGAIN && HeldLastingElsewhere(fd))
                                       {
                                           lasting = true;
                                           return EBUSY;
                                       }
                                       return r;
                                   });
        if (result == 0 || LockingUnsupported(result))
        {
            if (result == 0 && kind == HoldKind::lasting)
            {
                // After the hold, never before: a brief opener that sees the marker
                // without the hold must not give up on a holder that is not there.
                struct flock marker = MakeLock(F_WRLCK, kLastingOffset, 1);
                RetryingLock(fd, F_OFD_SETLK, marker);
            }
            return std::unique_ptr<SharedFile>(new SharedFile(path, fd, false));
        }
        // Somebody else holds it for writing.
        ::close(fd);
        otherHolder = lasting ? HoldKind::lasting : HoldKind::brief;
        openError = result == ETIMEDOUT || lasting ? EAGAIN : result;
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
    auto file = std::unique_ptr<SharedFile>(new SharedFile(path, fd, true));
    file->m_otherHolder = otherHolder;
    return file;
}

bool SharedFile::ReadAll(std::vector<uint8_t>& bytes, int* error) const
{
    SetError(error, 0);
    bytes.clear();
    // A shared lock below the hold byte waits out a save in progress elsewhere, so that
    // a reader never sees a half-written file.
    if (!LockContents(m_fd, false, m_path, error))
        return false;
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
    UnlockContents(m_fd);
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
    return LockContents(m_fd, true, m_path, error);
}

void SharedFile::UnlockAfterWriting()
{
    // Only the range below the hold byte: the hold itself stays.
    UnlockContents(m_fd);
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
    const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0)
    {
        SetError(error, errno);
        return false;
    }
    // Without O_NONBLOCK a FIFO at the target's name would block the open for good.
    const int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, 0666);
    if (out < 0)
    {
        SetError(error, errno);
        ::close(in);
        return false;
    }
    ::fcntl(out, F_SETFL, ::fcntl(out, F_GETFL) & ~O_NONBLOCK);
    struct stat st
    {
    };
    const bool regular = ::fstat(out, &st) == 0 && S_ISREG(st.st_mode);

    int failure = 0;
    std::vector<char> buffer(size_t(1) << 18);
    for (;;)
    {
        const ssize_t n = ::read(in, buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
        {
            failure = errno;
            break;
        }
        if (n == 0)
            break;
        for (ssize_t done = 0; done < n;)
        {
            const ssize_t w = ::write(out, buffer.data() + done, size_t(n - done));
            if (w < 0 && errno == EINTR)
                continue;
            if (w <= 0)
            {
                failure = w < 0 ? errno : EIO;
                break;
            }
            done += w;
        }
        if (failure)
            break;
    }
    ::close(in);
    // The copy must be on the disk before the original is rewritten.
    if (!failure && ::fsync(out) != 0 && regular)
        failure = errno;
    if (::close(out) != 0 && !failure && errno != EINTR)
        failure = errno;
    if (failure)
    {
        // The target was cut to length 0 when the copy began: what is there now is no
        // copy of anything, only debris beside the document.
        if (regular)
        {
            ::unlink(to.c_str());
            SyncDirectoryOf(to);
        }
        SetError(error, failure);
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
