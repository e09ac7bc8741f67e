// End-to-end tests: the built qvx run as a separate process on documents in a scratch folder.

#include "qvxrunner.h"

#include "model/oldlayouts.h"
#include "model/timekeeperdoc.h"
#include "platform/sharedfile.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using qvtest::Json;
using qvtest::QvxResult;
using qvtest::QvxTest;

namespace
{
// (task id, start, end) of one time entry as the JSON dump shows it; "" for a null end.
struct Span
{
    long task;
    std::string start;
    std::string end;
    bool operator==(const Span&) const = default;
};

std::ostream& operator<<(std::ostream& os, const Span& s)
{
    return os << "#" << s.task << " " << s.start << "-" << s.end;
}

const Json* FindDay(const Json& dump, const std::string& key)
{
    for (const Json& day : dump["days"].Items())
        if (day["key"].Str() == key)
            return &day;
    return nullptr;
}

std::vector<Span> TimeOf(const Json& dump, const std::string& key)
{
    std::vector<Span> spans;
    if (const Json* day = FindDay(dump, key))
        for (const Json& e : (*day)["time"].Items())
            spans.push_back(
                {e["task"].Int(), e["start"].Str(), e["end"].IsNull() ? "" : e["end"].Str()});
    return spans;
}

std::vector<long> Ids(const Json& array)
{
    std::vector<long> ids;
    for (const Json& v : array.Items())
        ids.push_back(v.Int());
    return ids;
}

bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
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
    const std::string out = Ok({"new", "doc.qvx", "--employee", "Pat Doe"});
    EXPECT_TRUE(Contains(out, "doc.qvx")) << out;
    const Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(dump["version"].Int(), 11);
    EXPECT_EQ(dump["header"].Int(), 0);

    const char* const types[] = {"Airfare", "Breakfast", "Car Rental", "Dinner",  "Entertainment",
                                 "Gas",     "Lodging",   "Lunch",      "Mileage", "Parking",
                                 "Postage", "Telephone", "Taxi",       "Tips"};
    ASSERT_EQ(dump["expense_types"].Size(), 14u);
    for (size_t i = 0; i < 14; ++i)
    {
        EXPECT_EQ(dump["expense_types"][i]["id"].Int(), long(i + 1));
        EXPECT_EQ(dump["expense_types"][i]["name"].Str(), types[i]);
    }
    EXPECT_EQ(dump["last_ids"]["expense_type"].Int(), 14);
    EXPECT_EQ(dump["last_ids"]["task"].Int(), 1);

    const Json& levels = dump["level_names"];
    EXPECT_EQ(levels.Size(), 5u);
    EXPECT_EQ(levels["0"].Str(), "Employee");
    EXPECT_EQ(levels["1"].Str(), "Client");
    EXPECT_EQ(levels["2"].Str(), "Project");
    EXPECT_EQ(levels["3"].Str(), "Sub Project");
    EXPECT_EQ(levels["4"].Str(), "Task");

    ASSERT_EQ(dump["tasks"].Size(), 1u);
    const Json& root = dump["tasks"][0];
    EXPECT_EQ(root["id"].Int(), 1);
    EXPECT_EQ(root["parent"].Int(), 0);
    EXPECT_EQ(root["name"].Str(), "Pat Doe");
    EXPECT_EQ(root["level"].Int(), 0);
    EXPECT_TRUE(root["expanded"].Bool());
    EXPECT_EQ(dump["days"].Size(), 0u);
    EXPECT_EQ(dump["activities"].Size(), 0u);

    // An existing file is not replaced without --force.
    const QvxResult again = Run({"new", "doc.qvx", "--employee", "Someone Else"});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_EQ(DumpJson("doc.qvx")["tasks"][0]["name"].Str(), "Pat Doe");
}

