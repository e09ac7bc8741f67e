#include "interchange/icalreader.h"
#include "interchange/icalwriter.h"
#include "interchange/importapply.h"
#include "interchange/importplanner.h"
#include "interchange/wallclock.h"
#include "timekeeping/timerfixture.h"
#include "zone.h"

#include <libical/ical.h>

#include <gtest/gtest.h>

#include <set>

using namespace interchange;

namespace
{
std::string Calendar(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& l : lines)
        text += l + "\r\n";
    return text;
}

std::string Describe(const ImportedTime& t)
{
    std::string path;
    for (const std::string& p : t.taskPath)
        path += "/" + p;
    return t.where + " " + path + " " + FormatLocal(t.start) + " - " +
           (t.end ? FormatLocal(*t.end).substr(11) : std::string("open")) + (t.note.empty() ? "" : " '" + t.note + "'");
}

ICalOptions Until(int year, int month, int day)
{
    ICalOptions o;
    o.now = CDateTime::FromDate(year, month, day, 12, 0);
    return o;
}
} // namespace

TEST(ICalReader, ATrackersTasksKeepTheirTree)
{
    ScopedZone zone("Europe/Berlin");
    const ImportSource s = ReadICalendar(
        Calendar({"BEGIN:VCALENDAR", "PRODID:-//K Desktop Environment//NONSGML KTimeTracker 5.0.1//EN",
                  "VERSION:2.0",
                  "BEGIN:VTODO", "UID:p", "SUMMARY:Acme", "END:VTODO",                                  // 4
                  "BEGIN:VTODO", "UID:c", "SUMMARY:Website", "RELATED-TO:p", "END:VTODO",              // 8
                  "BEGIN:VTODO", "UID:i", "SUMMARY:Idle", "END:VTODO",                                  // 13
                  "BEGIN:VEVENT", "UID:e1", "SUMMARY:Website", "RELATED-TO:c", "DTSTART:20240610T070000Z", // 17
                  "DTEND:20240610T083000Z", "COMMENT:first", "COMMENT:second", "CATEGORIES:KTimeTracker",
                  "X-KDE-ktimetracker-duration:5400", "END:VEVENT",
                  "BEGIN:VEVENT", "UID:e2", "RELATED-TO:c", "DTSTART:20240610T100000Z",                  // 28
                  "DTEND:20240610T100000Z", "X-KDE-ktimetracker-duration:-600", "END:VEVENT",
                  "BEGIN:VEVENT", "UID:e3", "SUMMARY:Acme", "RELATED-TO:p", "DTSTART:20240611T070000Z", // 35
                  "END:VEVENT", "END:VCALENDAR"}),
        Until(2024, 6, 30));
    ASSERT_EQ(s.tasks.size(), 3u);
    EXPECT_EQ(s.tasks[1].path, (std::vector<std::string>{"Acme", "Website"}));
    EXPECT_EQ(s.tasks[2].where, "line 13");
    ASSERT_EQ(s.times.size(), 2u);
    EXPECT_EQ(Describe(s.times[0]), "line 17 /Acme/Website 2024-06-10 09:00 - 10:30 'first\nsecond'");
    EXPECT_EQ(Describe(s.times[1]), "line 35 /Acme 2024-06-11 09:00 - open");
    ASSERT_EQ(s.skipped.size(), 1u);
    EXPECT_EQ(s.skipped[0].where + ": " + s.skipped[0].reason,
              "line 28: a correction that takes time off, not a stretch of time");
    EXPECT_TRUE(s.todos.empty());
}

