// End-to-end tests: the built qvx run as a separate process on documents in a scratch folder.
// What the core decides is tested in the core's suites; these check that each command family
// gets there from its arguments, says what it did, and refuses cleanly.

#include "qvxrunner.h"

#include "model/oldlayouts.h"
#include "model/timekeeperdoc.h"
#include "platform/sharedfile.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

using qvtest::Json;
using qvtest::QvxResult;
using qvtest::QvxTest;
using qvtest::FindDay;
using qvtest::Spans;
using Strings = std::vector<std::string>;
using ::testing::HasSubstr;

namespace
{
std::vector<long> Ids(const Json& array)
{
    return array.get<std::vector<long>>();
}

// Acme (#2) with Website (#3) and Support (#4), and Internal (#5), under "Pat Doe".
class QvxDocTest : public QvxTest
{
protected:
    void SetUp() override
    {
        QvxTest::SetUp();
        Ok({"new", "doc.qvx", "--employee", "Pat Doe"});
        Ok({"task", "add", "doc.qvx", "#1", "Acme"});
        Ok({"task", "add", "doc.qvx", "Acme", "Website"});
        Ok({"task", "add", "doc.qvx", "Acme", "Support"});
        Ok({"task", "add", "doc.qvx", "#1", "Internal"});
    }
};
} // namespace

TEST_F(QvxTest, NewDocumentHasTheDefaults)
{
    EXPECT_THAT(Ok({"new", "doc.qvx", "--employee", "Pat Doe"}), HasSubstr("doc.qvx"));
    Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(dump["version"], 11);
    EXPECT_EQ(dump["header"], 0);
    Strings types;
    for (const Json& t : dump["expense_types"])
        types.push_back(t["name"]);
    EXPECT_EQ(types, (Strings{"Airfare", "Breakfast", "Car Rental", "Dinner", "Entertainment",
                              "Gas", "Lodging", "Lunch", "Mileage", "Parking", "Postage",
                              "Telephone", "Taxi", "Tips"}));
    EXPECT_EQ(dump["expense_types"][13]["id"], 14);
    EXPECT_EQ(dump["last_ids"]["expense_type"], 14);
    EXPECT_EQ(dump["level_names"], Json({{"0", "Employee"},
                                         {"1", "Client"},
                                         {"2", "Project"},
                                         {"3", "Sub Project"},
                                         {"4", "Task"}}));
    ASSERT_EQ(dump["tasks"].size(), 1u);
    const Json& root = dump["tasks"][0];
    EXPECT_EQ(root["id"], 1);
    EXPECT_EQ(root["parent"], 0);
    EXPECT_EQ(root["name"], "Pat Doe");
    EXPECT_EQ(root["expanded"], true);
    EXPECT_TRUE(dump["days"].empty());

    // An existing file is not replaced without --force.
    EXPECT_EQ(Run({"new", "doc.qvx", "--employee", "Someone Else"}).exitCode, 1);
    EXPECT_EQ(DumpJson("doc.qvx")["tasks"][0]["name"], "Pat Doe");
}