TEST_F(QvxDocTest, DayOfWork)
{
    WriteSettings({"TimeInterval=4"}); // 15 minutes

    std::string out = Ok({"start", "doc.qvx", "Acme/Website"}, "2024-06-11 09:07:29");
    EXPECT_TRUE(Contains(out, "Started Acme/Website at 9:00 AM")) << out;
    out = Ok({"status", "doc.qvx"}, "2024-06-11 10:00");
    EXPECT_TRUE(Contains(out, "Running: Acme/Website")) << out;
    EXPECT_TRUE(Contains(out, "Elapsed: 1:00")) << out;

    // Switching tasks: the second entry starts where the first one ends.
    out = Ok({"start", "doc.qvx", "acme/support"}, "2024-06-11 10:20");
    EXPECT_TRUE(Contains(out, "Stopped Acme/Website, 9:00 AM-10:15 AM (1:15)")) << out;
    EXPECT_TRUE(Contains(out, "Started Acme/Support at 10:15 AM")) << out;

    // Pause and resume in separate runs round to the minute.
    Ok({"pause", "doc.qvx"}, "2024-06-11 11:00:20");
    out = Ok({"status", "doc.qvx"}, "2024-06-11 11:10");
    EXPECT_TRUE(Contains(out, "Paused: Acme/Support")) << out;
    out = Ok({"resume", "doc.qvx"}, "2024-06-11 11:30");
    EXPECT_TRUE(Contains(out, "Resumed Acme/Support at 11:30 AM")) << out;
    EXPECT_EQ(Run({"resume", "doc.qvx"}, "2024-06-11 11:31").exitCode, 1)
        << "nothing is paused any more";
    Ok({"stop", "doc.qvx"}, "2024-06-11 12:05");
    EXPECT_TRUE(Contains(Ok({"status", "doc.qvx"}, "2024-06-11 12:06"), "Timer Inactive"));

    Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(
        TimeOf(dump, "20240611"),
        (std::vector<Span>{{3, "09:00", "10:15"}, {4, "10:15", "11:00"}, {4, "11:30", "12:00"}}));

    // An overlapping entry: refused when told to fail, and when nobody can be asked.
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    const std::vector<std::string> overlap = {"time",   "add",        "doc.qvx", "Acme/Website",
                                              "--date", "2024-06-11", "--start", "11:45",
                                              "--end",  "12:30"};
    auto withOption = [&](const std::string& choice)
    {
        std::vector<std::string> args = overlap;
        args.push_back("--on-conflict");
        args.push_back(choice);
        return args;
    };
    QvxResult refused = Run(withOption("fail"));
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(Contains(refused.err, "The Time Entry conflicts with another Time Entry"))
        << refused.err;
    EXPECT_EQ(ReadBytes("doc.qvx"), before);
    refused = Run(overlap);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(ReadBytes("doc.qvx"), before);

    // Adjust the others: Support 11:30-12:00 gives way to Website 11:45-12:30.
    Ok(withOption("adjust-others"));
    // Adjust this one: Support 12:15-13:00 starts after Website instead.
    Ok({"time", "add", "doc.qvx", "Acme/Support", "--date", "2024-06-11", "--start", "12:15",
        "--end", "13:00", "--on-conflict", "adjust-this"});
    // An entry inside another one splits it when the others give way...
    Ok({"time", "add", "doc.qvx", "Internal", "--date", "2024-06-11", "--start", "09:30", "--end",
        "09:45", "--on-conflict", "adjust-others"});
    // ... and disappears when it is the one to give way.
    out = Ok({"time", "add", "doc.qvx", "Internal", "--date", "2024-06-11", "--start", "12:40",
              "--end", "12:50", "--on-conflict", "adjust-this"});
    EXPECT_TRUE(Contains(out, "not added")) << out;

    dump = DumpJson("doc.qvx");
    EXPECT_EQ(TimeOf(dump, "20240611"), (std::vector<Span>{{3, "09:00", "09:30"},
                                                           {5, "09:30", "09:45"},
                                                           {3, "09:45", "10:15"},
                                                           {4, "10:15", "11:00"},
                                                           {4, "11:30", "11:45"},
                                                           {3, "11:45", "12:30"},
                                                           {4, "12:30", "13:00"}}));
    EXPECT_EQ(Ids(dump["recent_tasks"]), (std::vector<long>{5, 4, 3}));

    // The Time page of the day, with the elapsed text of each row.
    out = Ok({"entries", "doc.qvx", "--date", "2024-06-11", "--kind", "time"});
    EXPECT_TRUE(Contains(out, "#  Task          Start     End       Elapsed")) << out;
    EXPECT_TRUE(Contains(out, "1  Acme/Website  9:00 AM   9:30 AM   0:30")) << out;
    EXPECT_TRUE(Contains(out, "7  Acme/Support  12:30 PM  1:00 PM   0:30")) << out;
    // Without a date or a task: today's list, as the window opens on it.
    EXPECT_EQ(Ok({"entries", "doc.qvx", "--kind", "time"}, "2024-06-11 18:00"), out);
    out = Ok({"entries", "doc.qvx", "--task", "Acme/Website", "--kind", "time"});
    EXPECT_TRUE(Contains(out, "Date")) << out;
    EXPECT_TRUE(Contains(out, "0:45")) << out;
}

TEST_F(QvxDocTest, TimerLeftRunningOverMidnightStops)
{
    Ok({"start", "doc.qvx", "Acme/Website"}, "2024-06-11 23:10");
    // Opening the file the next morning stops the entry at midnight, and says so once.
    const QvxResult stop = Run({"stop", "doc.qvx"}, "2024-06-12 08:00");
    EXPECT_TRUE(Contains(stop.out, "No timer is running")) << stop.out;
    EXPECT_TRUE(Contains(stop.err, "The timer of Acme/Website was stopped at midnight: its entry "
                                   "of 2024-06-11 from 11:10 PM now ends at 24:00"))
        << stop.err;
    EXPECT_TRUE(Run({"status", "doc.qvx"}, "2024-06-12 08:01").err.empty());
    const Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(TimeOf(dump, "20240611"), (std::vector<Span>{{3, "23:10", "24:00"}}));
    EXPECT_EQ(FindDay(dump, "20240612"), nullptr);
}

