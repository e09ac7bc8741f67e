#pragma once

#include "model/datetime.h"
#include "model/timekeeperdoc.h"
#include "projectlink/projectinterface.h"
#include "projectlink/projectlinkui.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace projectlink
{

// One task read from the plan, for the length of one import.
struct CTempProjectTask
{
    bool placed = false;
    uint32_t projectTaskId = 0;
    uint32_t parentProjectTaskId = 0; // 0 at the top of the plan
    std::string name;
    double workEstimate = 0.0; // hours
    double costEstimate = 0.0;
    CDateTime date;            // null when the plan gives none
    uint32_t todoFlag = 0;
};

using PlanTasks = std::map<uint32_t, CTempProjectTask>;

// Reads every task of the plan for the link's resource, with the progress window.
// Returns E_USERCANCELLED when the user cancels, or the component's failure (shown).
HRESULT ReadPlanTasks(IProjectComponent& component, const CProject& link, ProjectLinkUi& ui,
                      PlanTasks& tasks);

// Merges the plan into the task tree under the link's parent task and keeps the imported
// to-dos in step. A link with id 0 takes the document's next project id. Adds the warnings
// 41027 and 41028. The caller marks the document modified and updates the views.
void MergePlanTasks(CTimeKeeperDoc& doc, CProject& link, PlanTasks& tasks,
                    bool keepLocalWorkEstimates, bool keepLocalCostEstimates,
                    std::vector<std::string>& warnings);

// Both halves: read, then merge. Nothing is merged when reading fails or is cancelled.
HRESULT ImportTasks(CTimeKeeperDoc& doc, CProject& link, IProjectComponent& component,
                    bool keepLocalWorkEstimates, bool keepLocalCostEstimates,
                    std::vector<std::string>& warnings, ProjectLinkUi& ui);

// The actual work of one task over a period, as the task update sends it.
struct TaskActuals
{
    std::vector<int32_t> regularMinutes;
    std::vector<int32_t> overtimeMinutes;
    std::vector<double> billingAmounts;
    std::vector<double> expenseAmounts;
};

// Day by day from `from` to `to` (both included; at least one day). Values not asked
// for stay 0.
TaskActuals GatherActuals(const CTimeKeeperDoc& doc, const CTask& task, const CDateTime& from,
                          const CDateTime& to, const UpdateOptions& options);

// The day of the earliest time entry, expense or completed to-do of the link's tasks;
// null when they have none.
CDateTime EarliestEntryDate(const CTimeKeeperDoc& doc, const CProject& link);

// The tasks written back: leaf tasks of the link with the to-do flag or with entries, in
// ascending project task number.
std::vector<CTask*> TasksToWrite(const CTimeKeeperDoc& doc, const CProject& link);

// Writes actual work back for every task to write, with the progress window. A completed
// imported to-do's completion is written only with the actual work of a period that holds
// its date: a plan must not read "complete" without the work that led there.
HRESULT UpdateProject(CTimeKeeperDoc& doc, const CProject& link, IProjectComponent& component,
                      const UpdateOptions& options, ProjectLinkUi& ui);

// Takes away the tasks of a project that was never added (a cancelled link) with their
// imported to-dos.
void RemoveProjectTasks(CTimeKeeperDoc& doc, uint32_t projectId);

} // namespace projectlink
