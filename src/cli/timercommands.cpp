#include "cli/commands.h"
#include "cli/commandsession.h"
#include "cli/statusformat.h"
#include "model/timekeeperdoc.h"

#include <algorithm>
#include <iostream>
#include <optional>

namespace cli
{

namespace
{
// What is known of the running entry before an operation may change or delete it.
struct RunningSnapshot
{
    CTimeEntry* entry = nullptr;
    CDay* day = nullptr;
    uint32_t taskId = 0;
};

RunningSnapshot TakeSnapshot(CommandSession& s)
{
    std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
    RunningSnapshot snap;
    snap.entry = s.Timer().GetActiveEntry();
    if (snap.entry)
    {
        snap.day = snap.entry->m_day;
        snap.taskId = snap.entry->m_taskId;
    }
    return snap;
}

// The entry of the snapshot when its day still holds it (it is not touched otherwise).
const CTimeEntry* StillFiled(CommandSession& s, const RunningSnapshot& snap)
{
    if (!snap.entry || !snap.day)
        return nullptr;
    for (const auto& [key, day] : s.Doc().m_days)
        if (day.get() == snap.day)
            for (const auto& e : day->TimeEntries())
                if (e.get() == snap.entry)
                    return e.get();
    return nullptr;
}

std::string Describe(CommandSession& s, const CTimeEntry& e)
{
    std::string text = s.TaskPath(e.m_taskId) + ", " + s.App().FormatTime(e.m_start) + "-" +
                       (e.IsRunning() ? std::string() : s.App().FormatTime(e.m_end));
    const std::string elapsed = s.App().GetElapsedText(e.GetElapsed(s.Doc().RunningEnd()));
    if (!elapsed.empty())
        text += " (" + elapsed + ")";
    return text;
}

// After a timer operation returned 0: why, as the error the command ends with.
[[noreturn]] void FailTimerOperation(CommandSession& s, const std::string& what)
{
    if (s.Ui().ConflictRefused())
        throw CommandError(
            what + ": the Time Entry conflicts with another Time Entry; nothing was changed "
                   "(--on-conflict adjust-others or adjust-this resolves it)");
    if (s.Prompter().Unanswered())
        throw CommandError(
            what +
            ": the question was not answered; nothing was changed (run again with --yes or --no)");
    throw CommandError(what + ": cancelled; nothing was changed");
}

void ReportStopped(CommandSession& s, const RunningSnapshot& snap)
{
    if (!snap.entry)
        return;
    if (const CTimeEntry* e = StillFiled(s, snap); e && !e->IsRunning())
        std::cout << "Stopped " << Describe(s, *e) << "\n";
    else if (!e)
        std::cout << "Stopped " << s.TaskPath(snap.taskId)
                  << "; the entry had no length and was deleted\n";
}

ConflictPolicy PolicyOption(const Args& args)
{
    if (auto p = args.Option("on-conflict"))
        return ParseConflictPolicy(*p);
    return ConflictPolicy::ask;
}

// The activity and note of a new running entry, and whether they were given or copied.
std::string DescribeStart(CommandSession& s, const CTimeEntry& e, bool activityGiven,
                          bool noteGiven)
{
    const CActivity* activity = s.Doc().GetActivity(e.m_activityId);
    std::string text = "activity: " + (activity ? activity->m_name : std::string("none"));
    if (activity && !activityGiven)
        text += " (the task's last)";
    text += "; note: " + (e.m_note.empty() ? std::string("none") : "\"" + e.m_note + "\"");
    if (!e.m_note.empty() && !noteGiven)
        text += " (the task's last)";
    return text;
}

int Start(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 2, {"note", "activity", "on-conflict", "recent"});
    const auto recent = args.Option("recent");
    if (recent.has_value() == (args.Count() == 2))
        throw UsageError("give a TASK or --recent N (a line of qvx recent), not both");
    const int line = recent ? ParseInt(*recent, "--recent") : 0;
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change, PolicyOption(args));
    const RunningSnapshot before = TakeSnapshot(s);

    CTask* task = nullptr;
    if (recent)
    {
        // The lines of qvx recent, in the order the Start Timer menu shows them.
        const std::vector<RecentTaskItem> items = s.Timer().GetRecentTaskMenu();
        if (line < 1 || size_t(line) > items.size())
            throw CommandError("there is no recent task " + *recent + " (qvx recent lists " +
                               std::to_string(items.size()) + ")");
        task = s.Doc().GetTask(items[size_t(line) - 1].taskId);
        if (!task)
            throw CommandError("there is no recent task " + *recent + " (qvx recent lists them)");
    }
    else
        task = FindTask(s.Doc(), args.At(1, "TASK"));
    if (task->IsProjectSummary())
        Refuse(40027);
    const auto note = args.Option("note");
    const auto activityName = args.Option("activity");
    {
        // What the entry editor does on OK: the task remembers the note and activity, so
        // the new entry and a later resume take them.
        std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
        if (activityName)
            task->m_lastActivityId =
                activityName->empty() || *activityName == "none"
                    ? 0
                    : FindRecord(s.Doc().m_activities, *activityName, "activity")->m_id;
        if (note)
            task->m_lastNote = *note;
    }
    const int r = s.Timer().StartTimer(task, 0, note.value_or(std::string()));
    if (r != 1)
    {
        if (s.Ui().ConflictRefused() || s.Prompter().Unanswered() || s.Timer().IsRunning())
            FailTimerOperation(s, "the timer was not started");
        // "Adjust this entry" fitted the new entry around the others and closed it: what
        // is left of it stays, without a running timer.
        s.Save();
        ReportStopped(s, before);
        std::cout << "The new entry was fitted around the other entries of the day; no timer is "
                     "running\n";
        return 0;
    }
    s.Save();
    ReportStopped(s, before);
    const CTimeEntry* running = s.Timer().GetActiveEntry();
    std::cout << "Started " << s.TaskPath(running->m_taskId) << " at "
              << s.App().FormatTime(running->m_start) << "; "
              << DescribeStart(s, *running, activityName.has_value(), note.has_value()) << "\n";
    return 0;
}

