// End-to-end tests of qvx for everyday use: editing what was recorded, seeing what will
// be billed, and messages that say what was stored.

#include "qvxrunner.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>

using qvtest::Json;
using qvtest::QvxResult;
using qvtest::QvxTest;

namespace
{
bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

const Json* FindDay(const Json& dump, const std::string& key)
{
    for (const Json& day : dump["days"].Items())
        if (day["key"].Str() == key)
            return &day;
    return nullptr;
}

const Json& TaskOf(const Json& dump, long id)
{
    for (const Json& t : dump["tasks"].Items())
        if (t["id"].Int() == id)
            return t;
    ADD_FAILURE() << "no task #" << id;
    return dump["tasks"][0];
}

std::vector<std::string> SpansOf(const Json& dump, const std::string& key)
{
    std::vector<std::string> spans;
    if (const Json* day = FindDay(dump, key))
        for (const Json& e : (*day)["time"].Items())
            spans.push_back(std::to_string(e["task"].Int()) + " " + e["start"].Str() + "-" +
                            (e["end"].IsNull() ? std::string() : e["end"].Str()));
    return spans;
}

// The quoted cells of one line of a comma-delimited export.
std::vector<std::string> CsvCells(const std::string& line)
{
    std::vector<std::string> cells;
    std::string cell;
    bool quoted = false;
    for (char c : line)
    {
        if (c == '"')
            quoted = !quoted;
        else if (c == ',' && !quoted)
        {
            cells.push_back(cell);
            cell.clear();
        }
        else if (c != '\r')
            cell += c;
    }
    cells.push_back(cell);
    return cells;
}

// Acme (#2) with Website (#3) and Support (#4), Globex (#5); activities Design (#1),
// Meetings (#2) and Travel (#3).
class QvxDailyTest : public QvxTest
{
protected:
    void SetUp() override
    {
        QvxTest::SetUp();
        Ok({"new", "doc.qvx", "--employee", "Pat Doe"});
        Ok({"task", "add", "doc.qvx", "#1", "Acme"});
        Ok({"task", "add", "doc.qvx", "Acme", "Website"});
        Ok({"task", "add", "doc.qvx", "Acme", "Support"});
        Ok({"task", "add", "doc.qvx", "#1", "Globex"});
        Ok({"activity", "add", "doc.qvx", "Design"});
        Ok({"activity", "add", "doc.qvx", "Meetings"});
        Ok({"activity", "add", "doc.qvx", "Travel"});
    }
};
} // namespace

