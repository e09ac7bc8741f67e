// qvx project: the links to project plans, their import and the write-back of actual work.

#include "cli/commands.h"
#include "cli/commandsession.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "projectlink/componentregistry.h"
#include "projectlink/projectoperations.h"
#include "projectlink/projecttexts.h"

#include <dlfcn.h>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>

namespace cli
{

namespace
{
using namespace projectlink;

// The link's dialogs answered from the command line. A choice the options cannot make
// ends the operation as a cancel, with the reason kept for the error message.
class CliLinkUi : public ProjectLinkUi
{
public:
    explicit CliLinkUi(TerminalPrompter& prompter) : m_prompter(prompter) {}

    platform::Prompter& Prompter() override { return m_prompter; }

    bool ChooseProjectFile(const std::vector<CComponentInfo>& components, const std::string&,
                           std::string& path, std::string& progId) override
    {
        if (m_plan.empty())
        {
            m_error = "the plan is no longer at its path; link it again with qvx project link";
            return false;
        }
        for (const CComponentInfo& c : components)
            if (m_component.empty() ? c.MatchesFile(m_plan) : c.progId == m_component)
            {
                path = std::filesystem::absolute(m_plan).lexically_normal().string();
                progId = c.progId;
                return true;
            }
        std::string known;
        for (const CComponentInfo& c : components)
            known += (known.empty() ? "" : ", ") + c.progId + " (" + c.FilterPattern() + ")";
        m_error = (m_component.empty() ? "no component reads files like " + m_plan
                                       : "no component is installed as " + m_component) +
                  (known.empty() ? std::string(" (none is installed)") : " (installed: " + known + ")");
        return false;
    }

    bool SelectResource(const std::vector<std::string>& names, const std::vector<int32_t>& ids,
                        int& chosen) override
    {
        std::string list;
        for (size_t i = 0; i < names.size(); ++i)
            list += (i ? ", " : "") + ("\"" + names[i] + "\" (" + std::to_string(ids[i]) + ")");
        if (!m_resource)
        {
            if (names.size() == 1)
            {
                chosen = 0;
                return true;
            }
            m_error = "give --resource NAME, ID or none" +
                      (list.empty() ? std::string(" (the plan has no resources)") : " (the plan's resources: " + list + ")");
            return false;
        }
        if (*m_resource == "none")
        {
            chosen = -1;
            return true;
        }
        for (size_t i = 0; i < names.size(); ++i)
            if (SameText(names[i], *m_resource) || std::to_string(ids[i]) == *m_resource)
            {
                chosen = int(i);
                return true;
            }
        m_error = "the plan has no resource '" + *m_resource + "'" +
                  (list.empty() ? std::string(" (it has none)") : " (its resources: " + list + ")");
        return false;
    }

    bool SelectParentTask(uint32_t& taskId) override
    {
        taskId = m_parentTaskId;
        return taskId != 0;
    }

    bool EditUpdateOptions(UpdateOptions& o) override
    {
        auto apply = [&](const char* name, bool can, bool& value) {
            auto it = m_updateChoices.find(name);
            if (it == m_updateChoices.end())
                return true;
            if (it->second && !can)
            {
                m_error = std::string("--") + name +
                          " yes: the plan cannot take it (read-only file, no resource, or a "
                          "component that does not write)";
                return false;
            }
            value = it->second;
            return true;
        };
        if (!apply("update-work", o.canUpdateWork, o.updateWork) ||
            !apply("update-cost", o.canUpdateCost, o.updateCost) ||
            !apply("update-work-estimates", o.canUpdateWorkEstimates, o.updateWorkEstimates) ||
            !apply("update-cost-estimates", o.canUpdateCostEstimates, o.updateCostEstimates))
            return false;
        o.includeBilling = o.updateCost;
        o.includeExpenses = o.updateCost;
        if (!apply("include-billing", o.updateCost, o.includeBilling) ||
            !apply("include-expenses", o.updateCost, o.includeExpenses))
            return false;
        if (m_from)
            o.from = *m_from;
        if (m_to)
            o.to = *m_to;
        if (o.to < o.from)
        {
            m_error = "--to is before --from";
            return false;
        }
        m_chosen = o;
        return true;
    }

