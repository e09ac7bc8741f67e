#include "model/shareddoc.h"

#include "platform/messages.h"
#include "platform/sharedfile.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

const char kOpenError[] = "Unknown error opening file '%s'";
const char kReadOnlyNotice[] = "File '%s' is not available for updating.\nIt will be opened read-only";
const char kInUse[] = "File '%s' is in use.\nSave with a different name.";
const char kCopyError[] = "File copy error %u";

// The copy error with the system's reason beside its code.
std::string CopyError(int err)
{
    return platform::FormatPrintf(kCopyError, std::to_string(unsigned(err))) + ": " +
           std::strerror(err);
}

// What keeps another program's lock from ending: ETIMEDOUT is the wait limit running out.
std::string LockReason(int err)
{
    if (err != ETIMEDOUT)
        return std::strerror(err);
    const long long ms = platform::SharedFile::GetWaitLimit().count();
    const std::string wait = ms % 1000 == 0
                                 ? std::to_string(ms / 1000) + (ms == 1000 ? " second" : " seconds")
                                 : std::to_string(ms) + " ms";
    return "another program has kept it locked for more than " + wait +
           " (a save that does not end, or a program that is stuck)";
}

std::string ReadError(const std::string& path, int err)
{
    return "The file '" + path + "' could not be read: " + LockReason(err) + ".";
}

std::string WriteError(const std::string& path, const std::string& reason, bool backupKept)
{
    std::string text = "The file '" + path + "' could not be saved: " + reason + ".";
    if (backupKept)
        text += "\nThe previous contents are kept in '" + CSharedDoc::BackupPathFor(path) + "'.";
    return text;
}

bool ReadPlainFile(const std::string& path, std::vector<uint8_t>& bytes)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct stat st{};
    bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
    uint8_t buffer[1 << 16];
    while (ok)
    {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
        {
            ok = n == 0;
            break;
        }
        bytes.insert(bytes.end(), buffer, buffer + n);
    }
    ::close(fd);
    return ok;
}

} // namespace

CSharedDoc::CSharedDoc() = default;
CSharedDoc::~CSharedDoc() = default;

std::string CSharedDoc::BackupPathFor(const std::string& path) { return path + " Backup"; }

