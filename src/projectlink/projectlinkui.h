#pragma once

#include "model/datetime.h"
#include "platform/prompter.h"
#include "projectlink/componentregistry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace projectlink
{

// The choices of the Update Project dialog. The "can" flags say which options the
// component and the session allow; the dialog offers only those.
struct UpdateOptions
{
    bool canUpdateWorkEstimates = false;
    bool canUpdateCostEstimates = false;
    bool canUpdateWork = false;
    bool canUpdateCost = false;

    bool updateWorkEstimates = false;
    bool updateCostEstimates = false;
    bool updateWork = false;
    bool updateCost = false;
    bool includeBilling = false;
    bool includeExpenses = false;
    CDateTime from;
    CDateTime to;

    bool DatesEnabled() const { return canUpdateWork || canUpdateCost; }
    bool AnyUpdate() const
    {
        return updateWorkEstimates || updateCostEstimates || updateWork || updateCost;
    }
};

// The questions and dialogs of linking and updating. The desktop program, qvx and the
// tests each answer them their own way.
class ProjectLinkUi
{
public:
    virtual ~ProjectLinkUi() = default;

    // Messages and Yes/No questions.
    virtual platform::Prompter& Prompter() = 0;

    // The file-open dialog over the discovered components (default extension "mpp",
    // an existing file). On OK sets the full path and the chosen component's ProgID.
    virtual bool ChooseProjectFile(const std::vector<CComponentInfo>& components,
                                   const std::string& combinedFilter, std::string& path,
                                   std::string& progId) = 0;
    // Select Resource: on OK `chosen` is an index into the lists, or -1 for none (the
    // dialog itself asks message 40023 before accepting none).
    virtual bool SelectResource(const std::vector<std::string>& names,
                                const std::vector<int32_t>& ids, int& chosen) = 0;
    // Select Parent Task for Project: on OK the chosen task's id.
    virtual bool SelectParentTask(uint32_t& taskId) = 0;
    // Update Project: the options come filled with their starting values.
    virtual bool EditUpdateOptions(UpdateOptions& options) = 0;
    // Warnings: true for "Continue".
    virtual bool ShowWarnings(const std::vector<std::string>& warnings) = 0;

    // The progress window. `format` has two "%i" (done, total).
    virtual void BeginProgress(const std::string& title, const std::string& format, int total) = 0;
    virtual void StepProgress() = 0;
    // Whether Cancel was pressed since the last call (the flag is cleared by reading it).
    virtual bool TakeCancelRequest() = 0;
    virtual void EndProgress() = 0;
};

// The progress window's texts: the percent ("%d%%" of the position in the range, modulo
// 100 unless exactly 100) and the status line (the format filled with done and total,
// or "%i of %i completed." without one).
std::string ProgressPercentText(int position, int low, int high);
std::string ProgressStatusText(const std::string& format, int done, int total);

} // namespace projectlink
