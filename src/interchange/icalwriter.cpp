#include "interchange/icalwriter.h"

#include "interchange/wallclock.h"
#include "model/timekeeperdoc.h"

#include <cstdio>
#include <ctime>
#include <map>
#include <mutex>
#include <unordered_set>

namespace interchange
{

namespace
{
uint64_t Fnv1a(const std::string& text)
{
    uint64_t h = 1469598103934665603ull;
    for (unsigned char c : text)
        h = (h ^ c) * 1099511628211ull;
    return h;
}

std::string Hex(uint64_t value, int digits)
{
    char text[20];
    std::snprintf(text, sizeof text, "%0*llx", digits, static_cast<unsigned long long>(value));
    return std::string(text).substr(0, size_t(digits));
}

// Full names from the first level below the top task down, as the reader splits them.
std::string FullPath(const CTask* task)
{
    if (!task)
        return std::string();
    if (!task->m_parent)
        return task->m_name;
    std::string path;
    for (const CTask* t = task; t && t->m_parent; t = t->m_parent)
        path = t->m_name + (path.empty() ? "" : "/" + path);
    return path;
}

// "20240610T070000Z" of the moment the local clock reads `local`.
std::string Utc(LocalSeconds local)
{
    const std::time_t t = std::time_t(UtcFromLocal(local));
    std::tm tm{};
    gmtime_r(&t, &tm);
    char text[48];
    std::snprintf(text, sizeof text, "%04d%02d%02dT%02d%02d%02dZ", tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday,
                  tm.tm_hour, tm.tm_min, tm.tm_sec);
    return text;
}

LocalSeconds LocalAt(const CDateTime& day, const CTinyTime& time)
{
    return LocalFromCivil(day.GetYear(), day.GetMonth(), day.GetDay()) + time.MinutesOfDay() * 60;
}

// A TEXT value: backslash, semicolon, comma and line breaks escaped (a comma too, so that a
// category with one stays one category).
std::string Escaped(const std::string& text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i)
    {
        const char c = text[i];
        if (c == '\\' || c == ';' || c == ',')
            out += std::string("\\") + c;
        else if (c == '\r')
            continue;
        else if (c == '\n')
            out += "\\n";
        else
            out += c;
    }
    return out;
}

// Content lines end in CR LF and are folded before 75 bytes, never inside a character.
class ContentWriter
{
public:
    void Line(const std::string& name, const std::string& value)
    {
        const std::string line = name + ":" + value;
        size_t start = 0;
        size_t limit = 75;
        while (line.size() - start > limit)
        {
            size_t cut = start + limit;
            while (cut > start && (static_cast<unsigned char>(line[cut]) & 0xC0) == 0x80)
                --cut;
            m_text += (start ? " " : "") + line.substr(start, cut - start) + "\r\n";
            start = cut;
            limit = 74; // a continuation begins with a blank
        }
        m_text += (start ? " " : "") + line.substr(start) + "\r\n";
    }
    std::string& Text() { return m_text; }

private:
    std::string m_text;
};

class Writer
{
public:
    Writer(const CTimeKeeperDoc& doc, const ICalExportOptions& options)
        : m_doc(doc), m_options(options),
          m_docId(Hex(Fnv1a(doc.GetRootTask() ? doc.GetRootTask()->m_name : std::string()), 8)),
          m_stamp(Utc(LocalFromDate(options.now)))
    {
        m_tasks = doc.GetSubtreeIds({options.taskId});
    }

    ICalExport Write();

private:
    bool InRange(const CDateTime& date) const
    {
        return (m_options.from.IsNull() || !(date.DatePart() < m_options.from.DatePart())) &&
               (m_options.to.IsNull() || !(m_options.to.DatePart() < date.DatePart()));
    }
    void AddEvent(const CDay& day, const CTimeEntry& e, int ordinal);
    void AddToDo(const CToDoEntry& t);

