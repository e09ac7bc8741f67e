#include "interchange/importapply.h"

#include "model/timekeeperdoc.h"
#include "timekeeping/timer.h"

#include <memory>
#include <mutex>
#include <stdexcept>

namespace interchange
{

namespace
{
constexpr size_t kProgressStep = 1000;

void RequireTask(const CTimeKeeperDoc& doc, const CImportPlan::TaskRef& ref)
{
    if (!ref.IsNew() && !doc.GetTask(ref.id))
        throw std::runtime_error("the document changed since the import was planned (task #" +
                                 std::to_string(ref.id) + " is gone); nothing was imported");
}

ImportOutcome ApplyLocked(CTimeKeeperDoc& doc, CTimer& timer, const CImportPlan& plan,
                          OverlapChoice choice, const ImportProgress& progress)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    for (const auto& t : plan.Tasks())
        RequireTask(doc, t.parent);
    for (const auto& t : plan.Times())
    {
        RequireTask(doc, t.task);
        if (t.activityId != 0 && !doc.GetActivity(t.activityId))
            throw std::runtime_error("the document changed since the import was planned (an "
                                     "activity is gone); nothing was imported");
    }
    for (const auto& t : plan.ToDos())
        RequireTask(doc, t.task);

    ImportOutcome outcome;
    std::vector<uint32_t> activityIds;
    for (const std::string& name : plan.Activities())
        activityIds.push_back(doc.AddActivity(name)->m_id);
    outcome.activities = activityIds.size();
    std::vector<CTask*> tasks;
    for (const auto& t : plan.Tasks())
    {
        CTask* parent = t.parent.IsNew() ? tasks[size_t(t.parent.newIndex)] : doc.GetTask(t.parent.id);
        CTask* task = doc.AddTask(parent, t.level);
        doc.RenameTask(task, t.name);
        tasks.push_back(task);
    }
    outcome.tasks = tasks.size();
    auto taskId = [&](const CImportPlan::TaskRef& ref)
    { return ref.IsNew() ? tasks[size_t(ref.newIndex)]->m_id : ref.id; };

    const size_t total = plan.Times().size() + plan.ToDos().size();
    size_t done = 0;
    auto step = [&]
    {
        if (progress && ++done % kProgressStep == 0)
            progress(done, total);
    };
    for (const auto& t : plan.Times())
    {
        auto entry = std::make_unique<CTimeEntry>();
        entry->m_taskId = taskId(t.task);
        entry->m_start = t.start;
        entry->m_end = t.end;
        entry->m_note = t.note;
        entry->m_activityId = t.newActivity >= 0 ? activityIds[size_t(t.newActivity)] : t.activityId;
        CDay* day = doc.GetOrCreateDay(t.date);
        entry->m_day = day;
        if (day->Conflicts(*entry, entry.get(), doc.RoundedNow()))
        {
            ++outcome.adjusted;
            if (timer.AdjustConflicts(*day, entry, int(choice)) == 1 || !entry)
            {
                ++outcome.dropped;
                doc.RemoveDayIfEmpty(day);
                step();
                continue;
            }
        }
        entry->m_day = nullptr;
        CTimeEntry* filed = doc.FileTimeEntry(day, std::move(entry));
        if (filed->IsRunning())
        {
            doc.m_activeEntry = filed;
            doc.m_paused = false;
            doc.m_pausedTask = nullptr;
            outcome.running = true;
        }
        ++outcome.entries;
        step();
    }
    for (const auto& t : plan.ToDos())
    {
        auto todo = std::make_unique<CToDoEntry>();
        todo->m_taskId = taskId(t.task);
        todo->m_description = t.description;
        todo->m_note = t.note;
        todo->m_priority = t.priority;
        todo->m_dueDate = t.due;
        todo->m_completeDate = t.completed;
        if (t.completed.IsNull())
            doc.AddOutstandingToDo(std::move(todo));
        else
            doc.FileCompletedToDo(doc.GetOrCreateDay(t.completed), std::move(todo));
        ++outcome.todos;
        step();
    }
    if (progress)
        progress(total, total);
    doc.SetModifiedFlag();
    doc.UpdateAllViews(hintAll);
    return outcome;
}
} // namespace

ImportOutcome ApplyImport(CTimeKeeperDoc& doc, CTimer& timer, const CImportPlan& plan,
                          OverlapChoice choice, const ImportProgress& progress)
{
    const ImportOutcome outcome = ApplyLocked(doc, timer, plan, choice, progress);
    // The timer takes up the new running entry as it does one read from a file, with the
    // midnight check for one that started on an earlier day.
    if (outcome.running)
        timer.OnDocumentOpened();
    return outcome;
}

} // namespace interchange
