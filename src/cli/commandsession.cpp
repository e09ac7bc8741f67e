#include "cli/commandsession.h"

#include "cli/documenthost.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"

#include <cctype>
#include <iostream>
#include <unistd.h>

namespace cli
{

ConflictPolicy ParseConflictPolicy(const std::string& text)
{
    if (text == "adjust-others")
        return ConflictPolicy::adjustOthers;
    if (text == "adjust-this")
        return ConflictPolicy::adjustThis;
    if (text == "fail")
        return ConflictPolicy::fail;
    throw UsageError("--on-conflict must be one of adjust-others, adjust-this, fail; not '" + text +
                     "'");
}

int CliTimerUi::EditTimeEntry(CDay&, CTimeEntry&)
{
    // After a refused conflict the "editor" is cancelled, which ends the timer's
    // resolve-and-edit loop and restores what was there before.
    return m_refused ? 2 : 1;
}

void CliTimerUi::ShowEntryChanges(const std::string& text)
{
    if (m_changesTo != ChangesTo::nowhere)
        (m_changesTo == ChangesTo::errors ? std::cerr : std::cout) << text << "\n";
}

int CliTimerUi::ChooseConflictResolution()
{
    m_lastChoice = AskConflictResolution();
    return m_lastChoice;
}

int CliTimerUi::AskConflictResolution()
{
    switch (m_policy)
    {
    case ConflictPolicy::adjustOthers:
        return 0;
    case ConflictPolicy::adjustThis:
        return 1;
    case ConflictPolicy::fail:
        m_refused = true;
        return 2;
    case ConflictPolicy::ask:
        break;
    }
    if (!CanAskOnTerminal())
    {
        m_refused = true;
        return 2;
    }
    std::cerr << "The Time Entry conflicts with another Time Entry.  How would you like to resolve "
                 "the conflict?\n"
                 "  1  Automatically adjust other Time Entries to fit around this Time Entry.\n"
                 "  2  Automatically adjust this Time Entry to fit around other Time Entries.\n"
                 "  3  Cancel.\n";
    for (;;)
    {
        std::cerr << "Choice [1]: " << std::flush;
        std::string line;
        if (!std::getline(std::cin, line) || line == "3" || line == "c" || line == "cancel")
        {
            m_refused = true;
            return 2;
        }
        if (line.empty() || line == "1")
            return 0;
        if (line == "2")
            return 1;
    }
}

CommandSession::CommandSession(Context& ctx, const std::string& path, Mode mode,
                               ConflictPolicy policy)
    : m_prompter(ctx.prompter), m_doc(ctx.prompter), m_ui(ctx.prompter, policy)
{
    if (mode == Mode::change)
        m_doc.OpenForChange(path);
    else
        m_doc.OpenForReading(path);
    m_app.Attach(m_doc.Doc());
    if (m_doc.Hosted())
    {
        // The hosting program's timer stays the document's listener; its state (running,
        // paused, the tick's midnight check) is the program's and is taken as it is.
        m_hostTimerStopped = m_doc.Doc().m_onTimerStopped;
        m_timer = std::make_unique<CTimer>(m_doc.Doc(), m_app.App(), m_ui, ctx.prompter);
        return;
    }
    m_timer = std::make_unique<CTimer>(m_doc.Doc(), m_app.App(), m_ui, ctx.prompter);

    // A timer left running over midnight is stopped or split as the file is opened;
    // that is kept even when the command itself then changes nothing, and said once.
    const MidnightSnapshot before = TakeMidnightSnapshot(m_doc.Doc());
    bool midnightChanged = false;
    const int observer = m_doc.Doc().AddObserver([&](unsigned) { midnightChanged = true; });
    m_ui.SetChangesTo(CliTimerUi::ChangesTo::errors);
    m_timer->OnDocumentOpened();
    m_ui.SetChangesTo(CliTimerUi::ChangesTo::output);
    m_doc.Doc().RemoveObserver(observer);
    if (midnightChanged)
    {
        bool written = true;
        if (mode == Mode::change)
            m_doc.Save();
        else
            written = WriteMidnightChange(ctx, path);
        const char* const held = " (not yet written: another copy of the program holds the file)";
        std::cerr << DescribeMidnightChange(before) << (written ? "" : held) << "\n";
    }
}

CommandSession::MidnightSnapshot CommandSession::TakeMidnightSnapshot(const CTimeKeeperDoc& doc)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    MidnightSnapshot snap;
    // The entry the timer resumes on: the last one read with an open end.
    snap.entry = doc.m_activeEntry;
    for (const auto& [key, day] : doc.m_days)
        for (const auto& e : day->TimeEntries())
            if (!doc.m_activeEntry && e->IsRunning())
                snap.entry = e.get();
    if (snap.entry && snap.entry->m_day)
    {
        snap.taskId = snap.entry->m_taskId;
        snap.date = snap.entry->m_day->GetDate();
        snap.start = snap.entry->m_start;
    }
    return snap;
}