    const CTimeKeeperDoc& m_doc;
    const ICalExportOptions& m_options;
    const std::string m_docId;
    const std::string m_stamp;
    std::unordered_set<uint32_t> m_tasks;
    std::map<std::string, int> m_todoOrdinals;
    ContentWriter m_out;
    ICalExport m_result;
};

void Writer::AddEvent(const CDay& day, const CTimeEntry& e, int ordinal)
{
    const CDateTime& date = day.GetDate();
    m_out.Line("BEGIN", "VEVENT");
    // The day and the start name the entry: no two entries of a day overlap, so only
    // entries of no length can share both, and their order among them tells them apart.
    m_out.Line("UID", date.Format("%Y%m%d") + "T" + date.AddMinutes(e.m_start.MinutesOfDay()).Format("%H%M") +
                          "-" + std::to_string(ordinal) + ".time." + m_docId + "@quorvane");
    m_out.Line("DTSTAMP", m_stamp);
    m_out.Line("DTSTART", Utc(LocalAt(date, e.m_start)));
    m_out.Line("DTEND", Utc(LocalAt(date, e.m_end)));
    m_out.Line("SUMMARY", Escaped(FullPath(m_doc.GetTask(e.m_taskId))));
    if (!e.m_note.empty())
        m_out.Line("DESCRIPTION", Escaped(e.m_note));
    if (const CActivity* a = e.m_activityId ? m_doc.GetActivity(e.m_activityId) : nullptr)
        m_out.Line("CATEGORIES", Escaped(a->m_name));
    m_out.Line("END", "VEVENT");
    ++m_result.events;
}

void Writer::AddToDo(const CToDoEntry& t)
{
    const std::string key = std::to_string(t.m_taskId) + '\x1f' + t.m_description;
    const int ordinal = ++m_todoOrdinals[key];
    m_out.Line("BEGIN", "VTODO");
    m_out.Line("UID", Hex(Fnv1a(key), 16) + "-" + std::to_string(ordinal) + ".todo." + m_docId + "@quorvane");
    m_out.Line("DTSTAMP", m_stamp);
    m_out.Line("SUMMARY", Escaped(t.m_description));
    if (!t.m_note.empty())
        m_out.Line("DESCRIPTION", Escaped(t.m_note));
    m_out.Line("CATEGORIES", Escaped(FullPath(m_doc.GetTask(t.m_taskId))));
    const char p = t.m_priority.empty() ? '1' : t.m_priority[0];
    m_out.Line("PRIORITY", p >= '1' && p <= '9' ? std::string(1, p) : "9");
    // The letters below 9 have no iCalendar priority of their own.
    if (!(p >= '1' && p <= '9'))
        m_out.Line("X-QUORVANE-PRIORITY", Escaped(t.m_priority));
    if (!t.m_dueDate.IsNull())
        m_out.Line("DUE;VALUE=DATE", t.m_dueDate.Format("%Y%m%d"));
    if (t.IsCompleted())
    {
        m_out.Line("STATUS", "COMPLETED");
        // Midday keeps the day the same wherever the calendar is read.
        m_out.Line("COMPLETED", Utc(LocalAt(t.m_completeDate, CTinyTime(12, 0))));
    }
    else
        m_out.Line("STATUS", "NEEDS-ACTION");
    m_out.Line("END", "VTODO");
    ++m_result.todos;
}

ICalExport Writer::Write()
{
    m_out.Line("BEGIN", "VCALENDAR");
    m_out.Line("VERSION", "2.0");
    m_out.Line("PRODID", kOwnProductId);
    m_out.Line("CALSCALE", "GREGORIAN");
    auto day = m_options.from.IsNull() ? m_doc.m_days.begin() : m_doc.m_days.lower_bound(m_options.from.DayKey());
    for (; day != m_doc.m_days.end() && InRange(day->second->GetDate()); ++day)
    {
        std::map<int, int> sameStart;
        for (const auto& e : day->second->TimeEntries())
        {
            const int ordinal = ++sameStart[e->m_start.MinutesOfDay()];
            if (!m_tasks.count(e->m_taskId))
                continue;
            if (e->IsRunning())
                ++m_result.runningSkipped;
            else if (e->m_end == e->m_start)
                ++m_result.emptySkipped;
            else
                AddEvent(*day->second, *e, ordinal);
        }
        for (const auto& t : day->second->ToDoEntries())
            if (m_tasks.count(t->m_taskId))
                AddToDo(*t);
    }
    for (const auto& t : m_doc.m_todoList)
        if (m_tasks.count(t->m_taskId))
            AddToDo(*t);
    m_out.Line("END", "VCALENDAR");
    m_result.text = std::move(m_out.Text());
    return std::move(m_result);
}
} // namespace

ICalExport WriteICalendar(const CTimeKeeperDoc& doc, const ICalExportOptions& options)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    return Writer(doc, options).Write();
}

} // namespace interchange
