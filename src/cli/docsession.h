#pragma once

#include "cli/terminalprompter.h"
#include "model/timekeeperdoc.h"

#include <memory>
#include <string>

namespace cli
{

// One document opened by a qvx command. Commands that change a document open it
// through the shared-file rules and refuse to write when another copy of the
// program holds it; commands that only read may read a held file.
class DocSession
{
public:
    explicit DocSession(TerminalPrompter& prompter);
    ~DocSession();

    // Loads the file for reading only; throws CommandError naming what failed. `bytesRead`,
    // when given, receives the file's contents as read (none for a hosting program's document).
    void OpenForReading(const std::string& path, std::vector<uint8_t>* bytesRead = nullptr);
    // Opens the file held for writing; throws CommandError when it is read-only here.
    void OpenForChange(const std::string& path);
    // Saves the document to the path it was opened from.
    void Save();
    // Saves to a new path (which then becomes the document's).
    void SaveAs(const std::string& path);

    CTimeKeeperDoc& Doc() { return m_hosted ? *m_hosted : *m_doc; }
    const CTimeKeeperDoc& Doc() const { return m_hosted ? *m_hosted : *m_doc; }
    // The document is the one a hosting program keeps open (see documenthost.h).
    bool Hosted() const { return m_hosted != nullptr; }
    TerminalPrompter& Prompter() { return m_prompter; }
    const std::string& Path() const { return m_path; }

private:
    [[noreturn]] void FailLoad(const std::string& path, const LoadResult& result);

    TerminalPrompter& m_prompter;
    std::unique_ptr<CTimeKeeperDoc> m_doc;
    CTimeKeeperDoc* m_hosted = nullptr;
    std::string m_path;
};

// Reads a whole file; throws CommandError when it cannot.
std::vector<uint8_t> ReadWholeFile(const std::string& path);

// The end of the message for a file whose lock did not end within the wait limit.
std::string LockedTooLong();

} // namespace cli
