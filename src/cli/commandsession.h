#pragma once

#include "cli/appcontext.h"
#include "cli/commands.h"
#include "cli/docsession.h"
#include "timekeeping/timer.h"
#include "timekeeping/timerui.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace cli
{

// How qvx answers the timer's conflict question: from --on-conflict, else on the
// terminal, else not at all (the change is then refused).
enum class ConflictPolicy
{
    ask,
    adjustOthers,
    adjustThis,
    fail,
};

// "adjust-others", "adjust-this", "fail"; throws UsageError listing them.
ConflictPolicy ParseConflictPolicy(const std::string& text);

// The timer's window on the terminal: there is no editor, so the editor "accepts" the
// entry as it is; the conflict question is answered by the policy.
class CliTimerUi : public TimerUi
{
public:
    CliTimerUi(TerminalPrompter& prompter, ConflictPolicy policy)
        : m_prompter(prompter), m_policy(policy)
    {
    }

    int EditTimeEntry(CDay& day, CTimeEntry& entry) override;
    int ChooseConflictResolution() override;
    void ShowTimerState(TimerIcon, const std::string&) override {}
    // A line on the command's output; while the document is opened on standard error,
    // where the midnight check's notice goes, so that a reading command's output stays
    // its own.
    void ShowEntryChanges(const std::string& text) override;
    enum class ChangesTo
    {
        output,
        errors,
        nowhere, // said already, by the copy of the document that the command reads
    };
    void SetChangesTo(ChangesTo where) { m_changesTo = where; }

    void SetPolicy(ConflictPolicy policy) { m_policy = policy; }
    // A conflict came up and was not resolved (refused, or no answer could be had).
    bool ConflictRefused() const { return m_refused; }
    // The last answer to the conflict question: 0 adjust the others, 1 adjust this entry,
    // 2 cancelled; -1 when it was not asked.
    int LastChoice() const { return m_lastChoice; }

private:
    int AskConflictResolution();

    TerminalPrompter& m_prompter;
    ConflictPolicy m_policy;
    bool m_refused = false;
    int m_lastChoice = -1;
    ChangesTo m_changesTo = ChangesTo::output;
};

// A document opened by one command, with the application object around it and the
// timer on it. Opening resumes a running entry's timer (running the midnight check
// once) and a task paused by an earlier command.
class CommandSession
{
public:
    enum class Mode
    {
        read,   // any file, even one another copy holds; never saved
        change, // held for writing; refused when another copy holds it
    };

    CommandSession(Context& ctx, const std::string& path, Mode mode,
                   ConflictPolicy policy = ConflictPolicy::ask);
    ~CommandSession();

    CTimeKeeperDoc& Doc() { return m_doc.Doc(); }
    CTimeKeeperApp& App() { return m_app.App(); }
    AppContext& AppCtx() { return m_app; }
    CTimer& Timer() { return *m_timer; }
    CliTimerUi& Ui() { return m_ui; }
    TerminalPrompter& Prompter() { return m_prompter; }
    const std::string& Path() const { return m_doc.Path(); }

    // Marks the document modified and saves it (which keeps a paused task for the next
    // command, as every save of the document does).
    void Save();

    // Display path of a task (or of an id that names none: "**Unassigned**").
    std::string TaskPath(uint32_t taskId) const;
    std::string TaskPath(const CTask* task) const;

private:
    // The entry a timer left running would resume on, before the midnight check.
    struct MidnightSnapshot
    {
        const CTimeEntry* entry = nullptr;
        uint32_t taskId = 0;
        CDateTime date;
        CTinyTime start;
    };
    static MidnightSnapshot TakeMidnightSnapshot(const CTimeKeeperDoc& doc);
    std::string DescribeMidnightChange(const MidnightSnapshot& before);
    bool WriteMidnightChange(Context& ctx, const std::string& path);

    TerminalPrompter& m_prompter;
    AppContext m_app;
    DocSession m_doc;
    CliTimerUi m_ui;
    std::unique_ptr<CTimer> m_timer;
    std::function<void()> m_hostTimerStopped;
};

// A refusal with the system's own text for `messageId`.
[[noreturn]] void Refuse(unsigned messageId);

// A catalog record by "#id", a bare id, or its name (case-insensitive).
template <class Map> auto* FindRecord(const Map& map, const std::string& spec, const char* what);

bool SameText(const std::string& a, const std::string& b);
// Text typed on one line: a backslash and "n" become a line break, two backslashes one.
std::string LineBreaks(const std::string& text);
// "key: value" with the lines after the first of a multi-line value set under the first.
std::string KeyAndLines(const std::string& key, const std::string& value);
// Leading blanks removed; UsageError naming `what` when nothing is left.
std::string NonBlank(const std::string& text, const char* what);

template <class Map> auto* FindRecord(const Map& map, const std::string& spec, const char* what)
{
    const std::string digits = !spec.empty() && spec[0] == '#' ? spec.substr(1) : spec;
    if (!digits.empty() && digits.size() < 10 &&
        digits.find_first_not_of("0123456789") == std::string::npos)
    {
        auto it = map.find(uint32_t(std::stoul(digits)));
        if (it != map.end())
            return it->second.get();
        if (spec[0] == '#')
            throw CommandError(std::string("there is no ") + what + " #" + digits);
    }
    decltype(map.begin()->second.get()) found = nullptr;
    for (const auto& [id, rec] : map)
        if (SameText(rec->m_name, spec))
        {
            if (found)
                throw CommandError(std::string("several ") + what + "s are named '" + spec +
                                   "' (use #id)");
            found = rec.get();
        }
    if (!found)
    {
        std::string known;
        for (const auto& [id, rec] : map)
            known += (known.empty() ? "" : ", ") + ("\"" + rec->m_name + "\"");
        throw CommandError(
            std::string("there is no ") + what + " '" + spec + "'" +
            (known.empty() ? std::string(" (there are none)") : " (known: " + known + ")"));
    }
    return found;
}

} // namespace cli