TEST_F(QvxDocTest, DayOfWork)
{
    WriteSettings({"TimeInterval=4"}); // 15 minutes

    EXPECT_THAT(Ok({"start", "doc.qvx", "Acme/Website"}, "2024-06-11 09:07:29"),
                HasSubstr("Started Acme/Website at 9:00 AM"));
    std::string out = Ok({"status", "doc.qvx"}, "2024-06-11 10:00");
    EXPECT_THAT(out, HasSubstr("Running: Acme/Website"));
    EXPECT_THAT(out, HasSubstr("Elapsed: 1:00"));

    // Switching tasks: the second entry starts where the first one ends.
    out = Ok({"start", "doc.qvx", "acme/support"}, "2024-06-11 10:20");
    EXPECT_THAT(out, HasSubstr("Stopped Acme/Website, 9:00 AM-10:15 AM (1:15)"));
    EXPECT_THAT(out, HasSubstr("Started Acme/Support at 10:15 AM"));

    // Pause and resume in separate runs round to the minute.
    Ok({"pause", "doc.qvx"}, "2024-06-11 11:00:20");
    EXPECT_THAT(Ok({"status", "doc.qvx"}, "2024-06-11 11:10"), HasSubstr("Paused: Acme/Support"));
    EXPECT_THAT(Ok({"resume", "doc.qvx"}, "2024-06-11 11:30"),
                HasSubstr("Resumed Acme/Support at 11:30 AM"));
    EXPECT_EQ(Run({"resume", "doc.qvx"}, "2024-06-11 11:31").exitCode, 1)
        << "nothing is paused any more";
    Ok({"stop", "doc.qvx"}, "2024-06-11 12:05");
    EXPECT_THAT(Ok({"status", "doc.qvx"}, "2024-06-11 12:06"), HasSubstr("Timer Inactive"));
    EXPECT_EQ(Spans(DumpJson("doc.qvx"), "20240611"),
              (Strings{"3 09:00-10:15", "4 10:15-11:00", "4 11:30-12:00"}));

    // An overlapping entry: refused when told to fail, and when nobody can be asked.
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    const Strings overlap = {"time",   "add",        "doc.qvx",      "Acme/Website",
                             "--date", "2024-06-11", "--start",      "11:45",
                             "--end",  "12:30",      "--on-conflict"};
    QvxResult refused = Run(overlap);
    EXPECT_EQ(refused.exitCode, 2) << "--on-conflict needs its choice";
    refused = Run(Strings(overlap.begin(), overlap.end() - 1));
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(ReadBytes("doc.qvx"), before);
    Strings fail = overlap;
    fail.push_back("fail");
    refused = Run(fail);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.err, HasSubstr("The Time Entry conflicts with another Time Entry"));
    EXPECT_EQ(ReadBytes("doc.qvx"), before);

    // Adjust the others: Support 11:30-12:00 gives way to Website 11:45-12:30.
    fail.back() = "adjust-others";
    Ok(fail);
    // Adjust this one: Support 12:15-13:00 starts after Website instead; one inside
    // another disappears.
    Ok({"time", "add", "doc.qvx", "Acme/Support", "--date", "2024-06-11", "--start", "12:15",
        "--end", "13:00", "--on-conflict", "adjust-this"});
    EXPECT_THAT(Ok({"time", "add", "doc.qvx", "Internal", "--date", "2024-06-11", "--start",
                    "12:40", "--end", "12:50", "--on-conflict", "adjust-this"}),
                HasSubstr("not added"));
    Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(Spans(dump, "20240611"), (Strings{"3 09:00-10:15", "4 10:15-11:00", "4 11:30-11:45",
                                                "3 11:45-12:30", "4 12:30-13:00"}));
    EXPECT_EQ(Ids(dump["recent_tasks"]), (std::vector<long>{4, 3}));

    // The Time page of the day, with the elapsed text of each row.
    out = Ok({"entries", "doc.qvx", "--date", "2024-06-11", "--kind", "time"});
    EXPECT_THAT(out, HasSubstr("#  Task          Start     End       Elapsed"));
    EXPECT_THAT(out, HasSubstr("1  Acme/Website  9:00 AM   10:15 AM  1:15"));
    EXPECT_THAT(out, HasSubstr("5  Acme/Support  12:30 PM  1:00 PM   0:30"));
    // Without a date or a task: today's list, as the window opens on it.
    EXPECT_EQ(Ok({"entries", "doc.qvx", "--kind", "time"}, "2024-06-11 18:00"), out);
    out = Ok({"entries", "doc.qvx", "--task", "Acme/Website", "--kind", "time"});
    EXPECT_THAT(out, HasSubstr("Date"));
    EXPECT_THAT(out, HasSubstr("0:45"));
}

TEST_F(QvxDocTest, TimerLeftRunningOverMidnightIsStoppedOrSplitAndSaidOnce)
{
    Ok({"start", "doc.qvx", "Acme/Website"}, "2024-06-11 23:10");
    // Opening the file the next morning stops the entry at midnight, and says so once.
    const QvxResult stop = Run({"stop", "doc.qvx"}, "2024-06-12 08:00");
    EXPECT_THAT(stop.out, HasSubstr("No timer is running"));
    EXPECT_THAT(
        stop.err,
        HasSubstr("The timer of Acme/Website was stopped at midnight: its entry of 2024-06-11 "
                  "from 11:10 PM now ends at 24:00"));
    EXPECT_TRUE(Run({"status", "doc.qvx"}, "2024-06-12 08:01").err.empty());
    EXPECT_EQ(Spans(DumpJson("doc.qvx"), "20240611"), Strings{"3 23:10-24:00"});

    WriteSettings({"StopAtMidnight=0"});
    Ok({"start", "doc.qvx", "Acme/Website"}, "2024-06-12 22:30");
    const QvxResult status = Run({"status", "doc.qvx"}, "2024-06-14 07:00");
    EXPECT_THAT(status.out, HasSubstr("Running: Acme/Website"));
    EXPECT_THAT(status.out, HasSubstr("12:00 AM"));
    EXPECT_THAT(status.out, HasSubstr("Elapsed: 7:00"));
    // The first command after midnight says what happened, and writes it, even a reading one.
    EXPECT_THAT(
        status.err,
        HasSubstr("The timer of Acme/Website ran past midnight and was split by day: its entry "
                  "of 2024-06-12 from 10:30 PM now ends at 24:00; it runs on from 12:00 AM "
                  "on 2024-06-14"));
    EXPECT_EQ(Spans(DumpJson("doc.qvx"), "20240613"), Strings{"3 00:00-24:00"});
    EXPECT_TRUE(Run({"status", "doc.qvx"}, "2024-06-14 07:05").err.empty()) << "said once only";
}

