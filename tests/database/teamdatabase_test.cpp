// qvx db against SQLite and against a PostgreSQL server of the tests' own (ctest runs the
// PostgreSQL cases through scripts/with-postgres, which starts one).

#include "qvxrunner.h"

#include "app/timekeeperapp.h"
#include "database/dbconnection.h"
#include "database/documentwriter.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/settingsstore.h"
#include "platform/sharedfile.h"
#include "reports/invoiceoutput.h"
#include "reports/reportrunner.h"
#include "reports/summaryoutput.h"
#include "testsupport.h"

#include <filesystem>
#include <map>
#include <unistd.h>

namespace
{
using database::DbRow;
using qvtest::QvxResult;
using qvtest::At;
using qvtest::Day;

enum class Backend
{
    sqlite,
    postgres,
};

// The server that scripts/with-postgres started, as a libpq string without dbname.
std::string PgServer(std::string& why)
{
    const char* conninfo = std::getenv("QV_PG_CONNINFO");
    const char* unavailable = std::getenv("QV_PG_UNAVAILABLE");
    why = unavailable ? unavailable : "no server: run the test through scripts/with-postgres";
    return conninfo ? conninfo : "";
}

void PgAdmin(const std::string& database, const std::string& sql)
{
    std::string why;
    database::OpenDatabase(PgServer(why) + " dbname=" + database, database::OpenMode::existing)
        ->Execute(sql);
}

class TeamDbTest : public qvtest::QvxTest, public ::testing::WithParamInterface<Backend>
{
protected:
    void SetUp() override
    {
        QvxTest::SetUp();
        if (GetParam() == Backend::sqlite)
        {
            m_target = Path("team.db");
            return;
        }
        std::string why;
        m_server = PgServer(why);
        if (m_server.empty())
            GTEST_SKIP() << "no PostgreSQL server for the tests: " << why;
        static int databases = 0;
        m_database = "team" + std::to_string(++databases);
        PgAdmin("postgres", "CREATE DATABASE " + m_database);
        m_target = m_server + " dbname=" + m_database;
    }

    std::vector<DbRow> Query(const std::string& sql, const std::vector<database::DbValue>& params = {})
    {
        return database::OpenDatabase(m_target, database::OpenMode::existing)->Query(sql, params);
    }
    double Number(const std::string& sql, const std::vector<database::DbValue>& params = {})
    {
        const std::vector<DbRow> rows = Query(sql, params);
        return rows.empty() || !rows[0][0] ? 0.0 : std::stod(*rows[0][0]);
    }
    // Every row of every table, in a fixed order.
    std::string Snapshot()
    {
        std::string text;
        std::vector<std::string> tables = database::CDocumentWriter::RecordTables();
        tables.insert(tables.begin(), {"schema_version", "documents"});
        for (const std::string& table : tables)
        {
            // A record's key takes up to three columns; the first two tables have one column
            // (or one key column).
            const bool single = table == tables[0] || table == tables[1];
            for (const DbRow& row : Query("SELECT * FROM " + table + (single ? " ORDER BY 1" : " ORDER BY 1, 2, 3")))
            {
                text += table;
                for (const auto& cell : row)
                    text += "|" + cell.value_or("NULL");
                text += "\n";
            }
        }
        return text;
    }