TEST(ICalReader, ACalendarsEventsGoToTheirSummaryAndItsToDosToTheList)
{
    ScopedZone zone("Europe/Berlin");
    const std::string text = Calendar({
        "BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Example//Calendar//EN",
        "BEGIN:VTIMEZONE", "TZID:Custom/East", "BEGIN:STANDARD", "DTSTART:19700101T000000",
        "TZOFFSETFROM:+0400", "TZOFFSETTO:+0400", "END:STANDARD", "END:VTIMEZONE",
        "BEGIN:VEVENT", "UID:a", "SUMMARY:Review", "CATEGORIES:Acme,Meetings", "DESCRIPTION:notes\\, more",   // 12
        "DTSTART;TZID=Custom/East:20240603T110000", "DURATION:PT1H30M", "END:VEVENT",
        "BEGIN:VEVENT", "UID:w", "SUMMARY:Standup", "DTSTART:20240603T091500", "DTEND:20240603T093000",      // 20
        "RRULE:FREQ=WEEKLY;BYDAY=MO,WE", "EXDATE:20240605T091500", "END:VEVENT",
        "BEGIN:VEVENT", "UID:w", "RECURRENCE-ID:20240610T091500", "SUMMARY:Standup",                      // 28
        "DTSTART:20240610T100000", "DTEND:20240610T101500", "END:VEVENT",
        "BEGIN:VEVENT", "UID:d", "SUMMARY:Holiday", "DTSTART;VALUE=DATE:20240604", "END:VEVENT",            // 35
        "BEGIN:VEVENT", "UID:z", "SUMMARY:Far", "DTSTART;TZID=Nowhere/City:20240604T100000",               // 40
        "DTEND;TZID=Nowhere/City:20240604T110000", "END:VEVENT",
        "BEGIN:VEVENT", "UID:x", "SUMMARY:Off", "STATUS:CANCELLED", "DTSTART:20240604T100000", "END:VEVENT", // 46
        "BEGIN:VTODO", "UID:t1", "SUMMARY:Send invoice", "DUE;VALUE=DATE:20240614", "PRIORITY:3", "END:VTODO",
        "BEGIN:VTODO", "UID:t2", "SUMMARY:Book trip", "STATUS:COMPLETED", "COMPLETED:20240602T230000Z",
        "END:VTODO", "END:VCALENDAR"});
    const ImportSource s = ReadICalendar(text, Until(2024, 6, 12));
    std::vector<std::string> times;
    for (const ImportedTime& t : s.times)
        times.push_back(Describe(t));
    EXPECT_EQ(times, (std::vector<std::string>{
                         "line 12 /Review 2024-06-03 09:00 - 10:30 'notes, more'",
                         "line 20 /Standup 2024-06-03 09:15 - 09:30",
                         "line 20, the occurrence of 2024-06-12 /Standup 2024-06-12 09:15 - 09:30",
                         "line 28 /Standup 2024-06-10 10:00 - 10:15",
                     }));
    std::vector<std::string> skipped;
    for (const SkippedItem& k : s.skipped)
        skipped.push_back(k.where + ": " + k.reason);
    EXPECT_EQ(skipped, (std::vector<std::string>{"line 35: an all-day event",
                                                 "line 40: its time zone is unknown",
                                                 "line 46: a cancelled event"}));
    ASSERT_EQ(s.todos.size(), 2u);
    EXPECT_EQ(s.todos[0].description, "Send invoice");
    EXPECT_EQ(s.todos[0].priority, "3");
    EXPECT_EQ(s.todos[0].due.DayKey(), "20240614");
    EXPECT_TRUE(s.todos[0].completed.IsNull());
    EXPECT_EQ(s.todos[1].completed.DayKey(), "20240603"); // 23:00 UTC is the next day here

    ICalOptions byCategory = Until(2024, 6, 12);
    byCategory.taskFromCategories = true;
    const ImportSource c = ReadICalendar(text, byCategory);
    EXPECT_EQ(Describe(c.times[0]), "line 12 /Acme 2024-06-03 09:00 - 10:30 'notes, more'");
    EXPECT_EQ(Describe(c.times[3]), "line 28 /Standup 2024-06-10 10:00 - 10:15");
}

TEST(ICalReader, BadCalendarsSayWhere)
{
    const std::vector<std::string> event = {"BEGIN:VEVENT", "UID:a", "DTSTART:20240610T090000"};
    auto with = [&](std::vector<std::string> extra, std::vector<std::string> tail = {"END:VEVENT", "END:VCALENDAR"})
    {
        std::vector<std::string> lines = {"BEGIN:VCALENDAR"};
        lines.insert(lines.end(), event.begin(), event.end());
        lines.insert(lines.end(), extra.begin(), extra.end());
        lines.insert(lines.end(), tail.begin(), tail.end());
        return Calendar(lines);
    };
    const struct
    {
        std::string text;
        std::string error;
    } cases[] = {
        {"Subject: hello\r\n", "line 1: an iCalendar file begins with BEGIN:VCALENDAR"},
        {with({}, {"END:VEVENT"}), "line 5: the file ends inside VCALENDAR (END:VCALENDAR is missing)"},
        {with({}, {"END:VTODO", "END:VCALENDAR"}), "line 5: END:VTODO does not close BEGIN:VEVENT"},
        {with({"just words"}), "line 5: not an iCalendar line (NAME:VALUE): 'just words'"},
        {with({"DTEND:2024061XT100000"}), "line 2: Can't parse as DATE-TIME value in DTEND property"},
        {with({"DTEND:20240610T080000"}), "line 2: the event ends before it starts"},
        {with({"DTEND:20240720T080000"}), "line 2: the event lasts more than 31 days"},
        {Calendar({"BEGIN:VCALENDAR", "BEGIN:VEVENT", "DTSTART:15240610T090000", "DTEND:15240610T100000",
                   "END:VEVENT", "END:VCALENDAR"}),
         "line 2: the year 1524 is no plausible date"},
        {Calendar({"BEGIN:VCALENDAR", "BEGIN:VTODO", "UID:a", "RELATED-TO:b", "END:VTODO", "BEGIN:VTODO", "UID:b",
                   "RELATED-TO:a", "X-KDE-KTIMETRACKER-X:1", "END:VTODO", "END:VCALENDAR"}),
         "line 2: the tasks' RELATED-TO make a loop"},
    };
    for (const auto& c : cases)
    {
        std::string error = "(no error)";
        try
        {
            ReadICalendar(c.text, Until(2024, 6, 30));
        }
        catch (const CImportError& e)
        {
            error = e.what();
        }
        EXPECT_EQ(error.substr(0, c.error.size()), c.error) << c.text;
    }
}