int Stop(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {"on-conflict"});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change, PolicyOption(args));
    if (!s.Timer().IsRunning())
    {
        if (s.Timer().IsPaused())
        {
            const std::string path = s.TaskPath(s.Timer().GetPausedTask());
            s.Timer().ClearPausedState();
            s.Save();
            std::cout << "The paused timer of " << path << " is now stopped\n";
            return 0;
        }
        std::cout << "No timer is running\n";
        return 0;
    }
    const RunningSnapshot before = TakeSnapshot(s);
    if (s.Timer().StopTimer(true, 0) != 1)
        FailTimerOperation(s, "the timer was not stopped");
    s.Save();
    ReportStopped(s, before);
    return 0;
}

int Pause(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    if (!s.Timer().IsRunning())
    {
        if (s.Timer().IsPaused())
        {
            std::cout << "The timer of " << s.TaskPath(s.Timer().GetPausedTask())
                      << " is already paused\n";
            return 0;
        }
        throw CommandError("no timer is running");
    }
    const RunningSnapshot before = TakeSnapshot(s);
    if (s.Timer().PauseResumeTimer() != 1)
        FailTimerOperation(s, "the timer was not paused");
    s.Save();
    ReportStopped(s, before);
    std::cout << "Paused " << s.TaskPath(s.Timer().GetPausedTask()) << "\n";
    return 0;
}

int Resume(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    CommandSession s(ctx, args.At(0, "FILE"), CommandSession::Mode::change);
    if (!s.Timer().IsPaused() || s.Timer().IsRunning())
        throw CommandError(s.Timer().IsRunning() ? "the timer is running, not paused"
                                                 : "no timer is paused");
    if (s.Timer().PauseResumeTimer() != 1)
        FailTimerOperation(s, "the timer was not resumed");
    s.Save();
    const CTimeEntry* running = s.Timer().GetActiveEntry();
    std::cout << "Resumed " << s.TaskPath(running->m_taskId) << " at "
              << s.App().FormatTime(running->m_start) << "; "
              << DescribeStart(s, *running, false, false) << "\n";
    return 0;
}

int Status(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {"format"});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    std::lock_guard<std::recursive_mutex> lock(s.Doc().GetLock());
    if (const auto format = args.Option("format"))
    {
        std::cout << FormatStatus(*format, CurrentStatus(s)) << "\n";
        return 0;
    }
    if (const CTimeEntry* e = s.Timer().GetActiveEntry(); e && s.Timer().IsRunning())
    {
        std::cout << "Running: " << s.TaskPath(e->m_taskId) << "\n";
        std::cout << "Start: "
                  << (e->m_day ? s.App().FormatShortDate(e->m_day->GetDate()) + " " : std::string())
                  << s.App().FormatTime(e->m_start) << "\n";
        const std::string elapsed = s.Timer().GetActiveElapsedText();
        std::cout << "Elapsed: " << (elapsed.empty() ? std::string("less than a minute") : elapsed)
                  << "\n";
        if (!e->m_note.empty())
            std::cout << "Note: " << e->m_note << "\n";
        return 0;
    }
    if (s.Timer().IsPaused() && s.Timer().GetPausedTask())
    {
        std::cout << "Paused: " << s.TaskPath(s.Timer().GetPausedTask()) << "\n";
        return 0;
    }
    std::cout << s.Timer().GetTimerTip() << "\n";
    return 0;
}

int Recent(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    Context readCtx{ctx.argv, reader};
    CommandSession s(readCtx, args.At(0, "FILE"), CommandSession::Mode::read);
    const std::vector<RecentTaskItem> items = s.Timer().GetRecentTaskMenu();
    if (items.empty())
        std::cout << "No recent tasks\n";
    // Numbered as the lines stand: start --recent N starts line N.
    for (size_t i = 0; i < items.size(); ++i)
        std::cout << i + 1 << "  " << items[i].name << "\n";
    return 0;
}
} // namespace

void RegisterTimerCommands(CommandTable& table)
{
    table.Add(
        {"start",
         "FILE (TASK | --recent N) [--activity NAME|none] [--note TEXT] [--on-conflict "
         "adjust-others|adjust-this|fail]",
         "start the timer on a task (a running timer stops first)", Start,
         "The new entry takes --activity and --note, or else the task's last ones; given, they\n"
         "become the task's last activity and note, so a later resume keeps them.\n"
         "--recent N starts the task on line N of qvx recent."});
    table.Add({"stop", "FILE [--on-conflict adjust-others|adjust-this|fail]",
               "stop the running timer", Stop});
    table.Add({"pause", "FILE", "pause the running timer", Pause});
    table.Add({"resume", "FILE", "resume the paused timer", Resume});
    table.Add({"status", std::string("FILE [--format TEXT]\n") + kStatusFormatHelp,
               "show the running or paused timer", Status});
    table.Add({"recent", "FILE",
               "list the recently timed tasks (line numbers for start --recent N)", Recent});
}

} // namespace cli
