#include "projectlink/projectoperations.h"

#include "platform/messages.h"
#include "projectlink/componentregistry.h"
#include "projectlink/projectimport.h"
#include "projectlink/projectsession.h"
#include "projectlink/projecttexts.h"

#include <filesystem>
#include <memory>
#include <unistd.h>

namespace projectlink
{

namespace
{
CDateTime Today(const CTimeKeeperDoc& doc)
{
    const CDateTime now = doc.RoundedNow();
    return CDateTime::FromDate(now.GetYear(), now.GetMonth(), now.GetDay());
}

// A plan that names no project is known by its file's name, without the extension.
std::string NameOrFileName(const std::string& name, const std::string& path)
{
    if (name.find_first_not_of(" \t\r\n") != std::string::npos)
        return name;
    return std::filesystem::path(path).stem().string();
}

LinkOutcome Ended(HRESULT hr)
{
    LinkOutcome outcome;
    outcome.result = hr;
    outcome.status = hr == E_USERCANCELLED ? LinkOutcome::cancelled : LinkOutcome::failed;
    return outcome;
}
} // namespace

bool ChooseProjectFile(ProjectLinkUi& ui, const std::vector<std::string>& componentDirs,
                       std::string& path, std::string& progId)
{
    DiscoveryResult found = DiscoverComponents(componentDirs);
    for (const std::string& message : found.messages)
        ui.Prompter().ShowMessage(message, platform::Icon::error);
    return ui.ChooseProjectFile(found.components, CombinedFilter(found.components), path, progId);
}

LinkOutcome LinkNewProject(CTimeKeeperDoc& doc, ProjectLinkUi& ui,
                           const std::vector<std::string>& componentDirs)
{
    std::string path, progId;
    if (!ChooseProjectFile(ui, componentDirs, path, progId))
        return Ended(E_USERCANCELLED);
    return LinkProjectFile(doc, ui, componentDirs, path, progId);
}

LinkOutcome LinkProjectFile(CTimeKeeperDoc& doc, ProjectLinkUi& ui,
                            const std::vector<std::string>& componentDirs,
                            const std::string& path, const std::string& progId)
{
    auto link = std::make_unique<CProject>();
    link->m_path = path;
    link->m_progId = progId;

    CProjectSession session(*link, ui.Prompter(), componentDirs);
    // Linking writes nothing to the plan; a plan the user may not write can still be linked.
    HRESULT hr = session.Open(access(path.c_str(), W_OK) == 0);
    if (Failed(hr))
        return Ended(hr);
    IProjectComponent& component = session.Component();

    int32_t identity = 0, count = 0;
    std::string name;
    if (Failed(hr = component.GetFileIdentity(identity)) ||
        Failed(hr = component.GetProjectName(name)) ||
        Failed(hr = component.GetResourceCount(count)))
    {
        session.ShowFailure(hr);
        return Ended(hr);
    }
    link->m_fileIdentity = uint32_t(identity);
    link->m_name = NameOrFileName(name, path);

    std::vector<std::string> names;
    std::vector<int32_t> ids;
    for (int32_t index = 1; index <= count; ++index)
    {
        std::string resource;
        int32_t id = 0;
        const HRESULT r = component.GetResource(index, resource, id);
        if (Failed(r))
        {
            session.ShowFailure(r);
            continue;
        }
        names.push_back(resource);
        ids.push_back(id);
    }
    int chosen = -1;
    if (!ui.SelectResource(names, ids, chosen))
        return Ended(E_USERCANCELLED);
    if (chosen >= 0 && size_t(chosen) < names.size())
    {
        link->m_resourceName = names[size_t(chosen)];
        link->m_resourceId = uint32_t(ids[size_t(chosen)]);
    }
    uint32_t parentId = 0;
    if (!ui.SelectParentTask(parentId) || !doc.GetTask(parentId))
        return Ended(E_USERCANCELLED);
    link->m_parentTaskId = parentId;

    LinkOutcome outcome;
    hr = ImportTasks(doc, *link, component, false, false, outcome.warnings, ui);
    if (Failed(hr))
    {
        session.ShowFailure(hr);
        LinkOutcome ended = Ended(hr);
        ended.warnings = outcome.warnings;
        return ended;
    }
    session.Close(false);
    if (!outcome.warnings.empty() && !ui.ShowWarnings(outcome.warnings))
    {
        // The tasks were merged already: take them back out with the link.
        RemoveProjectTasks(doc, link->m_id);
        LinkOutcome ended = Ended(E_USERCANCELLED);
        ended.warnings = outcome.warnings;
        return ended;
    }
    const uint32_t expectedId = link->m_id;
    CProject* added = doc.AddProject(std::move(link));
    // The import numbered the tasks with the next project id; AddProject hands out the same.
    if (added->m_id != expectedId)
        for (const auto& [id, task] : doc.m_tasks)
            if (task->m_projectId == expectedId && task->m_projectTaskNumber != 0)
                task->m_projectId = added->m_id;
    outcome.status = LinkOutcome::done;
    outcome.result = S_OK;
    outcome.project = added;
    outcome.documentChanged = true;
    doc.SetModifiedFlag();
    doc.UpdateAllViews(hintAll);
    return outcome;
}

UpdateOptions DefaultUpdateOptions(const CTimeKeeperDoc& doc, const CProject& link, bool canWork, bool canCost,
                                   bool canWorkEstimates, bool canCostEstimates, bool writable,
                                   const CDateTime& today)
{
    UpdateOptions o;
    o.canUpdateWork = canWork && writable;
    o.canUpdateCost = canCost && writable;
    o.canUpdateWorkEstimates = canWorkEstimates && writable;
    o.canUpdateCostEstimates = canCostEstimates && writable;
    o.updateWork = o.canUpdateWork;
    o.updateCost = o.canUpdateCost;
    o.updateWorkEstimates = o.canUpdateWorkEstimates;
    o.updateCostEstimates = o.canUpdateCostEstimates;
    o.includeBilling = o.updateCost;
    o.includeExpenses = o.updateCost;
    if (link.m_lastUpdated.IsValid())
    {
        o.from = link.m_lastUpdated;
        o.to = today < link.m_lastUpdated ? link.m_lastUpdated : today;
    }
    else
    {
        const CDateTime earliest = EarliestEntryDate(doc, link);
        o.to = today;
        o.from = earliest.IsValid() && earliest < today ? earliest : today;
    }
    return o;
}

LinkOutcome UpdateLink(CTimeKeeperDoc& doc, CProject& link, ProjectLinkUi& ui,
                       const std::vector<std::string>& componentDirs)
{
    std::error_code ec;
    if (!std::filesystem::exists(link.m_path, ec))
    {
        if (ui.Prompter().AskYesNo(ProjectString(41036)) != platform::Answer::yes)
            return Ended(E_USERCANCELLED);
        std::string path, progId;
        if (!ChooseProjectFile(ui, componentDirs, path, progId))
            return Ended(E_USERCANCELLED);
        link.m_path = path;
        link.m_progId = progId;
        doc.SetModifiedFlag();
    }

    if (const std::string named = NameOrFileName(link.m_name, link.m_path); named != link.m_name)
    {
        // Linked before such plans were named after their files.
        link.m_name = named;
        doc.SetModifiedFlag();
    }

    const bool readOnly = access(link.m_path.c_str(), W_OK) != 0 || link.m_resourceId == uint32_t(-1);
    CProjectSession session(link, ui.Prompter(), componentDirs);
    HRESULT hr = session.Open(!readOnly);
    if (Failed(hr))
        return Ended(hr);
    IProjectComponent& component = session.Component();

    int32_t identity = 0;
    if (Failed(hr = component.GetFileIdentity(identity)))
    {
        session.ShowFailure(hr);
        return Ended(hr);
    }
    if (uint32_t(identity) != link.m_fileIdentity &&
        ui.Prompter().AskYesNo(ProjectString(41035)) != platform::Answer::yes)
        return Ended(E_USERCANCELLED);

    UpdateOptions options = DefaultUpdateOptions(
        doc, link, session.CanUpdateWork(), session.CanUpdateCost(), session.CanUpdateWorkEstimates(),
        session.CanUpdateCostEstimates(), session.IsWritable(), Today(doc));
    if (!ui.EditUpdateOptions(options))
        return Ended(E_USERCANCELLED);
    // Whatever the dialog answered, nothing beyond what the session allows is written.
    options.updateWork = options.updateWork && options.canUpdateWork;
    options.updateCost = options.updateCost && options.canUpdateCost;
    options.updateWorkEstimates = options.updateWorkEstimates && options.canUpdateWorkEstimates;
    options.updateCostEstimates = options.updateCostEstimates && options.canUpdateCostEstimates;
    options.includeBilling = options.includeBilling && options.updateCost;
    options.includeExpenses = options.includeExpenses && options.updateCost;

    LinkOutcome outcome;
    outcome.project = &link;
    hr = ImportTasks(doc, link, component, options.updateWorkEstimates,
                     options.updateCostEstimates, outcome.warnings, ui);
    if (Failed(hr))
    {
        session.ShowFailure(hr);
        LinkOutcome ended = Ended(hr);
        ended.project = &link;
        return ended;
    }
    outcome.documentChanged = true;
    doc.SetModifiedFlag();
    doc.UpdateAllViews(hintAll);

    bool cancelled = !outcome.warnings.empty() && !ui.ShowWarnings(outcome.warnings);
    if (!cancelled && options.AnyUpdate())
    {
        hr = UpdateProject(doc, link, component, options, ui);
        if (hr == E_USERCANCELLED)
            cancelled = true;
        else if (Failed(hr))
        {
            session.ShowFailure(hr);
            session.Close(false);
            outcome.status = LinkOutcome::failed;
            outcome.result = hr;
            return outcome;
        }
    }
    const bool save = !cancelled && session.IsWritable();
    session.Close(save);
    if (save && options.AnyUpdate())
    {
        link.m_lastUpdated = Today(doc);
        doc.SetModifiedFlag();
    }
    outcome.status = cancelled ? LinkOutcome::cancelled : LinkOutcome::done;
    outcome.result = cancelled ? E_USERCANCELLED : S_OK;
    return outcome;
}

bool DeleteProjectLink(CTimeKeeperDoc& doc, uint32_t projectId, platform::Prompter& prompter)
{
    CProject* project = doc.GetProject(projectId);
    if (!project)
        return false;
    if (prompter.AskYesNo(platform::FormatMessage(ProjectString(41026), project->m_name)) !=
        platform::Answer::yes)
        return false;
    doc.DeleteProject(projectId);
    return true;
}

} // namespace projectlink