TEST_F(QvxDocTest, ExpensesAndToDos)
{
    Ok({"payment-method", "add", "doc.qvx", "Visa", "--account-type", "Company Credit Card"});
    Ok({"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--amount", "12.50", "--type",
        "Lunch", "--method", "visa", "--note", "with the client"});
    // Mileage: distance times rate, a half cent rounding up.
    Ok({"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--distance", "1", "--rate",
        "0.125", "--type", "Mileage"});
    Ok({"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--distance", "10", "--rate",
        "0.375", "--type", "#9", "--billable", "no"});
    EXPECT_EQ(Run({"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--amount", "3",
                   "--type", "Mileage"})
                  .exitCode,
              2);

    Ok({"todo", "add", "doc.qvx", "Acme/Website", "Send the mock-ups", "--due", "2024-06-10",
        "--priority", "b"});
    Ok({"todo", "add", "doc.qvx", "Internal", "  Renew the domain"});
    const QvxResult blank = Run({"todo", "add", "doc.qvx", "Internal", "   "});
    EXPECT_EQ(blank.exitCode, 1);
    EXPECT_THAT(blank.err, HasSubstr("Enter a To Do Description."));

    Json dump = DumpJson("doc.qvx");
    const Json& expenses = (*FindDay(dump, "20240611"))["expenses"];
    ASSERT_EQ(expenses.size(), 3u);
    EXPECT_DOUBLE_EQ(expenses[0]["amount"].get<double>(), 12.5);
    EXPECT_EQ(expenses[0]["payment_method"], 1);
    EXPECT_EQ(expenses[0]["note"], "with the client");
    EXPECT_DOUBLE_EQ(expenses[1]["amount"].get<double>(), 0.13);
    EXPECT_EQ(expenses[1]["payment_method"], -1);
    EXPECT_DOUBLE_EQ(expenses[2]["amount"].get<double>(), 3.75);
    EXPECT_DOUBLE_EQ(expenses[2]["distance"].get<double>(), 10.0);
    EXPECT_EQ(expenses[2]["billable"], false);
    ASSERT_EQ(dump["todos"].size(), 2u);
    EXPECT_EQ(dump["todos"][0]["priority"], "B");
    EXPECT_EQ(dump["todos"][0]["due"], "2024-06-10");
    EXPECT_EQ(dump["todos"][1]["description"], "Renew the domain");
    EXPECT_EQ(dump["todos"][1]["priority"], "1");

    // Rows as the day's pages list them; the outstanding to-dos show on every day.
    EXPECT_THAT(Ok({"entries", "doc.qvx", "--date", "2024-06-12", "--kind", "todo"}),
                HasSubstr("Send the mock-ups"));
    // Sorted by task ("ToDoSortOrder" 0): Acme/Website before Internal.
    Ok({"todo", "complete", "doc.qvx", "2", "--date", "2024-06-12"});
    dump = DumpJson("doc.qvx");
    ASSERT_EQ(dump["todos"].size(), 1u);
    const Json& done = (*FindDay(dump, "20240612"))["todos"];
    ASSERT_EQ(done.size(), 1u);
    EXPECT_EQ(done[0]["description"], "Renew the domain");
    EXPECT_EQ(done[0]["completed"], "2024-06-12");

    // Moving and deleting rows; deleting asks, and without an answer nothing happens.
    Ok({"expense", "move", "doc.qvx", "--date", "2024-06-11", "1", "--to", "2024-06-14"});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    const QvxResult unanswered =
        Run({"expense", "rm", "doc.qvx", "--date", "2024-06-11", "1", "2"});
    EXPECT_EQ(unanswered.exitCode, 1);
    EXPECT_THAT(unanswered.err,
                HasSubstr("Are you sure you want to delete the selected Expense Entries?"));
    EXPECT_EQ(ReadBytes("doc.qvx"), before);
    Ok({"--yes", "expense", "rm", "doc.qvx", "--date", "2024-06-11", "1", "2"});
    dump = DumpJson("doc.qvx");
    EXPECT_EQ(FindDay(dump, "20240611"), nullptr) << "the emptied day is gone";
    EXPECT_EQ((*FindDay(dump, "20240614"))["expenses"][0]["date"], "2024-06-14");
    const std::string out = Ok({"entries", "doc.qvx", "--task", "Acme", "--kind", "expense"});
    EXPECT_THAT(out, HasSubstr("with the client"));
    EXPECT_THAT(out, HasSubstr("$12.50"));
}

TEST_F(QvxDocTest, ArchiveMovesEntriesOut)
{
    Ok({"time", "add", "doc.qvx", "Acme/Website", "--date", "2024-06-10", "--start", "09:00",
        "--end", "10:00"});
    Ok({"time", "add", "doc.qvx", "Internal", "--date", "2024-06-10", "--start", "10:00", "--end",
        "11:00"});
    Ok({"time", "add", "doc.qvx", "Acme/Support", "--date", "2024-06-12", "--start", "09:00",
        "--end", "10:00"});
    Ok({"todo", "add", "doc.qvx", "Acme", "Open item"});

    const QvxResult backwards = Run({"archive", "doc.qvx", "--task", "Acme", "--from", "2024-06-12",
                                     "--to", "2024-06-10", "--out", "old.qvx"});
    EXPECT_EQ(backwards.exitCode, 1);
    EXPECT_THAT(backwards.err, HasSubstr("Start date must be on or before end date."));

    // Acme up to the 11th: one time entry, moved out.
    Ok({"archive", "doc.qvx", "--task", "Acme", "--to", "2024-06-11", "--delete", "--out",
        "old.qvx"});
    const Json archive = DumpJson("old.qvx");
    EXPECT_EQ(Spans(archive, "20240610"), Strings{"3 09:00-10:00"});
    EXPECT_EQ(FindDay(archive, "20240612"), nullptr);
    const Json doc = DumpJson("doc.qvx");
    EXPECT_EQ(Spans(doc, "20240610"), Strings{"5 10:00-11:00"});
    EXPECT_EQ(Spans(doc, "20240612"), Strings{"4 09:00-10:00"});

    const std::vector<uint8_t> archived = ReadBytes("old.qvx");
    EXPECT_EQ(Run({"archive", "doc.qvx", "--task", "#1", "--out", "old.qvx"}).exitCode, 1);
    EXPECT_EQ(ReadBytes("old.qvx"), archived) << "an existing archive is kept without --force";

    // Everything, with deletion: the document keeps its tasks only.
    Ok({"archive", "doc.qvx", "--task", "#1", "--delete", "--out", "all.qvx"});
    EXPECT_TRUE(DumpJson("doc.qvx")["days"].empty());
    const Json all = DumpJson("all.qvx");
    EXPECT_EQ(Spans(all, "20240612"), Strings{"4 09:00-10:00"});
    EXPECT_EQ(all["todos"].size(), 1u) << "without an end date the open to-do goes along";
}

