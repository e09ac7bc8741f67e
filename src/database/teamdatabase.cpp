#include "database/teamdatabase.h"

#include "database/schemasql.h"
#include "model/timekeeperdoc.h"

#include <charconv>
#include <cstdlib>
#include <ctime>

namespace database
{

namespace
{
const char* const kDocumentColumns =
    "SELECT id, name, employee, source_path, file_version, synced_at, fingerprint, task_count, "
    "time_entry_count, expense_count, todo_count FROM documents";

int64_t ToInt(const std::optional<std::string>& text)
{
    return text ? std::stoll(*text) : 0;
}

DocumentInfo ToInfo(const DbRow& row)
{
    DocumentInfo info;
    info.id = ToInt(row.at(0));
    info.name = row.at(1).value_or("");
    info.employee = row.at(2).value_or("");
    info.sourcePath = row.at(3).value_or("");
    info.fileVersion = ToInt(row.at(4));
    info.syncedAt = row.at(5).value_or("");
    info.fingerprint = row.at(6).value_or("");
    info.counts.tasks = ToInt(row.at(7));
    info.counts.timeEntries = ToInt(row.at(8));
    info.counts.expenses = ToInt(row.at(9));
    info.counts.todos = ToInt(row.at(10));
    return info;
}

// The document keeps the mileage rate in single precision; the decimal it was typed as
// is the shortest that reads back as it.
double TypedRate(float rate)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text - 1, rate);
    *end.ptr = '\0';
    return std::strtod(text, nullptr);
}

std::string UtcNow()
{
    const std::time_t now = std::time(nullptr);
    std::tm tm{};
    gmtime_r(&now, &tm);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &tm);
    return text;
}
} // namespace

const char* CTeamDatabase::SchemaSql() { return kSchemaSql; }

int CTeamDatabase::GetSchemaVersion()
{
    if (!m_db.TableExists("schema_version"))
        return 0;
    const std::vector<DbRow> rows = m_db.Query("SELECT MAX(version) FROM schema_version");
    return rows.empty() ? 0 : int(ToInt(rows[0].at(0)));
}

void CTeamDatabase::CheckSchema()
{
    const int version = GetSchemaVersion();
    if (version == kSchemaVersion)
        return;
    if (version == 0)
        throw CDatabaseError(CDatabaseError::schema,
                             m_db.Describe() + " holds no team database yet (qvx db schema TARGET "
                                               "or qvx db sync makes one)");
    const std::string known = std::to_string(kSchemaVersion);
    if (version > kSchemaVersion)
        throw CDatabaseError(CDatabaseError::schema,
                             m_db.Describe() + " has schema version " + std::to_string(version) +
                                 ", newer than this qvx knows (" + known + "): use a newer qvx");
    throw CDatabaseError(CDatabaseError::schema,
                         m_db.Describe() + " has schema version " + std::to_string(version) +
                             ", older than this qvx writes (" + known + ")");
}

bool CTeamDatabase::EnsureSchema()
{
    if (GetSchemaVersion() != 0)
    {
        CheckSchema();
        return false;
    }
    m_db.Execute(kSchemaSql);
    CheckSchema();
    return true;
}

std::vector<DocumentInfo> CTeamDatabase::ListDocuments()
{
    std::vector<DocumentInfo> list;
    for (const DbRow& row : m_db.Query(std::string(kDocumentColumns) + " ORDER BY name"))
        list.push_back(ToInfo(row));
    return list;
}

std::optional<DocumentInfo> CTeamDatabase::FindDocument(const std::string& name)
{
    const std::vector<DbRow> rows =
        m_db.Query(std::string(kDocumentColumns) + " WHERE name = $1", {name});
    if (rows.empty())
        return std::nullopt;
    return ToInfo(rows.front());
}

void CTeamDatabase::DeleteRecords(int64_t documentId)
{
    for (const std::string& table : CDocumentWriter::RecordTables())
        m_db.Query("DELETE FROM " + table + " WHERE document_id = $1", {documentId});
}

bool CTeamDatabase::RemoveDocument(const std::string& name)
{
    const std::optional<DocumentInfo> found = FindDocument(name);
    if (!found)
        return false;
    DeleteRecords(found->id);
    m_db.Query("DELETE FROM documents WHERE id = $1", {found->id});
    return true;
}

CTeamDatabase::SyncResult CTeamDatabase::StoreDocument(DocumentInfo& info, const CTimeKeeperDoc& doc)
{
    const std::optional<DocumentInfo> old = FindDocument(info.name);
    if (old && old->fingerprint == info.fingerprint)
    {
        info = *old;
        return SyncResult::unchanged;
    }
    info.syncedAt = UtcNow();
    if (old)
    {
        info.id = old->id;
        DeleteRecords(info.id);
    }
    else
    {
        const std::vector<DbRow> next = m_db.Query("SELECT COALESCE(MAX(id), 0) + 1 FROM documents");
        info.id = ToInt(next.at(0).at(0));
        // The row comes first: the records refer to it. Its figures follow below.
        m_db.Query("INSERT INTO documents (id, name, employee, source_path, file_version, "
                   "synced_at, fingerprint, mileage_rate, task_count, time_entry_count, "
                   "expense_count, todo_count) VALUES ($1, $2, '', '', 0, '', '', 0, 0, 0, 0, 0)",
                   {info.id, info.name});
    }
    info.counts = CDocumentWriter(m_db, info.id, doc).Write();
    m_db.Query("UPDATE documents SET employee = $2, source_path = $3, file_version = $4, "
               "synced_at = $5, fingerprint = $6, mileage_rate = $7, task_count = $8, "
               "time_entry_count = $9, expense_count = $10, todo_count = $11 WHERE id = $1",
               {info.id, info.employee, info.sourcePath, info.fileVersion, info.syncedAt,
                info.fingerprint, TypedRate(doc.m_defaultMileageRate), info.counts.tasks,
                info.counts.timeEntries, info.counts.expenses, info.counts.todos});
    return old ? SyncResult::replaced : SyncResult::added;
}

} // namespace database
