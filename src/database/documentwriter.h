#pragma once

#include <cstdint>
#include <string>
#include <vector>

class CTimeKeeperDoc;

namespace database
{

class CDbConnection;

// What one document gave the database.
struct DocumentCounts
{
    int64_t tasks = 0;
    int64_t timeEntries = 0;
    int64_t expenses = 0;
    int64_t todos = 0;
};

// Writes the records of one document under `documentId` into every table but
// `documents`. Billing figures come from the model's own functions, so that they are
// those of the reports: effective billable flag and rate, and the billing amount with
// a running entry ending at the document's rounded "now".
class CDocumentWriter
{
public:
    CDocumentWriter(CDbConnection& db, int64_t documentId, const CTimeKeeperDoc& doc)
        : m_db(db), m_documentId(documentId), m_doc(doc)
    {
    }

    DocumentCounts Write();

    // The tables that hold a document's records, children of `documents`.
    static const std::vector<std::string>& RecordTables();

private:
    void WriteTasks();
    void WriteTimeEntries();
    void WriteExpenses();
    void WriteToDos();
    void WriteCatalogs();
    void WriteReports();

    CDbConnection& m_db;
    int64_t m_documentId;
    const CTimeKeeperDoc& m_doc;
    DocumentCounts m_counts;
};

// What decides the rows of a document: its file's bytes, where it came from and, while
// a timer runs, the moment that ends the running entry. Equal fingerprints mean a sync
// would write the same rows.
std::string DocumentFingerprint(const std::vector<uint8_t>& fileBytes, const std::string& sourcePath,
                                const CTimeKeeperDoc& doc);

} // namespace database
