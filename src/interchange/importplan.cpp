#include "interchange/importplan.h"

#include "model/timekeeperdoc.h"

namespace interchange
{

size_t CImportPlan::SkippedCount() const
{
    size_t n = 0;
    for (const SkipGroup& g : m_skipped)
        n += g.wheres.size();
    return n;
}

size_t CImportPlan::OverlapCount() const
{
    size_t n = 0;
    for (const TimeItem& t : m_times)
        n += t.overlaps.empty() ? 0 : 1;
    return n;
}

std::string CImportPlan::TaskPath(const TaskRef& task, const CTimeKeeperDoc& doc) const
{
    if (task.IsNew())
        return m_tasks[size_t(task.newIndex)].path;
    return doc.GetTaskPath(doc.GetTask(task.id));
}

CImportPlan::TaskRef CImportPlan::AddTask(NewTask task)
{
    m_tasks.push_back(std::move(task));
    return TaskRef{0, int(m_tasks.size() - 1)};
}

int CImportPlan::AddActivity(std::string name)
{
    m_activities.push_back(std::move(name));
    return int(m_activities.size() - 1);
}

void CImportPlan::Skip(const std::string& where, const std::string& reason)
{
    for (SkipGroup& g : m_skipped)
        if (g.reason == reason)
        {
            // The pieces of one stretch over midnight are one item of the source.
            if (g.wheres.back() != where)
                g.wheres.push_back(where);
            return;
        }
    m_skipped.push_back({reason, {where}});
}

} // namespace interchange