TEST_F(QvxTest, OldLayoutIsCheckedAndConvertedOnlyWhenAnswered)
{
    using qvtest::LocalSeconds;
    qvtest::StreamBuilder b;
    oldlayout::DocumentHead(b, 8, 2, 2, 1);
    oldlayout::Task(b, 8, 1, 0, "Pat", 0);
    oldlayout::Task(b, 8, 2, 1, "Alpha", 1);
    b.F64(0.0).F64(0.0);
    b.Object("CDay").U32(8).Text("20010601").U32(1).U32(0).U32(0);
    oldlayout::TimeEntry(b, 8, 2, LocalSeconds(2001, 6, 1, 8, 0), LocalSeconds(2001, 6, 1, 9, 30),
                         "v8");
    b.U32(1).U32(1).U32(1).Text("Travel"); // activities
    b.U32(0).U32(0).U32(0).U32(0);         // level names, expense types, payment methods, to-dos
    WriteBytes("old.qvx", b.Data());

    EXPECT_THAT(Ok({"check", "old.qvx"}), HasSubstr("version 8"));
    // Converting asks first; with nobody to answer, nothing is written.
    EXPECT_NE(Run({"convert", "old.qvx", "new.qvx"}).exitCode, 0);
    EXPECT_EQ(ReadBytes("new.qvx").size(), 0u);

    Ok({"--yes", "convert", "old.qvx", "new.qvx"});
    EXPECT_THAT(Ok({"check", "new.qvx"}), HasSubstr("version 11"));
    EXPECT_EQ(Spans(DumpJson("new.qvx"), "20010601"), Strings{"2 08:00-09:30"});
}

TEST_F(QvxDocTest, HeldDocumentIsReadOnly)
{
    Ok({"time", "add", "doc.qvx", "Acme/Website", "--date", "2024-06-11", "--start", "09:00",
        "--end", "10:00"});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");

    // Held for writing, as the desktop program holds it.
    auto holder = platform::SharedFile::OpenShared(Path("doc.qvx"), false);
    ASSERT_TRUE(holder && !holder->IsReadOnly());
    const std::vector<Strings> changes = {
        {"task", "add", "doc.qvx", "Acme", "Design"},
        {"time", "add", "doc.qvx", "Internal", "--date", "2024-06-11", "--start", "11:00", "--end",
         "12:00"},
        {"start", "doc.qvx", "Acme/Support"},
        {"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--amount", "5", "--type",
         "Taxi"},
        {"todo", "add", "doc.qvx", "Acme", "Call back"},
        {"activity", "add", "doc.qvx", "Design"},
        {"--yes", "time", "rm", "doc.qvx", "--date", "2024-06-11", "1"},
        {"archive", "doc.qvx", "--task", "#1", "--delete", "--out", "held-archive.qvx"},
    };
    for (const auto& args : changes)
    {
        const QvxResult r = Run(args);
        EXPECT_EQ(r.exitCode, 1) << args[0] << " " << args[1];
        EXPECT_THAT(r.err, HasSubstr("is not available for updating"));
        EXPECT_EQ(ReadBytes("doc.qvx"), before) << args[0] << " " << args[1];
    }
    // Reading still works.
    EXPECT_THAT(Ok({"entries", "doc.qvx", "--date", "2024-06-11"}), HasSubstr("Acme/Website"));
    EXPECT_THAT(Ok({"status", "doc.qvx"}), HasSubstr("Timer Inactive"));
    Ok({"archive", "doc.qvx", "--task", "#1", "--out", "copy.qvx"});
    EXPECT_EQ(Spans(DumpJson("copy.qvx"), "20240611").size(), 1u);

    // Released, the file takes changes again.
    holder.reset();
    Ok({"task", "add", "doc.qvx", "Acme", "Design"});
}

