#pragma once

#include <cstdint>
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
class SharedFile
{
public:
    // The byte whose write lock marks "held for writing". Past any real data, so that
    // readers on file systems with mandatory locks can still read the contents.
    static constexpr int64_t kHoldOffset = INT64_C(0x7FFFFFFF00000000);

    virtual ~SharedFile();
    SharedFile(const SharedFile&) = delete;
    SharedFile& operator=(const SharedFile&) = delete;

    // Opens `path` for reading and writing when nobody else holds it; otherwise (and
    // only without `create`) for reading. With `create` a missing file is created; an
    // existing one keeps its contents until the save rewrites it. Returns nullptr when
    // the file cannot be opened; `error` receives the errno value.
    static std::unique_ptr<SharedFile> OpenShared(const std::string& path, bool create,
                                                  int* error = nullptr);

    const std::string& GetPath() const { return m_path; }
    bool IsReadOnly() const { return m_readOnly; }
    int GetDescriptor() const { return m_fd; }

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
    // error code in `error`.
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
};

} // namespace platform
