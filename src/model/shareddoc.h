#pragma once

#include "platform/prompter.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace platform
{
class SharedFile;
}

// The document's hold on its file: the first opener holds it for reading and
// writing for as long as the document is open; later openers get it read-only.
// Saving copies the file to "<path> Backup", rewrites the held file in place under
// a whole-file lock, syncs it, and only then deletes the backup.
class CSharedDoc
{
public:
    CSharedDoc();
    virtual ~CSharedDoc();

    const std::string& GetPathName() const { return m_pathName; }
    void SetPathName(const std::string& path) { m_pathName = path; }
    bool IsReadOnly() const { return m_readOnly; }
    bool HoldsFile() const { return m_heldFile != nullptr; }

    // Opens and reads the document at `path`. Messages go through `prompter`.
    bool OnOpenDocument(const std::string& path, platform::Prompter& prompter);
    // Saves to `path` (the held file when it is the same path). Messages go through `prompter`.
    bool OnSaveDocument(const std::string& path, platform::Prompter& prompter);
    // Releases the held file (new document, close, before opening another).
    void CloseHeldFile();

protected:
    // The document's own reading and writing of its whole contents.
    virtual bool ReadFromBytes(const std::vector<uint8_t>& bytes, platform::Prompter& prompter) = 0;
    virtual std::vector<uint8_t> WriteToBytes() = 0;

    std::string m_pathName;
    std::unique_ptr<platform::SharedFile> m_heldFile;
    bool m_readOnly = false;
};
