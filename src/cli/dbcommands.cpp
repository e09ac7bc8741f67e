// qvx db: whole documents copied into the team database (SQLite or PostgreSQL).

#include "cli/appcontext.h"
#include "cli/commands.h"
#include "cli/commandsession.h"
#include "cli/docsession.h"
#include "cli/documenthost.h"
#include "database/teamdatabase.h"
#include "model/timekeeperdoc.h"
#include "timekeeping/timer.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iostream>
#include <optional>
#include <set>

namespace cli
{

namespace
{
using database::CDatabaseError;
using database::CDbConnection;
using database::CTeamDatabase;

const char kTargetNote[] =
    "TARGET is an SQLite database file, or a PostgreSQL database: a URI such as\n"
    "postgresql://user@host/team, or libpq's keyword/value form (\"host=db dbname=team\");\n"
    "\"postgresql://\" alone takes everything from PGHOST, PGDATABASE, PGUSER, ...\n"
    "docs/database.md describes the tables and views.";

std::string TargetOf(const Args& args)
{
    const std::string target = args.At(0, "TARGET");
    if (!database::IsPostgresTarget(target) && target.size() > 4 &&
        target.compare(target.size() - 4, 4, ".qvx") == 0)
        throw UsageError("'" + target + "' is a document: the database comes first (TARGET FILE...)");
    return target;
}

std::unique_ptr<CDbConnection> Connect(const std::string& target, database::OpenMode mode)
{
    try
    {
        return database::OpenDatabase(target, mode);
    }
    catch (const CDatabaseError& e)
    {
        throw CommandError(e.what());
    }
}

// Runs `work` in one write transaction and commits it. Whatever fails leaves the database
// as it was (an SQLite file that this command made is removed again), and the command's
// error says so.
void InTransaction(CDbConnection& db, const std::function<void(CTeamDatabase&)>& work)
{
    CTeamDatabase team(db);
    try
    {
        db.BeginWrite();
        work(team);
        db.Commit();
    }
    catch (const std::exception& e)
    {
        db.Rollback();
        db.DiscardIfCreated();
        const bool lost = dynamic_cast<const CDatabaseError*>(&e) &&
                          static_cast<const CDatabaseError&>(e).GetKind() ==
                              CDatabaseError::connectionLost;
        // A server that went away has rolled the transaction back itself.
        throw CommandError(std::string(e.what()) +
                           (lost ? "; the server keeps the database as it was"
                                 : "; nothing was changed"));
    }
}

std::string Counts(const database::DocumentCounts& c)
{
    return std::to_string(c.tasks) + " tasks, " + std::to_string(c.timeEntries) +
           " time entries, " + std::to_string(c.expenses) + " expenses, " +
           std::to_string(c.todos) + " to-dos";
}

int Sync(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, SIZE_MAX, {"as"});
    const std::string target = TargetOf(args);
    const std::vector<std::string> files(args.Positional().begin() + 1, args.Positional().end());
    const std::optional<std::string> as = args.Option("as");
    if (as && as->find_first_not_of(" \t") == std::string::npos)
        throw UsageError("--as needs a name");
    if (as && files.size() > 1)
        throw UsageError("--as names one document: give one FILE with it");