    bool ShowWarnings(const std::vector<std::string>& warnings) override
    {
        for (const std::string& w : warnings)
            std::cout << w << "\n";
        return true;
    }

    void BeginProgress(const std::string&, const std::string&, int) override {}
    void StepProgress() override {}
    bool TakeCancelRequest() override { return false; }
    void EndProgress() override {}

    const std::string& Error() const { return m_error; }

    std::string m_plan;
    std::string m_component;
    std::optional<std::string> m_resource;
    uint32_t m_parentTaskId = 0;
    std::map<std::string, bool> m_updateChoices;
    std::optional<CDateTime> m_from;
    std::optional<CDateTime> m_to;
    // What the update was told to write.
    std::optional<UpdateOptions> m_chosen;

private:
    TerminalPrompter& m_prompter;
    std::string m_error;
};

std::string ShortDate(CommandSession& s, const CDateTime& d)
{
    return d.IsValid() ? s.App().FormatShortDate(d) : std::string("never");
}

void Fail(const CliLinkUi& ui, const LinkOutcome& outcome, const char* what)
{
    if (!ui.Error().empty())
        throw CommandError(ui.Error());
    if (outcome.status == LinkOutcome::cancelled)
        throw CommandError(std::string(what) + " cancelled");
    throw CommandError(std::string(what) + " failed (" + projectlink::HexCode(outcome.result) + ")");
}

int Components(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(0, 0, {});
    const std::vector<std::string> dirs = ComponentDirs();
    DiscoveryResult found = DiscoverComponents(dirs);
    for (const std::string& m : found.messages)
        std::cerr << "qvx project components: " << m << "\n";
    if (found.components.empty())
        std::cout << "No project-plan components were found.\n";
    for (const CComponentInfo& c : found.components)
    {
        // Loading tells whether the component will open at all.
        std::string state = "ok";
        if (void* lib = dlopen(c.library.c_str(), RTLD_NOW | RTLD_LOCAL))
        {
            if (!dlsym(lib, kComponentEntryPoint))
                state = std::string("no ") + kComponentEntryPoint;
            dlclose(lib);
        }
        else
        {
            const char* why = dlerror();
            state = std::string("does not load: ") + (why ? why : c.library);
        }
        std::cout << c.progId << "\n  current version: " << c.curVer
                  << "\n  files: " << c.filter << "\n  library: " << c.library
                  << "\n  manifest: " << c.manifest << "\n  state: " << state << "\n";
    }
    std::cout << "Searched: ";
    for (size_t i = 0; i < dirs.size(); ++i)
        std::cout << (i ? ":" : "") << dirs[i];
    std::cout << "\n";
    return found.messages.empty() ? 0 : 1;
}

int List(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::read);
    if (s.Doc().m_projects.empty())
        std::cout << "No projects.\n";
    for (const auto& [id, p] : s.Doc().m_projects)
        std::cout << "#" << id << " " << p->m_name << "\n  last updated: " << ShortDate(s, p->m_lastUpdated)
                  << "\n  path: " << p->m_path << "\n  component: " << p->m_progId
                  << "\n  resource: "
                  << (p->m_resourceId == uint32_t(-1) ? std::string("none (updates read only)")
                                                      : p->m_resourceName + " (" + std::to_string(p->m_resourceId) + ")")
                  << "\n  parent task: " << s.TaskPath(p->m_parentTaskId) << "\n";
    return 0;
}

int Link(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"parent", "resource", "component"});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CliLinkUi ui(ctx.prompter);
    ui.m_plan = args.At(1, "PLAN");
    if (!std::filesystem::is_regular_file(ui.m_plan))
        throw CommandError("there is no plan file " + ui.m_plan);
    auto parent = args.Option("parent");
    if (!parent)
        throw UsageError("--parent TASK is needed");
    ui.m_parentTaskId = FindTask(s.Doc(), *parent)->m_id;
    ui.m_resource = args.Option("resource");
    if (auto c = args.Option("component"))
        ui.m_component = *c;

    LinkOutcome outcome = LinkNewProject(s.Doc(), ui, ComponentDirs());
    if (outcome.status != LinkOutcome::done)
        Fail(ui, outcome, "linking");
    s.Save();
    size_t tasks = 0;
    for (const auto& [id, t] : s.Doc().m_tasks)
        tasks += t->m_projectId == outcome.project->m_id && t->m_projectTaskNumber != 0;
    std::cout << "Linked project #" << outcome.project->m_id << " '" << outcome.project->m_name
              << "': " << tasks << " task" << (tasks == 1 ? "" : "s") << " under "
              << s.TaskPath(outcome.project->m_parentTaskId) << "\n";
    return 0;
}

