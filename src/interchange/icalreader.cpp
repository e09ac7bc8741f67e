#include "interchange/icalreader.h"

#include "interchange/icalwriter.h"
#include "interchange/textencoding.h"
#include "interchange/wallclock.h"

#include <libical/ical.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <memory>
#include <optional>
#include <set>

namespace interchange
{

namespace
{
// Deeper nesting than any calendar has (VCALENDAR, VEVENT, VALARM, ...) is refused
// before the parser sees it.
constexpr size_t kDeepestNesting = 8;
// A repeating event gives at most this many entries.
constexpr size_t kMostOccurrences = 10000;

const char kTrackerMark[] = "x-kde-ktimetracker-";

std::string Upper(std::string s)
{
    for (char& c : s)
        c = char(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

std::string Lower(std::string s)
{
    for (char& c : s)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string Text(const char* s) { return s ? std::string(s) : std::string(); }

std::vector<std::string> SplitPath(const std::string& path)
{
    std::vector<std::string> parts;
    size_t start = 0;
    for (size_t slash = path.find('/'); ; slash = path.find('/', start))
    {
        parts.push_back(path.substr(start, slash == std::string::npos ? std::string::npos : slash - start));
        if (slash == std::string::npos)
            break;
        start = slash + 1;
    }
    return parts;
}

// A component directly inside a VCALENDAR, as the text names it.
struct ScannedComponent
{
    std::string kind;
    size_t line = 0;
};

// Checks the nesting of BEGIN and END and the shape of every content line before the
// parser reads the text, which it forgives in ways that would lose data unseen.
std::vector<ScannedComponent> ScanStructure(const std::string& text)
{
    std::vector<ScannedComponent> found;
    std::vector<std::string> open;
    bool sawCalendar = false;
    size_t line = 0;
    size_t pos = 0;
    while (pos < text.size())
    {
        size_t end = text.find('\n', pos);
        if (end == std::string::npos)
            end = text.size();
        std::string content = text.substr(pos, end - pos);
        ++line;
        pos = end + 1;
        if (!content.empty() && content.back() == '\r')
            content.pop_back();
        // A folded line continues the one before it.
        if (!content.empty() && (content[0] == ' ' || content[0] == '\t'))
        {
            if (open.empty())
                throw CImportError("line " + std::to_string(line), "a continued line outside any calendar");
            continue;
        }
        if (content.find_first_not_of(" \t") == std::string::npos)
            continue;
        const size_t colon = content.find(':');
        const size_t nameEnd = std::min(colon, content.find(';'));
        if (colon == std::string::npos || nameEnd == 0)
            throw CImportError("line " + std::to_string(line),
                               "not an iCalendar line (NAME:VALUE): '" + content.substr(0, 40) + "'");
        const std::string name = Upper(content.substr(0, nameEnd));
        std::string value = Upper(content.substr(colon + 1));
        while (!value.empty() && (value.back() == ' ' || value.back() == '\t'))
            value.pop_back();
        const std::string where = "line " + std::to_string(line);
        if (name == "BEGIN")
        {
            if (open.empty() && value != "VCALENDAR")
                throw CImportError(where, sawCalendar ? "text after the end of the calendar"
                                                      : "an iCalendar file begins with BEGIN:VCALENDAR");
            if (open.size() == 1)
                found.push_back({value, line});
            open.push_back(value);
            sawCalendar = true;
            if (open.size() > kDeepestNesting)
                throw CImportError(where, "components nested too deeply");
        }
        else if (name == "END")
        {
            if (open.empty() || open.back() != value)
                throw CImportError(where, "END:" + value + " does not close " +
                                              (open.empty() ? std::string("anything") : "BEGIN:" + open.back()));
            open.pop_back();
        }
        else if (open.empty())
            throw CImportError(where, sawCalendar ? "text after the end of the calendar"
                                                  : "an iCalendar file begins with BEGIN:VCALENDAR");
    }
    if (!sawCalendar)
        throw CImportError("", "the file holds no calendar (BEGIN:VCALENDAR)");
    if (!open.empty())
        throw CImportError("line " + std::to_string(line), "the file ends inside " + open.back() +
                                                               " (END:" + open.back() + " is missing)");
    return found;
}

struct ComponentFree
{
    void operator()(icalcomponent* c) const { icalcomponent_free(c); }
};
using ComponentPtr = std::unique_ptr<icalcomponent, ComponentFree>;

std::optional<std::string> XValue(icalcomponent* c, const std::string& lowerName)
{
    for (icalproperty* p = icalcomponent_get_first_property(c, ICAL_X_PROPERTY); p;
         p = icalcomponent_get_next_property(c, ICAL_X_PROPERTY))
        if (Lower(Text(icalproperty_get_x_name(p))) == lowerName)
            return Text(icalproperty_get_x(p));
    return std::nullopt;
}

std::vector<std::string> Categories(icalcomponent* c)
{
    std::vector<std::string> list;
    for (icalproperty* p = icalcomponent_get_first_property(c, ICAL_CATEGORIES_PROPERTY); p;
         p = icalcomponent_get_next_property(c, ICAL_CATEGORIES_PROPERTY))
        if (const std::string v = Text(icalproperty_get_categories(p)); !v.empty())
            list.push_back(v);
    return list;
}

// A value the parser could not read is an error in the source, not a missing value.
void RefuseParseErrors(icalcomponent* c, const std::string& where)
{
    for (icalproperty* p = icalcomponent_get_first_property(c, ICAL_XLICERROR_PROPERTY); p;
         p = icalcomponent_get_next_property(c, ICAL_XLICERROR_PROPERTY))
    {
        icalparameter* type = icalproperty_get_first_parameter(p, ICAL_XLICERRORTYPE_PARAMETER);
        const auto kind = type ? icalparameter_get_xlicerrortype(type) : ICAL_XLICERRORTYPE_NONE;
        if (kind == ICAL_XLICERRORTYPE_VALUEPARSEERROR ||
            kind == ICAL_XLICERRORTYPE_PARAMETERVALUEPARSEERROR)
            throw CImportError(where, Text(icalproperty_get_xlicerror(p)));
    }
}

class CalendarReader
{
public:
    CalendarReader(const ICalOptions& options, ImportSource& source)
        : m_options(options), m_source(source), m_now(LocalFromDate(options.now))
    {
    }

    void Read(const std::string& text);

private:
    struct Item
    {
        icalcomponent* component = nullptr;
        std::string where;
    };
    // A time of the component on the local clock; none for a date without a time or a
    // zone nobody knows (`problem` says which).
    std::optional<LocalSeconds> Local(icaltimetype t, icalproperty* property,
                                      const std::string& where, std::string& problem) const;
    std::optional<LocalSeconds> Start(icalcomponent* c, const std::string& where, std::string& problem) const;
    std::vector<std::string> TrackerPath(const std::string& uid, const std::string& where) const;
    void ReadEvent(const Item& item);
    void AddOccurrences(const Item& item, const ImportedTime& first, int64_t length);
    void ReadToDo(const Item& item);
    CDateTime DateValue(icaltimetype t, icalproperty* property, const std::string& where) const;

    const ICalOptions& m_options;
    ImportSource& m_source;
    const LocalSeconds m_now;
    bool m_tracker = false;
    bool m_own = false;
    std::map<std::string, std::pair<std::string, std::string>> m_trackerTasks; // uid -> summary, parent
    std::map<std::string, std::set<LocalSeconds>> m_overridden;                // uid -> recurrence ids
};

std::optional<LocalSeconds> CalendarReader::Local(icaltimetype t, icalproperty* property,
                                                  const std::string& where, std::string& problem) const
{
    if (icaltime_is_null_time(t))
    {
        problem = "no start";
        return std::nullopt;
    }
    if (!PlausibleYear(t.year))
        throw CImportError(where, "the year " + std::to_string(t.year) + " is no plausible date");
    if (t.is_date)
    {
        problem = "an all-day event";
        return std::nullopt;
    }
    icalparameter* tzid = property ? icalproperty_get_first_parameter(property, ICAL_TZID_PARAMETER) : nullptr;
    if (icaltime_is_utc(t) || t.zone)
    {
        const icaltimetype u = icaltime_convert_to_zone(t, icaltimezone_get_utc_timezone());
        return LocalFromUtc(LocalFromCivil(u.year, u.month, u.day, u.hour, u.minute, u.second));
    }
    if (tzid)
    {
        problem = "its time zone is unknown";
        return std::nullopt;
    }
    return LocalFromCivil(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

std::optional<LocalSeconds> CalendarReader::Start(icalcomponent* c, const std::string& where,
                                                  std::string& problem) const
{
    icalproperty* p = icalcomponent_get_first_property(c, ICAL_DTSTART_PROPERTY);
    if (!p)
    {
        problem = "no start";
        return std::nullopt;
    }
    return Local(icalcomponent_get_dtstart(c), p, where, problem);
}

std::vector<std::string> CalendarReader::TrackerPath(const std::string& uid, const std::string& where) const
{
    std::vector<std::string> path;
    std::set<std::string> seen;
    for (std::string at = uid; !at.empty();)
    {
        const auto it = m_trackerTasks.find(at);
        if (it == m_trackerTasks.end())
            break;
        if (!seen.insert(at).second)
            throw CImportError(where, "the tasks' RELATED-TO make a loop");
        path.push_back(it->second.first);
        at = it->second.second;
    }
    std::reverse(path.begin(), path.end());
    return path;
}

CDateTime CalendarReader::DateValue(icaltimetype t, icalproperty* property, const std::string& where) const
{
    if (icaltime_is_null_time(t))
        return CDateTime::Null();
    if (!PlausibleYear(t.year) || t.month < 1 || t.month > 12 || t.day < 1 ||
        t.day > DaysInMonth(t.year, t.month))
        throw CImportError(where, "the year " + std::to_string(t.year) + " is no plausible date");
    if (t.is_date)
        return CDateTime::FromDate(t.year, t.month, t.day);
    std::string problem;
    const auto local = Local(t, property, where, problem);
    return local ? DateOf(*local) : CDateTime::FromDate(t.year, t.month, t.day);
}

void CalendarReader::ReadEvent(const Item& item)
{
    icalcomponent* c = item.component;
    if (icalcomponent_get_status(c) == ICAL_STATUS_CANCELLED)
    {
        m_source.skipped.push_back({item.where, "a cancelled event"});
        return;
    }
    std::string problem;
    const std::optional<LocalSeconds> start = Start(c, item.where, problem);
    if (!start)
    {
        m_source.skipped.push_back({item.where, problem});
        return;
    }
    ImportedTime time;
    time.where = item.where;
    time.start = *start;
    const std::string summary = Text(icalcomponent_get_summary(c));
    const std::vector<std::string> categories = Categories(c);
    std::string note = Text(icalcomponent_get_description(c));
    if (m_tracker)
    {
        for (icalproperty* p = icalcomponent_get_first_property(c, ICAL_COMMENT_PROPERTY); p;
             p = icalcomponent_get_next_property(c, ICAL_COMMENT_PROPERTY))
            note += (note.empty() ? "" : "\n") + Text(icalproperty_get_comment(p));
        icalproperty* related = icalcomponent_get_first_property(c, ICAL_RELATEDTO_PROPERTY);
        const std::string task = related ? Text(icalproperty_get_relatedto(related)) : std::string();
        time.taskPath = m_trackerTasks.count(task) ? TrackerPath(task, item.where)
                                                   : std::vector<std::string>{summary};
        if (const auto seconds = XValue(c, std::string(kTrackerMark) + "duration");
            seconds && seconds->size() > 1 && (*seconds)[0] == '-')
        {
            m_source.skipped.push_back({item.where, "a correction that takes time off, not a stretch of time"});
            return;
        }
    }
    else if (m_own)
    {
        time.taskPath = SplitPath(summary);
        if (!categories.empty())
            time.activity = categories.front();
    }
    else if (m_options.taskFromCategories && !categories.empty())
    {
        time.taskPath = {categories.front()};
        if (note.empty())
            note = summary;
    }
    else
        time.taskPath = {summary};
    time.note = note;

    const bool hasEnd = icalcomponent_get_first_property(c, ICAL_DTEND_PROPERTY) ||
                        icalcomponent_get_first_property(c, ICAL_DURATION_PROPERTY);
    if (!hasEnd)
    {
        // A tracker's event without an end is its running timer.
        if (m_tracker)
            m_source.times.push_back(std::move(time));
        else
            m_source.skipped.push_back({item.where, "no end or duration"});
        return;
    }
    const std::optional<LocalSeconds> end =
        Local(icalcomponent_get_dtend(c), icalcomponent_get_first_property(c, ICAL_DTEND_PROPERTY),
              item.where, problem);
    if (!end)
    {
        m_source.skipped.push_back({item.where, problem});
        return;
    }
    if (*end < *start)
        throw CImportError(item.where, "the event ends before it starts");
    if (*end - *start > kLongestInterval)
        throw CImportError(item.where, "the event lasts more than 31 days");
    time.end = *end;
    const int64_t length = *end - *start;
    if (icalcomponent_get_first_property(c, ICAL_RRULE_PROPERTY))
        AddOccurrences(item, time, length);
    else
        m_source.times.push_back(std::move(time));
}

void CalendarReader::AddOccurrences(const Item& item, const ImportedTime& first, int64_t length)
{
    icalcomponent* c = item.component;
    const icalrecurrencetype rule =
        icalproperty_get_rrule(icalcomponent_get_first_property(c, ICAL_RRULE_PROPERTY));
    if (rule.freq == ICAL_NO_RECURRENCE || rule.freq < ICAL_DAILY_RECURRENCE)
    {
        m_source.skipped.push_back({item.where, "an event that repeats more often than daily"});
        return;
    }
    std::set<LocalSeconds> excluded = m_overridden[Text(icalcomponent_get_uid(c))];
    std::string problem;
    for (icalproperty* p = icalcomponent_get_first_property(c, ICAL_EXDATE_PROPERTY); p;
         p = icalcomponent_get_next_property(c, ICAL_EXDATE_PROPERTY))
        if (const auto t = Local(icalproperty_get_exdate(p), p, item.where, problem))
            excluded.insert(*t);

    const icaltimetype dtstart = icalcomponent_get_dtstart(c);
    icalrecur_iterator* it = icalrecur_iterator_new(rule, dtstart);
    if (!it)
    {
        m_source.skipped.push_back({item.where, "a repetition rule that does not read"});
        return;
    }
    size_t count = 0;
    for (icaltimetype occurrence = icalrecur_iterator_next(it); !icaltime_is_null_time(occurrence);
         occurrence = icalrecur_iterator_next(it))
    {
        occurrence.zone = dtstart.zone;
        const auto start = Local(occurrence, icalcomponent_get_first_property(c, ICAL_DTSTART_PROPERTY),
                                 item.where, problem);
        if (!start || *start > m_now)
            break;
        if (++count > kMostOccurrences)
        {
            m_source.skipped.push_back({item.where, "occurrences after the first 10000 of an event"});
            break;
        }
        if (excluded.count(*start))
            continue;
        ImportedTime time = first;
        time.start = *start;
        time.end = *start + length;
        if (*start != first.start)
            time.where += ", the occurrence of " + FormatLocal(*start).substr(0, 10);
        m_source.times.push_back(std::move(time));
    }
    icalrecur_iterator_free(it);
}

void CalendarReader::ReadToDo(const Item& item)
{
    icalcomponent* c = item.component;
    const icalproperty_status status = icalcomponent_get_status(c);
    if (status == ICAL_STATUS_CANCELLED)
    {
        m_source.skipped.push_back({item.where, "a cancelled to-do"});
        return;
    }
    ImportedToDo todo;
    todo.where = item.where;
    todo.description = Text(icalcomponent_get_summary(c));
    todo.note = Text(icalcomponent_get_description(c));
    const std::vector<std::string> categories = Categories(c);
    if (m_own && !categories.empty())
        todo.taskPath = SplitPath(categories.front());
    else if (m_options.taskFromCategories && !categories.empty())
        todo.taskPath = {categories.front()};

    const auto own = XValue(c, "x-quorvane-priority");
    if (own && own->size() == 1 && std::isalnum(static_cast<unsigned char>((*own)[0])) && (*own)[0] != '0')
        todo.priority = Upper(*own);
    else if (icalproperty* p = icalcomponent_get_first_property(c, ICAL_PRIORITY_PROPERTY))
    {
        const int priority = icalproperty_get_priority(p);
        if (priority >= 1 && priority <= 9)
            todo.priority = std::string(1, char('0' + priority));
    }
    if (icalproperty* p = icalcomponent_get_first_property(c, ICAL_DUE_PROPERTY))
        todo.due = DateValue(icalcomponent_get_due(c), p, item.where);
    icalproperty* completed = icalcomponent_get_first_property(c, ICAL_COMPLETED_PROPERTY);
    icalproperty* percent = icalcomponent_get_first_property(c, ICAL_PERCENTCOMPLETE_PROPERTY);
    if (completed)
        todo.completed = DateValue(icalproperty_get_completed(completed), completed, item.where);
    else if (status == ICAL_STATUS_COMPLETED || (percent && icalproperty_get_percentcomplete(percent) >= 100))
    {
        // Done, but not said when: the last change, else today.
        icalproperty* changed = icalcomponent_get_first_property(c, ICAL_LASTMODIFIED_PROPERTY);
        todo.completed = changed ? DateValue(icalproperty_get_lastmodified(changed), changed, item.where)
                                 : m_options.now.DatePart();
    }
    m_source.todos.push_back(std::move(todo));
}

void CalendarReader::Read(const std::string& text)
{
    const std::vector<ScannedComponent> scanned = ScanStructure(text);
    icalerror_set_errors_are_fatal(0);
    ComponentPtr root(icalparser_parse_string(text.c_str()));
    if (!root)
        throw CImportError("", "not an iCalendar file");
    std::vector<icalcomponent*> calendars;
    if (icalcomponent_isa(root.get()) == ICAL_VCALENDAR_COMPONENT)
        calendars.push_back(root.get());
    else
        for (icalcomponent* c = icalcomponent_get_first_component(root.get(), ICAL_VCALENDAR_COMPONENT); c;
             c = icalcomponent_get_next_component(root.get(), ICAL_VCALENDAR_COMPONENT))
            calendars.push_back(c);

    std::vector<Item> events, todos;
    size_t index = 0;
    for (icalcomponent* calendar : calendars)
    {
        const std::string product = Text(icalcomponent_get_first_property(calendar, ICAL_PRODID_PROPERTY)
                                             ? icalproperty_get_prodid(icalcomponent_get_first_property(calendar, ICAL_PRODID_PROPERTY))
                                             : nullptr);
        m_own = m_own || product == kOwnProductId;
        m_tracker = m_tracker || Lower(product).find("ktimetracker") != std::string::npos;
        for (icalcomponent* c = icalcomponent_get_first_component(calendar, ICAL_ANY_COMPONENT); c;
             c = icalcomponent_get_next_component(calendar, ICAL_ANY_COMPONENT), ++index)
        {
            const icalcomponent_kind kind = icalcomponent_isa(c);
            const char* kindName = icalcomponent_kind_to_string(kind);
            const bool matched = index < scanned.size() && kindName && scanned[index].kind == kindName;
            const std::string where = matched ? "line " + std::to_string(scanned[index].line)
                                              : std::string(kindName ? kindName : "component") + " " +
                                                    std::to_string(index + 1);
            if (kind != ICAL_VEVENT_COMPONENT && kind != ICAL_VTODO_COMPONENT)
                continue;
            RefuseParseErrors(c, where);
            for (icalproperty* p = icalcomponent_get_first_property(c, ICAL_X_PROPERTY); p;
                 p = icalcomponent_get_next_property(c, ICAL_X_PROPERTY))
                m_tracker = m_tracker || Lower(Text(icalproperty_get_x_name(p))).rfind(kTrackerMark, 0) == 0;
            (kind == ICAL_VEVENT_COMPONENT ? events : todos).push_back({c, where});
        }
    }

    m_source.format = m_tracker ? "time tracker's iCalendar file" : m_own ? "iCalendar export of ours" : "iCalendar";
    m_source.pathsFromTop = m_own;
    if (m_tracker)
    {
        for (const Item& t : todos)
        {
            icalproperty* parent = icalcomponent_get_first_property(t.component, ICAL_RELATEDTO_PROPERTY);
            m_trackerTasks[Text(icalcomponent_get_uid(t.component))] = {
                Text(icalcomponent_get_summary(t.component)),
                parent ? Text(icalproperty_get_relatedto(parent)) : std::string()};
        }
        for (const Item& t : todos)
            m_source.tasks.push_back({TrackerPath(Text(icalcomponent_get_uid(t.component)), t.where), t.where});
        m_source.details.push_back("the tracker's tasks (VTODOs) keep their tree; its events go to the task they relate to");
    }
    else
    {
        m_source.details.push_back(m_own ? "an event's summary is its task path, its category the activity"
                                   : m_options.taskFromCategories
                                       ? "an event's first category names its task (else its summary)"
                                       : "an event's summary names its task; VTODOs become to-dos");
        for (const Item& t : todos)
            ReadToDo(t);
    }
    for (const Item& e : events)
        if (icalproperty* id = icalcomponent_get_first_property(e.component, ICAL_RECURRENCEID_PROPERTY))
        {
            std::string problem;
            if (const auto t = Local(icalcomponent_get_recurrenceid(e.component), id, e.where, problem))
                m_overridden[Text(icalcomponent_get_uid(e.component))].insert(*t);
        }
    for (const Item& e : events)
        ReadEvent(e);
}
} // namespace

ImportSource ReadICalendar(std::string_view bytes, const ICalOptions& options)
{
    const std::string text = DecodeSourceText(bytes);
    ImportSource source;
    CalendarReader(options, source).Read(text);
    return source;
}

} // namespace interchange