TEST_F(QvxDocTest, RefusalsPrintTheSystemsMessageAndChangeNothing)
{
    // A task imported from a project plan, with a child: a project summary task.
    {
        auto doc = qvtest::NewDoc("Pat Doe");
        auto project = std::make_unique<CProject>();
        project->m_name = "Plan";
        const uint32_t projectId = doc->AddProject(std::move(project))->m_id;
        CTask* client = qvtest::AddTask(*doc, doc->GetRootTask(), "Client");
        CTask* summary = qvtest::AddTask(*doc, client, "Summary");
        summary->m_projectId = projectId;
        summary->m_projectTaskNumber = 7;
        CTask* leaf = qvtest::AddTask(*doc, summary, "Leaf");
        leaf->m_projectId = projectId;
        leaf->m_projectTaskNumber = 8;
        qvtest::AddTime(*doc, client, qvtest::Day(2024, 6, 11), 9, 0, 10, 0);
        WriteBytes("plan.qvx", doc->SaveToBytes());
    }
    const std::vector<uint8_t> before = ReadBytes("plan.qvx");
    const struct
    {
        Strings args;
        const char* message;
    } cases[] = {
        {{"time", "add", "plan.qvx", "Client/Summary", "--date", "2024-06-11", "--start", "11:00",
          "--end", "12:00"},
         "Cannot add entry:  The task is a project summary task."},
        {{"todo", "add", "plan.qvx", "Client/Summary", "Review"},
         "Cannot add entry:  The task is a project summary task."},
        {{"time", "move", "plan.qvx", "--date", "2024-06-11", "1", "--task", "Client/Summary"},
         "Cannot move entry:  The destination task is a project summary task."},
        {{"time", "add", "plan.qvx", "Client", "--date", "2024-06-11", "--start", "12:00", "--end",
          "11:00"},
         "The End Time must be later than the Start Time."},
        {{"task", "move", "plan.qvx", "Client/Summary", "#1"},
         "Cannot move Task:  The source task was imported from a project."},
        {{"--yes", "task", "rm", "plan.qvx", "Client", "--rollup"},
         "Cannot delete task.  There is a project task below it in the task hierarchy."},
        {{"task", "move", "doc.qvx", "Acme", "Internal"},
         "Cannot move Task: The destination task level is not above the source task level."},
    };
    for (const auto& c : cases)
    {
        const QvxResult r = Run(c.args);
        EXPECT_EQ(r.exitCode, 1) << c.message;
        ASSERT_EQ(r.ErrLines().size(), 1u) << r.err;
        EXPECT_THAT(r.err, HasSubstr(c.message));
        EXPECT_EQ(ReadBytes("plan.qvx"), before) << c.message;
    }
}

TEST_F(QvxDocTest, BadArgumentsGiveOneLineAndChangeNothing)
{
    WriteBytes("garbage.qvx", {'n', 'o', 't', ' ', 'a', ' ', 'd', 'o', 'c'});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    const Strings entry = {"time",       "add",     "doc.qvx", "Acme",  "--date",
                           "2024-06-11", "--start", "09:00",   "--end", "10:00"};
    auto with = [](Strings args, size_t at, const std::string& value)
    {
        args[at] = value;
        return args;
    };
    const std::vector<Strings> cases = {
        {"frobnicate"},
        {"task"},
        {"check"},
        {"check", "missing.qvx"},
        {"check", "garbage.qvx"},
        with(entry, 5, "2024-02-30"),
        with(entry, 7, "9"),
        with(entry, 3, "Nowhere/Else"),
        {"time", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--start", "09:00", "--end",
         "10:00", "--on-conflict", "sometimes"},
        {"time", "rm", "doc.qvx", "--date", "2024-06-11", "4"},
        {"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--amount", "abc", "--type",
         "Lunch"},
        {"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--amount", "5", "--type",
         "Caviar"},
        {"todo", "add", "doc.qvx", "Acme", "Call", "--priority", "10"},
        {"entries", "doc.qvx", "--date", "2024-06-11", "--task", "Acme"},
        {"entries", "doc.qvx", "--date", "2024-06-11", "--kind", "hours"},
        {"start", "doc.qvx", "Acme", "--bogus", "1"},
        {"task", "add", "doc.qvx"},
        {"archive", "doc.qvx", "--task", "Acme"},
    };
    for (const auto& args : cases)
    {
        const QvxResult r = Run(args);
        std::string line;
        for (const std::string& a : args)
            line += a + " ";
        EXPECT_NE(r.exitCode, 0) << line;
        EXPECT_EQ(r.ErrLines().size(), 1u) << line << "\n" << r.err;
        EXPECT_TRUE(r.out.empty()) << line << "\n" << r.out;
    }
    const QvxResult badClock = Run({"tasks", "doc.qvx"}, "yesterday");
    EXPECT_EQ(badClock.exitCode, 2);
    EXPECT_EQ(badClock.ErrLines().size(), 1u) << badClock.err;
    EXPECT_EQ(ReadBytes("doc.qvx"), before);
}

TEST_F(QvxTest, DemoDocumentIsTheSameForTheSameDay)
{
    EXPECT_THAT(Ok({"demo", "demo.qvx"}, "2024-06-12 10:00"), HasSubstr("demo.qvx"));
    Ok({"demo", "again.qvx"}, "2024-06-12 10:00");
    EXPECT_EQ(ReadBytes("demo.qvx"), ReadBytes("again.qvx"));
    EXPECT_FALSE(DumpJson("demo.qvx")["contacts"].empty());
    // Its days lead up to yesterday, full: an entry in the middle of a morning overlaps.
    EXPECT_EQ(Run({"time", "add", "demo.qvx", "Internal/Administration", "--date", "2024-06-11",
                   "--start", "10:00", "--end", "10:30", "--on-conflict", "fail"},
                  "2024-06-12 10:00")
                  .exitCode,
              1);
}