// A consultant's week, recorded with qvx alone, billed by an invoice whose figures must
// match the billing rule worked out here by hand.
TEST_F(QvxDailyTest, WeekWithActivityRatesIsInvoicedAsTheEntriesBill)
{
    Ok({"task", "set", "doc.qvx", "Acme", "--rate", "100", "--overtime-multiplier", "1.5",
        "--activity-rate", "Design=120", "--activity-rate", "Travel=not-billable"});
    // Support gets billing of its own, starting from what it inherited from Acme.
    Ok({"task", "set", "doc.qvx", "Acme/Support", "--rate", "80"});
    Ok({"task", "set", "doc.qvx", "Globex", "--rate", "200"});

    const std::string billing = Ok({"tasks", "doc.qvx", "--billing"});
    EXPECT_TRUE(Contains(billing, "billable, rate $100.00, overtime multiplier 1.50 (own)"))
        << billing;
    EXPECT_TRUE(Contains(billing, "billable, rate $100.00, overtime multiplier 1.50 (inherited "
                                  "from Acme)"))
        << billing;
    EXPECT_TRUE(Contains(billing, "billable, rate $80.00, overtime multiplier 1.50 (own)"))
        << billing;
    EXPECT_TRUE(Contains(billing, "activity rates: Design $120.00, Travel not billable; other "
                                  "activities: the regular rate (inherited from Acme)"))
        << billing;

    // Monday.
    Ok({"time", "add", "doc.qvx", "Acme/Website", "--date", "2024-06-10", "--start", "09:00",
        "--end", "11:00", "--activity", "Design"});
    Ok({"time", "add", "doc.qvx", "Acme/Support", "--date", "2024-06-10", "--start", "11:00",
        "--end", "12:30"});
    // Tuesday: timed, with the activity given to start.
    Ok({"start", "doc.qvx", "Acme/Website", "--activity", "Meetings", "--note", "Kick-off"},
       "2024-06-11 09:00");
    Ok({"stop", "doc.qvx"}, "2024-06-11 10:15");
    Ok({"time", "add", "doc.qvx", "Acme/Website", "--date", "2024-06-11", "--start", "13:00",
        "--end", "14:00", "--activity", "Travel"});
    // Wednesday.
    Ok({"time", "add", "doc.qvx", "Acme/Support", "--date", "2024-06-12", "--start", "09:00",
        "--end", "10:00", "--activity", "Design"});
    Ok({"time", "add", "doc.qvx", "Globex", "--date", "2024-06-12", "--start", "10:00", "--end",
        "12:00"});
    // Thursday and Friday.
    Ok({"time", "add", "doc.qvx", "Acme/Website", "--date", "2024-06-13", "--start", "14:00",
        "--end", "16:30"});
    Ok({"time", "add", "doc.qvx", "Acme/Support", "--date", "2024-06-14", "--start", "08:00",
        "--end", "09:00"});

    // Two corrections: Monday's design ran to 11:30 (Support gives way), and Thursday was
    // overtime.
    std::string out = Ok({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--end", "11:30",
                          "--on-conflict", "adjust-others"});
    EXPECT_TRUE(Contains(out, "Updated 09:00-11:30 of 2024-06-10, Acme/Website")) << out;
    out = Ok({"time", "set", "doc.qvx", "--date", "2024-06-13", "1", "--overtime", "yes"});
    EXPECT_TRUE(Contains(out, "Updated 14:00-16:30 of 2024-06-13")) << out;
    // ... and Friday's support was agreed at a rate of its own.
    Ok({"time", "set", "doc.qvx", "--date", "2024-06-14", "1", "--rate", "60"});
    EXPECT_EQ(SpansOf(DumpJson("doc.qvx"), "20240610"),
              (std::vector<std::string>{"3 09:00-11:30", "4 11:30-12:30"}));

    // The billing rule by hand: (minutes / 60) x rate, per task; Travel is not billable and
    // Globex is another client.
    struct Work
    {
        std::string task;
        int minutes;
        double rate;
    };
    const std::vector<Work> billed = {
        {"Website", 150, 120.0},       // Mon, Design at Acme's activity rate
        {"Website", 75, 100.0},        // Tue, Meetings: no activity rate, the regular rate
        {"Website", 150, 100.0 * 1.5}, // Thu, overtime
        {"Support", 60, 80.0},         // Mon, what is left after the correction
        {"Support", 60, 120.0},        // Wed, Design rate copied when Support took its own billing
        {"Support", 60, 60.0},         // Fri, the entry's own rate
    };
    std::map<std::string, double> expected;
    std::map<std::string, int> expectedMinutes;
    double expectedTotal = 0.0;
    for (const Work& w : billed)
    {
        expected[w.task] += w.minutes / 60.0 * w.rate;
        expectedMinutes[w.task] += w.minutes;
        expectedTotal += w.minutes / 60.0 * w.rate;
    }

    // What the user checks before sending the invoice.
    out = Ok({"entries", "doc.qvx", "--date", "2024-06-11", "--billing"});
    EXPECT_TRUE(Contains(out, "Meetings  Kick-off  yes       $100.00  $125.00")) << out;
    // A "not billable" activity rate bills nothing.
    EXPECT_TRUE(Contains(out, "Travel              no        $0.00    $0.00")) << out;
    EXPECT_TRUE(Contains(out, "Billable: 1.25 hours, $125.00; not billable: 1.00 hours, $0.00"))
        << out;

    Ok({"report", "new", "doc.qvx", "--kind", "invoice", "--name", "Acme June", "--task", "Acme",
        "--from", "2024-06-10", "--to", "2024-06-14", "--summarize", "Project", "--include",
        "billable", "--recipient", "Acme Corp\\n1 Main Street"});
    const QvxResult invoice =
        Run({"--yes", "invoice", "doc.qvx", "Acme June", "--format", "csv", "--out", "-"});
    ASSERT_EQ(invoice.exitCode, 0) << invoice.err;
    EXPECT_TRUE(Contains(invoice.err, "Invoice number")) << invoice.err;

    std::istringstream lines(invoice.out);
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    const std::vector<std::string> header = CsvCells(line);
    auto column = [&](const std::string& name)
    {
        const auto it = std::find(header.begin(), header.end(), name);
        EXPECT_NE(it, header.end()) << name << " in " << line;
        return size_t(it - header.begin());
    };
    const size_t description = column("TaskDescription");
    const size_t time = column("Time");
    const size_t amount = column("Billing");
    std::map<std::string, double> invoiced;
    std::map<std::string, std::string> invoicedTime;
    while (std::getline(lines, line))
    {
        const std::vector<std::string> cells = CsvCells(line);
        ASSERT_GT(cells.size(), amount) << line;
        invoiced[cells[description]] += std::stod(cells[amount]);
        invoicedTime[cells[description]] = cells[time];
    }
    for (const auto& [task, value] : expected)
    {
        EXPECT_NEAR(invoiced[task], value, 0.005) << task;
        const int minutes = expectedMinutes[task];
        EXPECT_EQ(invoicedTime[task], std::to_string(minutes / 60) + ":" +
                                          (minutes % 60 < 10 ? "0" : "") +
                                          std::to_string(minutes % 60))
            << task;
    }
    EXPECT_NEAR(invoiced["TOTAL"], expectedTotal, 0.005);
    EXPECT_EQ(invoiced.count("Globex"), 0u);
}

