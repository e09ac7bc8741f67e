#pragma once

#include "platform/prompter.h"
#include "platform/sharedfile.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// The document's hold on its file: the first opener holds it for reading and
// writing for as long as the document is open; later openers get it read-only.
// Saving copies the file to "<path> Backup", rewrites the held file in place under
// a whole-file lock, syncs it, and only then deletes the backup.
class CSharedDoc
{
public:
    CSharedDoc();
    virtual ~CSharedDoc();

    // The document's one re-entrant lock. Opening, saving and releasing the file hold it
    // throughout, so that the automatic save never meets a file or path half changed.
    virtual std::recursive_mutex& GetLock() const = 0;
    // A successful save clears the document's modified flag, under the lock.
    virtual void SetModifiedFlag(bool modified = true) = 0;

    const std::string& GetPathName() const { return m_pathName; }
    void SetPathName(const std::string& path) { m_pathName = path; }
    bool IsReadOnly() const { return m_readOnly; }
    bool HoldsFile() const { return m_heldFile != nullptr; }
    // How this document holds its file: lasting in the desktop program, brief in a qvx
    // command. Set before opening.
    void SetHoldKind(platform::SharedFile::HoldKind kind) { m_holdKind = kind; }
    // For a file held read-only: how the other program holds it.
    platform::SharedFile::HoldKind GetOtherHolder() const
    {
        return m_heldFile ? m_heldFile->GetOtherHolder() : platform::SharedFile::HoldKind::lasting;
    }
    // Save has to ask for a name first: the document has no path yet, or its file is
    // held read-only (another copy holds it for updating).
    bool SaveNeedsNewName() const { return m_pathName.empty() || m_readOnly; }

    // Opens and reads the document at `path`. Messages go through `prompter`.
    bool OnOpenDocument(const std::string& path, platform::Prompter& prompter);
    // Saves to `path` (the held file when it is the same path). Messages go through
    // `prompter`. A file held read-only is refused with the in-use message: the caller
    // then asks for another name (Save turns into Save As). On success the document's
    // path becomes `path` and it is no longer modified.
    bool OnSaveDocument(const std::string& path, platform::Prompter& prompter);
    // Releases the held file (new document, close, before opening another).
    void CloseHeldFile();

    // Told after every successful save, whoever asked for it (under the document lock).
    std::function<void()> m_onSaved;

    // Where the copy of the previous contents stays while a save is under way.
    static std::string BackupPathFor(const std::string& path);
    // A backup beside `path` that was left by an interrupted or failed save.
    static bool HasBackup(const std::string& path);
    // The question to ask when `path` could not be read and HasBackup(path) holds.
    static std::string BackupQuestion(const std::string& path);
    // After OnOpenDocument(path) failed: reads the backup beside `path`; when it loads,
    // the document holds `path` again and the backup's contents are written back into
    // it, after which the backup is removed. When another copy holds `path`, the
    // backup's contents are shown read-only and nothing on disk changes. False (with a
    // message) when the backup cannot be read or loaded either.
    bool RestoreFromBackup(const std::string& path, platform::Prompter& prompter);

protected:
    // The document's own reading and writing of its whole contents.
    virtual bool ReadFromBytes(const std::vector<uint8_t>& bytes, platform::Prompter& prompter) = 0;
    virtual std::vector<uint8_t> WriteToBytes() = 0;

    std::string m_pathName;
    std::unique_ptr<platform::SharedFile> m_heldFile;
    std::atomic<bool> m_readOnly{false};
    // The last write into the held file failed part way: its backup is the good copy.
    bool m_heldFileDamaged = false;
    platform::SharedFile::HoldKind m_holdKind = platform::SharedFile::HoldKind::lasting;

private:
    // Writes `bytes` into the held file the safe way: backup, lock, rewrite, sync, unlock,
    // remove the backup. `makeBackup` is off when the backup is the source itself.
    bool WriteHeldFile(const std::vector<uint8_t>& bytes, bool makeBackup,
                       platform::Prompter& prompter);
    // Sets the path; an unchanged path is not written, so readers on other threads that
    // do not hold the lock never see it change under them.
    void KeepPathName(const std::string& path);
};