TEST_F(QvxDocTest, ReportDefinitions)
{
    Ok({"activity", "add", "doc.qvx", "Design"});
    Ok({"report", "new", "doc.qvx", "--kind", "time-summary", "--name", "Weekly by activity",
        "--summarize", "activity", "--time-frame", "week", "--totals", "yes", "--preset",
        "previous-month", "--fields", "task-id,billing-rate"});
    Ok({"report",     "new",         "doc.qvx",    "--kind",      "invoice",
        "--name",     "Acme June",   "--task",     "Acme",        "--from",
        "2024-06-01", "--to",        "2024-06-30", "--recipient", "Acme Corp\\n1 Main St",
        "--terms",    "Net 15",      "--tax",      "8.5",         "--activities",
        "design",     "--summarize", "Project"});
    Ok({"report", "new", "doc.qvx", "--kind", "To Do Detail", "--name", "Done", "--include",
        "completed"});

    Json dump = DumpJson("doc.qvx");
    ASSERT_EQ(dump["reports"].size(), 3u);
    const Json& summary = dump["reports"][0];
    EXPECT_EQ(summary["id"], 1);
    EXPECT_EQ(summary["kind"], 1);
    EXPECT_EQ(summary["preset"], 4);
    EXPECT_EQ(summary["summarize_level"], -1);
    EXPECT_EQ(summary["time_frame"], 3);
    EXPECT_EQ(summary["show_totals"], true);
    EXPECT_EQ(summary["fields"], 0x11);
    EXPECT_EQ(Ids(summary["tasks"]), (std::vector<long>{1}));
    EXPECT_EQ(Ids(summary["activities"]), (std::vector<long>{0}));
    const Json& invoice = dump["reports"][1];
    EXPECT_EQ(invoice["kind"], 5);
    EXPECT_EQ(invoice["preset"], 0);
    EXPECT_EQ(invoice["start"], "2024-06-01");
    EXPECT_EQ(invoice["end"], "2024-06-30");
    EXPECT_EQ(Ids(invoice["tasks"]), (std::vector<long>{2}));
    EXPECT_EQ(invoice["recipient"], "Acme Corp\n1 Main St");
    EXPECT_EQ(invoice["terms"], "Net 15");
    EXPECT_EQ(invoice["show_terms"], true);
    EXPECT_EQ(invoice["add_tax"], true);
    EXPECT_DOUBLE_EQ(invoice["tax_rate"].get<double>(), 8.5);
    EXPECT_EQ(invoice["summarize_level"], 2);
    EXPECT_EQ(Ids(invoice["activities"]), (std::vector<long>{1}));
    const Json& todo = dump["reports"][2];
    EXPECT_EQ(todo["include_billable"], false) << "outstanding entries left out";
    EXPECT_EQ(todo["include_non_billable"], true);
    EXPECT_EQ(todo["preset"], 7) << "all dates when none is given";

    const std::string list = Ok({"report", "list", "doc.qvx"});
    EXPECT_THAT(list, HasSubstr("Weekly by activity"));
    EXPECT_THAT(list, HasSubstr("Previous Month"));
    EXPECT_THAT(list, ::testing::AnyOf(HasSubstr("6/1/2024-6/30/2024"),
                                       HasSubstr("06/01/2024-06/30/2024")));

    // Mistakes are refused with what would have been accepted, and nothing is added.
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    const struct
    {
        Strings options;
        const char* expected;
    } bad[] = {
        {{"--kind", "timesheet"}, "time-detail, time-summary"},
        {{"--kind", "time-detail", "--preset", "this-week"}, "current-week"},
        {{"--kind", "time-detail", "--fields", "note,colour"}, "billing-amount"},
        {{"--kind", "expense-summary", "--summarize", "activity"}, "expense-type"},
        {{"--kind", "time-summary", "--time-frame", "fortnight"}, "week"},
        {{"--kind", "time-detail", "--from", "2024-13-01", "--to", "2024-12-31"}, "is not a date"},
        {{"--kind", "time-detail", "--recipient", "Someone"}, "invoice"},
        {{"--kind", "time-detail", "--include", "maybe"}, "non-billable"},
    };
    for (const auto& b : bad)
    {
        Strings args = {"report", "new", "doc.qvx", "--name", "Bad"};
        args.insert(args.end(), b.options.begin(), b.options.end());
        const QvxResult r = Run(args);
        EXPECT_EQ(r.exitCode, 2) << b.expected;
        ASSERT_EQ(r.ErrLines().size(), 1u) << r.err;
        EXPECT_THAT(r.err, HasSubstr(b.expected));
    }
    EXPECT_THAT(Run({"report", "new", "doc.qvx", "--kind", "time-detail", "--name", "Bad", "--from",
                     "2024-06-10", "--to", "2024-06-01"})
                    .err,
                HasSubstr("Start date must be on or before end date."));
    EXPECT_THAT(Run({"report", "new", "doc.qvx", "--kind", "time-detail"}).err,
                HasSubstr("Enter a name for this report."));
    EXPECT_EQ(ReadBytes("doc.qvx"), before);

    Ok({"--yes", "report", "rm", "doc.qvx", "Done"});
    Ok({"report", "set", "doc.qvx", "#1", "--name", "Renamed", "--rollup", "yes"});
    dump = DumpJson("doc.qvx");
    ASSERT_EQ(dump["reports"].size(), 2u);
    EXPECT_EQ(dump["reports"][0]["name"], "Renamed");
    EXPECT_EQ(dump["reports"][0]["rollup"], true);
    EXPECT_EQ(dump["last_ids"]["report"], 3);
}

