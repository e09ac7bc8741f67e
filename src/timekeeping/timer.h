#pragma once

#include "timekeeping/entrychange.h"
#include "timekeeping/timerui.h"

#include <functional>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class CDateTime;
class CDay;
class CTask;
class CTimeEntry;
class CTimeKeeperApp;
class CTimeKeeperDoc;

namespace platform
{
class Prompter;
class SettingsStore;
} // namespace platform

// State of the "Pause / Resume" command (32916).
struct PauseMenuState
{
    bool enabled = false;
    bool checked = false; // shown with the radio mark
    std::string text;     // 42001 "Pa&use Timer\tCtrl+U" or 42002 "Res&ume Timer\tCtrl+U"
};

// One item of the "Start Timer" submenu of recent tasks.
struct RecentTaskItem
{
    unsigned commandId = 0; // 39000 + position - 1
    int position = 0;       // 1-based position in the recent-task list, for StartRecentTask
    uint32_t taskId = 0;
    std::string name; // the task's display path
};

// The timer of one document. Its state lives in the document (running flag, active
// entry, paused task, recent tasks) so that loading a file with a running entry sets
// it; this class carries the operations that need the application's rounding and
// settings and the user's answers.
//
// Call the operations without holding the document lock: they take it themselves
// and must be able to release it around the editor and the conflict question.
class CTimer
{
public:
    static constexpr unsigned kPauseCommandId = 32916;
    static constexpr unsigned kFirstRecentTaskCommandId = 39000;
    static constexpr int kRecentTaskCommandCount = 25;
    static constexpr int kTickMilliseconds = 5000;
    // The tip of the notification-area icon holds at most this many characters.
    static constexpr size_t kTipLimit = 63;
    // Section of the settings store that keeps a paused task between runs: key = the
    // document's path, value = the task id. The file itself has no place for it.
    static constexpr const char* kPausedSection = "Paused Timers";

    // Becomes the document's "timer stopped" listener, and its source of the rounded and
    // the unrounded current time when it has none yet. Every successful save of the
    // document from then on keeps its paused task in the settings store (see
    // SavePausedState), whichever program or thread saves it.
    CTimer(CTimeKeeperDoc& doc, CTimeKeeperApp& app, TimerUi& ui, platform::Prompter& prompter);
    ~CTimer();
    CTimer(const CTimer&) = delete;
    CTimer& operator=(const CTimer&) = delete;

    // Stops any running entry (with its own questions) and starts a new one on `task`.
    // minuteRounding 0: round to the configured interval (user start); 1: to the minute
    // (resume). An empty note takes the task's last note. Returns 1 when a timer runs
    // on the task afterwards, 0 when the start was cancelled (a previously running
    // entry is then running again).
    int StartTimer(CTask* task, int minuteRounding, const std::string& note);
    // Returns 1 when no timer runs afterwards, 0 when the user cancelled and the timer
    // keeps running. With `setModified` the document is marked modified after a stop.
    int StopTimer(bool setModified, int minuteRounding);
    // Pauses the running timer (a stop with minute rounding) or resumes the paused task.
    // Returns 1 when the pause or resume happened, 0 otherwise.
    int PauseResumeTimer();
    PauseMenuState GetPauseMenuState() const;
    // Forgets the paused task (the timer is then simply inactive).
    void ClearPausedState();

    // Stops the running `entry` at midnight or splits it into one entry per day, by the
    // "StopAtMidnight" setting. Does nothing for an entry that is not running.
    void CheckTimerMidnight(CTimeEntry* entry);

    // Resolves an overlap of `entry` with the other entries of `day` by asking the
    // user. 0: no conflict left and the entry kept; 1: the adjustment removed the
    // entry; 2: the user chose to edit the entry or dismissed the question.
    // `entry` must be filed in `day`.
    int ResolveTimeConflict(CDay& day, CTimeEntry& entry);
    // The same for a new entry that is not filed yet; the caller keeps owning it, and
    // `pending` is empty afterwards when the answer is 1.
    int ResolveTimeConflict(CDay& day, std::unique_ptr<CTimeEntry>& pending);
    // Applies a resolution choice without asking (0 adjust the others, 1 adjust this
    // entry), repeating until the day reports no conflict. Returns 1 when the entry was
    // removed, else 0. For choice 1 the entry must be filed in `day`.
    int AdjustConflicts(CDay& day, CTimeEntry& entry, int choice);
    int AdjustConflicts(CDay& day, std::unique_ptr<CTimeEntry>& pending, int choice);

