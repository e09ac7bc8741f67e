#include "interchange/csvreader.h"
#include "interchange/csvtable.h"
#include "interchange/datetimetext.h"
#include "interchange/timewarriorreader.h"
#include "interchange/wallclock.h"
#include "zone.h"

#include <gtest/gtest.h>

using namespace interchange;

namespace
{
std::string Error(const std::function<void()>& read)
{
    try
    {
        read();
    }
    catch (const CImportError& e)
    {
        return e.what();
    }
    return "(no error)";
}

std::string Span(const ImportedTime& t)
{
    return FormatLocal(t.start) + " - " + (t.end ? FormatLocal(*t.end) : std::string("open"));
}
} // namespace

TEST(TimewarriorReader, UtcBecomesLocalAndTagsMakeTheTask)
{
    ScopedZone zone("Asia/Kolkata"); // +05:30 all year
    const std::string json = R"([
      {"id":2,"start":"20240610T163000Z","end":"20240610T204500Z","tags":["Acme","Website"],"annotation":"night"},
      {"id":1,"start":"20240611T023020Z"}
    ])";
    const ImportSource first = ReadTimewarrior(json, {});
    ASSERT_EQ(first.times.size(), 2u);
    EXPECT_EQ(Span(first.times[0]), "2024-06-10 22:00 - 2024-06-11 02:15");
    EXPECT_EQ(first.times[0].taskPath, (std::vector<std::string>{"Acme"}));
    EXPECT_EQ(first.times[0].note, "night");
    EXPECT_EQ(first.times[0].where, "record 1 (@2)");
    EXPECT_EQ(Span(first.times[1]), "2024-06-11 08:00 - open");
    EXPECT_TRUE(first.times[1].taskPath.empty());

    const ImportSource all = ReadTimewarrior(json, {true});
    EXPECT_EQ(all.times[0].taskPath, (std::vector<std::string>{"Acme", "Website"}));
}

TEST(TimewarriorReader, BadInputSaysWhere)
{
    const struct
    {
        std::string json;
        std::string error;
    } cases[] = {
        {" \n", "the file is empty (a Timewarrior export is a JSON array)"},
        {"[\n{\"start\":}]", "line 2, column 10: not JSON: "},
        {"{}", "a Timewarrior export is a JSON array of intervals, and this is not one"},
        {"[94e284628]", "not JSON: number overflow parsing '94e284628'"}, // found by fuzz_timewarrior
        {"[1]", "record 1: an interval is a JSON object"},
        {R"([{"id":4,"end":"20240610T070000Z"}])", "record 1 (@4): the interval has no \"start\""},
        {R"([{"start":"2024-06-10T07:00"}])",
         "record 1: \"start\" is not a UTC time such as 20240610T070000Z: '2024-06-10T07:00'"},
        {R"([{"start":"18500610T070000Z"}])", "record 1: \"start\" is no plausible date and time: '18500610T070000Z'"},
        {R"([{"start":"20240231T070000Z"}])", "record 1: \"start\" is no plausible date and time: '20240231T070000Z'"},
        {R"([{"start":"20240610T070000Z","end":"20240610T060000Z"}])", "record 1: the interval ends before it starts"},
        {R"([{"start":"20240610T070000Z","end":"20240815T070000Z"}])",
         "record 1: the interval lasts more than 31 days (1584 hours): correct it in Timewarrior first"},
        {R"([{"start":"20240610T070000Z","tags":"Acme"}])", "record 1: \"tags\" is not a list"},
        {R"([{"start":"20240610T070000Z","tags":[1]}])", "record 1: a tag is not a text"},
        {R"([{"start":"20240610T070000Z","annotation":7}])", "record 1: \"annotation\" is not a text"},
        {"[{\"start\":\"20240610T070000Z\",\"tags\":[\"Caf\xE9\"]}]",
         "line 1, column 42: not UTF-8 text (the file may be in another encoding)"},
    };
    for (const auto& c : cases)
    {
        const std::string error = Error([&] { ReadTimewarrior(c.json, {}); });
        EXPECT_EQ(error.substr(0, c.error.size()), c.error) << c.json;
    }
}

