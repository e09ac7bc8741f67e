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

int CliTimerUi::ChooseConflictResolution()
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
    // that is kept even when the command itself then changes nothing.
    bool midnightChanged = false;
    const int observer = m_doc.Doc().AddObserver([&](unsigned) { midnightChanged = true; });
    m_timer->OnDocumentOpened();
    m_doc.Doc().RemoveObserver(observer);
    if (midnightChanged && mode == Mode::change)
        m_doc.Save();

    m_timer->RestorePausedState(m_app.Store(), path);
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
    // A hosting program keeps a paused task itself, as long as it runs.
    if (!m_doc.Hosted())
        m_timer->SavePausedState(m_app.Store(), m_doc.Path());
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

std::string NonBlank(const std::string& text, const char* what)
{
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos)
        throw UsageError(std::string(what) + " must not be empty");
    return text.substr(first);
}

} // namespace cli