    // Opens the time-entry editor (editor-open flag set meanwhile). On OK the entry's
    // note and activity become its task's last note and last activity. 1 OK, 2 Cancel.
    int EditTimeEntry(CDay& day, CTimeEntry& entry);

    // Puts the task first in the recent-task list.
    void AddRecentTask(const CTask* task);
    // Starts the timer on the task at 1-based `index` of the recent-task list
    // (the result of StartTimer; 0 when the index or the task is not there).
    int StartRecentTask(int index);
    // Display path of the task at 1-based `index`; empty when out of range.
    std::string GetRecentTaskName(int index) const;
    // The "Start Timer" submenu: by "RecentTaskSortOrder", in list order (1) or by name.
    std::vector<RecentTaskItem> GetRecentTaskMenu() const;

    // The notification-area state: icon and tip (at most 63 characters).
    TimerIcon GetTimerIcon() const;
    std::string GetTimerTip() const;
    // Shows the current icon and tip through the TimerUi.
    void RefreshIcon();

    // The work of one tick: the midnight check, then the status and the tip. Returns
    // true while a timer runs (the tick is to be re-armed).
    bool OnTimerTick();
    // After a document was read: resumes the timer on an entry with a null end, starts
    // the tick and runs the midnight check once; then, when no timer runs, takes up the
    // task that was paused when the document was last saved (RestorePausedState, from
    // the settings file as it is now); shows the resulting state.
    void OnDocumentOpened();

    // What the conflict adjustments of the last finished operation (start, stop, pause,
    // resume, midnight check, conflict resolution) changed; shown through
    // TimerUi::ShowEntryChanges as it finished.
    const std::vector<EntryChange>& LastEntryChanges() const { return m_lastChanges; }

    // Queries.
    bool IsRunning() const;
    CTimeEntry* GetActiveEntry() const;
    bool IsPaused() const;
    CTask* GetPausedTask() const;
    // Elapsed text of the running entry up to the rounded current time; empty when none.
    std::string GetActiveElapsedText() const;

    // A paused task across saves and runs: stored in the settings store under the
    // document's path. Save writes the key while a task is paused and removes it
    // otherwise; the caller saves the store. Restore pauses the task again when no
    // timer runs and the task still exists, and answers whether it did.
    void SavePausedState(platform::SettingsStore& store, const std::string& documentPath) const;
    bool RestorePausedState(const platform::SettingsStore& store, const std::string& documentPath);
    // The key of a document: its absolute path with links resolved.
    static std::string PausedStateKey(const std::string& documentPath);

private:
    using Lock = std::unique_lock<std::recursive_mutex>;

    struct StopOutcome
    {
        int result = 1;
        bool entryGone = false; // the stop deleted the running entry
    };

    // Collects the entry changes of one public operation and shows them once, when the
    // outermost one ends (a start runs a stop, a pause a stop, a stop the conflict
    // resolution). Declare it before any lock, so that it ends after them.
    class OperationScope
    {
    public:
        explicit OperationScope(CTimer& timer);
        ~OperationScope();
        OperationScope(const OperationScope&) = delete;
        OperationScope& operator=(const OperationScope&) = delete;

    private:
        CTimer& m_timer;
    };

    StopOutcome StopTimerImpl(bool setModified, int minuteRounding);
    // After a successful save: the paused task into the settings file, when it changed.
    void KeepPausedState();
    void DeleteStoppedEntry(CTimeEntry* entry, bool setModified);
    void RestorePrevious(const CTimeEntry& copy, const CDateTime& date, CTimeEntry* previous,
                         bool previousGone);
    // A running piece of `taskId` in `day` that is not the active entry: the tail left
    // when a conflict adjustment split a new running entry.
    CTimeEntry* FindRunningTail(const CDay& day, uint32_t taskId) const;
    // The timer runs (again) on the active entry: icon, tip and tick.
    void ShowRunning();
    void ShowInactive();
    bool TaskExists(const CTask* task) const;
    std::string BuildTip(const CTask& task, const std::string& suffix) const;

    CTimeKeeperDoc& m_doc;
    CTimeKeeperApp& m_app;
    TimerUi& m_ui;
    platform::Prompter& m_prompter;
    bool m_ownsRoundedNow = false;
    bool m_ownsNow = false;
    std::function<void()> m_previousOnSaved;
    int m_operationDepth = 0;
    std::vector<EntryChange> m_changes;
    std::vector<EntryChange> m_lastChanges;
};
