#include "interchange/icalwriter.h"

#include "interchange/wallclock.h"
#include "model/timekeeperdoc.h"

#include <libical/ical.h>

#include <cstdio>
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

icaltimetype Utc(LocalSeconds local)
{
    return icaltime_from_timet_with_zone(time_t(UtcFromLocal(local)), 0, icaltimezone_get_utc_timezone());
}

LocalSeconds LocalAt(const CDateTime& day, const CTinyTime& time)
{
    return LocalFromCivil(day.GetYear(), day.GetMonth(), day.GetDay()) + time.MinutesOfDay() * 60;
}

void AddText(icalcomponent* c, icalproperty* p) { icalcomponent_add_property(c, p); }

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
    void AddEvent(icalcomponent* calendar, const CDay& day, const CTimeEntry& e, int ordinal);
    void AddToDo(icalcomponent* calendar, const CToDoEntry& t);

    const CTimeKeeperDoc& m_doc;
    const ICalExportOptions& m_options;
    const std::string m_docId;
    const icaltimetype m_stamp;
    std::unordered_set<uint32_t> m_tasks;
    std::map<std::string, int> m_todoOrdinals;
    ICalExport m_result;
};

void Writer::AddEvent(icalcomponent* calendar, const CDay& day, const CTimeEntry& e, int ordinal)
{
    const CDateTime& date = day.GetDate();
    icalcomponent* event = icalcomponent_new_vevent();
    // The day and the start name the entry: no two entries of a day overlap, so only
    // entries of no length can share both, and their order among them tells them apart.
    AddText(event, icalproperty_new_uid((date.Format("%Y%m%d") + "T" + date.AddMinutes(e.m_start.MinutesOfDay()).Format("%H%M") +
                                         "-" + std::to_string(ordinal) + ".time." + m_docId + "@quorvane")
                                            .c_str()));
    AddText(event, icalproperty_new_dtstamp(m_stamp));
    AddText(event, icalproperty_new_dtstart(Utc(LocalAt(date, e.m_start))));
    AddText(event, icalproperty_new_dtend(Utc(LocalAt(date, e.m_end))));
    AddText(event, icalproperty_new_summary(FullPath(m_doc.GetTask(e.m_taskId)).c_str()));
    if (!e.m_note.empty())
        AddText(event, icalproperty_new_description(e.m_note.c_str()));
    if (const CActivity* a = e.m_activityId ? m_doc.GetActivity(e.m_activityId) : nullptr)
        AddText(event, icalproperty_new_categories(a->m_name.c_str()));
    icalcomponent_add_component(calendar, event);
    ++m_result.events;
}

void Writer::AddToDo(icalcomponent* calendar, const CToDoEntry& t)
{
    icalcomponent* todo = icalcomponent_new_vtodo();
    const std::string key = std::to_string(t.m_taskId) + '\x1f' + t.m_description;
    const int ordinal = ++m_todoOrdinals[key];
    AddText(todo, icalproperty_new_uid((Hex(Fnv1a(key), 16) + "-" + std::to_string(ordinal) + ".todo." + m_docId +
                                        "@quorvane")
                                           .c_str()));
    AddText(todo, icalproperty_new_dtstamp(m_stamp));
    AddText(todo, icalproperty_new_summary(t.m_description.c_str()));
    if (!t.m_note.empty())
        AddText(todo, icalproperty_new_description(t.m_note.c_str()));
    AddText(todo, icalproperty_new_categories(FullPath(m_doc.GetTask(t.m_taskId)).c_str()));
    const char p = t.m_priority.empty() ? '1' : t.m_priority[0];
    AddText(todo, icalproperty_new_priority(p >= '1' && p <= '9' ? p - '0' : 9));
    // The letters below 9 have no iCalendar priority of their own.
    if (!(p >= '1' && p <= '9'))
    {
        icalproperty* own = icalproperty_new_x(t.m_priority.c_str());
        icalproperty_set_x_name(own, "X-QUORVANE-PRIORITY");
        AddText(todo, own);
    }
    if (!t.m_dueDate.IsNull())
    {
        icaltimetype due = icaltime_null_date();
        due.year = t.m_dueDate.GetYear();
        due.month = t.m_dueDate.GetMonth();
        due.day = t.m_dueDate.GetDay();
        AddText(todo, icalproperty_new_due(due));
    }
    if (t.IsCompleted())
    {
        AddText(todo, icalproperty_new_status(ICAL_STATUS_COMPLETED));
        // Midday keeps the day the same wherever the calendar is read.
        AddText(todo, icalproperty_new_completed(Utc(LocalAt(t.m_completeDate, CTinyTime(12, 0)))));
    }
    else
        AddText(todo, icalproperty_new_status(ICAL_STATUS_NEEDSACTION));
    icalcomponent_add_component(calendar, todo);
    ++m_result.todos;
}

ICalExport Writer::Write()
{
    icalcomponent* calendar = icalcomponent_new_vcalendar();
    AddText(calendar, icalproperty_new_version("2.0"));
    AddText(calendar, icalproperty_new_prodid(kOwnProductId));
    AddText(calendar, icalproperty_new_calscale("GREGORIAN"));

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
                AddEvent(calendar, *day->second, *e, ordinal);
        }
        for (const auto& t : day->second->ToDoEntries())
            if (m_tasks.count(t->m_taskId))
                AddToDo(calendar, *t);
    }
    for (const auto& t : m_doc.m_todoList)
        if (m_tasks.count(t->m_taskId))
            AddToDo(calendar, *t);

    char* text = icalcomponent_as_ical_string_r(calendar);
    m_result.text = text ? text : "";
    icalmemory_free_buffer(text);
    icalcomponent_free(calendar);
    return std::move(m_result);
}
} // namespace

ICalExport WriteICalendar(const CTimeKeeperDoc& doc, const ICalExportOptions& options)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    return Writer(doc, options).Write();
}

} // namespace interchange