    // Reading converts an older layout in memory only: there is nothing to ask.
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    AppContext app;
    std::unique_ptr<CDbConnection> db = Connect(target, database::OpenMode::create);
    std::vector<std::string> said;
    InTransaction(*db, [&](CTeamDatabase& team) {
        team.EnsureSchema();
        std::set<std::string> names;
        for (const std::string& file : files)
        {
            DocSession session(reader);
            std::vector<uint8_t> bytes;
            session.OpenForReading(file, &bytes);
            CTimeKeeperDoc& doc = session.Doc();
            app.Attach(doc);
            if (session.Hosted())
            {
                std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
                bytes = doc.SaveToBytes();
            }
            const CTask* root = doc.GetRootTask();
            database::DocumentInfo info;
            info.name = as ? *as : root ? root->m_name : "";
            if (info.name.find_first_not_of(" \t") == std::string::npos)
                throw CommandError("'" + file + "' names no employee: name it with --as NAME");
            if (!names.insert(info.name).second)
                throw CommandError("two of the documents are named '" + info.name +
                                   "': sync them one at a time with --as NAME");
            info.employee = root ? root->m_name : "";
            info.sourcePath = CanonicalPath(file);
            info.fileVersion = doc.m_fileVersion;
            info.fingerprint = database::DocumentFingerprint(bytes, info.sourcePath, doc);

            // A timer left running over midnight is stopped (or split) as every qvx read
            // sees it; the file itself is never written.
            CliTimerUi ui(reader, ConflictPolicy::fail);
            std::optional<CTimer> timer;
            if (!session.Hosted())
            {
                timer.emplace(doc, app.App(), ui, reader);
                timer->OnDocumentOpened();
            }
            switch (team.StoreDocument(info, doc))
            {
            case CTeamDatabase::SyncResult::unchanged:
                said.push_back("'" + info.name + "' is unchanged since its sync at " +
                               info.syncedAt + " (" + file + ")");
                break;
            case CTeamDatabase::SyncResult::added:
                said.push_back("Added '" + info.name + "' from " + file + ": " + Counts(info.counts));
                break;
            case CTeamDatabase::SyncResult::replaced:
                said.push_back("Replaced '" + info.name + "' from " + file + ": " +
                               Counts(info.counts));
                break;
            }
        }
    });
    for (const std::string& line : said)
        std::cout << line << "\n";
    return 0;
}

int Schema(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(0, 1, {});
    if (args.Count() == 0)
    {
        std::cout << CTeamDatabase::SchemaSql();
        return 0;
    }
    std::unique_ptr<CDbConnection> db = Connect(TargetOf(args), database::OpenMode::create);
    bool created = false;
    InTransaction(*db, [&](CTeamDatabase& team) { created = team.EnsureSchema(); });
    std::cout << (created ? "Created" : "Found") << " schema version " << CTeamDatabase::kSchemaVersion
              << " in " << db->Describe() << "\n";
    return 0;
}

// The documents of the database, one a line, in columns.
int List(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    std::unique_ptr<CDbConnection> db = Connect(TargetOf(args), database::OpenMode::existing);
    std::vector<database::DocumentInfo> documents;
    try
    {
        CTeamDatabase team(*db);
        team.CheckSchema();
        documents = team.ListDocuments();
    }
    catch (const CDatabaseError& e)
    {
        throw CommandError(e.what());
    }
    if (documents.empty())
    {
        std::cout << "No documents in " << db->Describe() << "\n";
        return 0;
    }
    std::vector<std::vector<std::string>> rows = {
        {"NAME", "EMPLOYEE", "SYNCED (UTC)", "TASKS", "TIME", "EXPENSES", "TO-DOS", "FILE"}};
    for (const database::DocumentInfo& d : documents)
        rows.push_back({d.name, d.employee, d.syncedAt, std::to_string(d.counts.tasks),
                        std::to_string(d.counts.timeEntries), std::to_string(d.counts.expenses),
                        std::to_string(d.counts.todos), d.sourcePath});
    std::vector<size_t> widths(rows[0].size(), 0);
    for (const auto& row : rows)
        for (size_t c = 0; c < row.size(); ++c)
            widths[c] = std::max(widths[c], row[c].size());
    for (const auto& row : rows)
    {
        std::string line;
        for (size_t c = 0; c < row.size(); ++c)
        {
            const std::string pad(widths[c] - row[c].size(), ' ');
            // Counts stand right-aligned, texts left-aligned.
            const bool number = c >= 3 && c <= 6;
            line += number ? pad + row[c] : row[c] + (c + 1 < row.size() ? pad : "");
            if (c + 1 < row.size())
                line += "  ";
        }
        std::cout << line << "\n";
    }
    return 0;
}

int Remove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    const std::string target = TargetOf(args);
    const std::string name = args.At(1, "NAME");
    std::unique_ptr<CDbConnection> db = Connect(target, database::OpenMode::existing);
    std::optional<database::DocumentInfo> removed;
    InTransaction(*db, [&](CTeamDatabase& team) {
        team.CheckSchema();
        removed = team.FindDocument(name);
        if (!removed)
            throw CommandError("there is no document '" + name + "' in " + db->Describe() +
                               " (qvx db list TARGET shows them)");
        team.RemoveDocument(name);
    });
    std::cout << "Removed '" << name << "' (" << Counts(removed->counts) << ")\n";
    return 0;
}
} // namespace

void RegisterDatabaseCommands(CommandTable& table)
{
    table.Add({"db sync", "TARGET FILE... [--as NAME]",
               "copy whole documents into a team database (SQLite file or PostgreSQL)", Sync,
               std::string("Each document is stored under a name: --as NAME, else its employee (the top\n"
                           "task's name). A document already there under that name is replaced whole, in\n"
                           "one transaction with the others; one that did not change since its last sync\n"
                           "is left as it is. The documents are only read (a document open in the desktop\n"
                           "program as last saved). A missing SQLite file is created, with the schema.\n\n") +
                   kTargetNote,
               true});
    table.Add({"db schema", "[TARGET]",
               "print the team database's schema, or create it in TARGET", Schema,
               std::string("Without TARGET the schema's SQL is printed (the same for SQLite and\n"
                           "PostgreSQL). With TARGET it is created there unless it is there already.\n\n") +
                   kTargetNote,
               true});
    table.Add({"db list", "TARGET", "list the documents in a team database", List, kTargetNote, true});
    table.Add({"db rm", "TARGET NAME", "remove one document from a team database", Remove,
               kTargetNote, true});
}

} // namespace cli
