#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform
{

// An open document file shared between running copies of the program.
//
// The first opener holds the file for reading and writing: it keeps a write lock on
// one byte far past any data for as long as the file is open. A later opener (another
// process, or another SharedFile in this process) finds that byte locked and gets the
// file read-only. The locks belong to the open file description (F_OFD_SETLK), so
// closing some other descriptor of the same file does not drop them.
//
// Nothing here waits for another program without end: a lock held elsewhere is waited
// for at most the wait limit, and then the operation fails with ETIMEDOUT.
class SharedFile
{
public:
    // The byte whose write lock marks "held for writing". Past any real data, so that
    // readers on file systems with mandatory locks can still read the contents.
    static constexpr int64_t kHoldOffset = INT64_C(0x7FFFFFFF00000000);
    // The byte after it: locked as well by a holder that keeps the file for as long as
    // its document is open. A holder that locks only the hold byte lets go in a moment.
    static constexpr int64_t kLastingOffset = kHoldOffset + 1;

    // How long a holder keeps the file. The desktop program holds its document while
    // it is open (lasting); a qvx command holds it for the length of the command (brief),
    // so that another command waits for it rather than giving up.
    enum class HoldKind
    {
        lasting,
        brief,
    };

    // The longest wait for another program: for its save to end (reading, saving) or for
    // a brief holder to let go (opening). Process-wide; qvx sets it from --wait.
    static constexpr std::chrono::milliseconds kDefaultWaitLimit{5000};
    static void SetWaitLimit(std::chrono::milliseconds limit);
    static std::chrono::milliseconds GetWaitLimit();
    // Told on the thread that waits when a wait for another program starts and when it
    // ends, so that a window can show it. Set once, before any file is opened.
    enum class WaitEvent
    {
        started,
        finished,
    };
    using WaitObserver = std::function<void(WaitEvent event, const std::string& path)>;
    static void SetWaitObserver(WaitObserver observer);

    virtual ~SharedFile();
    SharedFile(const SharedFile&) = delete;
    SharedFile& operator=(const SharedFile&) = delete;

    // Opens `path` for reading and writing when nobody else holds it; otherwise (and
    // only without `create`) for reading. A brief holder is waited for (up to the wait
    // limit) before settling for reading; a lasting holder is not. With `create` a missing
    // file is created; an existing one keeps its contents until the save rewrites it.
    // Returns nullptr when the file cannot be opened; `error` receives the errno value
    // (EAGAIN: held by another).
    static std::unique_ptr<SharedFile> OpenShared(const std::string& path, bool create,
                                                  int* error = nullptr,
                                                  HoldKind kind = HoldKind::lasting);

    const std::string& GetPath() const { return m_path; }
    bool IsReadOnly() const { return m_readOnly; }
    // For a file opened read-only: how the other program holds it (brief: it still held
    // it when the wait limit ran out).
    HoldKind GetOtherHolder() const { return m_otherHolder; }
    int GetDescriptor() const { return m_fd; }

    // Takes a lock on the contents (every byte below the hold byte) of the open file
    // `fd`: shared for reading, exclusive for writing, waiting up to the wait limit for
    // other programs' locks to go (ETIMEDOUT then). File systems without locks count as
    // locked. UnlockContents lets go of it.
    static bool LockContents(int fd, bool forWriting, const std::string& path,
                             int* error = nullptr);
    static void UnlockContents(int fd);

    // Reads the whole file from its start, waiting while a save of another opener is
    // under way. False with `error` (errno) on failure.
    bool ReadAll(std::vector<uint8_t>& bytes, int* error = nullptr) const;

    // The whole-file lock of a save: all bytes below the hold byte, waiting for readers.
    bool LockForWriting(int* error = nullptr);
    void UnlockAfterWriting();

    // Replaces the contents with `bytes` and syncs them to the disk: writes them from the
    // start over the old contents, then cuts the file to their length. Only for a file
    // held read-write; call between LockForWriting and UnlockAfterWriting.
    bool Rewrite(const uint8_t* data, size_t size, int* error = nullptr);
    // Syncs what was written (nothing to do for a read-only file).
    bool Flush(int* error = nullptr);

    // Copies `from` to `to`, replacing `to`, and syncs the copy. False with the system
    // error code in `error`; a copy cut short is removed again rather than left behind.
    static bool CopyFile(const std::string& from, const std::string& to, int* error = nullptr);
    // Removes a file; a missing file counts as removed.
    static bool DeleteFile(const std::string& path, int* error = nullptr);
    // Syncs the directory that holds `path`, so that a created or removed name persists.
    static void SyncDirectoryOf(const std::string& path);

private:
    SharedFile(std::string path, int fd, bool readOnly);

    std::string m_path;
    int m_fd = -1;
    bool m_readOnly = false;
    HoldKind m_otherHolder = HoldKind::lasting;
};

} // namespace platform