TEST_F(QvxDocTest, TimerLeftRunningOverMidnightIsSplit)
{
    WriteSettings({"StopAtMidnight=0"});
    Ok({"start", "doc.qvx", "Acme/Website"}, "2024-06-11 22:30");
    const QvxResult status = Run({"status", "doc.qvx"}, "2024-06-13 07:00");
    EXPECT_TRUE(Contains(status.out, "Running: Acme/Website")) << status.out;
    EXPECT_TRUE(Contains(status.out, "12:00 AM")) << status.out;
    EXPECT_TRUE(Contains(status.out, "Elapsed: 7:00")) << status.out;
    // The first command after midnight says what happened, and writes it, even a reading one.
    EXPECT_TRUE(Contains(status.err,
                         "The timer of Acme/Website ran past midnight and was split by "
                         "day: its entry of 2024-06-11 from 10:30 PM now ends at 24:00; "
                         "it runs on from 12:00 AM on 2024-06-13"))
        << status.err;
    EXPECT_EQ(TimeOf(DumpJson("doc.qvx"), "20240611"), (std::vector<Span>{{3, "22:30", "24:00"}}));
    const QvxResult again = Run({"status", "doc.qvx"}, "2024-06-13 07:05");
    EXPECT_TRUE(again.err.empty()) << "said once only: " << again.err;

    Ok({"stop", "doc.qvx"}, "2024-06-13 07:00");
    const Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(TimeOf(dump, "20240611"), (std::vector<Span>{{3, "22:30", "24:00"}}));
    EXPECT_EQ(TimeOf(dump, "20240612"), (std::vector<Span>{{3, "00:00", "24:00"}}));
    EXPECT_EQ(TimeOf(dump, "20240613"), (std::vector<Span>{{3, "00:00", "07:00"}}));
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
    QvxResult blank = Run({"todo", "add", "doc.qvx", "Internal", "   "});
    EXPECT_EQ(blank.exitCode, 1);
    EXPECT_TRUE(Contains(blank.err, "Enter a To Do Description.")) << blank.err;

    Json dump = DumpJson("doc.qvx");
    const Json* day = FindDay(dump, "20240611");
    ASSERT_NE(day, nullptr);
    const Json& expenses = (*day)["expenses"];
    ASSERT_EQ(expenses.Size(), 3u);
    EXPECT_DOUBLE_EQ(expenses[0]["amount"].Number(), 12.5);
    EXPECT_EQ(expenses[0]["payment_method"].Int(), 1);
    EXPECT_EQ(expenses[0]["note"].Str(), "with the client");
    EXPECT_DOUBLE_EQ(expenses[1]["amount"].Number(), 0.13);
    EXPECT_DOUBLE_EQ(expenses[1]["distance"].Number(), 1.0);
    EXPECT_EQ(expenses[1]["payment_method"].Int(), -1);
    EXPECT_DOUBLE_EQ(expenses[2]["amount"].Number(), 3.75);
    EXPECT_FALSE(expenses[2]["billable"].Bool());
    ASSERT_EQ(dump["todos"].Size(), 2u);
    EXPECT_EQ(dump["todos"][0]["priority"].Str(), "B");
    EXPECT_EQ(dump["todos"][0]["due"].Str(), "2024-06-10");
    EXPECT_EQ(dump["todos"][1]["description"].Str(), "Renew the domain");
    EXPECT_EQ(dump["todos"][1]["priority"].Str(), "1");

    // Rows as the day's pages list them; the outstanding to-dos show on every day.
    std::string out = Ok({"entries", "doc.qvx", "--date", "2024-06-12", "--kind", "todo"});
    EXPECT_TRUE(Contains(out, "Send the mock-ups")) << out;
    // Sorted by task ("ToDoSortOrder" 0): Acme/Website before Internal.
    Ok({"todo", "complete", "doc.qvx", "2", "--date", "2024-06-12"});
    dump = DumpJson("doc.qvx");
    ASSERT_EQ(dump["todos"].Size(), 1u);
    day = FindDay(dump, "20240612");
    ASSERT_NE(day, nullptr);
    ASSERT_EQ((*day)["todos"].Size(), 1u);
    EXPECT_EQ((*day)["todos"][0]["description"].Str(), "Renew the domain");
    EXPECT_EQ((*day)["todos"][0]["completed"].Str(), "2024-06-12");

    // Moving and deleting rows; deleting asks, and without an answer nothing happens.
    Ok({"expense", "move", "doc.qvx", "--date", "2024-06-11", "1", "--to", "2024-06-14"});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    QvxResult unanswered = Run({"expense", "rm", "doc.qvx", "--date", "2024-06-11", "1", "2"});
    EXPECT_EQ(unanswered.exitCode, 1);
    EXPECT_TRUE(
        Contains(unanswered.err, "Are you sure you want to delete the selected Expense Entries?"))
        << unanswered.err;
    EXPECT_EQ(ReadBytes("doc.qvx"), before);
    Ok({"--yes", "expense", "rm", "doc.qvx", "--date", "2024-06-11", "1", "2"});
    dump = DumpJson("doc.qvx");
    EXPECT_EQ(FindDay(dump, "20240611"), nullptr) << "the emptied day is gone";
    day = FindDay(dump, "20240614");
    ASSERT_NE(day, nullptr);
    ASSERT_EQ((*day)["expenses"].Size(), 1u);
    EXPECT_EQ((*day)["expenses"][0]["date"].Str(), "2024-06-14");
    out = Ok({"entries", "doc.qvx", "--task", "Acme", "--kind", "expense"});
    EXPECT_TRUE(Contains(out, "with the client")) << out;
    EXPECT_TRUE(Contains(out, "$12.50")) << out;
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

    QvxResult backwards = Run({"archive", "doc.qvx", "--task", "Acme", "--from", "2024-06-12",
                               "--to", "2024-06-10", "--out", "old.qvx"});
    EXPECT_EQ(backwards.exitCode, 1);
    EXPECT_TRUE(Contains(backwards.err, "Start date must be on or before end date."))
        << backwards.err;

    // Acme up to the 11th: one time entry; with a "to" date the open to-do stays.
    Ok({"archive", "doc.qvx", "--task", "Acme", "--to", "2024-06-11", "--delete", "--out",
        "old.qvx"});
    const Json archive = DumpJson("old.qvx");
    EXPECT_EQ(TimeOf(archive, "20240610"), (std::vector<Span>{{3, "09:00", "10:00"}}));
    EXPECT_EQ(FindDay(archive, "20240612"), nullptr);
    EXPECT_EQ(archive["todos"].Size(), 0u);
    const Json doc = DumpJson("doc.qvx");
    EXPECT_EQ(TimeOf(doc, "20240610"), (std::vector<Span>{{5, "10:00", "11:00"}}));
    EXPECT_EQ(TimeOf(doc, "20240612"), (std::vector<Span>{{4, "09:00", "10:00"}}));
    EXPECT_EQ(doc["todos"].Size(), 1u);
    EXPECT_EQ(doc["tasks"].Size(), 5u);

    const std::vector<uint8_t> archived = ReadBytes("old.qvx");
    EXPECT_EQ(Run({"archive", "doc.qvx", "--task", "#1", "--out", "old.qvx"}).exitCode, 1);
    EXPECT_EQ(ReadBytes("old.qvx"), archived) << "an existing archive is kept without --force";

    // Everything, with deletion: the document keeps its tasks and catalogs only.
    Ok({"archive", "doc.qvx", "--task", "#1", "--delete", "--out", "all.qvx"});
    const Json all = DumpJson("all.qvx");
    EXPECT_EQ(all["todos"].Size(), 1u);
    EXPECT_EQ(TimeOf(all, "20240612").size(), 1u);
    const Json emptied = DumpJson("doc.qvx");
    EXPECT_EQ(emptied["days"].Size(), 0u);
    EXPECT_EQ(emptied["todos"].Size(), 0u);
    EXPECT_EQ(emptied["tasks"].Size(), 5u);
    EXPECT_EQ(emptied["expense_types"].Size(), 14u);
}

