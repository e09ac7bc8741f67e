#include "cli/commands.h"
#include "cli/commandsession.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"

#include <algorithm>
#include <iostream>

namespace cli
{

namespace
{
// Answers the two delete questions from the command's own options; anything else
// goes to the terminal prompter.
class DeleteTaskPrompter : public platform::Prompter
{
public:
    DeleteTaskPrompter(platform::Prompter& next, platform::Answer entries)
        : m_next(next), m_entries(entries)
    {
    }
    void ShowMessage(const std::string& text, platform::Icon icon) override
    {
        m_next.ShowMessage(text, icon);
    }
    platform::Answer AskYesNo(const std::string&, platform::Icon) override
    {
        return platform::Answer::yes;
    }
    platform::Answer AskYesNoCancel(const std::string&, platform::Icon) override
    {
        return m_entries;
    }

private:
    platform::Prompter& m_next;
    platform::Answer m_entries;
};

void PrintTree(const CTimeKeeperDoc& doc, const CTask& task, int depth)
{
    std::cout << std::string(size_t(depth) * 2, ' ') << task.m_name << "  ("
              << doc.GetLevelName(task.m_level) << ", #" << task.m_id << ")";
    if (task.m_inactive)
        std::cout << "  [inactive]";
    else if (task.IsInactive())
        std::cout << "  [inactive parent]";
    std::cout << "\n";
    for (const CTask* child : task.m_children)
        PrintTree(doc, *child, depth + 1);
}

// The billing a task's time entries get: what, and from which task.
void PrintBilling(CommandSession& s, const CTask& task, size_t indentWidth)
{
    const CTimeKeeperDoc& doc = s.Doc();
    const CTask* billing = task.GetBillingTask();
    const std::string indent(indentWidth, ' ');
    const std::string from = billing == &task ? "own" : "inherited from " + s.TaskPath(billing);
    std::cout << indent << (billing->m_billable ? "billable" : "not billable") << ", rate "
              << s.App().FormatCurrency(billing->m_regularRate) << ", overtime multiplier "
              << s.App().FormatNumber(billing->m_overtimeMultiplier) << " (" << from << ")\n";
    if (billing->m_activityRates.empty() && !billing->m_useActivityRates)
        return;
    std::string rates;
    for (const auto& [id, rate] : billing->m_activityRates)
    {
        const CActivity* activity = doc.GetActivity(id);
        rates += (rates.empty() ? "" : ", ") +
                 (activity ? activity->m_name : "#" + std::to_string(id)) + " " +
                 (rate->m_billable ? s.App().FormatCurrency(rate->m_rate) : "not billable");
    }
    if (billing->m_useActivityRates)
        std::cout << indent << "activity rates: " << (rates.empty() ? "none" : rates)
                  << "; other activities: the regular rate (" << from << ")\n";
    else
        std::cout << indent << "activity rates off: " << rates << " not used (" << from << ")\n";
}

void PrintBillingTree(CommandSession& s, const CTask& task, int depth)
{
    std::cout << std::string(size_t(depth) * 2, ' ') << task.m_name << "  (#" << task.m_id << ")\n";
    PrintBilling(s, task, size_t(depth) * 2 + 4);
    for (const CTask* child : task.m_children)
        PrintBillingTree(s, *child, depth + 1);
}

int Tasks(Context& ctx)
{
    Args args(ctx.argv, {"billing"});
    args.Expect(1, 1, {"billing"});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
    if (const CTask* root = s.Doc().GetRootTask())
    {
        if (args.Flag("billing"))
            PrintBillingTree(s, *root, 0);
        else
            PrintTree(s.Doc(), *root, 0);
    }
    return 0;
}

// A task that took its billing from above gets its own, starting from the values it
// inherited (as the task's Billing page shows them when "Use Parent Billing" is cleared).
void TakeOwnBilling(CTask& task)
{
    if (!task.m_useParentBilling || task.m_id == CTimeKeeperDoc::kRootTaskId)
    {
        task.m_useParentBilling = false;
        return;
    }
    const CTask* from = task.GetBillingTask();
    if (from != &task)
    {
        task.m_billable = from->m_billable;
        task.m_regularRate = from->m_regularRate;
        task.m_useActivityRates = from->m_useActivityRates;
        task.m_overtimeMultiplier = from->m_overtimeMultiplier;
        task.m_activityRates.clear();
        for (const auto& [id, rate] : from->m_activityRates)
        {
            auto copy = std::make_unique<CActivityRate>(*rate);
            copy->m_taskId = task.m_id;
            task.m_activityRates[id] = std::move(copy);
        }
    }
    task.m_useParentBilling = false;
}

// "ACTIVITY=RATE", "ACTIVITY=not-billable" or "ACTIVITY=default": the three choices of
// the Activity Rate dialog.
void SetActivityRate(CommandSession& s, CTask& task, const std::string& choice)
{
    const size_t eq = choice.rfind('=');
    if (eq == std::string::npos || eq == 0 || eq + 1 == choice.size())
        throw UsageError("--activity-rate takes ACTIVITY=RATE, ACTIVITY=not-billable or "
                         "ACTIVITY=default; not '" +
                         choice + "'");
    const CActivity* activity = FindRecord(s.Doc().m_activities, choice.substr(0, eq), "activity");
    const std::string value = choice.substr(eq + 1);
    TakeOwnBilling(task);
    if (value == "default")
    {
        task.m_activityRates.erase(activity->m_id);
        return;
    }
    auto rate = std::make_unique<CActivityRate>();
    rate->m_activityId = activity->m_id;
    rate->m_taskId = task.m_id;
    if (value == "not-billable")
    {
        rate->m_billable = false;
        rate->m_rate = 0.0;
    }
    else
    {
        rate->m_billable = true;
        rate->m_rate = ParseDouble(value, "the rate of --activity-rate");
        if (rate->m_rate < 0)
            throw UsageError("the rate of --activity-rate must not be negative");
    }
    if (auto old = task.m_activityRates.find(activity->m_id); old != task.m_activityRates.end())
        rate->m_reserved = old->second->m_reserved;
    task.m_activityRates[activity->m_id] = std::move(rate);
    // A rate set for an activity is meant to be billed.
    task.m_useActivityRates = true;
}

int TaskAdd(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(3, 3, {"level"});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CTask* parent = FindTask(s.Doc(), args.At(1, "PARENT"));
    const std::string name = args.At(2, "NAME");
    if (name.find_first_not_of(' ') == std::string::npos)
        throw UsageError("NAME must not be empty");
    int level = parent->m_level + 1;
    if (auto l = args.Option("level"))
        level = ParseInt(*l, "--level");
    if (level <= parent->m_level || level > 19)
        throw CommandError(
            "a task of level " + std::to_string(level) + " cannot be added under a task of level " +
            std::to_string(parent->m_level) + " (the level must be below its parent's, up to 19)");
    if (parent->m_projectId != 0)
        throw CommandError("tasks cannot be added under a task linked to a project");
    CTask* task = s.Doc().AddTask(parent, uint16_t(level));
    s.Doc().RenameTask(task, name.substr(name.find_first_not_of(' ')));
    s.Save();
    std::cout << "Added " << s.Doc().GetLevelName(task->m_level) << " '" << task->m_name << "' (#"
              << task->m_id << ") under '" << parent->m_name << "'\n";
    return 0;
}

int TaskMove(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(3, 3, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CTask* source = FindTask(s.Doc(), args.At(1, "TASK"));
    CTask* destination = FindTask(s.Doc(), args.At(2, "NEWPARENT"));
    if (source == destination)
    {
        std::cout << "Nothing to move: the task and the destination are the same\n";
        return 0;
    }
    if (const int refusal = s.Doc().MoveTask(source, destination))
        Refuse(unsigned(refusal));
    s.Save();
    std::cout << "Moved '" << source->m_name << "' under '" << destination->m_name << "'\n";
    return 0;
}

int TaskRemove(Context& ctx)
{
    Args args(ctx.argv, {"rollup", "delete-entries"});
    args.Expect(2, 2, {"rollup", "delete-entries"});
    if (args.Flag("rollup") && args.Flag("delete-entries"))
        throw UsageError("give --rollup or --delete-entries, not both");
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CTask* task = FindTask(s.Doc(), args.At(1, "TASK"));
    if (task->m_id == CTimeKeeperDoc::kRootTaskId)
        throw CommandError("the top task cannot be deleted");
    // The refusal is an error of the command, not a message on the way to "nothing deleted".
    for (uint32_t id : s.Doc().GetSubtreeIds({task->m_id}))
        if (const CTask* t = s.Doc().GetTask(id); t && t->IsImported())
            Refuse(40032);
    const std::string name = task->m_name;
    bool deleted = false;
    if (args.Flag("rollup") || args.Flag("delete-entries"))
    {
        DeleteTaskPrompter answers(ctx.prompter, args.Flag("rollup") ? platform::Answer::yes
                                                                     : platform::Answer::no);
        deleted = s.Doc().DeleteTask(task, answers);
    }
    else
        deleted = s.Doc().DeleteTask(task, ctx.prompter);
    if (!deleted)
    {
        if (ctx.prompter.Unanswered())
            throw CommandError("nothing deleted: the question was not answered (use --rollup or "
                               "--delete-entries)");
        std::cout << "Nothing deleted\n";
        return ctx.prompter.Unanswered() ? 1 : 0;
    }
    s.Save();
    std::cout << "Deleted '" << name << "' and the tasks below it\n";
    return 0;
}

int TaskRename(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(3, 3, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CTask* task = FindTask(s.Doc(), args.At(1, "TASK"));
    const std::string name = args.At(2, "NAME");
    const size_t first = name.find_first_not_of(' ');
    if (first == std::string::npos)
        throw CommandError("the new name is empty; the task keeps its name");
    s.Doc().RenameTask(task, name.substr(first));
    s.Save();
    std::cout << "Renamed to '" << task->m_name << "'\n";
    return 0;
}

int TaskActive(Context& ctx, bool inactive)
{
    Args args(ctx.argv, {});
    args.Expect(2, 2, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CTask* task = FindTask(s.Doc(), args.At(1, "TASK"));
    if (task->m_id == CTimeKeeperDoc::kRootTaskId)
        throw CommandError("the top task cannot be made inactive");
    s.Doc().SetTaskInactive(task, inactive);
    s.Save();
    std::cout << "'" << task->m_name << "' is now " << (inactive ? "inactive" : "active") << "\n";
    return 0;
}

int TaskSet(Context& ctx)
{
    const std::vector<std::string> known = {"abbrev",
                                            "task-id",
                                            "rate",
                                            "billable",
                                            "use-parent-billing",
                                            "use-parent-task-id",
                                            "use-parent-contact",
                                            "overtime-multiplier",
                                            "use-activity-rates",
                                            "contact",
                                            "notes",
                                            "hours-estimate",
                                            "cost-estimate",
                                            "level",
                                            "activity-rate"};
    // --activity-rate may be given several times.
    std::vector<std::string> activityRates;
    std::vector<std::string> rest;
    for (size_t i = 0; i < ctx.argv.size(); ++i)
    {
        const std::string& a = ctx.argv[i];
        if (a.rfind("--activity-rate=", 0) == 0)
            activityRates.push_back(a.substr(16));
        else if (a == "--activity-rate")
        {
            if (i + 1 >= ctx.argv.size())
                throw UsageError("option --activity-rate needs a value");
            activityRates.push_back(ctx.argv[++i]);
        }
        else
            rest.push_back(a);
    }
    Args args(rest, {});
    args.Expect(2, 2, known);
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    CTimeKeeperDoc& doc = s.Doc();
    CTask* task = FindTask(doc, args.At(1, "TASK"));

    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    bool changed = false;
    auto text = [&](const char* name, std::string& field)
    {
        if (auto v = args.Option(name))
        {
            field = *v;
            changed = true;
        }
    };
    auto flag = [&](const char* name, bool& field)
    {
        if (auto v = args.Option(name))
        {
            field = ParseYesNo(*v, name);
            changed = true;
        }
    };
    if (auto v = args.Option("abbrev"))
    {
        task->m_abbreviation = *v;
        changed = true;
        if (task->m_parent)
            doc.SortChildren(task->m_parent);
    }
    if (auto v = args.Option("task-id"))
    {
        task->m_taskId = *v;
        task->m_useParentTaskId = false;
        changed = true;
    }
    flag("use-parent-task-id", task->m_useParentTaskId);
    if (auto v = args.Option("use-parent-billing"))
    {
        if (ParseYesNo(*v, "--use-parent-billing"))
            task->m_useParentBilling = true;
        else
            TakeOwnBilling(*task);
        changed = true;
    }
    if (auto v = args.Option("rate"))
    {
        const double rate = ParseDouble(*v, "--rate");
        if (rate < 0)
            throw UsageError("--rate must not be negative");
        TakeOwnBilling(*task);
        task->m_regularRate = rate;
        changed = true;
    }
    if (auto v = args.Option("billable"))
    {
        const bool billable = ParseYesNo(*v, "--billable");
        TakeOwnBilling(*task);
        task->m_billable = billable;
        changed = true;
    }
    if (auto v = args.Option("overtime-multiplier"))
    {
        const double m = ParseDouble(*v, "--overtime-multiplier");
        if (m < 0 || m > 100)
            throw UsageError("--overtime-multiplier must lie between 0 and 100");
        TakeOwnBilling(*task);
        task->m_overtimeMultiplier = float(m);
        changed = true;
    }
    if (auto v = args.Option("use-activity-rates"))
    {
        const bool use = ParseYesNo(*v, "--use-activity-rates");
        TakeOwnBilling(*task);
        task->m_useActivityRates = use;
        changed = true;
    }
    for (const std::string& choice : activityRates)
    {
        SetActivityRate(s, *task, choice);
        changed = true;
    }
    if (auto v = args.Option("contact"))
    {
        const int id = ParseInt(*v, "--contact");
        if (id != 0 && !doc.GetContact(uint32_t(id)))
            throw CommandError("there is no contact #" + *v);
        task->m_contactId = uint32_t(id);
        task->m_useParentContact = false;
        changed = true;
    }
    flag("use-parent-contact", task->m_useParentContact);
    text("notes", task->m_notes);
    if (auto v = args.Option("hours-estimate"))
    {
        const double h = ParseDouble(*v, "--hours-estimate");
        if (h < 0)
            throw UsageError("--hours-estimate must not be negative");
        task->m_hoursEstimate = double(int64_t(h * 60)); // kept in whole minutes
        changed = true;
    }
    if (auto v = args.Option("cost-estimate"))
    {
        task->m_costEstimate = ParseNonNegative(*v, "--cost-estimate");
        changed = true;
    }
    if (auto v = args.Option("level"))
    {
        const int level = ParseInt(*v, "--level");
        const int parentLevel = task->m_parent ? task->m_parent->m_level : -1;
        int deepestChild = 20;
        for (const CTask* c : task->m_children)
            deepestChild = std::min<int>(deepestChild, c->m_level);
        if (task->m_id == CTimeKeeperDoc::kRootTaskId || level <= parentLevel ||
            level >= deepestChild || level > 19)
            throw CommandError("level " + *v +
                               " must lie below the parent's level and above the children's");
        task->m_level = uint16_t(level);
        changed = true;
    }
    if (!changed)
        throw UsageError("nothing to set (see qvx help for the options)");
    s.Save();
    std::cout << "Updated '" << task->m_name << "'\n";
    if (!activityRates.empty() || args.Option("rate") || args.Option("billable") ||
        args.Option("overtime-multiplier") || args.Option("use-activity-rates") ||
        args.Option("use-parent-billing"))
    {
        std::cout << "Billing of " << s.TaskPath(task) << ":\n";
        PrintBilling(s, *task, 2);
    }
    return 0;
}
} // namespace

void RegisterTaskCommands(CommandTable& table)
{
    table.Add({"tasks", "FILE [--billing]", "print the task tree; --billing: what each task bills",
               Tasks,
               "--billing shows under each task the billable flag, regular rate and overtime\n"
               "multiplier its time entries get, its activity rates, and whether they are the\n"
               "task's own or inherited from the task above that holds them. A time entry is\n"
               "billed at the task's rate for its activity when activity rates are on and one is\n"
               "set, else at the task's regular rate."});
    table.Add({"task add", "FILE PARENT NAME [--level N]", "add a task under PARENT", TaskAdd});
    table.Add({"task move", "FILE TASK NEWPARENT",
               "move a task under another task of a higher level", TaskMove});
    table.Add({"task rm", "FILE TASK [--rollup | --delete-entries]",
               "delete a task and the tasks below it; entries roll up to the parent or are deleted",
               TaskRemove});
    table.Add({"task rename", "FILE TASK NAME", "rename a task", TaskRename});
    table.Add({"task inactive", "FILE TASK", "mark a task inactive",
               [](Context& c) { return TaskActive(c, true); }});
    table.Add({"task active", "FILE TASK", "mark a task active again",
               [](Context& c) { return TaskActive(c, false); }});
    table.Add(
        {"task set",
         "FILE TASK [--abbrev A] [--task-id ID] [--rate R] [--billable yes|no] "
         "[--overtime-multiplier M] "
         "[--use-parent-billing yes|no] [--use-parent-task-id yes|no] [--use-parent-contact "
         "yes|no] "
         "[--use-activity-rates yes|no] [--contact ID] [--notes TEXT] [--hours-estimate H] "
         "[--cost-estimate C] [--level N] [--activity-rate ACTIVITY=RATE|not-billable|default]...",
         "change a task's properties", TaskSet,
         "--activity-rate sets what the task bills for one activity (may be given several\n"
         "times): a rate, not-billable, or default (the task's regular rate). Setting a\n"
         "rate or not-billable turns the task's activity rates on. Changing billing on a\n"
         "task that inherits it gives the task billing of its own, starting from the\n"
         "inherited values. qvx tasks FILE --billing shows the result."});
}

} // namespace cli
