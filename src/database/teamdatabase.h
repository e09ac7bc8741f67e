#pragma once

#include "database/dbconnection.h"
#include "database/documentwriter.h"

#include <optional>
#include <string>
#include <vector>

class CTimeKeeperDoc;

namespace database
{

// A document as the `documents` table keeps it.
struct DocumentInfo
{
    int64_t id = 0;
    std::string name;
    std::string employee;
    std::string sourcePath;
    int64_t fileVersion = 0;
    std::string syncedAt; // UTC, "YYYY-MM-DDTHH:MM:SSZ"
    std::string fingerprint;
    DocumentCounts counts;
};

// The team database on one connection: its schema and the documents in it. Changes
// happen inside the caller's transaction (BeginWrite ... Commit on the connection).
class CTeamDatabase
{
public:
    static constexpr int kSchemaVersion = 1;

    explicit CTeamDatabase(CDbConnection& db) : m_db(db) {}

    // The schema's text, the same for SQLite and PostgreSQL.
    static const char* SchemaSql();
    // The version of the schema in the database; 0 when it holds none of ours.
    int GetSchemaVersion();
    // Throws CDatabaseError(schema) unless the database holds this version of the schema.
    void CheckSchema();
    // Creates the schema when there is none (true), else checks its version (false).
    bool EnsureSchema();

    std::vector<DocumentInfo> ListDocuments();
    std::optional<DocumentInfo> FindDocument(const std::string& name);
    // Removes the document and its records; false when there is none of that name.
    bool RemoveDocument(const std::string& name);

    enum class SyncResult
    {
        added,
        replaced,
        unchanged, // the same fingerprint: nothing was written
    };
    // Stores `doc` as the document `info.name`, replacing all that was there under that
    // name. `info` gets the id, the time of the sync and the counts.
    SyncResult StoreDocument(DocumentInfo& info, const CTimeKeeperDoc& doc);

private:
    void DeleteRecords(int64_t documentId);

    CDbConnection& m_db;
};

} // namespace database