TEST_F(QvxTest, OldLayoutConvertsAndReloads)
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

    std::string out = Ok({"check", "old.qvx"});
    EXPECT_TRUE(Contains(out, "version 8")) << out;
    // Converting asks first; with nobody to answer, nothing is written.
    QvxResult unanswered = Run({"convert", "old.qvx", "new.qvx"});
    EXPECT_NE(unanswered.exitCode, 0);
    EXPECT_EQ(ReadBytes("new.qvx").size(), 0u);

    Ok({"--yes", "convert", "old.qvx", "new.qvx"});
    out = Ok({"check", "new.qvx"});
    EXPECT_TRUE(Contains(out, "version 11")) << out;
    const Json dump = DumpJson("new.qvx");
    EXPECT_EQ(dump["tasks"].Size(), 2u);
    EXPECT_EQ(dump["tasks"][1]["name"].Str(), "Alpha");
    EXPECT_EQ(TimeOf(dump, "20010601"), (std::vector<Span>{{2, "08:00", "09:30"}}));
    EXPECT_EQ(dump["activities"][0]["name"].Str(), "Travel");
    EXPECT_EQ(dump["activities"][0]["flag1"].Int(), 1);
    EXPECT_EQ(Ids(dump["recent_tasks"]), (std::vector<long>{2, 1}));
}