    std::string m_server; // empty with SQLite
    std::string m_database;
    std::string m_target;
};

bool True(const std::optional<std::string>& cell)
{
    return cell == "1" || cell == "t";
}

// The views give, for every client and project in every month, what an invoice of the
// client over all dates by project and month bills; and the billable amounts add up to
// the Billing Summary's total over billable entries alone.
TEST_P(TeamDbTest, ViewsAddUpAsTheInvoicesAndSummariesDo)
{
    Ok({"demo", "Demo.qvx", "--employee", "Ann Archer"});
    Ok({"demo", "Big.qvx", "--years", "1", "--seed", "3"});
    Ok({"db", "sync", m_target, "Demo.qvx", "Big.qvx"});

    platform::SettingsStore store;
    platform::FixedClock clock(platform::LocalTime{2024, 6, 11, 12, 0, 0});
    CTimeKeeperApp app(store, clock, platform::LocaleInfo::UnitedStates());
    int lines = 0;
    for (const char* file : {"Demo.qvx", "Big.qvx"})
    {
        auto doc = qvtest::Load(ReadBytes(file));
        doc->m_roundedNow = [&] { return app.RoundTime(app.Now()); };
        const std::string name = doc->GetRootTask()->m_name;
        for (const CTask* client : doc->GetRootTask()->m_children)
        {
            CReport* invoice = doc->AddReport(CReport::invoice);
            invoice->m_preset = CReport::allDates;
            invoice->m_selectedTasks = {client->m_id};
            invoice->m_summarizeLevel = 2;
            invoice->m_timeFrame = CReport::frameMonth;
            auto output = reports::CreateReportOutput(*invoice, *doc, app);
            ASSERT_TRUE(output->PrepareData());
            // A task's line and the heading lines of its ancestors, by task and month.
            std::map<std::pair<uint32_t, std::string>, reports::CInvoiceItem> billed;
            for (const auto& item : static_cast<reports::CInvoiceOutput&>(*output).Items())
                if (!item.IsTotal())
                {
                    auto& sum = billed[std::make_pair(item.task, item.date.Format("%Y-%m"))];
                    sum.billing += item.billing;
                    sum.expenses += item.expenses;
                    sum.time += item.time;
                }
            const std::vector<DbRow> rows = Query(
                "SELECT project_id, month, amount, expenses, hours FROM monthly_totals "
                "WHERE document = $1 AND client_id = $2",
                {name, int64_t(client->m_id)});
            size_t rowsWithFigures = 0;
            for (const DbRow& row : rows)
            {
                const uint32_t task = row[0] ? uint32_t(std::stoul(*row[0])) : client->m_id;
                SCOPED_TRACE(name + ", task #" + std::to_string(task) + ", " + *row[1]);
                const reports::CInvoiceItem& item = billed[std::make_pair(task, *row[1])];
                EXPECT_NEAR(std::stod(*row[2]), item.billing, 0.005 + 1e-9);
                EXPECT_NEAR(std::stod(*row[3]), item.expenses, 0.005 + 1e-9);
                EXPECT_NEAR(std::stod(*row[4]) * 60, double(item.time.TotalMinutes()), 1e-6);
                ++lines;
            }
            for (const auto& [key, item] : billed)
                rowsWithFigures += item.billing != 0 || item.expenses != 0 || !item.time.IsZero();
            EXPECT_EQ(rowsWithFigures, rows.size()) << "an invoice line without a row, or one more";
        }

        CReport* summary = doc->AddReport(CReport::billingSummary);
        summary->m_preset = CReport::allDates;
        summary->m_selectedTasks = {CTimeKeeperDoc::kRootTaskId};
        summary->m_includeNonBillable = false;
        summary->m_showTotals = true;
        auto output = reports::CreateReportOutput(*summary, *doc, app);
        ASSERT_TRUE(output->PrepareData());
        const auto* totalRow =
            static_cast<reports::CSummaryOutput&>(*output).GetRow(reports::CSummaryOutput::kTotalKey);
        ASSERT_NE(totalRow, nullptr);
        const auto& total = static_cast<const reports::CTimeExpenseSummary&>(*totalRow);
        const double billable =
            Number("SELECT SUM(billable_amount) FROM monthly_totals WHERE document = $1", {name});
        EXPECT_NEAR(billable, total.m_amountCells.at(0), 1e-6 * billable) << name;
    }
    EXPECT_GT(lines, 100);
    EXPECT_LT(Number("SELECT SUM(billable_amount) FROM monthly_totals"),
              Number("SELECT SUM(amount) FROM monthly_totals"))
        << "non-billable time, which only the amount counts";
}

// Billing as inheritance, activity rates, overtime and an entry's own billing give it.
TEST_P(TeamDbTest, TimeEntriesCarryTheBillingTheReportsUse)
{
    auto doc = qvtest::NewDoc("Pat Example", At(2024, 3, 11, 18, 30));
    CTask* acme = qvtest::AddTask(*doc, doc->GetRootTask(), "Acme");
    CTask* web = qvtest::AddTask(*doc, acme, "Web");
    CTask* free = qvtest::AddTask(*doc, acme, "Pro Bono");
    acme->m_useParentBilling = free->m_useParentBilling = acme->m_useParentTaskId = false;
    acme->m_regularRate = 100;
    acme->m_overtimeMultiplier = 1.5f;
    acme->m_taskId = "ACME-1";
    acme->m_useActivityRates = true;
    free->m_billable = false;
    free->m_regularRate = 80;
    const uint32_t design = doc->AddActivity("Design")->m_id;
    const uint32_t travel = doc->AddActivity("Travel")->m_id;
    for (auto [activity, billable, rate] : {std::tuple{design, true, 120.0}, {travel, false, 0.0}})
    {
        auto r = std::make_unique<CActivityRate>();
        r->m_activityId = activity;
        r->m_billable = billable;
        r->m_rate = rate;
        acme->m_activityRates[activity] = std::move(r);
    }
    const CDateTime day = Day(2024, 3, 11);
    qvtest::AddTime(*doc, web, day, 8, 0, 9, 30);
    qvtest::AddTime(*doc, web, day, 10, 0, 11, 0)->m_activityId = design;
    qvtest::AddTime(*doc, web, day, 11, 0, 11, 45)->m_activityId = travel;
    qvtest::AddTime(*doc, web, day, 12, 0, 14, 0)->m_overtime = true;
    CTimeEntry* own = qvtest::AddTime(*doc, web, day, 14, 0, 14, 30);
    own->m_customBilling = true;
    own->m_billable = false;
    own->m_rate = 60;
    qvtest::AddTime(*doc, free, day, 15, 0, 15, 30);
    qvtest::AddTime(*doc, web, day, 17, 0, -1, 0);
    qvtest::AddToDo(*doc, web, "long overdue", Day(2001, 1, 1));
    qvtest::AddToDo(*doc, web, "far ahead", Day(2999, 1, 1));
    qvtest::AddToDo(*doc, web, "no date");
    qvtest::AddCompletedToDo(*doc, web, "done", day)->m_dueDate = Day(2001, 1, 1);
    WriteBytes("Pat.qvx", doc->SaveToBytes());
    Ok({"db", "sync", m_target, "Pat.qvx"}, "2024-03-11 18:30");

    const struct
    {
        const char* start;
        int minutes;
        bool billable;
        double rate;
        double amount;
    } expected[] = {{"08:00", 90, true, 100, 150},  {"10:00", 60, true, 120, 120},
                    {"11:00", 45, false, 0, 0},     {"12:00", 120, true, 150, 300},
                    {"14:00", 30, false, 60, 30},   {"15:00", 30, false, 80, 40},
                    {"17:00", 90, true, 100, 150}};
    const std::vector<DbRow> rows =
        Query("SELECT start_time, minutes, billable, rate, amount, end_time FROM time_entries ORDER BY id");
    ASSERT_EQ(rows.size(), std::size(expected));
    for (size_t i = 0; i < rows.size(); ++i)
    {
        SCOPED_TRACE(expected[i].start);
        EXPECT_EQ(rows[i][0], expected[i].start);
        EXPECT_EQ(std::stoi(*rows[i][1]), expected[i].minutes);
        EXPECT_EQ(True(rows[i][2]), expected[i].billable);
        EXPECT_DOUBLE_EQ(std::stod(*rows[i][3]), expected[i].rate);
        EXPECT_DOUBLE_EQ(std::stod(*rows[i][4]), expected[i].amount);
        EXPECT_EQ(rows[i][5].has_value(), i + 1 < rows.size()) << "only the running entry has no end";
    }
    const std::vector<DbRow> tasks = Query(
        "SELECT path, level_name, billing_task_id, billable, rate, task_code, client_id, project_id "
        "FROM tasks WHERE id = $1 OR id = $2 ORDER BY id",
        {int64_t(web->m_id), int64_t(free->m_id)});
    const std::string acmeId = std::to_string(acme->m_id);
    ASSERT_EQ(tasks.size(), 2u);
    EXPECT_EQ(tasks[0], (DbRow{"Acme/Web", "Project", acmeId, tasks[0][3], "100", "ACME-1", acmeId,
                               std::to_string(web->m_id)}));
    EXPECT_TRUE(True(tasks[0][3]));
    EXPECT_EQ(tasks[1][2], std::to_string(free->m_id)) << "billing of its own";
    EXPECT_FALSE(True(tasks[1][3]));
    EXPECT_EQ(Query("SELECT description, task FROM overdue_todos"),
              (std::vector<DbRow>{{"long overdue", "Acme/Web"}}));
}

// A second sync of the same file writes nothing; a changed file replaces its document
// whole and leaves the others alone; rm takes a document out of every table.
TEST_P(TeamDbTest, SyncReplacesWholeDocumentsAndOnlyWhenTheyChanged)
{
    Ok({"demo", "A.qvx", "--employee", "Ann Archer"});
    Ok({"demo", "B.qvx", "--employee", "Ben Bell"});
    {
        const auto held = platform::SharedFile::OpenShared(Path("A.qvx"), false);
        ASSERT_TRUE(held) << "held as the desktop program holds its document";
        const std::vector<uint8_t> bytesA = ReadBytes("A.qvx");
        EXPECT_NE(Ok({"db", "sync", m_target, "A.qvx", "B.qvx"}).find("Added 'Ben Bell'"),
                  std::string::npos);
        EXPECT_EQ(ReadBytes("A.qvx"), bytesA) << "a held document is read, never written";
    }
    const std::string first = Snapshot();
    EXPECT_NE(Ok({"db", "sync", m_target, "B.qvx", "A.qvx"}).find("'Ann Archer' is unchanged"),
              std::string::npos);
    EXPECT_EQ(Snapshot(), first);

    auto ben = [&] { return Query("SELECT * FROM time_entries WHERE document_id = 2 ORDER BY id"); };
    const std::vector<DbRow> benBefore = ben();
    Ok({"time", "add", "A.qvx", "Bellweather Foods", "--date", "2024-06-11", "--start", "06:00",
        "--end", "07:00"});
    EXPECT_NE(Ok({"db", "sync", m_target, "A.qvx", "--as", "Ann"}).find("Added 'Ann'"), std::string::npos);
    EXPECT_NE(Ok({"db", "sync", m_target, "A.qvx"}).find("Replaced 'Ann Archer'"), std::string::npos);
    const auto count = [&](const std::string& name, const char* table)
    {
        return Number(std::string("SELECT COUNT(*) FROM ") + table +
                          " t JOIN documents d ON d.id = t.document_id WHERE d.name = $1",
                      {name});
    };
    EXPECT_EQ(count("Ann Archer", "time_entries"), count("Ben Bell", "time_entries") + 1);
    EXPECT_EQ(count("Ann", "time_entries"), count("Ann Archer", "time_entries"));
    EXPECT_EQ(ben(), benBefore);

    Ok({"db", "rm", m_target, "Ann"});
    Ok({"db", "rm", m_target, "Ann Archer"});
    const std::string list = Ok({"db", "list", m_target});
    EXPECT_NE(list.find("Ben Bell"), std::string::npos);
    EXPECT_EQ(list.find("Ann"), std::string::npos);
    for (const std::string& table : database::CDocumentWriter::RecordTables())
        EXPECT_EQ(Number("SELECT COUNT(*) FROM " + table + " WHERE document_id <> 2"), 0) << table;
    const QvxResult gone = Run({"db", "rm", m_target, "Ann"});
    EXPECT_EQ(gone.exitCode, 1);
    EXPECT_NE(gone.err.find("there is no document 'Ann'"), std::string::npos) << gone.err;
}

// A failed command says why in one line, exits 1 and leaves the database as it was.
TEST_P(TeamDbTest, FailuresLeaveTheDatabaseAsItWas)
{
    Ok({"demo", "A.qvx", "--employee", "Ann Archer"});
    Ok({"demo", "B.qvx", "--employee", "Ben Bell"});
    WriteBytes("Bad.qvx", {'n', 'o', 'p', 'e'});
    Ok({"db", "sync", m_target, "A.qvx"});
    std::string before = Snapshot();
    auto refused = [&](std::vector<std::string> args, const std::string& says)
    {
        const QvxResult r = Run(args);
        EXPECT_EQ(r.exitCode, 1) << args[2];
        ASSERT_EQ(r.ErrLines().size(), 1u) << r.err;
        EXPECT_NE(r.err.find(says), std::string::npos) << r.err;
        EXPECT_EQ(Snapshot(), before);
    };
    refused({"db", "sync", m_target, "B.qvx", "Bad.qvx"}, "Bad.qvx");
    refused({"db", "sync", m_target, "B.qvx", "Missing.qvx"}, "Missing.qvx");
    refused({"db", "sync", m_target, "A.qvx", "B.qvx", "A.qvx"}, "two of the documents are named");
    if (!m_server.empty())
    {
        PgAdmin(m_database, "CREATE ROLE clerk" + m_database + " LOGIN");
        refused({"db", "sync", m_target + " user=clerk" + m_database, "B.qvx"},
                "PostgreSQL refused: permission denied");
        refused({"db", "sync", "postgresql://localhost:notaport/team", "B.qvx"},
                "cannot connect to PostgreSQL: invalid integer value");
        refused({"db", "sync", "host=" + Path("nowhere") + " dbname=team", "B.qvx"},
                "cannot connect to PostgreSQL");
        refused({"db", "sync", m_server + " dbname=nosuchdb", "B.qvx"}, "\"nosuchdb\" does not exist");
        // The server goes away in the middle of the rows: the session ends itself at the first.
        PgAdmin(m_database, "CREATE FUNCTION quit() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN "
                            "PERFORM pg_terminate_backend(pg_backend_pid()); RETURN NEW; END $$; "
                            "CREATE TRIGGER quit BEFORE INSERT ON time_entries FOR EACH ROW "
                            "EXECUTE FUNCTION quit()");
        refused({"db", "sync", m_target, "B.qvx"}, "the server keeps the database as it was");
    }
    Query("UPDATE schema_version SET version = 2");
    before = Snapshot();
    refused({"db", "sync", m_target, "B.qvx"}, "schema version 2, newer than this qvx knows (1)");
    refused({"db", "rm", m_target, "Ann Archer"}, "newer than this qvx knows");
}

INSTANTIATE_TEST_SUITE_P(Backends, TeamDbTest, ::testing::Values(Backend::sqlite, Backend::postgres),
                         [](const auto& info)
                         { return info.param == Backend::sqlite ? "Sqlite" : "Postgres"; });

class SqliteTarget : public qvtest::QvxTest
{
};

TEST_F(SqliteTarget, NothingIsLeftBehindByAFailureOrMadeByAReader)
{
    WriteBytes("Bad.qvx", {'n', 'o', 'p', 'e'});
    EXPECT_EQ(Run({"db", "sync", "new.db", "Bad.qvx"}).exitCode, 1);
    EXPECT_EQ(Run({"db", "list", "new.db"}).exitCode, 1);
    EXPECT_EQ(Run({"db", "rm", "new.db", "Ann"}).exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(Path("new.db")));
    EXPECT_EQ(Run({"db", "sync", "Bad.qvx", "team.db"}).exitCode, 2) << "a document as TARGET";
    EXPECT_EQ(Run({"db", "sync", "team.db", "A.qvx", "B.qvx", "--as", "x"}).exitCode, 2);
    EXPECT_EQ(ReadBytes("Bad.qvx"), (std::vector<uint8_t>{'n', 'o', 'p', 'e'}));

    EXPECT_EQ(Ok({"db", "schema", "team.db"}), "Created schema version 1 in SQLite database 'team.db'\n");
    EXPECT_NE(Ok({"db", "schema", "team.db"}).find("Found schema version 1"), std::string::npos);
    EXPECT_NE(Ok({"db", "schema"}).find("CREATE VIEW overdue_todos"), std::string::npos);
    if (::geteuid() != 0) // root writes whatever the file's mode says
    {
        Ok({"demo", "A.qvx"});
        std::filesystem::permissions(Path("team.db"), std::filesystem::perms::owner_read);
        const QvxResult r = Run({"db", "sync", "team.db", "A.qvx"});
        EXPECT_EQ(r.exitCode, 1);
        EXPECT_NE(r.err.find("no permission"), std::string::npos) << r.err;
    }
}

} // namespace
