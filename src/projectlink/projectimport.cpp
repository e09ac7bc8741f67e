#include "projectlink/projectimport.h"

#include "platform/messages.h"
#include "projectlink/projecttexts.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <set>

namespace projectlink
{

namespace
{
using Lock = std::lock_guard<std::recursive_mutex>;

// Between steps: a Cancel press is confirmed before it counts.
bool UserCancels(ProjectLinkUi& ui)
{
    if (!ui.TakeCancelRequest())
        return false;
    return ui.Prompter().AskYesNo(ProjectString(kCancelQuestion)) == platform::Answer::yes;
}

bool SameEstimate(double a, double b)
{
    return std::fabs(a - b) < 1e-6;
}

void Unlink(CTask* task)
{
    if (!task->m_parent)
        return;
    auto& siblings = task->m_parent->m_children;
    siblings.erase(std::remove(siblings.begin(), siblings.end(), task), siblings.end());
    task->m_parent = nullptr;
}

// Moves a task under `parent` without the tree's refusals (imported tasks may only be
// moved by the import) and sets the levels of the task and everything below it.
void Reparent(CTask* task, CTask* parent, std::set<CTask*>& touchedParents)
{
    // Never under itself: a tree with a loop could not be walked again.
    if (parent->IsSelfOrDescendantOf(task))
        return;
    if (task->m_parent != parent)
    {
        Unlink(task);
        task->m_parent = parent;
        task->m_parentId = parent->m_id;
        parent->m_children.push_back(task);
    }
    touchedParents.insert(parent);
    std::vector<CTask*> pending{task};
    while (!pending.empty())
    {
        CTask* t = pending.back();
        pending.pop_back();
        t->m_level = uint16_t(t->m_parent->m_level + 1);
        for (CTask* child : t->m_children)
            pending.push_back(child);
    }
}

CToDoEntry* ImportedToDo(const CTask& task)
{
    for (CToDoEntry* todo : task.m_todoEntries)
        if (todo->m_imported)
            return todo;
    return nullptr;
}

bool HasEntries(const CTask& task)
{
    return !task.m_timeEntries.empty() || !task.m_expenseEntries.empty();
}

CDateTime DateOnly(const CDateTime& d)
{
    return CDateTime::FromDate(d.GetYear(), d.GetMonth(), d.GetDay());
}

double OleOrZero(const CDateTime& d)
{
    return d.IsValid() ? d.GetValue() : 0.0;
}
} // namespace

HRESULT ReadPlanTasks(IProjectComponent& component, const CProject& link, ProjectLinkUi& ui,
                      PlanTasks& tasks)
{
    int32_t count = 0;
    HRESULT hr = component.GetTaskCount(count);
    if (Failed(hr))
        return hr;
    count = std::max(count, 0);
    ui.BeginProgress(ProjectString(41032), ProjectString(41030), count);
    for (int32_t index = 1; index <= count; ++index)
    {
        if (UserCancels(ui))
        {
            ui.EndProgress();
            return E_USERCANCELLED;
        }
        int32_t id = 0, parentId = 0, todo = 0;
        std::string name, secondText;
        double work = 0.0, cost = 0.0, date = 0.0;
        hr = component.GetTask(index, int32_t(link.m_resourceId), id, parentId, name, secondText,
                               todo, work, cost, date);
        if (Failed(hr))
        {
            ui.EndProgress();
            return hr;
        }
        // A plan id of 0 would read as "not imported" on the task: such a task is skipped.
        if (hr != S_FALSE && id > 0)
        {
            CTempProjectTask& rec = tasks[uint32_t(id)];
            rec.projectTaskId = uint32_t(id);
            rec.parentProjectTaskId = parentId > 0 ? uint32_t(parentId) : 0;
            rec.name = name;
            rec.workEstimate = std::isfinite(work) ? work : 0.0;
            rec.costEstimate = std::isfinite(cost) ? cost : 0.0;
            rec.date = date != 0.0 && std::isfinite(date) ? DateOnly(CDateTime(date, CDateTime::valid))
                                                          : CDateTime::Null();
            rec.todoFlag = todo != 0 ? 1 : 0;
        }
        ui.StepProgress();
    }
    ui.EndProgress();
    return S_OK;
}

void MergePlanTasks(CTimeKeeperDoc& doc, CProject& link, PlanTasks& tasks,
                    bool keepLocalWorkEstimates, bool keepLocalCostEstimates,
                    std::vector<std::string>& warnings)
{
    Lock lock(doc.GetLock());
    if (link.m_id == 0)
        link.m_id = doc.m_lastProjectId + 1;

    std::map<uint32_t, CTask*> existing;
    for (const auto& [id, task] : doc.m_tasks)
        if (task->m_projectId == link.m_id && task->m_projectTaskNumber != 0)
            existing[task->m_projectTaskNumber] = task.get();
    std::set<CTask*> seen;

    CTask* anchor = doc.GetTask(link.m_parentTaskId);
    if (!anchor)
        anchor = doc.GetRootTask();

    std::map<uint32_t, CTask*> made; // plan id -> task, once placed
    std::set<CTask*> touchedParents;
    bool placedAny = true;
    while (placedAny)
    {
        placedAny = false;
        for (auto& [planId, rec] : tasks)
        {
            if (rec.placed)
                continue;
            CTask* treeParent = anchor;
            // A parent the plan does not list counts as the top of the plan.
            if (rec.parentProjectTaskId != 0 && tasks.count(rec.parentProjectTaskId) &&
                rec.parentProjectTaskId != planId)
            {
                auto parentIt = made.find(rec.parentProjectTaskId);
                if (parentIt == made.end())
                    continue; // its parent is placed in a later pass
                treeParent = parentIt->second;
            }

            CTask* task = nullptr;
            if (auto it = existing.find(planId); it != existing.end())
            {
                task = it->second;
                task->m_name = rec.name;
                Reparent(task, treeParent, touchedParents);
                const bool workEdited = !SameEstimate(task->m_hoursEstimate, task->m_planWorkEstimate * 60.0);
                if (!(keepLocalWorkEstimates && workEdited))
                    task->m_hoursEstimate = rec.workEstimate * 60.0;
                const bool costEdited = !SameEstimate(task->m_costEstimate, task->m_planCostEstimate);
                if (!(keepLocalCostEstimates && costEdited))
                    task->m_costEstimate = rec.costEstimate;
                seen.insert(task);
            }
            else
            {
                auto created = std::make_unique<CTask>();
                created->m_id = ++doc.m_lastTaskId;
                created->m_name = rec.name;
                created->m_hoursEstimate = rec.workEstimate * 60.0;
                created->m_costEstimate = rec.costEstimate;
                created->m_projectId = link.m_id;
                created->m_projectTaskNumber = planId;
                task = created.get();
                doc.m_tasks[task->m_id] = std::move(created);
                Reparent(task, treeParent, touchedParents);
            }
            task->m_planWorkEstimate = rec.workEstimate;
            task->m_planCostEstimate = rec.costEstimate;
            task->m_todoFlag = rec.todoFlag;
            made[planId] = task;
            rec.placed = true;
            placedAny = true;
        }
    }

    for (const auto& [number, task] : existing)
    {
        if (seen.count(task))
            continue;
        Reparent(task, anchor, touchedParents);
        task->m_projectId = 0;
        task->m_projectTaskNumber = 0;
        warnings.push_back(platform::FormatMessage(ProjectString(41027), task->m_name));
    }
    for (CTask* parent : touchedParents)
        doc.SortChildren(parent);

    // The imported to-dos follow the plan.
    for (const auto& [id, owned] : doc.m_tasks)
    {
        CTask* task = owned.get();
        const bool leaf = task->m_children.empty();
        const bool ofThisProject = task->m_projectId == link.m_id && task->m_projectTaskNumber != 0;
        auto rec = ofThisProject ? tasks.find(task->m_projectTaskNumber) : tasks.end();
        CToDoEntry* todo = ImportedToDo(*task);
        if (leaf && task->m_todoFlag != 0 && rec != tasks.end() && rec->second.placed)
        {
            if (!todo)
            {
                auto entry = std::make_unique<CToDoEntry>();
                entry->m_taskId = task->m_id;
                entry->m_description = ProjectString(41029);
                entry->m_dueDate = rec->second.date;
                entry->m_completeDate = CDateTime::Null();
                entry->m_imported = true;
                doc.AddOutstandingToDo(std::move(entry));
            }
            else
                todo->m_dueDate = rec->second.date;
        }
        else if ((!leaf || task->m_todoFlag == 0) && todo)
        {
            CDay* day = todo->m_day;
            doc.UnfileToDo(todo);
            if (day)
                doc.RemoveDayIfEmpty(day);
        }
        if (!leaf && ofThisProject && HasEntries(*task))
            warnings.push_back(platform::FormatMessage(ProjectString(41028), task->m_name));
    }
}

HRESULT ImportTasks(CTimeKeeperDoc& doc, CProject& link, IProjectComponent& component,
                    bool keepLocalWorkEstimates, bool keepLocalCostEstimates,
                    std::vector<std::string>& warnings, ProjectLinkUi& ui)
{
    PlanTasks tasks;
    const HRESULT hr = ReadPlanTasks(component, link, ui, tasks);
    if (Failed(hr))
        return hr;
    MergePlanTasks(doc, link, tasks, keepLocalWorkEstimates, keepLocalCostEstimates, warnings);
    return S_OK;
}

TaskActuals GatherActuals(const CTimeKeeperDoc& doc, const CTask& task, const CDateTime& from,
                          const CDateTime& to, const UpdateOptions& options)
{
    Lock lock(doc.GetLock());
    const CDateTime first = DateOnly(from);
    const CDateTime last = DateOnly(to);
    const int days = std::max(1, int(std::lround(last.GetValue() - first.GetValue())) + 1);
    TaskActuals a;
    a.regularMinutes.assign(size_t(days), 0);
    a.overtimeMinutes.assign(size_t(days), 0);
    a.billingAmounts.assign(size_t(days), 0.0);
    a.expenseAmounts.assign(size_t(days), 0.0);
    const CTinyTime runningEnd = doc.RunningEnd();
    for (int i = 0; i < days; ++i)
    {
        const CDay* day = doc.GetDay(first.AddDays(i));
        if (!day)
            continue;
        if (options.updateWork || options.updateCost)
            for (const auto& entry : day->TimeEntries())
            {
                if (entry->m_taskId != task.m_id)
                    continue;
                const int64_t minutes = entry->GetElapsed(runningEnd).TotalMinutes();
                if (options.updateWork)
                    (entry->m_overtime ? a.overtimeMinutes : a.regularMinutes)[size_t(i)] += int32_t(minutes);
                if (options.updateCost && options.includeBilling)
                    a.billingAmounts[size_t(i)] += entry->GetBillingAmount(task, runningEnd);
            }
        if (options.updateCost && options.includeExpenses)
            for (const auto& entry : day->ExpenseEntries())
                if (entry->m_taskId == task.m_id)
                    a.expenseAmounts[size_t(i)] += entry->m_amount;
    }
    return a;
}

CDateTime EarliestEntryDate(const CTimeKeeperDoc& doc, const CProject& link)
{
    Lock lock(doc.GetLock());
    CDateTime earliest;
    const auto consider = [&earliest](const CEntry* entry) {
        if (entry->m_day && (earliest.IsNull() || entry->m_day->GetDate() < earliest))
            earliest = entry->m_day->GetDate();
    };
    for (const auto& [id, task] : doc.m_tasks)
    {
        if (task->m_projectId != link.m_id || task->m_projectTaskNumber == 0)
            continue;
        for (const CTimeEntry* entry : task->m_timeEntries)
            consider(entry);
        for (const CExpenseEntry* entry : task->m_expenseEntries)
            consider(entry);
        for (const CToDoEntry* entry : task->m_todoEntries)
            consider(entry); // only a completed one is filed in a day
    }
    return earliest;
}

std::vector<CTask*> TasksToWrite(const CTimeKeeperDoc& doc, const CProject& link)
{
    Lock lock(doc.GetLock());
    std::vector<CTask*> result;
    for (const auto& [id, task] : doc.m_tasks)
        if (task->m_projectId == link.m_id && task->m_projectTaskNumber != 0 &&
            task->m_children.empty() && (task->m_todoFlag != 0 || HasEntries(*task)))
            result.push_back(task.get());
    std::sort(result.begin(), result.end(), [](const CTask* a, const CTask* b) {
        return a->m_projectTaskNumber < b->m_projectTaskNumber;
    });
    return result;
}

HRESULT UpdateProject(CTimeKeeperDoc& doc, const CProject& link, IProjectComponent& component,
                      const UpdateOptions& options, ProjectLinkUi& ui)
{
    const std::vector<CTask*> tasks = TasksToWrite(doc, link);
    ui.BeginProgress(ProjectString(41033), ProjectString(41031), int(tasks.size()));
    const CDateTime from = DateOnly(options.from);
    const CDateTime to = DateOnly(options.to) < from ? from : DateOnly(options.to);
    for (CTask* task : tasks)
    {
        if (UserCancels(ui))
        {
            ui.EndProgress();
            return E_USERCANCELLED;
        }
        double completion = 0.0;
        double firstEntry = 0.0;
        TaskActuals a;
        {
            Lock lock(doc.GetLock());
            if (const CToDoEntry* todo = ImportedToDo(*task); todo && todo->IsCompleted() && options.updateWork)
            {
                const CDateTime done = DateOnly(todo->m_completeDate);
                if (!(done < from) && !(to < done))
                    completion = OleOrZero(done);
            }
            for (const CTimeEntry* entry : task->m_timeEntries)
                if (entry->m_day)
                {
                    const double d = entry->m_day->GetDate().GetValue();
                    if (firstEntry == 0.0 || d < firstEntry)
                        firstEntry = d;
                }
            a = GatherActuals(doc, *task, from, to, options);
        }
        const HRESULT hr = component.UpdateTask(
            int32_t(task->m_projectTaskNumber), int32_t(link.m_resourceId), from.GetValue(),
            to.GetValue(), firstEntry, completion, options.updateWorkEstimates ? 1 : 0,
            task->m_hoursEstimate / 60.0, options.updateCostEstimates ? 1 : 0, task->m_costEstimate,
            int32_t(a.regularMinutes.size()), options.updateWork ? 1 : 0, a.regularMinutes.data(),
            options.updateWork ? 1 : 0, a.overtimeMinutes.data(),
            options.updateCost && options.includeBilling ? 1 : 0, a.billingAmounts.data(),
            options.updateCost && options.includeExpenses ? 1 : 0, a.expenseAmounts.data());
        if (Failed(hr))
        {
            ui.EndProgress();
            return hr;
        }
        ui.StepProgress();
    }
    ui.EndProgress();
    return S_OK;
}

void RemoveProjectTasks(CTimeKeeperDoc& doc, uint32_t projectId)
{
    Lock lock(doc.GetLock());
    std::vector<CTask*> doomed;
    for (const auto& [id, task] : doc.m_tasks)
        if (task->m_projectId == projectId && task->m_projectTaskNumber != 0)
            doomed.push_back(task.get());
    // Deepest first, so that a task is childless when it goes.
    std::sort(doomed.begin(), doomed.end(),
              [](const CTask* a, const CTask* b) { return a->GetDepth() > b->GetDepth(); });
    for (CTask* task : doomed)
    {
        while (CToDoEntry* todo = ImportedToDo(*task))
            doc.UnfileToDo(todo);
        // Anything else under it (it was only just created) goes to its parent.
        for (CTask* child : std::vector<CTask*>(task->m_children))
        {
            std::set<CTask*> touched;
            Reparent(child, task->m_parent, touched);
        }
        Unlink(task);
        doc.m_tasks.erase(task->m_id);
    }
}

std::string ProgressPercentText(int position, int low, int high)
{
    const int span = high - low;
    int percent = span > 0 ? int(int64_t(position - low) * 100 / span) : 100;
    if (percent != 100)
        percent %= 100;
    return std::to_string(percent) + "%";
}

std::string ProgressStatusText(const std::string& format, int done, int total)
{
    const std::string picture = format.empty() ? "%i of %i completed." : format;
    std::string out;
    int used = 0;
    for (size_t i = 0; i < picture.size(); ++i)
    {
        if (picture[i] == '%' && i + 1 < picture.size() && picture[i + 1] == 'i')
        {
            out += std::to_string(used++ == 0 ? done : total);
            ++i;
        }
        else
            out += picture[i];
    }
    return out;
}

} // namespace projectlink