TEST_F(QvxDocTest, HeldDocumentIsReadOnly)
{
    Ok({"time", "add", "doc.qvx", "Acme/Website", "--date", "2024-06-11", "--start", "09:00",
        "--end", "10:00"});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");

    // Another process holds the file for writing, as the desktop program does.
    int ready[2], release[2];
    ASSERT_EQ(::pipe(ready), 0);
    ASSERT_EQ(::pipe(release), 0);
    const pid_t holder = ::fork();
    ASSERT_GE(holder, 0);
    if (holder == 0)
    {
        ::close(ready[0]);
        ::close(release[1]);
        auto file = platform::SharedFile::OpenShared(Path("doc.qvx"), false);
        const char held = file && !file->IsReadOnly() ? '1' : '0';
        (void)!::write(ready[1], &held, 1);
        char c;
        (void)!::read(release[0], &c, 1);
        ::_exit(0);
    }
    ::close(ready[1]);
    ::close(release[0]);
    char held = 0;
    ASSERT_EQ(::read(ready[0], &held, 1), 1);
    ASSERT_EQ(held, '1');

    const std::vector<std::vector<std::string>> changes = {
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
        EXPECT_TRUE(Contains(r.err, "is not available for updating")) << r.err;
        EXPECT_EQ(ReadBytes("doc.qvx"), before) << args[0] << " " << args[1];
    }
    // Reading still works.
    EXPECT_TRUE(Contains(Ok({"entries", "doc.qvx", "--date", "2024-06-11"}), "Acme/Website"));
    EXPECT_TRUE(Contains(Ok({"status", "doc.qvx"}), "Timer Inactive"));
    Ok({"archive", "doc.qvx", "--task", "#1", "--out", "copy.qvx"});
    EXPECT_EQ(TimeOf(DumpJson("copy.qvx"), "20240611").size(), 1u);

    ::close(release[1]);
    int status = 0;
    ::waitpid(holder, &status, 0);
    ::close(ready[0]);

    // Released, the file takes changes again.
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
        CTask* leaf = doc->AddTask(summary, 3);
        doc->RenameTask(leaf, "Leaf");
        leaf->m_projectId = projectId;
        leaf->m_projectTaskNumber = 8;
        qvtest::AddTime(*doc, client, qvtest::Day(2024, 6, 11), 9, 0, 10, 0);
        WriteBytes("plan.qvx", doc->SaveToBytes());
    }
    const std::vector<uint8_t> before = ReadBytes("plan.qvx");
    const struct
    {
        std::vector<std::string> args;
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
    };
    for (const auto& c : cases)
    {
        const QvxResult r = Run(c.args);
        EXPECT_EQ(r.exitCode, 1) << c.message;
        ASSERT_EQ(r.ErrLines().size(), 1u) << r.err;
        EXPECT_TRUE(Contains(r.err, c.message)) << r.err;
        EXPECT_EQ(ReadBytes("plan.qvx"), before) << c.message;
    }

    const QvxResult level = Run({"task", "move", "doc.qvx", "Acme", "Internal"});
    EXPECT_EQ(level.exitCode, 1);
    EXPECT_TRUE(Contains(
        level.err,
        "Cannot move Task: The destination task level is not above the source task level."))
        << level.err;
}

