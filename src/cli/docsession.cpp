#include "cli/docsession.h"

#include "cli/cliargs.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cli
{

namespace
{
// Swallows everything: used to learn why a load failed without asking twice.
class SilentPrompter : public platform::Prompter
{
public:
    void ShowMessage(const std::string&, platform::Icon) override {}
    platform::Answer AskYesNo(const std::string&, platform::Icon) override { return platform::Answer::yes; }
    platform::Answer AskYesNoCancel(const std::string&, platform::Icon) override
    {
        return platform::Answer::yes;
    }
};

// Passes questions on and keeps messages back: a failed open is reported once, as the
// command's own error line, with what the messages said.
class QuietPrompter : public platform::Prompter
{
public:
    explicit QuietPrompter(platform::Prompter& next) : m_next(next) {}
    void ShowMessage(const std::string& text, platform::Icon) override { m_messages.push_back(text); }
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
} // namespace

std::vector<uint8_t> ReadWholeFile(const std::string& path)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        throw CommandError("cannot open '" + path + "': " + std::strerror(errno));
    struct stat st{};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode))
    {
        ::close(fd);
        throw CommandError("'" + path + "' is not a regular file");
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
            throw CommandError("cannot read '" + path + "': " + (n < 0 ? std::strerror(err) : "file shrank while reading"));
        }
        done += static_cast<size_t>(n);
    }
    ::close(fd);
    return bytes;
}

DocSession::DocSession(TerminalPrompter& prompter)
    : m_prompter(prompter), m_doc(std::make_unique<CTimeKeeperDoc>())
{
}

DocSession::~DocSession() = default;

void DocSession::FailLoad(const std::string& path, const LoadResult& result)
{
    if (result.status == LoadResult::cancelled)
    {
        if (result.version > CTimeKeeperDoc::kCurrentVersion)
            throw CommandError("'" + path + "' was written by a newer version (file version " +
                               std::to_string(result.version) + ") and cannot be read");
        throw CommandError("'" + path + "' was not converted; nothing was changed");
    }
    throw CommandError("'" + path + "' is not a readable document: " + result.error);
}

void DocSession::OpenForReading(const std::string& path)
{
    const std::vector<uint8_t> bytes = ReadWholeFile(path);
    QuietPrompter quiet(m_prompter);
    const LoadResult result = m_doc->LoadFromBytes(bytes.data(), bytes.size(), quiet);
    if (result.status != LoadResult::loaded)
        FailLoad(path, result);
    m_doc->SetPathName(path);
    m_path = path;
}

void DocSession::OpenForChange(const std::string& path)
{
    struct stat st{};
    if (::stat(path.c_str(), &st) != 0)
        throw CommandError("cannot open '" + path + "': " + std::strerror(errno));
    QuietPrompter quiet(m_prompter);
    if (!m_doc->OnOpenDocument(path, quiet))
    {
        // Learn why without asking the questions again.
        SilentPrompter silent;
        CTimeKeeperDoc probe;
        const std::vector<uint8_t> bytes = ReadWholeFile(path);
        LoadResult result = probe.LoadFromBytes(bytes.data(), bytes.size(), silent);
        if (result.status == LoadResult::loaded)
        {
            result.status = LoadResult::cancelled;
            result.version = probe.m_fileVersion;
        }
        FailLoad(path, result);
    }
    m_path = path;
    if (m_doc->IsReadOnly())
        throw CommandError("'" + path + "' is not available for updating: another copy of the program holds it; "
                           "nothing was changed");
}

void DocSession::Save()
{
    if (!m_doc->OnSaveDocument(m_path, m_prompter))
        throw CommandError("could not save '" + m_path + "'");
}

void DocSession::SaveAs(const std::string& path)
{
    if (!m_doc->OnSaveDocument(path, m_prompter))
        throw CommandError("could not save '" + path + "'");
    m_path = path;
}

} // namespace cli
