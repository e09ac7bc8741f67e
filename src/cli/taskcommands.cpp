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

int Tasks(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    if (const CTask* root = s.Doc().GetRootTask())
        PrintTree(s.Doc(), *root, 0);
    return 0;
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
                                            "level"};
    Args args(ctx.argv, {});
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
    if (auto v = args.Option("rate"))
    {
        const double rate = ParseDouble(*v, "--rate");
        if (rate < 0)
            throw UsageError("--rate must not be negative");
        task->m_regularRate = rate;
        task->m_useParentBilling = false;
        changed = true;
    }
    if (auto v = args.Option("billable"))
    {
        task->m_billable = ParseYesNo(*v, "--billable");
        task->m_useParentBilling = false;
        changed = true;
    }
    if (auto v = args.Option("overtime-multiplier"))
    {
        const double m = ParseDouble(*v, "--overtime-multiplier");
        if (m < 0 || m > 100)
            throw UsageError("--overtime-multiplier must lie between 0 and 100");
        task->m_overtimeMultiplier = float(m);
        task->m_useParentBilling = false;
        changed = true;
    }
    flag("use-activity-rates", task->m_useActivityRates);
    flag("use-parent-billing", task->m_useParentBilling);
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
    return 0;
}
} // namespace

void RegisterTaskCommands(CommandTable& table)
{
    table.Add({"tasks", "FILE", "print the task tree (inactive tasks marked)", Tasks});
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
    table.Add({"task set",
               "FILE TASK [--abbrev A] [--task-id ID] [--rate R] [--billable yes|no] "
               "[--overtime-multiplier M] "
               "[--use-parent-billing yes|no] [--use-parent-task-id yes|no] [--use-parent-contact "
               "yes|no] "
               "[--use-activity-rates yes|no] [--contact ID] [--notes TEXT] [--hours-estimate H] "
               "[--cost-estimate C] [--level N]",
               "change a task's properties", TaskSet});
}

} // namespace cli