TEST_F(QvxDocTest, ReportExportsAndPages)
{
    Ok({"time", "add", "doc.qvx", "Acme/Website", "--date", "2024-06-10", "--start", "09:00",
        "--end", "10:30", "--note", "Mock-ups"});
    Ok({"time", "add", "doc.qvx", "Internal", "--date", "2024-06-11", "--start", "13:00", "--end",
        "13:45"});
    Ok({"report", "new", "doc.qvx", "--kind", "time-detail", "--name", "June/All work", "--from",
        "2024-06-01", "--to", "2024-06-30", "--fields", "note"});

    // The default file name is the report name up to its first "/".
    EXPECT_THAT(Ok({"report", "export", "doc.qvx", "June/All work", "--format", "csv"}),
                HasSubstr("June.csv"));
    const std::vector<uint8_t> csv = ReadBytes("June.csv");
    const std::string text(csv.begin(), csv.end());
    EXPECT_THAT(text, HasSubstr("Mock-ups"));
    EXPECT_THAT(text, HasSubstr("\r\n")) << "export lines end with CR LF";
    EXPECT_EQ(Run({"report", "export", "doc.qvx", "#1", "--format", "csv"}).exitCode, 1)
        << "kept without --force";
    EXPECT_EQ(ReadBytes("June.csv"), csv);
    Ok({"report", "export", "doc.qvx", "#1", "--format", "csv", "--force"});

    const std::string html =
        Ok({"report", "export", "doc.qvx", "#1", "--format", "html", "--out", "-"});
    EXPECT_THAT(html,
                ::testing::StartsWith("<!DOCTYPE HTML PUBLIC \"-//IETF//DTD HTML 3.2//EN\">"));
    EXPECT_THAT(html, HasSubstr("June/All work"));
    Ok({"report", "export", "doc.qvx", "#1", "--format", "tab", "--out", "work.tab"});
    const std::vector<uint8_t> tab = ReadBytes("work.tab");
    EXPECT_THAT(std::string(tab.begin(), tab.end()), HasSubstr("\tMock-ups"))
        << "cells separated by tabs";

    const std::string out = Ok({"report", "pages", "doc.qvx", "#1"});
    EXPECT_THAT(out, ::testing::StartsWith("1 page\n--- Page 1 ---\n"));
    EXPECT_THAT(out, HasSubstr("June/All work"));
    EXPECT_THAT(out, HasSubstr("Mock-ups"));
    EXPECT_THAT(out, HasSubstr("2:15")) << "the total of both entries";

    const QvxResult badFormat = Run({"report", "export", "doc.qvx", "#1", "--format", "odt"});
    EXPECT_EQ(badFormat.exitCode, 2);
    EXPECT_THAT(badFormat.err, HasSubstr("csv, tab, html, pdf"));
}

TEST_F(QvxDocTest, InvoiceNumbering)
{
    WriteSettings({"InvoiceNumber=41"});
    Ok({"task", "set", "doc.qvx", "Acme", "--rate", "100"});
    Ok({"time", "add", "doc.qvx", "Acme/Website", "--date", "2024-06-10", "--start", "09:00",
        "--end", "10:30"});
    Ok({"report", "new", "doc.qvx", "--kind", "invoice", "--name", "Acme", "--task", "Acme",
        "--preset", "all", "--recipient", "Acme Corp"});
    Ok({"report", "new", "doc.qvx", "--kind", "time-detail", "--name", "Hours"});

    std::string out = Ok({"invoice", "doc.qvx", "Acme"});
    EXPECT_THAT(out, HasSubstr("Invoice number 41"));
    EXPECT_THAT(out, HasSubstr("Acme Corp"));
    EXPECT_THAT(out, HasSubstr("$150.00"));
    EXPECT_EQ(DumpJson("doc.qvx")["reports"][0]["invoice_number"], 41);

    // Numbered already: replacing the number is a question.
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    EXPECT_EQ(Run({"invoice", "doc.qvx", "Acme"}).exitCode, 1);
    EXPECT_EQ(ReadBytes("doc.qvx"), before);
    // The export on standard output stays clean: the message goes to standard error.
    const QvxResult piped =
        Run({"--no", "invoice", "doc.qvx", "Acme", "--format", "csv", "--out", "-"});
    EXPECT_EQ(piped.exitCode, 0) << piped.err;
    EXPECT_THAT(piped.err, HasSubstr("Invoice number 41"));
    EXPECT_THAT(piped.out, ::testing::StartsWith("\"Employee\""));
    EXPECT_THAT(Ok({"--yes", "invoice", "doc.qvx", "Acme", "--format", "csv", "--out", "acme.csv"}),
                HasSubstr("Invoice number 42"));
    EXPECT_EQ(DumpJson("doc.qvx")["reports"][0]["invoice_number"], 42);

    // A number of its own leaves the counter alone.
    Ok({"report", "set", "doc.qvx", "Acme", "--number", "7"});
    EXPECT_THAT(Ok({"invoice", "doc.qvx", "Acme"}), HasSubstr("Invoice number 7"));
    Ok({"report", "new", "doc.qvx", "--kind", "invoice", "--name", "Next", "--task", "Acme"});
    EXPECT_THAT(Ok({"invoice", "doc.qvx", "Next"}), HasSubstr("Invoice number 43"));

    const QvxResult notInvoice = Run({"invoice", "doc.qvx", "Hours"});
    EXPECT_EQ(notInvoice.exitCode, 1);
    EXPECT_THAT(notInvoice.err, HasSubstr("not an invoice"));
}