TEST(TextOfDates, ReadAsPeopleWriteThem)
{
    auto date = [](const char* text, const char* picture)
    {
        const auto d = ReadDate(text, picture);
        return d ? std::to_string(d->year) + "-" + std::to_string(d->month) + "-" + std::to_string(d->day)
                 : std::string("-");
    };
    EXPECT_EQ(date("10.06.2024", "%d.%m.%Y"), "2024-6-10");
    EXPECT_EQ(date("6/9/24", "%-m/%-d/%y"), "2024-6-9");
    EXPECT_EQ(date("Mon,  3 Jun 2024", "%a, %e %b %Y"), "2024-6-3");
    EXPECT_EQ(date("Sept. 3 2024", "%b %d %Y"), "2024-9-3");
    EXPECT_EQ(date("10.06.2024 x", "%d.%m.%Y"), "-");
    EXPECT_EQ(date("2024-06", "%Y-%m-%d"), "-");

    const struct
    {
        const char* text;
        int seconds; // -1: does not read
    } times[] = {{"09:30", 34200}, {"9:30:15", 34215}, {"9.30", 34200},  {"9:30 PM", 77400},
                 {"12am", 0},      {"12:15 p.m.", 44100}, {"24:00", 86400}, {"24:01", -1},
                 {"13pm", -1},     {"9", -1},          {"09:60", -1},    {"9:30:00.250", 34200}};
    for (const auto& t : times)
        EXPECT_EQ(ReadTimeOfDay(t.text).value_or(-1), t.seconds) << t.text;

    const struct
    {
        const char* text;
        int64_t seconds;
    } durations[] = {{"1:30", 5400}, {"01:30:20", 5420}, {"1.5", 5400}, {"0,25", 900}, {".5", 1800},
                     {"100:00", 360000}, {"-1", -1}, {"1:3", -1}, {"1.", -1}, {"abc", -1}};
    for (const auto& d : durations)
        EXPECT_EQ(ReadDuration(d.text).value_or(-1), d.seconds) << d.text;
}

TEST(TextOfDates, DateAndTimeWithAZoneBecomesLocal)
{
    ScopedZone zone("Europe/Berlin"); // +02:00 in June
    auto text = [](const char* t, const char* picture = "%d.%m.%Y")
    {
        const auto m = ReadDateTime(t, picture);
        return m ? FormatLocal(*m) : std::string("-");
    };
    EXPECT_EQ(text("2024-06-10T07:00:00Z"), "2024-06-10 09:00");
    EXPECT_EQ(text("2024-06-10T09:00:00+02:00"), "2024-06-10 09:00");
    EXPECT_EQ(text("2024-06-10 23:30:00-0400"), "2024-06-11 05:30");
    EXPECT_EQ(text("2024-06-10 09:15"), "2024-06-10 09:15");
    EXPECT_EQ(text("10.06.2024 9:15 PM"), "2024-06-10 21:15");
    EXPECT_EQ(text("2024-06-10T09:00+25:00"), "-");
}

TEST(CsvTable, QuotedCellsKeepDelimitersLineBreaksAndQuotes)
{
    const CsvTable t = ParseCsv("sep=;\r\nA;B\r\n\r\n\"x;\"\"y\"\"\";\"two\nlines\"\r\n3;\n", 0);
    EXPECT_EQ(t.delimiter, ';');
    EXPECT_EQ(t.header.line, 2u);
    ASSERT_EQ(t.rows.size(), 2u);
    EXPECT_EQ(t.rows[0].line, 4u);
    EXPECT_EQ(t.rows[0].cells, (std::vector<std::string>{"x;\"y\"", "two\nlines"}));
    EXPECT_EQ(t.rows[1].line, 6u);
    EXPECT_EQ(ParseCsv("a\tb\tc,d\n", 0).delimiter, '\t');

    EXPECT_EQ(Error([] { ParseCsv("A,B\n1,\"open\n2,3\n", ','); }), "line 2, column 3: a quoted cell is not closed");
    EXPECT_EQ(Error([] { ParseCsv("A,B\n\"x\"y,1\n", ','); }), "line 2, column 4: text after the closing quote of a cell");
    EXPECT_EQ(Error([] { ParseCsv("\n\n", ','); }), "the file holds no header row (it is empty)");
}

