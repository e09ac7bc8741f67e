// qvx import and qvx export ical against the real Timewarrior and Python's icalendar.

#include "qvxrunner.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>

using qvtest::QvxTest;

namespace
{
// Runs a shell command line; its standard output, and its exit status in `status`.
std::string Shell(const std::string& command, int* status = nullptr)
{
    std::string out;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return out;
    std::array<char, 4096> buf{};
    while (size_t n = std::fread(buf.data(), 1, buf.size(), pipe))
        out.append(buf.data(), n);
    const int rc = ::pclose(pipe);
    if (status)
        *status = rc;
    return out;
}

// The local time zone of every process the test starts: +05:30, so that UTC dates and
// local dates differ in the evening.
class QvxImportTest : public QvxTest
{
protected:
    void SetUp() override
    {
        QvxTest::SetUp();
        if (const char* tz = std::getenv("TZ"))
            m_oldZone = tz;
        setenv("TZ", "Asia/Kolkata", 1);
        Ok({"new", "H.qvx", "--employee", "Pat Doe"});
    }
    void TearDown() override
    {
        if (m_oldZone.empty())
            unsetenv("TZ");
        else
            setenv("TZ", m_oldZone.c_str(), 1);
        QvxTest::TearDown();
    }
    std::string Timew(const std::string& args)
    {
        int status = -1;
        const std::string out =
            Shell("TIMEWARRIORDB='" + Path("timew") + "' timew " + args + " :yes </dev/null 2>&1", &status);
        EXPECT_EQ(status, 0) << "timew " << args << " (scripts/install-deps installs timewarrior):\n" << out;
        return out;
    }
    // Minutes of time entries by day ("2024-06-10").
    std::map<std::string, long> DailyMinutes(const std::string& file)
    {
        std::map<std::string, long> minutes;
        auto at = [](const std::string& hm) { return std::stol(hm.substr(0, 2)) * 60 + std::stol(hm.substr(3, 2)); };
        const qvtest::Json dump = DumpJson(file);
        for (const qvtest::Json& day : dump["days"])
            for (const qvtest::Json& e : day["time"])
            {
                const std::string key = day["key"].get<std::string>();
                minutes[key.substr(0, 4) + "-" + key.substr(4, 2) + "-" + key.substr(6, 2)] +=
                    at(e["end"].get<std::string>()) - at(e["start"].get<std::string>());
            }
        return minutes;
    }

    std::string m_oldZone;
};
} // namespace

TEST_F(QvxImportTest, TimewarriorsDailyTotalsComeAcross)
{
    std::filesystem::create_directories(Path("timew"));
    Timew("track 2024-06-10T09:00 - 2024-06-10T10:30 Acme Website");
    Timew("track 2024-06-10T22:00 - 2024-06-11T02:15 Night");
    Timew("track 2024-06-11T08:00 - 2024-06-11T08:45 Acme");
    Timew("annotate @1 'Call with Dana'");
    Timew("track 2024-06-12T23:30 - 2024-06-13T00:00 Acme Website");
    const std::string json = Timew("export");
    std::ofstream(Path("tw.json")) << json;

    // Timewarrior's own per-day totals: the "Time" column of each interval row, summed.
    std::map<std::string, long> expected;
    std::string day;
    const std::string summary = Timew("summary 2024-06-01 - 2024-06-30");
    const std::regex dateRe(R"((\d{4}-\d{2}-\d{2}))"), timeRe(R"((\d+):(\d\d):(\d\d))");
    std::istringstream lines(summary);
    for (std::string line; std::getline(lines, line);)
    {
        std::smatch m;
        if (std::regex_search(line, m, dateRe))
            day = m[1];
        std::vector<long> times;
        for (auto it = std::sregex_iterator(line.begin(), line.end(), timeRe); it != std::sregex_iterator(); ++it)
            times.push_back(std::stol((*it)[1]) * 60 + std::stol((*it)[2]));
        if (times.size() >= 3)
            expected[day] += times[2];
    }
    ASSERT_EQ(expected.size(), 3u) << summary;

    const std::string out = Ok({"import", "H.qvx", "tw.json", "--from", "timewarrior"});
    EXPECT_NE(out.find("2 tasks, 5 time entries"), std::string::npos) << out;
    EXPECT_EQ(DailyMinutes("H.qvx"), expected) << summary;
    EXPECT_NE(Ok({"entries", "H.qvx", "--date", "2024-06-11", "--billing"}).find("Call with Dana"), std::string::npos);

    const std::string again = Ok({"import", "H.qvx", "tw.json", "--from", "timewarrior"});
    EXPECT_NE(again.find("0 tasks, 0 time entries"), std::string::npos) << again;
    EXPECT_NE(again.find("4 already in the document"), std::string::npos) << again;

    // A timer left running in Timewarrior runs here too, when asked.
    Timew("start 2024-06-13T08:00 Support");
    std::ofstream(Path("tw.json")) << Timew("export");
    const std::string open = Ok({"import", "H.qvx", "tw.json", "--from", "timewarrior"}, "2024-06-13 09:00");
    EXPECT_NE(open.find("1 still running in the source (no end): record 5 (@1)"), std::string::npos) << open;
    Ok({"import", "H.qvx", "tw.json", "--from", "timewarrior", "--open", "start"}, "2024-06-13 09:00");
    EXPECT_EQ(Ok({"status", "H.qvx", "--format", "%S %t %s"}, "2024-06-13 09:00"), "running Support 8:00 AM\n");
}