TEST_F(QvxDocTest, OptionsOfTheDocumentAndTheUser)
{
    Ok({"options", "doc.qvx", "--mileage-rate", "0.655", "--level-name", "2=Engagement"});
    Ok({"options", "--time-interval", "15", "--stop-at-midnight", "no"});
    const Json dump = DumpJson("doc.qvx");
    EXPECT_FLOAT_EQ(dump["mileage_rate"].get<float>(), 0.655f);
    EXPECT_EQ(dump["level_names"]["2"], "Engagement");

    // The mileage type takes the document's rate; the timer rounds to 15 minutes.
    Ok({"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--distance", "42", "--type",
        "Mileage"});
    EXPECT_DOUBLE_EQ(
        (*FindDay(DumpJson("doc.qvx"), "20240611"))["expenses"][0]["amount"].get<double>(), 27.51);
    EXPECT_THAT(Ok({"start", "doc.qvx", "Internal"}, "2024-06-11 09:08"), HasSubstr("at 9:15 AM"));
    const std::string shown = Ok({"options", "doc.qvx"});
    EXPECT_THAT(shown, HasSubstr("Time interval: 15 min"));
    EXPECT_THAT(shown, HasSubstr("Stop at midnight: no"));
    EXPECT_THAT(shown, HasSubstr("Level 2: Engagement"));

    EXPECT_EQ(Run({"options", "--time-interval", "7"}).exitCode, 2);
    EXPECT_EQ(Run({"options", "--mileage-rate", "1"}).exitCode, 2)
        << "a document option needs the document";
}

TEST_F(QvxDocTest, DamagedDocumentOffersTheBackupOfAnInterruptedSave)
{
    const std::vector<uint8_t> good = ReadBytes("doc.qvx");
    WriteBytes("doc.qvx Backup", good);
    WriteBytes("doc.qvx", std::vector<uint8_t>(good.begin(), good.begin() + long(good.size() / 2)));

    const QvxResult check = Run({"check", "doc.qvx"});
    EXPECT_EQ(check.exitCode, 1);
    ASSERT_EQ(check.ErrLines().size(), 1u) << check.err;
    EXPECT_THAT(check.err, HasSubstr("doc.qvx Backup"));
    // Declined (no answer), nothing is touched.
    EXPECT_EQ(Run({"task", "add", "doc.qvx", "#1", "Globex"}).exitCode, 1);
    EXPECT_EQ(ReadBytes("doc.qvx Backup"), good);

    Ok({"--yes", "task", "add", "doc.qvx", "#1", "Globex"});
    EXPECT_EQ(DumpJson("doc.qvx")["tasks"][5]["name"], "Globex");
    EXPECT_TRUE(ReadBytes("doc.qvx Backup").empty()) << "the backup is gone once restored";
}

TEST_F(QvxDocTest, StopWithinOneRoundingIntervalAsksFirst)
{
    WriteSettings({"TimeInterval=4"});
    Ok({"start", "doc.qvx", "Internal"}, "2024-06-11 09:02");
    // Start and end round to the same minute: the question 40002, which nobody answers here.
    const std::vector<uint8_t> running = ReadBytes("doc.qvx");
    const QvxResult unanswered = Run({"stop", "doc.qvx"}, "2024-06-11 09:06");
    EXPECT_EQ(unanswered.exitCode, 1);
    EXPECT_THAT(unanswered.err, HasSubstr("Due to rounding of the active time entry"));
    EXPECT_EQ(ReadBytes("doc.qvx"), running);
    // No: the end is rounded to the minute instead.
    Ok({"--no", "stop", "doc.qvx"}, "2024-06-11 09:06");
    EXPECT_EQ(Spans(DumpJson("doc.qvx"), "20240611"), Strings{"5 09:00-09:06"});
    // Not even a minute after rounding: deleted without a question.
    Ok({"start", "doc.qvx", "Acme"}, "2024-06-11 11:00:10");
    EXPECT_THAT(Ok({"stop", "doc.qvx"}, "2024-06-11 11:00:25"), HasSubstr("deleted"));
}
