// End-to-end tests of qvx for everyday use: editing what was recorded, seeing what will
// be billed, and messages that say what was stored.

#include "qvxrunner.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>

using qvtest::Json;
using qvtest::QvxResult;
using qvtest::QvxTest;
using qvtest::FindDay;
using qvtest::Spans;
using Strings = std::vector<std::string>;
using ::testing::HasSubstr;

namespace
{
const Json& TaskOf(const Json& dump, long id)
{
    for (const Json& t : dump.at("tasks"))
        if (t.at("id") == id)
            return t;
    throw std::out_of_range("no task #" + std::to_string(id));
}

// The cells of one line of a tab-delimited export.
Strings Cells(std::string line)
{
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    Strings cells;
    std::istringstream in(line);
    for (std::string cell; std::getline(in, cell, '\t');)
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
    EXPECT_THAT(billing, HasSubstr("billable, rate $100.00, overtime multiplier 1.50 (own)"));
    EXPECT_THAT(billing,
                HasSubstr("billable, rate $100.00, overtime multiplier 1.50 (inherited from Acme)"));
    EXPECT_THAT(billing, HasSubstr("billable, rate $80.00, overtime multiplier 1.50 (own)"));
    EXPECT_THAT(billing, HasSubstr("activity rates: Design $120.00, Travel not billable; other "
                                   "activities: the regular rate (inherited from Acme)"));

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
    EXPECT_THAT(out, HasSubstr("Updated 09:00-11:30 of 2024-06-10, Acme/Website"));
    out = Ok({"time", "set", "doc.qvx", "--date", "2024-06-13", "1", "--overtime", "yes"});
    EXPECT_THAT(out, HasSubstr("Updated 14:00-16:30 of 2024-06-13"));
    // ... and Friday's support was agreed at a rate of its own.
    Ok({"time", "set", "doc.qvx", "--date", "2024-06-14", "1", "--rate", "60"});
    EXPECT_EQ(Spans(DumpJson("doc.qvx"), "20240610"),
              (Strings{"3 09:00-11:30", "4 11:30-12:30"}));

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
    EXPECT_THAT(out, HasSubstr("Meetings  Kick-off  yes       $100.00  $125.00"));
    // A "not billable" activity rate bills nothing.
    EXPECT_THAT(out, HasSubstr("Travel              no        $0.00    $0.00"));
    EXPECT_THAT(out, HasSubstr("Billable: 1.25 hours, $125.00; not billable: 1.00 hours, $0.00"));

    Ok({"report", "new", "doc.qvx", "--kind", "invoice", "--name", "Acme June", "--task", "Acme",
        "--from", "2024-06-10", "--to", "2024-06-14", "--summarize", "Project", "--include",
        "billable", "--recipient", "Acme Corp\\n1 Main Street"});
    const QvxResult invoice =
        Run({"--yes", "invoice", "doc.qvx", "Acme June", "--format", "tab", "--out", "-"});
    ASSERT_EQ(invoice.exitCode, 0) << invoice.err;
    EXPECT_THAT(invoice.err, HasSubstr("Invoice number"));

    std::istringstream lines(invoice.out);
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    const Strings header = Cells(line);
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
        const Strings cells = Cells(line);
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
    EXPECT_EQ(acme["use_parent_billing"], false);
    EXPECT_EQ(acme["use_activity_rates"], true);
    ASSERT_EQ(acme["activity_rates"].size(), 2u);
    EXPECT_EQ(acme["activity_rates"][0]["activity"], 1);
    EXPECT_DOUBLE_EQ(acme["activity_rates"][0]["rate"].get<double>(), 120.0);
    EXPECT_EQ(acme["activity_rates"][1]["billable"], false);

    // default: the task's regular rate again.
    std::string out = Ok({"task", "set", "doc.qvx", "Acme", "--activity-rate", "Design=default"});
    EXPECT_THAT(out, HasSubstr("activity rates: Travel not billable"));
    EXPECT_EQ(TaskOf(DumpJson("doc.qvx"), 2)["activity_rates"].size(), 1u);

    // A task that inherits keeps its parent's rates when it takes billing of its own.
    Ok({"task", "set", "doc.qvx", "Acme/Website", "--activity-rate", "Meetings=90"});
    dump = DumpJson("doc.qvx");
    const Json& website = TaskOf(dump, 3);
    EXPECT_EQ(website["use_parent_billing"], false);
    EXPECT_DOUBLE_EQ(website["rate"].get<double>(), 100.0);
    EXPECT_EQ(website["activity_rates"].size(), 2u);

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
    EXPECT_THAT(rate.err, HasSubstr("--activity-rate"));
    EXPECT_THAT(Ok({"help", "activity", "add"}), HasSubstr("the task's regular rate"));
}

TEST_F(QvxDailyTest, TimeSetGoesThroughTheEditorsChecks)
{
    Ok({"time", "add", "doc.qvx", "Acme/Website", "--date", "2024-06-10", "--start", "09:00",
        "--end", "10:00"});
    Ok({"time", "add", "doc.qvx", "Acme/Support", "--date", "2024-06-10", "--start", "10:00",
        "--end", "11:00"});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    auto refused = [&](const Strings& args, const std::string& message)
    {
        const QvxResult r = Run(args);
        EXPECT_NE(r.exitCode, 0);
        EXPECT_THAT(r.err, HasSubstr(message));
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
    EXPECT_EQ(Spans(dump, "20240610"),
              (Strings{"3 09:00-10:00", "4 22:00-24:00"}));
    EXPECT_EQ(TaskOf(dump, 4)["last_note"], "Late fix");
    EXPECT_EQ(TaskOf(dump, 4)["last_activity"], 1);

    // Billing of its own starts from what the task gave it; the defaults take it back.
    Ok({"task", "set", "doc.qvx", "Acme", "--rate", "100", "--overtime-multiplier", "2"});
    Ok({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--billable", "no", "--overtime",
        "yes"});
    dump = DumpJson("doc.qvx");
    const Json& custom = (*FindDay(dump, "20240610"))["time"][0];
    EXPECT_EQ(custom["custom_billing"], true);
    EXPECT_EQ(custom["billable"], false);
    EXPECT_DOUBLE_EQ(custom["rate"].get<double>(), 100.0);
    EXPECT_DOUBLE_EQ(custom["overtime_multiplier"].get<double>(), 2.0);
    std::string out = Ok({"entries", "doc.qvx", "--date", "2024-06-10", "--billing"});
    EXPECT_THAT(out, HasSubstr("no        $200.00  $200.00"));
    Ok({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--billing-defaults", "yes",
        "--overtime", "no"});
    dump = DumpJson("doc.qvx");
    EXPECT_EQ((*FindDay(dump, "20240610"))["time"][0]["custom_billing"], false);
    out = Ok({"entries", "doc.qvx", "--date", "2024-06-10", "--billing"});
    EXPECT_THAT(out, HasSubstr("yes       $100.00  $100.00"));

    // Another task, and "adjust this" reports the pieces it stored.
    Ok({"time", "add", "doc.qvx", "Globex", "--date", "2024-06-10", "--start", "12:00", "--end",
        "13:00"});
    out = Ok({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--task", "Globex", "--end",
              "14:00", "--on-conflict", "adjust-this"});
    EXPECT_THAT(out, HasSubstr("Updated 09:00-12:00, 13:00-14:00 of 2024-06-10, Globex"));
    EXPECT_EQ(Spans(DumpJson("doc.qvx"), "20240610"),
              (Strings{"5 09:00-12:00", "5 12:00-13:00", "5 13:00-14:00",
                                        "4 22:00-24:00"}));

    // time add says the same: the times stored, not the ones asked.
    out = Ok({"time", "add", "doc.qvx", "Acme", "--date", "2024-06-10", "--start", "08:00", "--end",
              "23:00", "--on-conflict", "adjust-this"});
    EXPECT_THAT(out, HasSubstr("Added 08:00-09:00, 14:00-22:00 on 2024-06-10 to Acme (08:00-23:00 "
                               "was fitted around the other entries)"));
}

TEST_F(QvxDailyTest, TimeSetOnTheRunningEntry)
{
    Ok({"start", "doc.qvx", "Acme/Website"}, "2024-06-10 09:00");
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    QvxResult r = Run({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--start", "09:45"},
                      "2024-06-10 09:30");
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.err,
                HasSubstr("The Start Time must be before the current time on an active task."));
    r = Run({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--end", "09:20"},
            "2024-06-10 09:30");
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.err, HasSubstr("running"));
    EXPECT_EQ(ReadBytes("doc.qvx"), before);

    Ok({"time", "set", "doc.qvx", "--date", "2024-06-10", "1", "--start", "08:30"},
       "2024-06-10 09:30");
    EXPECT_EQ(Spans(DumpJson("doc.qvx"), "20240610"), (Strings{"3 08:30-"}));
    EXPECT_THAT(Ok({"status", "doc.qvx"}, "2024-06-10 09:30"), HasSubstr("Elapsed: 1:00"));
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
    EXPECT_EQ(mileage["expense_type"], 9);
    EXPECT_DOUBLE_EQ(mileage["amount"].get<double>(), 0.13);
    EXPECT_DOUBLE_EQ(mileage["distance"].get<double>(), 1.0);
    Ok({"expense", "set", "doc.qvx", "--date", "2024-06-10", "1", "--distance", "10", "--rate",
        "0.375"});
    dump = DumpJson("doc.qvx");
    EXPECT_DOUBLE_EQ((*FindDay(dump, "20240610"))["expenses"][0]["amount"].get<double>(), 3.75);
    EXPECT_EQ(
        Run({"expense", "set", "doc.qvx", "--date", "2024-06-10", "1", "--amount", "5"}).exitCode,
        2);
    // Back to an ordinary type: the distance goes, the amount is the one given.
    std::string out = Ok({"expense", "set", "doc.qvx", "--date", "2024-06-10", "1", "--type",
                          "Taxi", "--amount", "23.40", "--billable", "no", "--note", "Airport"});
    EXPECT_THAT(out, HasSubstr("Updated Taxi $23.40 of 2024-06-10, Acme"));
    dump = DumpJson("doc.qvx");
    const Json& taxi = (*FindDay(dump, "20240610"))["expenses"][0];
    EXPECT_DOUBLE_EQ(taxi["distance"].get<double>(), 0.0);
    EXPECT_EQ(taxi["billable"], false);
    EXPECT_EQ(taxi["note"], "Airport");

    Ok({"todo", "add", "doc.qvx", "Acme", "Send the mock-ups", "--due", "2024-06-12"});
    const std::vector<uint8_t> before = ReadBytes("doc.qvx");
    QvxResult r =
        Run({"todo", "set", "doc.qvx", "--date", "2024-06-10", "1", "--description", "   "});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_THAT(r.err, HasSubstr("Enter a To Do Description."));
    EXPECT_EQ(ReadBytes("doc.qvx"), before);
    Ok({"todo", "set", "doc.qvx", "--date", "2024-06-10", "1", "--description", "  Send the drafts",
        "--priority", "b", "--due", "none", "--task", "Acme/Website"});
    dump = DumpJson("doc.qvx");
    ASSERT_EQ(dump["todos"].size(), 1u);
    EXPECT_EQ(dump["todos"][0]["description"], "Send the drafts");
    EXPECT_EQ(dump["todos"][0]["priority"], "B");
    EXPECT_TRUE(dump["todos"][0]["due"].is_null());
    EXPECT_EQ(dump["todos"][0]["task"], 3);
}

TEST_F(QvxDailyTest, ToDoRowsCompleteAndReopenSeveralAtOnce)
{
    Ok({"todo", "add", "doc.qvx", "Acme", "First", "--priority", "1"});
    Ok({"todo", "add", "doc.qvx", "Acme", "Second", "--priority", "2"});
    Ok({"todo", "add", "doc.qvx", "Acme", "Third", "--priority", "3", "--due", "2024-06-01"});
    std::string out = Ok({"entries", "doc.qvx", "--date", "2024-06-11", "--kind", "todo"});
    EXPECT_THAT(out, HasSubstr("Status"));
    EXPECT_THAT(out, HasSubstr("Overdue"));
    EXPECT_EQ(out, Ok({"entries", "doc.qvx", "--date", "2024-06-11", "--kind", "todo"}))
        << "one listing numbers its rows the same way each time";

    out = Ok({"todo", "complete", "doc.qvx", "--date", "2024-06-11", "1", "3"});
    EXPECT_THAT(out, HasSubstr("Completed 'First', 'Third' on 2024-06-11"));
    out = Ok({"entries", "doc.qvx", "--date", "2024-06-11", "--kind", "todo"});
    EXPECT_THAT(out, HasSubstr("Completed"));
    Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(dump["todos"].size(), 1u);
    EXPECT_EQ((*FindDay(dump, "20240611"))["todos"].size(), 2u);

    // Rows of one listing, numbered before anything changes.
    out = Ok({"todo", "reopen", "doc.qvx", "--date", "2024-06-11", "1", "2", "3"});
    EXPECT_THAT(out, HasSubstr("Reopened 'First', 'Third'"));
    EXPECT_THAT(out, HasSubstr("'Second' was not completed"));
    EXPECT_EQ(DumpJson("doc.qvx")["todos"].size(), 3u);
    EXPECT_THAT(Ok({"help", "todo", "complete"}),
                HasSubstr("qvx entries FILE --date DATE --kind todo"));
}

TEST_F(QvxDailyTest, StartTakesAnActivityAndANoteThatAResumeKeeps)
{
    std::string out =
        Ok({"start", "doc.qvx", "Acme/Website", "--activity", "design", "--note", "Home page"},
           "2024-06-10 09:00");
    EXPECT_THAT(out, HasSubstr("Started Acme/Website at 9:00 AM; activity: Design; note: \"Home "
                               "page\""));
    Json dump = DumpJson("doc.qvx");
    EXPECT_EQ(TaskOf(dump, 3)["last_note"], "Home page");
    EXPECT_EQ(TaskOf(dump, 3)["last_activity"], 1);

    Ok({"pause", "doc.qvx"}, "2024-06-10 10:00");
    out = Ok({"resume", "doc.qvx"}, "2024-06-10 10:30");
    EXPECT_THAT(out, HasSubstr("Resumed Acme/Website at 10:30 AM; activity: Design (the task's "
                               "last); note: \"Home page\" (the task's last)"));
    dump = DumpJson("doc.qvx");
    const Json& resumed = (*FindDay(dump, "20240610"))["time"][1];
    EXPECT_EQ(resumed["activity"], 1);
    EXPECT_EQ(resumed["note"], "Home page");

    // Not given: copied from the task's last ones, and said so.
    Ok({"start", "doc.qvx", "Acme/Support", "--activity", "Meetings"}, "2024-06-10 11:00");
    out = Ok({"start", "doc.qvx", "Acme/Website"}, "2024-06-10 12:00");
    EXPECT_THAT(out, HasSubstr("activity: Design (the task's last); note: \"Home page\" (the "
                               "task's last)"));

    // recent numbers its lines as start --recent uses them (here sorted by name).
    out = Ok({"recent", "doc.qvx"}, "2024-06-10 12:30");
    EXPECT_EQ(out, "1  Acme/Support\n2  Acme/Website\n");
    out = Ok({"start", "doc.qvx", "--recent", "1", "--note", "Tickets", "--activity", "none"},
             "2024-06-10 13:00");
    EXPECT_THAT(out,
                HasSubstr("Started Acme/Support at 1:00 PM; activity: none; note: \"Tickets\""));
    EXPECT_EQ(Run({"start", "doc.qvx", "--recent", "3"}, "2024-06-10 13:30").exitCode, 1);
}

TEST_F(QvxDailyTest, AddressesReadLineBreaksAlike)
{
    std::string out = Ok({"options", "--invoice-address", "Pat Doe\\nSide Street 2"});
    EXPECT_THAT(out, HasSubstr("Invoice address: Pat Doe\n                 Side Street 2\n"));
    Ok({"report", "new", "doc.qvx", "--kind", "invoice", "--name", "Acme", "--task", "Acme",
        "--recipient", "Acme Corp\\n1 Main Street"});
    out = Ok({"report", "show", "doc.qvx", "Acme"});
    EXPECT_THAT(out, HasSubstr("Recipient: Acme Corp\n           1 Main Street\n"));
}

TEST_F(QvxTest, VersionIsNamed)
{
    const std::string version = Ok({"--version"});
    std::smatch m;
    ASSERT_TRUE(std::regex_search(version, m,
                                  std::regex("^qvx \\(Quorvane Time & Expense\\) "
                                             "([0-9]+\\.[0-9]+)\n$")))
        << version;
    EXPECT_THAT(Ok({"help"}), HasSubstr("qvx " + m[1].str() + ","));
}