TEST_F(QvxImportTest, TheCalendarExportReadsBackElsewhereAndImportsTheSame)
{
    Ok({"task", "add", "H.qvx", "#1", "Acme"});
    Ok({"task", "add", "H.qvx", "Acme", "Web, Site"});
    Ok({"activity", "add", "H.qvx", "Design"});
    Ok({"time", "add", "H.qvx", "Acme/Web, Site", "--date", "2024-06-10", "--start", "09:00", "--end", "10:30",
        "--activity", "Design", "--note", "Mock-ups; \"v2\", with a comma\\nand a second line"});
    Ok({"time", "add", "H.qvx", "Acme", "--date", "2024-06-10", "--start", "22:00", "--end", "00:00"});
    Ok({"time", "add", "H.qvx", "Acme", "--date", "2024-06-11", "--start", "00:00", "--end", "01:15"});
    Ok({"todo", "add", "H.qvx", "Acme", "Send the mock-ups", "--due", "2024-06-14", "--priority", "B"});
    Ok({"todo", "add", "H.qvx", "Acme", "Register domain"});
    Ok({"todo", "complete", "H.qvx", "2", "--date", "2024-06-11"});
    Ok({"export", "ical", "H.qvx", "out.ics"});

    const std::string script = std::string(QV_TEST_DATA_DIR) + "/read_calendar.py";
    int status = -1;
    const std::string read = Shell("cd '" + Path("") + "' && /usr/bin/python3 '" + script + "' out.ics 2>&1", &status);
    ASSERT_EQ(status, 0) << "python3 with icalendar (scripts/install-deps) reads out.ics:\n" << read;
    EXPECT_EQ(read, "event|Acme/Web, Site|2024-06-10 09:00|2024-06-10 10:30|Mock-ups; \"v2\", with a comma\n"
                    "and a second line|Design\n"
                    "event|Acme|2024-06-10 22:00|2024-06-11 00:00||\n"
                    "event|Acme|2024-06-11 00:00|2024-06-11 01:15||\n"
                    "todo|Register domain|Acme|1||COMPLETED|2024-06-11\n"
                    "todo|Send the mock-ups|Acme|9|2024-06-14|NEEDS-ACTION|\n");

    Ok({"new", "Copy.qvx", "--employee", "Pat Doe"});
    Ok({"import", "Copy.qvx", "out.ics", "--from", "ical"});
    for (const char* date : {"2024-06-10", "2024-06-11", "2024-06-14"})
        EXPECT_EQ(Ok({"entries", "Copy.qvx", "--date", date, "--billing"}),
                  Ok({"entries", "H.qvx", "--date", date, "--billing"}))
            << date;
    const std::string again = Ok({"import", "H.qvx", "out.ics", "--from", "ical"});
    EXPECT_NE(again.find("0 tasks, 0 time entries, 0 to-dos"), std::string::npos) << again;
}

TEST_F(QvxImportTest, BadSourcesChangeNothingAndSayWhere)
{
    Ok({"time", "add", "H.qvx", "#1", "--date", "2024-06-10", "--start", "09:00", "--end", "10:00"});
    const struct
    {
        std::vector<std::string> args;
        std::string content;
        std::string error;
    } cases[] = {
        {{"--from", "timewarrior"}, "[{\"start\":\"20240610T070000Z\",}]",
         "qvx import: 'source': line 1, column 30: not JSON: "},
        {{"--from", "ical"}, "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nEND:VEVENT\r\n",
         "qvx import: 'source': line 3: the file ends inside VCALENDAR (END:VCALENDAR is missing); nothing was "
         "imported"},
        {{"--from", "csv", "--map", "Day=date,Hours=duration"}, "Date,Hours\n2024-06-10,1\n",
         "qvx import: 'source': --map: the header row (line 1) has no column 'Day'"},
        {{"--from", "csv"}, "\xFF\xFE" "D\0",
         "qvx import: 'source': the UTF-16 text ends in the middle of a character; nothing was imported"},
        {{"--from", "csv", "--on-conflict", "fail"}, "Date,Start,End\n2024-06-10,09:30,11:00\n",
         "qvx import: 1 imported entry overlaps others (line 2: 2024-06-10 09:30-11:00 overlaps 09:00-10:00 of Pat "
         "Doe); nothing was imported"},
        {{"--from", "csv"}, "Date,Start,End\n2024-06-10,09:30,11:00\n",
         "qvx import: 1 imported entry overlaps others"},
    };
    const std::vector<uint8_t> before = ReadBytes("H.qvx");
    for (const auto& c : cases)
    {
        std::ofstream(Path("source"), std::ios::binary) << c.content;
        std::vector<std::string> args = {"import", "H.qvx", "source"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const qvtest::QvxResult r = Run(args);
        EXPECT_EQ(r.exitCode, 1) << c.content;
        EXPECT_EQ(r.err.substr(0, c.error.size()), c.error) << c.content;
        EXPECT_EQ(ReadBytes("H.qvx"), before) << c.content;
    }
    EXPECT_EQ(Run({"import", "H.qvx", "source", "--from", "ical", "--map", "x=task"}).exitCode, 2);
}