bool CSharedDoc::HasBackup(const std::string& path)
{
    struct stat st{};
    return ::stat(BackupPathFor(path).c_str(), &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0;
}

std::string CSharedDoc::BackupQuestion(const std::string& path)
{
    return "The file '" + path +
           "' could not be read. A backup copy from an interrupted save was found beside it:\n" +
           BackupPathFor(path) + "\n\nWould you like to open the backup?";
}

void CSharedDoc::CloseHeldFile()
{
    std::lock_guard<std::recursive_mutex> guard(GetLock());
    m_heldFile.reset();
    m_readOnly = false;
    m_heldFileDamaged = false;
}

void CSharedDoc::KeepPathName(const std::string& path)
{
    if (m_pathName != path)
        m_pathName = path;
}

bool CSharedDoc::OnOpenDocument(const std::string& path, platform::Prompter& prompter)
{
    std::lock_guard<std::recursive_mutex> guard(GetLock());
    CloseHeldFile();
    // Without its file the old path must not be saved to any more.
    KeepPathName(std::string());
    std::unique_ptr<platform::SharedFile> file =
        platform::SharedFile::OpenShared(path, false, nullptr, m_holdKind);
    if (!file)
    {
        prompter.ShowMessage(platform::FormatPrintf(kOpenError, path), platform::Icon::error);
        return false;
    }
    if (file->IsReadOnly())
        prompter.ShowMessage(platform::FormatPrintf(kReadOnlyNotice, path), platform::Icon::warning);

    std::vector<uint8_t> bytes;
    int err = 0;
    if (!file->ReadAll(bytes, &err))
    {
        prompter.ShowMessage(ReadError(path, err), platform::Icon::error);
        return false;
    }
    m_readOnly = file->IsReadOnly();
    m_heldFile = std::move(file);
    if (!ReadFromBytes(bytes, prompter))
    {
        CloseHeldFile();
        return false;
    }
    KeepPathName(path);
    return true;
}

bool CSharedDoc::OnSaveDocument(const std::string& path, platform::Prompter& prompter)
{
    std::lock_guard<std::recursive_mutex> guard(GetLock());
    const std::string inUse = platform::FormatPrintf(kInUse, path);
    const bool sameFile = m_heldFile && m_heldFile->GetPath() == path;
    std::unique_ptr<platform::SharedFile> newFile;
    int openError = 0;
    if (!sameFile)
        newFile = platform::SharedFile::OpenShared(path, true, &openError, m_holdKind);
    // "In use" only for a lock held by another program; any other failure (a missing
    // folder, no permission) is told with the system's reason.
    if (!sameFile && !newFile && openError != EAGAIN)
    {
        prompter.ShowMessage(WriteError(path, std::strerror(openError), false), platform::Icon::error);
        return false;
    }
    if (sameFile ? m_readOnly.load() : !newFile || newFile->IsReadOnly())
    {
        prompter.ShowMessage(inUse, platform::Icon::warning);
        return false;
    }

    std::vector<uint8_t> bytes;
    try
    {
        bytes = WriteToBytes();
    }
    catch (const std::exception& e)
    {
        prompter.ShowMessage(WriteError(path, e.what(), false), platform::Icon::error);
        return false;
    }
    if (newFile)
    {
        m_heldFile = std::move(newFile);
        m_readOnly = false;
        m_heldFileDamaged = false;
    }
    if (!WriteHeldFile(bytes, true, prompter))
        return false;
    KeepPathName(path);
    SetModifiedFlag(false);
    if (m_onSaved)
        m_onSaved();
    return true;
}

bool CSharedDoc::WriteHeldFile(const std::vector<uint8_t>& bytes, bool makeBackup,
                               platform::Prompter& prompter)
{
    platform::SharedFile& file = *m_heldFile;
    const std::string& path = file.GetPath();
    const std::string backup = BackupPathFor(path);
    int err = 0;
    // After a failed write the file is no copy worth keeping: the backup made before that
    // write holds the last good contents and must not be replaced by the damaged file.
    if (m_heldFileDamaged && HasBackup(path))
        makeBackup = false;
    if (makeBackup && !platform::SharedFile::CopyFile(path, backup, &err))
    {
        prompter.ShowMessage(CopyError(err), platform::Icon::error);
        return false;
    }
    if (!file.LockForWriting(&err))
    {
        // Nothing was written: the backup just made is the file itself and goes again.
        if (makeBackup)
            platform::SharedFile::DeleteFile(backup);
        prompter.ShowMessage(WriteError(path, LockReason(err) + "; nothing was written",
                                        !makeBackup && HasBackup(path)),
                             platform::Icon::error);
        return false;
    }
    const bool written = file.Rewrite(bytes.data(), bytes.size(), &err);
    file.UnlockAfterWriting();
    m_heldFileDamaged = !written;
    if (!written)
    {
        prompter.ShowMessage(WriteError(path, std::strerror(err), true), platform::Icon::error);
        return false;
    }
    platform::SharedFile::DeleteFile(backup);
    return true;
}

bool CSharedDoc::RestoreFromBackup(const std::string& path, platform::Prompter& prompter)
{
    std::lock_guard<std::recursive_mutex> guard(GetLock());
    const std::string backup = BackupPathFor(path);
    std::vector<uint8_t> bytes;
    if (!ReadPlainFile(backup, bytes))
    {
        prompter.ShowMessage(platform::FormatPrintf(kOpenError, backup), platform::Icon::error);
        return false;
    }

    CloseHeldFile();
    KeepPathName(std::string());
    std::unique_ptr<platform::SharedFile> file =
        platform::SharedFile::OpenShared(path, false, nullptr, m_holdKind);
    if (!file) // the damaged file is gone: recreate it
        file = platform::SharedFile::OpenShared(path, true, nullptr, m_holdKind);
    if (!file)
    {
        prompter.ShowMessage(platform::FormatPrintf(kOpenError, path), platform::Icon::error);
        return false;
    }
    const bool readOnly = file->IsReadOnly();
    if (readOnly)
        prompter.ShowMessage(platform::FormatPrintf(kReadOnlyNotice, path), platform::Icon::warning);
    m_readOnly = readOnly;
    m_heldFile = std::move(file);
    m_heldFileDamaged = true; // it failed to load: the backup is the good copy
    if (!ReadFromBytes(bytes, prompter))
    {
        CloseHeldFile();
        return false;
    }
    KeepPathName(path);
    // Written back as it was read, so the file holds exactly what the document shows.
    // When that fails the message says so and the backup stays; the document is open.
    if (!readOnly)
        WriteHeldFile(bytes, false, prompter);
    return true;
}