TEST_F(QvxDailyTest, ActivityRatesTakeTheDialogsThreeChoices)
{
    Ok({"task", "set", "doc.qvx", "Acme", "--rate", "100", "--activity-rate", "Design=120",
        "--activity-rate", "Travel=not-billable"});
    Json dump = DumpJson("doc.qvx");
    const Json& acme = TaskOf(dump, 2);
    EXPECT_FALSE(acme["use_parent_billing"].Bool());
    EXPECT_TRUE(acme["use_activity_rates"].Bool());
    ASSERT_EQ(acme["activity_rates"].Size(), 2u);
    EXPECT_EQ(acme["activity_rates"][0]["activity"].Int(), 1);
    EXPECT_DOUBLE_EQ(acme["activity_rates"][0]["rate"].Number(), 120.0);
    EXPECT_FALSE(acme["activity_rates"][1]["billable"].Bool());

    // default: the task's regular rate again.
    std::string out = Ok({"task", "set", "doc.qvx", "Acme", "--activity-rate", "Design=default"});
    EXPECT_TRUE(Contains(out, "activity rates: Travel not billable")) << out;
    EXPECT_EQ(TaskOf(DumpJson("doc.qvx"), 2)["activity_rates"].Size(), 1u);

    // A task that inherits keeps its parent's rates when it takes billing of its own.
    Ok({"task", "set", "doc.qvx", "Acme/Website", "--activity-rate", "Meetings=90"});
    dump = DumpJson("doc.qvx");
    const Json& website = TaskOf(dump, 3);
    EXPECT_FALSE(website["use_parent_billing"].Bool());
    EXPECT_DOUBLE_EQ(website["rate"].Number(), 100.0);
    EXPECT_EQ(website["activity_rates"].Size(), 2u);

    for (const char* bad : {"Design", "Design=", "=5", "Design=cheap", "Design=-5", "Nope=5"})
    {
        const std::vector<uint8_t> before = ReadBytes("doc.qvx");
        const QvxResult r = Run({"task", "set", "doc.qvx", "Acme", "--activity-rate", bad});
        EXPECT_NE(r.exitCode, 0) << bad;
        EXPECT_EQ(r.ErrLines().size(), 1u) << bad << ": " << r.err;
        EXPECT_EQ(ReadBytes("doc.qvx"), before) << bad;
    }

    // An activity's own rate is never billed, so qvx does not offer to set it.
    const QvxResult rate = Run({"activity", "add", "doc.qvx", "Writing", "--rate", "50"});
    EXPECT_EQ(rate.exitCode, 2);
    EXPECT_TRUE(Contains(rate.err, "--activity-rate")) << rate.err;
    EXPECT_TRUE(Contains(Ok({"help", "activity", "add"}), "the task's regular rate"));
}

