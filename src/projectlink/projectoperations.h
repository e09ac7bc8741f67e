#pragma once

#include "model/timekeeperdoc.h"
#include "projectlink/projectinterface.h"
#include "projectlink/projectlinkui.h"

#include <string>
#include <vector>

namespace projectlink
{

// How one operation of the Projects dialog ended.
struct LinkOutcome
{
    enum Status
    {
        done,
        cancelled, // by the user at some step: nothing was written to the plan
        failed,    // a failure, already shown
    };
    Status status = failed;
    HRESULT result = E_FAIL;
    CProject* project = nullptr;        // the link made or updated
    bool documentChanged = false;       // tasks or the link changed: save the document
    std::vector<std::string> warnings;  // as collected (already shown through the UI)
};

// Discovers the components (showing what stopped discovery) and lets the user choose a
// file. False when nothing was chosen.
bool ChooseProjectFile(ProjectLinkUi& ui, const std::vector<std::string>& componentDirs,
                       std::string& path, std::string& progId);

// "New...": chooses a file, opens it, asks for the resource and the parent task, imports
// the tasks and adds the link. A cancelled or failed link leaves the document unchanged.
LinkOutcome LinkNewProject(CTimeKeeperDoc& doc, ProjectLinkUi& ui,
                           const std::vector<std::string>& componentDirs);

// The same from a file already chosen (the command line names it).
LinkOutcome LinkProjectFile(CTimeKeeperDoc& doc, ProjectLinkUi& ui,
                            const std::vector<std::string>& componentDirs,
                            const std::string& path, const std::string& progId);

// "Update...": re-reads the plan into the tree and writes actual work back.
LinkOutcome UpdateLink(CTimeKeeperDoc& doc, CProject& link, ProjectLinkUi& ui,
                       const std::vector<std::string>& componentDirs);

// The Update Project dialog's starting values for a session. The period runs from the
// last update to today; before the first update, from the earliest entry of the link's
// tasks (today when they have none), so that the work done before is written too.
UpdateOptions DefaultUpdateOptions(const CTimeKeeperDoc& doc, const CProject& link, bool canWork, bool canCost,
                                   bool canWorkEstimates, bool canCostEstimates, bool writable,
                                   const CDateTime& today);

// "Delete...": asks 41026; true when the link was removed.
bool DeleteProjectLink(CTimeKeeperDoc& doc, uint32_t projectId, platform::Prompter& prompter);

} // namespace projectlink
