#include "interchange/importplanner.h"

#include "interchange/wallclock.h"
#include "model/timekeeperdoc.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

namespace interchange
{

namespace
{
constexpr uint16_t kDeepestLevel = 19;

const char kTimerRunsReason[] = "a timer is running in the document already";
const char kFutureReason[] = "starts after the current time";
const char kLaterOpenReason[] = "still running in the source, and a later one is too";
const char kTooShortReason[] = "shorter than a minute";
const char kClockChangeReason[] = "it ends before it starts on the local clock (a clock change)";
const char kInDocumentReason[] = "already in the document";
const char kRepeatedReason[] = "the same entry comes earlier in the source";
const char kTooDeepReason[] = "the task path is deeper than the 19 levels of a task tree";
const char kProjectParentReason[] = "its task would go under a task linked to a project";
const char kSummaryReason[] = "its task is a summary task of a project and takes no entries";
const char kNoDescriptionReason[] = "a to-do without a description";

std::string Lower(std::string s)
{
    for (char& c : s)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string Trim(const std::string& s)
{
    const size_t first = s.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return std::string();
    return s.substr(first, s.find_last_not_of(" \t\r\n") - first + 1);
}

LocalSeconds RoundToMinute(LocalSeconds t)
{
    const LocalSeconds shifted = t + 30;
    return (shifted >= 0 ? shifted / 60 : -((-shifted + 59) / 60)) * 60;
}

// The day's conflict rule between a new stretch [ns, ne) and another [es, ee), in minutes.
bool Overlaps(int64_t ns, int64_t ne, int64_t es, int64_t ee)
{
    if (ns >= ne)
        return false;
    if (es > ns)
        return ne > es;
    if (es == ns)
        return es != ee;
    return ee > ns;
}

std::string SpanText(int64_t start, int64_t end)
{
    auto hm = [](int64_t m)
    {
        char text[8];
        std::snprintf(text, sizeof text, "%02d:%02d", int(m / 60), int(m % 60));
        return std::string(text);
    };
    return hm(start) + "-" + hm(end);
}

class Planner
{
public:
    Planner(const CTimeKeeperDoc& doc, const ImportOptions& options, CImportPlan& plan)
        : m_doc(doc), m_options(options), m_plan(plan), m_now(doc.RoundedNow())
    {
    }

    void Run(const ImportSource& source);

private:
    using TaskRef = CImportPlan::TaskRef;

    std::optional<TaskRef> ResolvePath(const std::vector<std::string>& path, const std::string& where);
    std::optional<TaskRef> ResolveEntryTask(const std::vector<std::string>& path, const std::string& where);
    uint16_t LevelOf(const TaskRef& ref) const;
    std::string PathOf(const TaskRef& ref) const;
    static std::string Key(const TaskRef& ref)
    {
        return ref.IsNew() ? "n" + std::to_string(ref.newIndex) : "e" + std::to_string(ref.id);
    }
    void ResolveActivity(const std::string& name, CImportPlan::TimeItem& item);
    void PlanTime(const ImportedTime& time);
    void PlanPiece(const TaskRef& task, int64_t day, int64_t start, int64_t end, const ImportedTime& time);
    void PlanRunning(const ImportedTime& time);
    void PlanToDo(const ImportedToDo& todo);

    const CTimeKeeperDoc& m_doc;
    const ImportOptions& m_options;
    CImportPlan& m_plan;
    const CDateTime m_now;
    const CTask* m_under = nullptr;
    bool m_pathsFromTop = false;
    std::unordered_map<std::string, TaskRef> m_resolved;
    std::unordered_map<std::string, int> m_newActivities;
    std::unordered_set<std::string> m_entryKeys;
    std::unordered_set<std::string> m_todoKeys;
    // The new entries of each day (indexes into the plan's times), for their overlaps.
    std::unordered_map<int64_t, std::vector<size_t>> m_byDay;
};

uint16_t Planner::LevelOf(const TaskRef& ref) const
{
    return ref.IsNew() ? m_plan.Tasks()[size_t(ref.newIndex)].level : m_doc.GetTask(ref.id)->m_level;
}

std::string Planner::PathOf(const TaskRef& ref) const
{
    if (!ref.IsNew() && ref.id == CTimeKeeperDoc::kRootTaskId)
        return std::string();
    return m_plan.TaskPath(ref, m_doc);
}

std::optional<CImportPlan::TaskRef> Planner::ResolvePath(const std::vector<std::string>& path,
                                                         const std::string& where)
{
    std::vector<std::string> names;
    for (const std::string& raw : path)
        if (std::string name = Trim(raw); !name.empty())
            names.push_back(std::move(name));
    // A path of our own export may begin with the top task's name.
    if (m_pathsFromTop && !names.empty() && Lower(names[0]) == Lower(m_under->m_name) &&
        std::none_of(m_under->m_children.begin(), m_under->m_children.end(),
                     [&](const CTask* c) { return Lower(c->m_name) == Lower(names[0]); }))
        names.erase(names.begin());

    TaskRef at{m_under->m_id, -1};
    size_t i = 0;
    for (; i < names.size(); ++i)
    {
        const std::string lower = Lower(names[i]);
        if (auto it = m_resolved.find(Key(at) + '\x1f' + lower); it != m_resolved.end())
        {
            at = it->second;
            continue;
        }
        const CTask* found = nullptr;
        if (!at.IsNew())
            for (const CTask* child : m_doc.GetTask(at.id)->m_children)
                if (Lower(child->m_name) == lower)
                {
                    found = child;
                    break;
                }
        if (!found)
            break;
        m_resolved.emplace(Key(at) + '\x1f' + lower, TaskRef{found->m_id, -1});
        at = TaskRef{found->m_id, -1};
    }
    if (i == names.size())
        return at;
    // The rest of the path is new: all of it can be made, or none.
    if (LevelOf(at) + (names.size() - i) > kDeepestLevel)
    {
        m_plan.Skip(where, kTooDeepReason);
        return std::nullopt;
    }
    if (!at.IsNew() && m_doc.GetTask(at.id)->m_projectId != 0)
    {
        m_plan.Skip(where, kProjectParentReason);
        return std::nullopt;
    }
    for (; i < names.size(); ++i)
    {
        const std::string parentPath = PathOf(at);
        const TaskRef made = m_plan.AddTask({at, names[i], uint16_t(LevelOf(at) + 1),
                                             parentPath.empty() ? names[i] : parentPath + "/" + names[i]});
        m_resolved.emplace(Key(at) + '\x1f' + Lower(names[i]), made);
        at = made;
    }
    return at;
}

std::optional<CImportPlan::TaskRef> Planner::ResolveEntryTask(const std::vector<std::string>& path,
                                                              const std::string& where)
{
    const std::optional<TaskRef> task = ResolvePath(path, where);
    if (task && !task->IsNew() && m_doc.GetTask(task->id)->IsProjectSummary())
    {
        m_plan.Skip(where, kSummaryReason);
        return std::nullopt;
    }
    return task;
}

void Planner::ResolveActivity(const std::string& raw, CImportPlan::TimeItem& item)
{
    const std::string name = Trim(raw);
    if (name.empty())
        return;
    const std::string lower = Lower(name);
    for (const auto& [id, activity] : m_doc.m_activities)
        if (Lower(activity->m_name) == lower)
        {
            item.activityId = id;
            return;
        }
    auto [it, added] = m_newActivities.emplace(lower, 0);
    if (added)
        it->second = m_plan.AddActivity(name);
    item.newActivity = it->second;
}

void Planner::PlanTime(const ImportedTime& time)
{
    const LocalSeconds start = RoundToMinute(time.start);
    const LocalSeconds end = RoundToMinute(*time.end);
    if (end <= start)
    {
        // In the hour that the autumn clock change repeats, a later moment can read earlier.
        m_plan.Skip(time.where, *time.end < time.start ? kClockChangeReason : kTooShortReason);
        return;
    }
    const std::optional<TaskRef> task = ResolveEntryTask(time.taskPath, time.where);
    if (!task)
        return;
    // One entry per local day; an end at midnight is 24:00 of the day before.
    for (int64_t day = DayNumber(start); day <= DayNumber(end - 1); ++day)
    {
        const LocalSeconds dayStart = day * kSecondsPerDay;
        PlanPiece(*task, day, (std::max(start, dayStart) - dayStart) / 60,
                  (std::min(end, dayStart + kSecondsPerDay) - dayStart) / 60, time);
    }
}

void Planner::PlanPiece(const TaskRef& task, int64_t day, int64_t start, int64_t end,
                        const ImportedTime& time)
{
    CImportPlan::TimeItem item;
    item.task = task;
    item.date = DateOfDay(day);
    item.start = CTinyTime(int(start / 60), int(start % 60));
    item.end = CTinyTime(int(end / 60), int(end % 60));
    item.note = time.note;
    item.where = time.where;

    const std::string key = Key(task) + '\x1f' + std::to_string(day) + '\x1f' +
                            std::to_string(start) + '-' + std::to_string(end) + '\x1f' + time.note;
    if (!m_entryKeys.insert(key).second)
    {
        m_plan.Skip(time.where, kRepeatedReason);
        return;
    }
    const CDay* existing = m_doc.GetDay(item.date);
    if (existing && !task.IsNew())
        for (const auto& e : existing->TimeEntries())
            if (e->m_taskId == task.id && e->m_start == item.start && e->m_end == item.end &&
                e->m_note == time.note)
            {
                m_plan.Skip(time.where, kInDocumentReason);
                return;
            }
    ResolveActivity(time.activity, item);

    if (existing)
    {
        CTimeEntry probe;
        probe.m_start = item.start;
        probe.m_end = item.end;
        const std::vector<CTimeEntry*> others = existing->ConflictingEntries(probe, nullptr, m_now);
        if (!others.empty())
            item.overlaps = SpanText(existing->StartMinutes(*others.front()),
                                     existing->EndMinutes(*others.front(), m_now)) +
                            " of " + m_doc.GetTaskPath(m_doc.GetTask(others.front()->m_taskId));
    }
    std::vector<size_t>& sameDay = m_byDay[day];
    if (item.overlaps.empty())
        for (size_t index : sameDay)
        {
            const CImportPlan::TimeItem& other = m_plan.Times()[index];
            const int64_t os = other.start.MinutesOfDay(), oe = other.end.MinutesOfDay();
            if (Overlaps(start, end, os, oe))
            {
                item.overlaps = SpanText(os, oe) + " of " + PathOf(other.task) + " (" + other.where + ")";
                break;
            }
        }
    sameDay.push_back(m_plan.Times().size());
    m_plan.AddTime(std::move(item));
}

void Planner::PlanRunning(const ImportedTime& time)
{
    const LocalSeconds start = RoundToMinute(time.start);
    if (m_doc.m_timerRunning || m_doc.m_activeEntry)
    {
        m_plan.Skip(time.where, kTimerRunsReason);
        return;
    }
    if (start > LocalFromDate(m_options.now))
    {
        m_plan.Skip(time.where, kFutureReason);
        return;
    }
    const std::optional<TaskRef> task = ResolveEntryTask(time.taskPath, time.where);
    if (!task)
        return;
    CImportPlan::TimeItem item;
    item.task = *task;
    item.date = DateOf(start);
    const int64_t minute = (start - DayNumber(start) * kSecondsPerDay) / 60;
    item.start = CTinyTime(int(minute / 60), int(minute % 60));
    item.end = CTinyTime::Null();
    item.note = time.note;
    item.where = time.where;
    // Once the timer made from it has stopped, the entry keeps its start but not its end.
    if (const CDay* existing = m_doc.GetDay(item.date))
    {
        for (const auto& e : existing->TimeEntries())
            if (!task->IsNew() && e->m_taskId == task->id && e->m_start == item.start)
            {
                m_plan.Skip(time.where, kInDocumentReason);
                return;
            }
        CTimeEntry probe;
        probe.m_start = item.start;
        const std::vector<CTimeEntry*> others = existing->ConflictingEntries(probe, nullptr, m_now);
        if (!others.empty())
            item.overlaps = SpanText(existing->StartMinutes(*others.front()),
                                     existing->EndMinutes(*others.front(), m_now)) +
                            " of " + m_doc.GetTaskPath(m_doc.GetTask(others.front()->m_taskId));
    }
    const int64_t runsTo = (LocalFromDate(m_now) - DayNumber(start) * kSecondsPerDay) / 60;
    if (item.overlaps.empty())
        for (size_t index : m_byDay[DayNumber(start)])
        {
            const CImportPlan::TimeItem& other = m_plan.Times()[index];
            if (Overlaps(minute, runsTo, other.start.MinutesOfDay(), other.end.MinutesOfDay()))
            {
                item.overlaps = SpanText(other.start.MinutesOfDay(), other.end.MinutesOfDay()) +
                                " of " + PathOf(other.task) + " (" + other.where + ")";
                break;
            }
        }
    ResolveActivity(time.activity, item);
    m_plan.AddTime(std::move(item));
}

void Planner::PlanToDo(const ImportedToDo& todo)
{
    const std::string description = Trim(todo.description);
    if (description.empty())
    {
        m_plan.Skip(todo.where, kNoDescriptionReason);
        return;
    }
    const std::optional<TaskRef> task = ResolveEntryTask(todo.taskPath, todo.where);
    if (!task)
        return;
    const std::string key = Key(*task) + '\x1f' + description + '\x1f' +
                            (todo.due.IsNull() ? std::string() : todo.due.DayKey());
    if (!m_todoKeys.insert(key).second)
    {
        m_plan.Skip(todo.where, kRepeatedReason);
        return;
    }
    if (!task->IsNew())
        for (const CToDoEntry* e : m_doc.GetTask(task->id)->m_todoEntries)
            if (e->m_description == description && e->m_dueDate.IsNull() == todo.due.IsNull() &&
                (todo.due.IsNull() || e->m_dueDate.SameDay(todo.due)))
            {
                m_plan.Skip(todo.where, kInDocumentReason);
                return;
            }
    m_plan.AddToDo({*task, description, todo.note, todo.priority, todo.due, todo.completed, todo.where});
}

void Planner::Run(const ImportSource& source)
{
    m_under = m_doc.GetTask(m_options.underTaskId);
    if (!m_under)
        throw std::invalid_argument("there is no task #" + std::to_string(m_options.underTaskId));
    m_pathsFromTop = source.pathsFromTop && m_under->m_id == CTimeKeeperDoc::kRootTaskId;
    m_plan.SetFormat(source.format);
    for (const std::string& line : source.details)
        m_plan.AddDetail(line);
    for (const SkippedItem& s : source.skipped)
        m_plan.Skip(s.where, s.reason);
    for (const ImportedTask& task : source.tasks)
        ResolvePath(task.path, task.where);

    m_plan.ReserveTimes(source.times.size());
    // Only the latest interval that is still running can become the running entry.
    const ImportedTime* running = nullptr;
    for (const ImportedTime& time : source.times)
    {
        if (time.end)
            PlanTime(time);
        else if (!m_options.openStart)
            m_plan.Skip(time.where, kStillRunningReason);
        else
        {
            if (running && running->start > time.start)
            {
                m_plan.Skip(time.where, kLaterOpenReason);
                continue;
            }
            if (running)
                m_plan.Skip(running->where, kLaterOpenReason);
            running = &time;
        }
    }
    if (running)
        PlanRunning(*running);
    for (const ImportedToDo& todo : source.todos)
        PlanToDo(todo);
}
} // namespace

CImportPlan PlanImport(const CTimeKeeperDoc& doc, const ImportSource& source,
                       const ImportOptions& options)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    CImportPlan plan;
    Planner(doc, options, plan).Run(source);
    return plan;
}

} // namespace interchange