std::string CommandSession::DescribeMidnightChange(const MidnightSnapshot& before)
{
    CTimeKeeperDoc& doc = m_doc.Doc();
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    const CTimeEntry* stopped = nullptr;
    if (const CDay* day = doc.GetDay(before.date))
        for (const auto& e : day->TimeEntries())
            if (e.get() == before.entry)
                stopped = e.get();
    const CTimeEntry* running = m_timer->GetActiveEntry();
    std::string text =
        "The timer of " + TaskPath(before.taskId) +
        (running ? " ran past midnight and was split by day" : " was stopped at midnight") +
        ": its entry of " + before.date.Format("%Y-%m-%d") + " from " +
        App().FormatTime(before.start);
    if (stopped && !stopped->IsRunning())
        text += " now ends at " + stopped->m_end.ToText();
    else
        text += " lay within other entries and was removed";
    if (running && running->m_day)
        text += "; it runs on from " + App().FormatTime(running->m_start) + " on " +
                running->m_day->GetDate().Format("%Y-%m-%d");
    return text;
}

bool CommandSession::WriteMidnightChange(Context& ctx, const std::string& path)
{
    // A reading command writes the stop too, so that the next command does not find the
    // timer still running; a file another copy of the program holds is left to it.
    try
    {
        DocSession writer(ctx.prompter);
        writer.OpenForChange(path);
        m_app.Attach(writer.Doc());
        CliTimerUi ui(ctx.prompter, ConflictPolicy::adjustThis);
        ui.SetChangesTo(CliTimerUi::ChangesTo::nowhere);
        {
            CTimer timer(writer.Doc(), m_app.App(), ui, ctx.prompter);
            timer.OnDocumentOpened();
        }
        if (writer.Doc().IsModified())
            writer.Save();
        m_app.Attach(m_doc.Doc());
        return true;
    }
    catch (const CommandError&)
    {
        m_app.Attach(m_doc.Doc());
        return false;
    }
}

CommandSession::~CommandSession()
{
    // The timer detaches itself from the document; it must go first.
    m_timer.reset();
    if (m_doc.Hosted())
    {
        std::lock_guard<std::recursive_mutex> lock(m_doc.Doc().GetLock());
        m_doc.Doc().m_onTimerStopped = m_hostTimerStopped;
    }
}

void CommandSession::Save()
{
    m_doc.Doc().SetModifiedFlag(true);
    m_doc.Doc().UpdateAllViews();
    m_doc.Save();
    m_app.SaveStore();
}

std::string CommandSession::TaskPath(uint32_t taskId) const
{
    return TaskPath(m_doc.Doc().GetTask(taskId));
}

std::string CommandSession::TaskPath(const CTask* task) const
{
    if (!task)
        return "**Unassigned**";
    return m_doc.Doc().GetTaskPath(task);
}

void Refuse(unsigned messageId)
{
    throw CommandError(platform::LoadString(messageId));
}

bool SameText(const std::string& a, const std::string& b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

std::string LineBreaks(const std::string& text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == 'n' || text[i + 1] == '\\'))
        {
            out += text[i + 1] == 'n' ? '\n' : '\\';
            ++i;
        }
        else
            out += text[i];
    }
    return out;
}

std::string KeyAndLines(const std::string& key, const std::string& value)
{
    const std::string indent(key.size() + 2, ' ');
    std::string out = key + ": ";
    for (char c : value)
    {
        if (c == '\r')
            continue;
        out += c;
        if (c == '\n')
            out += indent;
    }
    return out + "\n";
}

std::string NonBlank(const std::string& text, const char* what)
{
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos)
        throw UsageError(std::string(what) + " must not be empty");
    return text.substr(first);
}

} // namespace cli