TEST(CsvReader, TrackerExportsAreRecognisedByTheirHeaders)
{
    // A detailed export with dates and times of day, and one with dates and hours only.
    const ImportSource detailed = ReadCsv(
        "User,Client,Project,Task,Description,Start date,Start time,End date,End time,Duration\n"
        "Pat,Acme,Website,,\"Mock-ups, 1\",2024-06-10,09:00:00,2024-06-10,10:30:00,01:30:00\n"
        "Pat,Acme,Website,Call,,2024-06-10,23:00,2024-06-11,01:00,02:00\n"
        "Total,,,,,,,,,03:30:00\n",
        {});
    ASSERT_EQ(detailed.times.size(), 2u);
    EXPECT_EQ(detailed.times[0].taskPath, (std::vector<std::string>{"Acme", "Website"}));
    EXPECT_EQ(detailed.times[0].note, "Mock-ups, 1");
    EXPECT_EQ(Span(detailed.times[1]), "2024-06-10 23:00 - 2024-06-11 01:00");
    EXPECT_EQ(detailed.times[1].taskPath.back(), "Call");
    ASSERT_EQ(detailed.skipped.size(), 1u);
    EXPECT_EQ(detailed.skipped[0].where, "line 4");
    EXPECT_EQ(detailed.details.back(), "not used: 'User'");

    CsvOptions us;
    us.dayStartMinutes = 8 * 60;
    const ImportSource hours = ReadCsv("Date,Client,Project,Notes,Hours\n"
                                       "06/12/2024,Acme,Site,a,1.5\n06/12/2024,Acme,Site,b,0:45\n"
                                       "06/13/2024,Acme,Site,c,2\n",
                                       us);
    ASSERT_EQ(hours.times.size(), 3u);
    EXPECT_EQ(Span(hours.times[0]), "2024-06-12 08:00 - 2024-06-12 09:30");
    EXPECT_EQ(Span(hours.times[1]), "2024-06-12 09:30 - 2024-06-12 10:15");
    EXPECT_EQ(Span(hours.times[2]), "2024-06-13 08:00 - 2024-06-13 10:00");
}

TEST(CsvReader, MappingPictureAndEncodingAsGiven)
{
    CsvOptions o;
    o.map = "Tag=date,Beginn=start,Ende=end,Kunde=task,Projekt=task,Was=note";
    o.datePicture = "%d.%m.%Y";
    o.encoding = TextEncoding::windows1252;
    const ImportSource s = ReadCsv("Tag;Beginn;Ende;Projekt;Kunde;Was\n10.06.2024;22:00;01:30;Web;M\xFCller;Caf\xE9\n", o);
    ASSERT_EQ(s.times.size(), 1u);
    EXPECT_EQ(Span(s.times[0]), "2024-06-10 22:00 - 2024-06-11 01:30"); // the end passes midnight
    EXPECT_EQ(s.times[0].taskPath, (std::vector<std::string>{"Müller", "Web"}));
    EXPECT_EQ(s.times[0].note, "Café");

    const struct
    {
        std::string map;
        std::string text;
        std::string error;
    } cases[] = {
        {"Tag=date,Begin=start", "Tag,Beginn\n",
         "--map: the header row (line 1) has no column 'Begin'; its columns are 'Tag', 'Beginn'"},
        {"Tag=day", "Tag\n", "--map: 'day' is no field (task, date, start, end, end-date, duration, note, activity)"},
        {"Tag=date", "Tag\n", "line 1: --map names no column for the date or the start, or none for the end"},
        {"", "Who,What\n", "line 1: the header row has no column known to hold the date or the start"},
        {"", "Date,Hours\n2024-06-10,1:75\n", "line 2, column 2 ('Hours'): '1:75' is not a duration"},
        {"", "Date,Hours\n2024-06-10,800\n", "line 2, column 2 ('Hours'): '800' is longer than 31 days"},
        {"", "Date,Start,End\n2024-13-01,9:00,10:00\n", "line 2, column 1 ('Date'): '2024-13-01' is not a date"},
        {"", "Date,Start,End\n1066-10-14,9:00,10:00\n", "line 2, column 1 ('Date'): '1066-10-14' is no plausible date"},
        {"", "Start,End\n9:00,10:00\n", "line 2, column 1 ('Start'): '9:00' is a time without a date"},
        {"", "Date,Start,End\n2024-06-10,9:00,soon\n", "line 2, column 3 ('End'): 'soon' is not a time"},
        {"", "Date,Hours\n2024-06-10,1,x\n", "line 2: the row has 3 cells, the header row 2"},
        {"", "Date,Hours\n2024-06-10,\xFF\n", "line 2, column 12: not UTF-8 text"},
    };
    for (const auto& c : cases)
    {
        CsvOptions options;
        options.map = c.map;
        const std::string error = Error([&] { ReadCsv(c.text, options); });
        EXPECT_EQ(error.substr(0, c.error.size()), c.error) << c.text;
    }
}