TEST_F(QvxDocTest, BadArgumentsGiveOneLineAndChangeNothing)
{
    WriteBytes("garbage.qvx", {'n', 'o', 't', ' ', 'a', ' ', 'd', 'o', 'c'});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    const std::vector<std::string> day = {"--date", "2024-06-11"};
    const std::vector<std::vector<std::string>> cases = {
        {"frobnicate"},
        {"task"},
        {"check"},
        {"check", "missing.qvx"},
        {"check", "garbage.qvx"},
        {"time", "add", "doc.qvx", "Acme", "--date", "2024-02-30", "--start", "09:00", "--end",
         "10:00"},
        {"time", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--start", "9", "--end",
         "10:00"},
        {"time", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--start", "09:00", "--end",
         "10:00", "--on-conflict", "sometimes"},
        {"time", "add", "doc.qvx", "Nowhere/Else", "--date", "2024-06-11", "--start", "09:00",
         "--end", "10:00"},
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

TEST_F(QvxTest, DemoDocumentIsRealisticAndRepeatable)
{
    const std::string out = Ok({"demo", "demo.qvx"}, "2024-06-12 10:00");
    EXPECT_TRUE(Contains(out, "demo.qvx")) << out;
    Ok({"demo", "again.qvx"}, "2024-06-12 10:00");
    EXPECT_EQ(ReadBytes("demo.qvx"), ReadBytes("again.qvx"));

    const Json dump = DumpJson("demo.qvx");
    EXPECT_GE(dump["tasks"].Size(), 15u);
    EXPECT_GE(dump["activities"].Size(), 3u);
    EXPECT_GE(dump["reports"].Size(), 2u);
    EXPECT_GE(dump["todos"].Size(), 3u);
    // A few weeks of working days up to yesterday, none in the future.
    size_t days = 0, timeEntries = 0, expenses = 0;
    for (const Json& day : dump["days"].Items())
    {
        ++days;
        timeEntries += day["time"].Size();
        expenses += day["expenses"].Size();
        EXPECT_LT(day["key"].Str(), "20240612");
        EXPECT_GE(day["key"].Str(), "20240515");
    }
    EXPECT_GE(days, 15u);
    EXPECT_GE(timeEntries, 60u);
    EXPECT_GE(expenses, 5u);
    // The demo's entries fit together without overlaps, and a working day is full: an
    // entry in the middle of the morning overlaps one of them.
    const std::string list =
        Ok({"entries", "demo.qvx", "--date", "2024-06-11", "--kind", "time"}, "2024-06-12 10:00");
    EXPECT_TRUE(Contains(list, "Elapsed")) << list;
    const QvxResult overlap =
        Run({"time", "add", "demo.qvx", "Internal/Administration", "--date", "2024-06-11",
             "--start", "10:00", "--end", "10:30", "--on-conflict", "fail"},
            "2024-06-12 10:00");
    EXPECT_EQ(overlap.exitCode, 1) << overlap.out;
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

    const Json dump = DumpJson("doc.qvx");
    ASSERT_EQ(dump["reports"].Size(), 3u);
    const Json& summary = dump["reports"][0];
    EXPECT_EQ(summary["id"].Int(), 1);
    EXPECT_EQ(summary["kind"].Int(), 1);
    EXPECT_EQ(summary["preset"].Int(), 4);
    EXPECT_EQ(summary["summarize_level"].Int(), -1);
    EXPECT_EQ(summary["time_frame"].Int(), 3);
    EXPECT_TRUE(summary["show_totals"].Bool());
    EXPECT_EQ(summary["fields"].Int(), 0x11);
    EXPECT_EQ(Ids(summary["tasks"]), (std::vector<long>{1}));
    EXPECT_EQ(Ids(summary["activities"]), (std::vector<long>{0}));
    const Json& invoice = dump["reports"][1];
    EXPECT_EQ(invoice["kind"].Int(), 5);
    EXPECT_EQ(invoice["preset"].Int(), 0);
    EXPECT_EQ(invoice["start"].Str(), "2024-06-01");
    EXPECT_EQ(invoice["end"].Str(), "2024-06-30");
    EXPECT_EQ(Ids(invoice["tasks"]), (std::vector<long>{2}));
    EXPECT_EQ(invoice["recipient"].Str(), "Acme Corp\n1 Main St");
    EXPECT_EQ(invoice["terms"].Str(), "Net 15");
    EXPECT_TRUE(invoice["show_terms"].Bool());
    EXPECT_TRUE(invoice["add_tax"].Bool());
    EXPECT_DOUBLE_EQ(invoice["tax_rate"].Number(), 8.5);
    EXPECT_EQ(invoice["summarize_level"].Int(), 2);
    EXPECT_EQ(Ids(invoice["activities"]), (std::vector<long>{1}));
    const Json& todo = dump["reports"][2];
    EXPECT_FALSE(todo["include_billable"].Bool()) << "outstanding entries left out";
    EXPECT_TRUE(todo["include_non_billable"].Bool());
    EXPECT_EQ(todo["preset"].Int(), 7) << "all dates when none is given";

    const std::string list = Ok({"report", "list", "doc.qvx"});
    EXPECT_TRUE(Contains(list, "Weekly by activity")) << list;
    EXPECT_TRUE(Contains(list, "Previous Month")) << list;
    EXPECT_TRUE(Contains(list, "6/1/2024-6/30/2024") || Contains(list, "06/01/2024-06/30/2024"))
        << list;

    // Mistakes are refused with what would have been accepted, and nothing is added.
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    const struct
    {
        std::vector<std::string> options;
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
        std::vector<std::string> args = {"report", "new", "doc.qvx", "--name", "Bad"};
        args.insert(args.end(), b.options.begin(), b.options.end());
        const QvxResult r = Run(args);
        EXPECT_EQ(r.exitCode, 2) << b.expected;
        ASSERT_EQ(r.ErrLines().size(), 1u) << r.err;
        EXPECT_TRUE(Contains(r.err, b.expected)) << r.err;
    }
    const QvxResult backwards = Run({"report", "new", "doc.qvx", "--kind", "time-detail", "--name",
                                     "Bad", "--from", "2024-06-10", "--to", "2024-06-01"});
    EXPECT_TRUE(Contains(backwards.err, "Start date must be on or before end date."))
        << backwards.err;
    const QvxResult unnamed = Run({"report", "new", "doc.qvx", "--kind", "time-detail"});
    EXPECT_TRUE(Contains(unnamed.err, "Enter a name for this report.")) << unnamed.err;
    EXPECT_EQ(ReadBytes("doc.qvx"), before);

    Ok({"--yes", "report", "rm", "doc.qvx", "Done"});
    Ok({"report", "set", "doc.qvx", "#1", "--name", "Renamed", "--rollup", "yes"});
    const Json after = DumpJson("doc.qvx");
    ASSERT_EQ(after["reports"].Size(), 2u);
    EXPECT_EQ(after["reports"][0]["name"].Str(), "Renamed");
    EXPECT_TRUE(after["reports"][0]["rollup"].Bool());
    EXPECT_EQ(after["last_ids"]["report"].Int(), 3);
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
    std::string out = Ok({"report", "export", "doc.qvx", "June/All work", "--format", "csv"});
    EXPECT_TRUE(Contains(out, "June.csv")) << out;
    const std::vector<uint8_t> csv = ReadBytes("June.csv");
    const std::string text(csv.begin(), csv.end());
    EXPECT_TRUE(Contains(text, "Mock-ups")) << text;
    EXPECT_TRUE(Contains(text, "\r\n")) << "export lines end with CR LF";
    EXPECT_EQ(Run({"report", "export", "doc.qvx", "#1", "--format", "csv"}).exitCode, 1)
        << "kept without --force";
    EXPECT_EQ(ReadBytes("June.csv"), csv);
    Ok({"report", "export", "doc.qvx", "#1", "--format", "csv", "--force"});

    const std::string html =
        Ok({"report", "export", "doc.qvx", "#1", "--format", "html", "--out", "-"});
    EXPECT_EQ(html.rfind("<!DOCTYPE HTML PUBLIC \"-//IETF//DTD HTML 3.2//EN\">", 0), 0u) << html;
    EXPECT_TRUE(Contains(html, "June/All work")) << html;
    Ok({"report", "export", "doc.qvx", "#1", "--format", "tab", "--out", "work.tab"});
    const std::vector<uint8_t> tab = ReadBytes("work.tab");
    EXPECT_TRUE(Contains(std::string(tab.begin(), tab.end()), "\tMock-ups"))
        << "cells separated by tabs";

    out = Ok({"report", "pages", "doc.qvx", "#1"});
    EXPECT_EQ(out.rfind("1 page\n--- Page 1 ---\n", 0), 0u) << out;
    EXPECT_TRUE(Contains(out, "June/All work")) << out;
    EXPECT_TRUE(Contains(out, "Page 1")) << out;
    EXPECT_TRUE(Contains(out, "Mock-ups")) << out;
    EXPECT_TRUE(Contains(out, "2:15")) << "the total of both entries\n" << out;

    const QvxResult badFormat = Run({"report", "export", "doc.qvx", "#1", "--format", "odt"});
    EXPECT_EQ(badFormat.exitCode, 2);
    EXPECT_TRUE(Contains(badFormat.err, "csv, tab, html, pdf")) << badFormat.err;
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
    EXPECT_TRUE(Contains(out, "Invoice number 41")) << out;
    EXPECT_TRUE(Contains(out, "Acme Corp")) << out;
    EXPECT_TRUE(Contains(out, "$150.00")) << out;
    EXPECT_EQ(DumpJson("doc.qvx")["reports"][0]["invoice_number"].Int(), 41);

    // Numbered already: replacing the number is a question.
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    const QvxResult unanswered = Run({"invoice", "doc.qvx", "Acme"});
    EXPECT_EQ(unanswered.exitCode, 1);
    EXPECT_EQ(ReadBytes("doc.qvx"), before);
    // The export on standard output stays clean: the message goes to standard error.
    const QvxResult piped =
        Run({"--no", "invoice", "doc.qvx", "Acme", "--format", "csv", "--out", "-"});
    EXPECT_EQ(piped.exitCode, 0) << piped.err;
    EXPECT_TRUE(Contains(piped.err, "Invoice number 41")) << piped.err;
    EXPECT_FALSE(Contains(piped.out, "Invoice number")) << piped.out;
    EXPECT_EQ(piped.out.rfind("\"Employee\"", 0), 0u) << piped.out;
    out = Ok({"--yes", "invoice", "doc.qvx", "Acme", "--format", "csv", "--out", "acme.csv"});
    EXPECT_TRUE(Contains(out, "Invoice number 42")) << out;
    EXPECT_EQ(DumpJson("doc.qvx")["reports"][0]["invoice_number"].Int(), 42);

    // A number of its own leaves the counter alone.
    Ok({"report", "set", "doc.qvx", "Acme", "--number", "7"});
    out = Ok({"invoice", "doc.qvx", "Acme"});
    EXPECT_TRUE(Contains(out, "Invoice number 7")) << out;
    Ok({"report", "new", "doc.qvx", "--kind", "invoice", "--name", "Next", "--task", "Acme"});
    out = Ok({"invoice", "doc.qvx", "Next"});
    EXPECT_TRUE(Contains(out, "Invoice number 43")) << out;

    const QvxResult notInvoice = Run({"invoice", "doc.qvx", "Hours"});
    EXPECT_EQ(notInvoice.exitCode, 1);
    EXPECT_TRUE(Contains(notInvoice.err, "not an invoice")) << notInvoice.err;
}

TEST_F(QvxDocTest, OptionsOfTheDocumentAndTheUser)
{
    Ok({"options", "doc.qvx", "--mileage-rate", "0.655", "--level-name", "2=Engagement"});
    Ok({"options", "--time-interval", "15", "--stop-at-midnight", "no"});
    const Json dump = DumpJson("doc.qvx");
    EXPECT_FLOAT_EQ(float(dump["mileage_rate"].Number()), 0.655f);
    EXPECT_EQ(dump["level_names"]["2"].Str(), "Engagement");

    // The mileage type takes the document's rate; the timer rounds to 15 minutes.
    Ok({"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-11", "--distance", "42", "--type",
        "Mileage"});
    EXPECT_DOUBLE_EQ((*FindDay(DumpJson("doc.qvx"), "20240611"))["expenses"][0]["amount"].Number(),
                     27.51);
    const std::string out = Ok({"start", "doc.qvx", "Internal"}, "2024-06-11 09:08");
    EXPECT_TRUE(Contains(out, "at 9:15 AM")) << out;
    const std::string shown = Ok({"options", "doc.qvx"});
    EXPECT_TRUE(Contains(shown, "Time interval: 15 min")) << shown;
    EXPECT_TRUE(Contains(shown, "Stop at midnight: no")) << shown;
    EXPECT_TRUE(Contains(shown, "Level 2: Engagement")) << shown;

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
    EXPECT_TRUE(Contains(check.err, "doc.qvx Backup")) << check.err;
    // Declined (no answer), nothing is touched.
    EXPECT_EQ(Run({"task", "add", "doc.qvx", "#1", "Globex"}).exitCode, 1);
    EXPECT_EQ(ReadBytes("doc.qvx Backup"), good);

    Ok({"--yes", "task", "add", "doc.qvx", "#1", "Globex"});
    const Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(dump["tasks"].Size(), 6u);
    EXPECT_EQ(dump["tasks"][5]["name"].Str(), "Globex");
    EXPECT_TRUE(ReadBytes("doc.qvx Backup").empty()) << "the backup is gone once restored";
}

TEST_F(QvxDocTest, StopWithinOneRoundingInterval)
{
    WriteSettings({"TimeInterval=4"});
    Ok({"start", "doc.qvx", "Internal"}, "2024-06-11 09:02");
    // Start and end round to the same minute: the question 40002, which nobody answers here.
    const std::vector<uint8_t> running = ReadBytes("doc.qvx");
    const QvxResult unanswered = Run({"stop", "doc.qvx"}, "2024-06-11 09:06");
    EXPECT_EQ(unanswered.exitCode, 1);
    EXPECT_TRUE(Contains(unanswered.err, "Due to rounding of the active time entry"))
        << unanswered.err;
    EXPECT_EQ(ReadBytes("doc.qvx"), running);
    // No: the end is rounded to the minute instead.
    Ok({"--no", "stop", "doc.qvx"}, "2024-06-11 09:06");
    EXPECT_EQ(TimeOf(DumpJson("doc.qvx"), "20240611"), (std::vector<Span>{{5, "09:00", "09:06"}}));

    // Yes deletes the entry.
    Ok({"start", "doc.qvx", "Acme"}, "2024-06-11 10:02");
    Ok({"--yes", "stop", "doc.qvx"}, "2024-06-11 10:06");
    // Not even a minute after rounding: deleted without a question.
    Ok({"start", "doc.qvx", "Acme"}, "2024-06-11 11:00:10");
    const std::string out = Ok({"stop", "doc.qvx"}, "2024-06-11 11:00:25");
    EXPECT_TRUE(Contains(out, "deleted")) << out;
    EXPECT_EQ(TimeOf(DumpJson("doc.qvx"), "20240611"), (std::vector<Span>{{5, "09:00", "09:06"}}));
}