TEST_F(QvxDailyTest, TimeSetGoesThroughTheEditorsChecks)
{
    Ok({"time", "add", "doc.qvx", "Acme/Website", "--date", "2024-06-10", "--start", "09:00",
        "--end", "10:00"});
    Ok({"time", "add", "doc.qvx", "Acme/Support", "--date", "2024-06-10", "--start", "10:00",
        "--end", "11:00"});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    auto refused = [&](const std::vector<std::string>& args, const std::string& message)
    {
        const QvxResult r = Run(args);
        EXPECT_NE(r.exitCode, 0);
        EXPECT_TRUE(Contains(r.err, message)) << r.err;
        EXPECT_EQ(ReadBytes("doc.qvx"), before);
    };
    refused({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--end", "08:00"},
            "The End Time must be later than the Start Time.");
    refused({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--start", "10:00"},
            "The End Time must be later than the Start Time.");
    refused({"time", "set", "doc.qvx", "--date", "2024-06-10", "3", "--note", "x"},
            "there is no row 3");
    refused({"time", "set", "doc.qvx", "--date", "2024-06-10", "1"}, "nothing to set");
    refused({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--end", "10:30",
             "--on-conflict", "fail"},
            "The Time Entry conflicts with another Time Entry (10:00-11:00 Acme/Support)");
    // Nobody to ask: refused as well.
    refused({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--end", "10:30"},
            "nothing was changed");
    refused({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--activity", "Nope"},
            "there is no activity 'Nope'");

    // An end of 00:00 is the end of the day; the note and activity become the task's last.
    Ok({"time", "set", "doc.qvx", "--date", "2024-06-10", "2", "--start", "22:00", "--end", "00:00",
        "--activity", "Design", "--note", "Late fix"});
    Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(SpansOf(dump, "20240610"),
              (std::vector<std::string>{"3 09:00-10:00", "4 22:00-24:00"}));
    EXPECT_EQ(TaskOf(dump, 4)["last_note"].Str(), "Late fix");
    EXPECT_EQ(TaskOf(dump, 4)["last_activity"].Int(), 1);

    // Billing of its own starts from what the task gave it; the defaults take it back.
    Ok({"task", "set", "doc.qvx", "Acme", "--rate", "100", "--overtime-multiplier", "2"});
    Ok({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--billable", "no", "--overtime",
        "yes"});
    dump = DumpJson("doc.qvx");
    const Json& custom = (*FindDay(dump, "20240610"))["time"][0];
    EXPECT_TRUE(custom["custom_billing"].Bool());
    EXPECT_FALSE(custom["billable"].Bool());
    EXPECT_DOUBLE_EQ(custom["rate"].Number(), 100.0);
    EXPECT_DOUBLE_EQ(custom["overtime_multiplier"].Number(), 2.0);
    std::string out = Ok({"entries", "doc.qvx", "--date", "2024-06-10", "--billing"});
    EXPECT_TRUE(Contains(out, "no        $200.00  $200.00")) << out;
    Ok({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--billing-defaults", "yes",
        "--overtime", "no"});
    dump = DumpJson("doc.qvx");
    EXPECT_FALSE((*FindDay(dump, "20240610"))["time"][0]["custom_billing"].Bool());
    out = Ok({"entries", "doc.qvx", "--date", "2024-06-10", "--billing"});
    EXPECT_TRUE(Contains(out, "yes       $100.00  $100.00")) << out;

    // Another task, and "adjust this" reports the pieces it stored.
    Ok({"time", "add", "doc.qvx", "Globex", "--date", "2024-06-10", "--start", "12:00", "--end",
        "13:00"});
    out = Ok({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--task", "Globex", "--end",
              "14:00", "--on-conflict", "adjust-this"});
    EXPECT_TRUE(Contains(out, "Updated 09:00-12:00, 13:00-14:00 of 2024-06-10, Globex")) << out;
    EXPECT_EQ(SpansOf(DumpJson("doc.qvx"), "20240610"),
              (std::vector<std::string>{"5 09:00-12:00", "5 12:00-13:00", "5 13:00-14:00",
                                        "4 22:00-24:00"}));

    // time add says the same: the times stored, not the ones asked.
    out = Ok({"time", "add", "doc.qvx", "Acme", "--date", "2024-06-10", "--start", "08:00", "--end",
              "23:00", "--on-conflict", "adjust-this"});
    EXPECT_TRUE(Contains(out, "Added 08:00-09:00, 14:00-22:00 on 2024-06-10 to Acme (08:00-23:00 "
                              "was fitted around the other entries)"))
        << out;
}

TEST_F(QvxDailyTest, TimeSetOnTheRunningEntry)
{
    Ok({"start", "doc.qvx", "Acme/Website"}, "2024-06-10 09:00");
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    QvxResult r = Run({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--start", "09:45"},
                      "2024-06-10 09:30");
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(
        Contains(r.err, "The Start Time must be before the current time on an active task."))
        << r.err;
    r = Run({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--end", "09:20"},
            "2024-06-10 09:30");
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(Contains(r.err, "running")) << r.err;
    EXPECT_EQ(ReadBytes("doc.qvx"), before);

    Ok({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--start", "08:30"},
       "2024-06-10 09:30");
    EXPECT_EQ(SpansOf(DumpJson("doc.qvx"), "20240610"), (std::vector<std::string>{"3 08:30-"}));
    EXPECT_TRUE(Contains(Ok({"status", "doc.qvx"}, "2024-06-10 09:30"), "Elapsed: 1:00"));
}

TEST_F(QvxDailyTest, ExpenseAndToDoSet)
{
    Ok({"expense", "add", "doc.qvx", "Acme", "--date", "2024-06-10", "--amount", "12.50", "--type",
        "Lunch"});
    // Becoming a mileage entry: the amount is distance x rate, a half cent rounding up.
    Ok({"expense", "set", "doc.qvx", "--date", "2024-06-10", "1", "--type", "Mileage", "--distance",
        "1", "--rate", "0.125"});
    Json dump = DumpJson("doc.qvx");
    const Json& mileage = (*FindDay(dump, "20240610"))["expenses"][0];
    EXPECT_EQ(mileage["expense_type"].Int(), 9);
    EXPECT_DOUBLE_EQ(mileage["amount"].Number(), 0.13);
    EXPECT_DOUBLE_EQ(mileage["distance"].Number(), 1.0);
    Ok({"expense", "set", "doc.qvx", "--date", "2024-06-10", "1", "--distance", "10", "--rate",
        "0.375"});
    EXPECT_DOUBLE_EQ((*FindDay(DumpJson("doc.qvx"), "20240610"))["expenses"][0]["amount"].Number(),
                     3.75);
    EXPECT_EQ(
        Run({"expense", "set", "doc.qvx", "--date", "2024-06-10", "1", "--amount", "5"}).exitCode,
        2);
    // Back to an ordinary type: the distance goes, the amount is the one given.
    std::string out = Ok({"expense", "set", "doc.qvx", "--date", "2024-06-10", "1", "--type",
                          "Taxi", "--amount", "23.40", "--billable", "no", "--note", "Airport"});
    EXPECT_TRUE(Contains(out, "Updated Taxi $23.40 of 2024-06-10, Acme")) << out;
    dump = DumpJson("doc.qvx");
    const Json& taxi = (*FindDay(dump, "20240610"))["expenses"][0];
    EXPECT_DOUBLE_EQ(taxi["distance"].Number(), 0.0);
    EXPECT_FALSE(taxi["billable"].Bool());
    EXPECT_EQ(taxi["note"].Str(), "Airport");

    Ok({"todo", "add", "doc.qvx", "Acme", "Send the mock-ups", "--due", "2024-06-12"});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    QvxResult r =
        Run({"todo", "set", "doc.qvx", "--date", "2024-06-10", "1", "--description", "   "});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(Contains(r.err, "Enter a To Do Description.")) << r.err;
    EXPECT_EQ(ReadBytes("doc.qvx"), before);
    Ok({"todo", "set", "doc.qvx", "--date", "2024-06-10", "1", "--description", "  Send the drafts",
        "--priority", "b", "--due", "none", "--task", "Acme/Website"});
    dump = DumpJson("doc.qvx");
    ASSERT_EQ(dump["todos"].Size(), 1u);
    EXPECT_EQ(dump["todos"][0]["description"].Str(), "Send the drafts");
    EXPECT_EQ(dump["todos"][0]["priority"].Str(), "B");
    EXPECT_TRUE(dump["todos"][0]["due"].IsNull());
    EXPECT_EQ(dump["todos"][0]["task"].Int(), 3);
}

TEST_F(QvxDailyTest, ToDoRowsCompleteAndReopenSeveralAtOnce)
{
    Ok({"todo", "add", "doc.qvx", "Acme", "First", "--priority", "1"});
    Ok({"todo", "add", "doc.qvx", "Acme", "Second", "--priority", "2"});
    Ok({"todo", "add", "doc.qvx", "Acme", "Third", "--priority", "3", "--due", "2024-06-01"});
    std::string out = Ok({"entries", "doc.qvx", "--date", "2024-06-11", "--kind", "todo"});
    EXPECT_TRUE(Contains(out, "Status")) << out;
    EXPECT_TRUE(Contains(out, "Overdue")) << out;
    EXPECT_EQ(out, Ok({"entries", "doc.qvx", "--date", "2024-06-11", "--kind", "todo"}))
        << "one listing numbers its rows the same way each time";

    out = Ok({"todo", "complete", "doc.qvx", "--date", "2024-06-11", "1", "3"});
    EXPECT_TRUE(Contains(out, "Completed 'First', 'Third' on 2024-06-11")) << out;
    out = Ok({"entries", "doc.qvx", "--date", "2024-06-11", "--kind", "todo"});
    EXPECT_TRUE(Contains(out, "Completed")) << out;
    Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(dump["todos"].Size(), 1u);
    EXPECT_EQ((*FindDay(dump, "20240611"))["todos"].Size(), 2u);

    // Rows of one listing, numbered before anything changes.
    out = Ok({"todo", "reopen", "doc.qvx", "--date", "2024-06-11", "1", "2", "3"});
    EXPECT_TRUE(Contains(out, "Reopened 'First', 'Third'")) << out;
    EXPECT_TRUE(Contains(out, "'Second' was not completed")) << out;
    EXPECT_EQ(DumpJson("doc.qvx")["todos"].Size(), 3u);
    EXPECT_TRUE(
        Contains(Ok({"help", "todo", "complete"}), "qvx entries FILE --date DATE --kind todo"));
}

TEST_F(QvxDailyTest, StartTakesAnActivityAndANoteThatAResumeKeeps)
{
    std::string out =
        Ok({"start", "doc.qvx", "Acme/Website", "--activity", "design", "--note", "Home page"},
           "2024-06-10 09:00");
    EXPECT_TRUE(Contains(out, "Started Acme/Website at 9:00 AM; activity: Design; note: \"Home "
                              "page\""))
        << out;
    Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(TaskOf(dump, 3)["last_note"].Str(), "Home page");
    EXPECT_EQ(TaskOf(dump, 3)["last_activity"].Int(), 1);

    Ok({"pause", "doc.qvx"}, "2024-06-10 10:00");
    out = Ok({"resume", "doc.qvx"}, "2024-06-10 10:30");
    EXPECT_TRUE(Contains(out, "Resumed Acme/Website at 10:30 AM; activity: Design (the task's "
                              "last); note: \"Home page\" (the task's last)"))
        << out;
    dump = DumpJson("doc.qvx");
    const Json& resumed = (*FindDay(dump, "20240610"))["time"][1];
    EXPECT_EQ(resumed["activity"].Int(), 1);
    EXPECT_EQ(resumed["note"].Str(), "Home page");

    // Not given: copied from the task's last ones, and said so.
    Ok({"start", "doc.qvx", "Acme/Support", "--activity", "Meetings"}, "2024-06-10 11:00");
    out = Ok({"start", "doc.qvx", "Acme/Website"}, "2024-06-10 12:00");
    EXPECT_TRUE(Contains(out, "activity: Design (the task's last); note: \"Home page\" (the "
                              "task's last)"))
        << out;

    // recent numbers its lines as start --recent uses them (here sorted by name).
    out = Ok({"recent", "doc.qvx"}, "2024-06-10 12:30");
    EXPECT_EQ(out, "1  Acme/Support\n2  Acme/Website\n");
    out = Ok({"start", "doc.qvx", "--recent", "1", "--note", "Tickets", "--activity", "none"},
             "2024-06-10 13:00");
    EXPECT_TRUE(Contains(out, "Started Acme/Support at 1:00 PM; activity: none; note: "
                              "\"Tickets\""))
        << out;
    EXPECT_EQ(Run({"start", "doc.qvx", "--recent", "3"}, "2024-06-10 13:30").exitCode, 1);
}

TEST_F(QvxDailyTest, AddressesReadLineBreaksAlike)
{
    std::string out = Ok({"options", "--invoice-address", "Pat Doe\\nSide Street 2"});
    EXPECT_TRUE(Contains(out, "Invoice address: Pat Doe\n                 Side Street 2\n")) << out;
    Ok({"report", "new", "doc.qvx", "--kind", "invoice", "--name", "Acme", "--task", "Acme",
        "--recipient", "Acme Corp\\n1 Main Street"});
    out = Ok({"report", "show", "doc.qvx", "Acme"});
    EXPECT_TRUE(Contains(out, "Recipient: Acme Corp\n           1 Main Street\n")) << out;
}

TEST_F(QvxTest, VersionIsNamed)
{
    const std::string version = Ok({"--version"});
    std::smatch m;
    ASSERT_TRUE(std::regex_search(version, m,
                                  std::regex("^qvx \\(Quorvane Time & Expense\\) "
                                             "([0-9]+\\.[0-9]+)\n$")))
        << version;
    EXPECT_TRUE(Contains(Ok({"help"}), "qvx " + m[1].str() + ","));
}