// Our export: read back by libical, and imported again gives the same entries.
class ICalRoundTrip : public TimerTest
{
protected:
    // task path, day, start-end, note, activity of every time entry of `d`.
    static std::set<std::string> Entries(const CTimeKeeperDoc& d)
    {
        std::set<std::string> result;
        for (const auto& [key, day] : d.m_days)
        {
            for (const auto& t : day->ToDoEntries())
                result.insert(d.GetTaskPath(d.GetTask(t->m_taskId)) + " done " + key + " '" + t->m_description + "'");
            for (const auto& e : day->TimeEntries())
            {
                if (e->m_start == e->m_end)
                    continue; // not exported
                const CActivity* a = d.GetActivity(e->m_activityId);
                result.insert(d.GetTaskPath(d.GetTask(e->m_taskId)) + " " + key + " " + e->m_start.ToText() + "-" +
                              e->m_end.ToText() + " '" + e->m_note + "' " + (a ? a->m_name : ""));
            }
        }
        for (const auto& t : d.m_todoList)
            result.insert(d.GetTaskPath(d.GetTask(t->m_taskId)) + " to-do '" + t->m_description + "' " +
                          t->m_priority + " " + (t->m_dueDate.IsNull() ? "" : t->m_dueDate.DayKey()));
        return result;
    }
    std::string Export()
    {
        ICalExportOptions o;
        o.now = app.Now();
        return WriteICalendar(doc, o).text;
    }
};

TEST_F(ICalRoundTrip, TheExportReadsBackAsItWasWritten)
{
    ScopedZone zone("America/New_York");
    const uint32_t meeting = doc.AddActivity("Meetings")->m_id;
    CTimeEntry* late = AddEntry(website, {22, 30}, {24, 0});
    late->m_note = "Notes; with, \"marks\"\nand a second line";
    late->m_activityId = meeting;
    AddEntry(audit, {9, 0}, {9, 0}); // of no length: left out
    AddEntry(audit, {9, 0}, {10, 0});
    qvtest::AddToDo(doc, support, "Reply", qvtest::Day(2024, 3, 20))->m_priority = "C";
    qvtest::AddCompletedToDo(doc, support, "Call back", Date());

    const std::string first = Export();
    icalcomponent* calendar = icalparser_parse_string(first.c_str());
    ASSERT_NE(calendar, nullptr);
    std::set<std::string> uids;
    size_t events = 0;
    for (icalcomponent* c = icalcomponent_get_first_component(calendar, ICAL_ANY_COMPONENT); c;
         c = icalcomponent_get_next_component(calendar, ICAL_ANY_COMPONENT), ++events)
        uids.insert(icalcomponent_get_uid(c));
    icalcomponent_free(calendar);
    EXPECT_EQ(events, 4u);
    EXPECT_EQ(uids.size(), events);
    EXPECT_NE(first.find("DTSTART:20240312T023000Z"), std::string::npos);

    late->m_note = "changed";
    late->m_end = CTinyTime(23, 0);
    const std::string second = Export();
    for (const std::string& uid : uids)
        EXPECT_NE(second.find("UID:" + uid), std::string::npos) << uid;

    // Into a new document of the same person, and into this one again.
    CTimeKeeperDoc copy;
    copy.NewDocument("Pat");
    ScriptedTimerUi copyUi(copy);
    CTimer copyTimer(copy, app, copyUi, prompter);
    ImportOptions options;
    options.now = app.Now();
    const ImportSource source = ReadICalendar(second, Until(2024, 3, 11));
    EXPECT_TRUE(source.pathsFromTop);
    ApplyImport(copy, copyTimer, PlanImport(copy, source, options), OverlapChoice::adjustOthers);
    std::set<std::string> imported = Entries(copy);
    EXPECT_EQ(imported, Entries(doc));
    EXPECT_TRUE(PlanImport(doc, source, options).IsEmpty());
}