int Update(Context& ctx)
{
    static const char* const kChoices[] = {"update-work", "update-cost", "update-work-estimates",
                                           "update-cost-estimates", "include-billing",
                                           "include-expenses"};
    Args args(ctx.argv, {});
    args.Expect(2, 2, {"from", "to", "update-work", "update-cost", "update-work-estimates",
                       "update-cost-estimates", "include-billing", "include-expenses"});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CProject* project = FindRecord(s.Doc().m_projects, args.At(1, "PROJECT"), "project");
    CliLinkUi ui(ctx.prompter);
    for (const char* name : kChoices)
        if (auto v = args.Option(name))
            ui.m_updateChoices[name] = ParseYesNo(*v, (std::string("--") + name).c_str());
    if (auto v = args.Option("from"))
        ui.m_from = ParseDate(*v, "--from");
    if (auto v = args.Option("to"))
        ui.m_to = ParseDate(*v, "--to");

    LinkOutcome outcome = UpdateLink(s.Doc(), *project, ui, ComponentDirs());
    if (outcome.documentChanged || outcome.status == LinkOutcome::done)
        s.Save();
    if (outcome.status != LinkOutcome::done)
        Fail(ui, outcome, "the update");
    std::cout << "Updated project #" << project->m_id << " '" << project->m_name << "'";
    if (ui.m_chosen && (ui.m_chosen->updateWork || ui.m_chosen->updateCost))
        std::cout << ", actual work of " << ShortDate(s, ui.m_chosen->from) << " to "
                  << ShortDate(s, ui.m_chosen->to);
    std::cout << " (last updated " << ShortDate(s, project->m_lastUpdated) << ")\n";
    return 0;
}

int Remove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CProject* project = FindRecord(s.Doc().m_projects, args.At(1, "PROJECT"), "project");
    const uint32_t id = project->m_id;
    const std::string name = project->m_name;
    if (!DeleteProjectLink(s.Doc(), id, ctx.prompter))
    {
        if (ctx.prompter.Unanswered())
            throw CommandError("the question was not answered (run again with --yes or --no)");
        std::cout << "Nothing deleted\n";
        return 0;
    }
    s.Save();
    std::cout << "Deleted project #" << id << " '" << name << "'\n";
    return 0;
}
} // namespace

void RegisterProjectCommands(CommandTable& table)
{
    table.Add({"project components", "", "list the installed project-plan components", Components});
    table.Add({"project list", "FILE", "list the document's project links", List});
    table.Add({"project link", "FILE PLAN --parent TASK [--resource NAME|ID|none] [--component PROGID]",
               "link a project plan and import its tasks under TASK", Link});
    table.Add({"project update",
               "FILE PROJECT [--from DATE] [--to DATE] [--update-work yes|no] [--update-cost yes|no] "
               "[--update-work-estimates yes|no] [--update-cost-estimates yes|no] "
               "[--include-billing yes|no] [--include-expenses yes|no]",
               "re-import a linked plan's tasks and write actual work back to it", Update,
               "--from defaults to the last update; before the first one, to the day of the\n"
               "earliest entry on the plan's tasks. --to defaults to today. The completion of a\n"
               "task's imported to-do is written only with the work of a period that holds it."});
    table.Add({"project rm", "FILE PROJECT", "delete a project link (the tasks stay)", Remove});
}

} // namespace cli
