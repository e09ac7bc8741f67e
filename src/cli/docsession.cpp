#include "cli/docsession.h"

#include "cli/cliargs.h"
#include "cli/documenthost.h"
#include "platform/sharedfile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cli
{

namespace
{
// Passes questions on and keeps messages back: a failed open is reported once, as the
// command's own error line, with what the messages said.
class QuietPrompter : public platform::Prompter
{
public:
    explicit QuietPrompter(platform::Prompter& next) : m_next(next) {}
    void ShowMessage(const std::string& text, platform::Icon) override
    {
        m_messages.push_back(text);
    }
    platform::Answer AskYesNo(const std::string& text, platform::Icon icon) override
    {
        return m_next.AskYesNo(text, icon);
    }
    platform::Answer AskYesNoCancel(const std::string& text, platform::Icon icon) override
    {
        return m_next.AskYesNoCancel(text, icon);
    }
    const std::vector<std::string>& Messages() const { return m_messages; }

private:
    platform::Prompter& m_next;
    std::vector<std::string> m_messages;
};

std::string WaitText()
{
    const long long ms = platform::SharedFile::GetWaitLimit().count();
    if (ms % 1000 != 0)
        return std::to_string(ms) + " ms";
    return std::to_string(ms / 1000) + (ms == 1000 ? " second" : " seconds");
}
} // namespace

std::string LockedTooLong()
{
    return "is locked by another program: its save did not end within " + WaitText() +
           " (a program that is stuck?; --wait SECONDS waits longer)";
}

std::vector<uint8_t> ReadWholeFile(const std::string& path)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        throw CommandError("cannot open '" + path + "': " + std::strerror(errno));
    struct stat st
    {
    };
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode))
    {
        ::close(fd);
        throw CommandError("'" + path + "' is not a regular file");
    }
    // Wait while another program saves: its save locks these bytes for writing.
    int err = 0;
    if (!platform::SharedFile::LockContents(fd, false, path, &err))
    {
        ::close(fd);
        throw CommandError(err == ETIMEDOUT
                               ? "'" + path + "' " + LockedTooLong() + "; nothing was read"
                               : "cannot read '" + path + "': " + std::strerror(err));
    }
    if (::fstat(fd, &st) != 0)
    {
        ::close(fd);
        throw CommandError("cannot read '" + path + "': " + std::strerror(errno));
    }
    std::vector<uint8_t> bytes(static_cast<size_t>(st.st_size));
    size_t done = 0;
    while (done < bytes.size())
    {
        const ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
        {
            const int err = errno;
            ::close(fd);
            throw CommandError("cannot read '" + path +
                               "': " + (n < 0 ? std::strerror(err) : "file shrank while reading"));
        }
        done += static_cast<size_t>(n);
    }
    ::close(fd);
    return bytes;
}

DocSession::DocSession(TerminalPrompter& prompter)
    : m_prompter(prompter), m_doc(std::make_unique<CTimeKeeperDoc>())
{
    // A command holds the file only while it runs: another command waits for it.
    m_doc->SetHoldKind(platform::SharedFile::HoldKind::brief);
}

DocSession::~DocSession() = default;

void DocSession::FailLoad(const std::string& path, const LoadResult& result)
{
    // A save that was cut short leaves the previous contents beside the file.
    const std::string backup = CSharedDoc::HasBackup(path)
                                   ? " (a backup from an interrupted save lies beside it: '" +
                                         CSharedDoc::BackupPathFor(path) + "')"
                                   : std::string();
    if (result.notDocument)
        throw CommandError("'" + path + "' is " + result.error);
    if (result.status == LoadResult::cancelled)
    {
        if (result.version > CTimeKeeperDoc::kCurrentVersion)
            throw CommandError("'" + path + "' was written by a newer version (file version " +
                               std::to_string(result.version) + ") and cannot be read" + backup);
        throw CommandError("'" + path + "' was not converted; nothing was changed");
    }
    throw CommandError("'" + path + "' is not a readable document: " + result.error + backup);
}

void DocSession::OpenForReading(const std::string& path, std::vector<uint8_t>* bytesRead)
{
    // Reads in a hosting program see its document as it stands, unsaved changes included.
    if (DocumentHost* host = HostFor(path))
    {
        m_hosted = &host->doc;
        m_path = path;
        return;
    }
    std::vector<uint8_t> bytes = ReadWholeFile(path);
    QuietPrompter quiet(m_prompter);
    const LoadResult result = m_doc->LoadFromBytes(bytes.data(), bytes.size(), quiet);
    if (result.status != LoadResult::loaded)
        FailLoad(path, result);
    m_doc->SetPathName(path);
    m_path = path;
    if (bytesRead)
        *bytesRead = std::move(bytes);
}

void DocSession::OpenForChange(const std::string& path)
{
    if (DocumentHost* host = HostFor(path))
    {
        m_path = path;
        if (host->doc.IsReadOnly())
            throw CommandError("'" + path +
                               "' is not available for updating: another copy of the program "
                               "holds it; nothing was changed");
        m_hosted = &host->doc;
        return;
    }
    struct stat st
    {
    };
    if (::stat(path.c_str(), &st) != 0)
        throw CommandError("cannot open '" + path + "': " + std::strerror(errno));
    QuietPrompter quiet(m_prompter);
    if (!m_doc->OnOpenDocument(path, quiet))
    {
        const LoadResult result = m_doc->GetLastLoadResult();
        const bool declined = result.status == LoadResult::cancelled &&
                              result.version < CTimeKeeperDoc::kCurrentVersion;
        // An unreadable file with the backup of an interrupted save beside it: offer the backup.
        if (!declined && CSharedDoc::HasBackup(path) &&
            m_prompter.AskYesNo(CSharedDoc::BackupQuestion(path), platform::Icon::question) ==
                platform::Answer::yes)
        {
            QuietPrompter restoring(m_prompter);
            if (!m_doc->RestoreFromBackup(path, restoring))
                throw CommandError("the backup of '" + path + "' could not be restored" +
                                   (restoring.Messages().empty()
                                        ? std::string()
                                        : ": " + restoring.Messages().back()));
        }
        else if (result.status == LoadResult::cancelled || !result.error.empty())
            FailLoad(path, result);
        else
            throw CommandError(quiet.Messages().empty() ? "cannot open '" + path + "'"
                                                        : quiet.Messages().back());
    }
    m_path = path;
    if (m_doc->IsReadOnly())
        throw CommandError(
            "'" + path + "' is not available for updating: " +
            (m_doc->GetOtherHolder() == platform::SharedFile::HoldKind::brief
                 ? "another qvx command still held it after " + WaitText() +
                       " (--wait SECONDS waits longer)"
                 : std::string("the desktop program (or another program) holds it")) +
            "; nothing was changed");
}

void DocSession::Save()
{
    SaveAs(m_path);
}

void DocSession::SaveAs(const std::string& path)
{
    QuietPrompter quiet(m_prompter);
    if (m_hosted && CanonicalPath(path) != CanonicalPath(m_hosted->GetPathName()))
    {
        // A copy elsewhere (convert): the hosting program's document keeps its own file.
        std::vector<uint8_t> bytes;
        {
            std::lock_guard<std::recursive_mutex> lock(m_hosted->GetLock());
            bytes = m_hosted->SaveToBytes();
        }
        CTimeKeeperDoc copy;
        const LoadResult loaded = copy.LoadFromBytes(bytes.data(), bytes.size(), quiet);
        if (loaded.status != LoadResult::loaded || !copy.OnSaveDocument(path, quiet))
            throw CommandError(
                "could not save '" + path + "'" +
                (quiet.Messages().empty() ? std::string() : ": " + quiet.Messages().back()));
        return;
    }
    // The hosting program's own document is saved in place through the file it holds.
    if (!Doc().OnSaveDocument(m_hosted ? m_hosted->GetPathName() : path, quiet))
        throw CommandError(
            "could not save '" + path + "'" +
            (quiet.Messages().empty() ? std::string() : ": " + quiet.Messages().back()));
    Doc().SetModifiedFlag(false);
    m_path = path;
}

} // namespace cli
