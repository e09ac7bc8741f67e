#pragma once

#include "model/catalogs.h"
#include "model/day.h"
#include "model/entry.h"
#include "model/project.h"
#include "model/reportdef.h"
#include "model/shareddoc.h"
#include "model/task.h"
#include "platform/prompter.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

// What changed, so that views refill only what they show.
enum UpdateHint : unsigned
{
    hintAll = 0xFFFF,
    hintTasks = 0x1,
    hintEntries = 0x2,
    hintCatalogs = 0x4,
    hintReports = 0x8,
    hintTimer = 0x10,
};

// How a load ended.
struct LoadResult
{
    enum Status
    {
        loaded,
        cancelled, // the user declined converting an older file, or it was newer (message shown)
        failed,    // a format error or an early end of the stream
    };
    Status status = failed;
    // Failed because the bytes are no document of this program at all (error says so).
    bool notDocument = false;
    uint32_t version = 0;
    std::string error; // names the record and the byte offset when reading failed
};

// Owns the whole data model of one .qvx file and every change to it.
class CTimeKeeperDoc : public CSharedDoc
{
public:
    static constexpr uint32_t kCurrentVersion = 11;
    // The highest version that a later release could plausibly have written; a higher
    // "version" means the bytes are something else (a text file starts with four letters).
    static constexpr uint32_t kHighestPlausibleVersion = 100;
    static constexpr uint32_t kRootTaskId = 1;

    CTimeKeeperDoc();
    ~CTimeKeeperDoc() override;
    CTimeKeeperDoc(const CTimeKeeperDoc&) = delete;
    CTimeKeeperDoc& operator=(const CTimeKeeperDoc&) = delete;

    // The one re-entrant document lock: held for every read or change of the model.
    std::recursive_mutex& GetLock() const override { return m_lock; }

    // Lifecycle.
    void DeleteContents();
    // A new document's defaults: root task named after the employee, the 14 expense
    // types, the default level names; no path.
    void NewDocument(const std::string& employeeName);
    // Reads a whole stream; asks 41018 / shows 40029 through `prompter`. On failure
    // the document is left empty.
    LoadResult LoadFromBytes(const uint8_t* data, size_t size, platform::Prompter& prompter);
    std::vector<uint8_t> SaveToBytes();
    // The whole document, or a selection for archiving: tasks selected, below or above
    // one; days inside [from, to] (either end may be null = open) with the matching
    // entries; outstanding to-dos only without a "to" end.
    void WriteDocument(CArchive& ar, bool selection, const CDateTime& from, const CDateTime& to,
                       const std::vector<uint32_t>& selectedTasks);
    // Reads the document body from `ar` (used by LoadFromBytes).
    void ReadDocument(CArchive& ar, platform::Prompter& prompter, LoadResult& result);
    static std::unique_ptr<CObject> CreateRecord(std::string_view className);
    // How the last LoadFromBytes ended (its error text names the record and offset).
    const LoadResult& GetLastLoadResult() const { return m_lastLoad; }

    // Archiving. The archive file's contents: the selective form with `taskId` as the
    // selection (the root task selects everything) and [from, to] as the range (a null
    // end is open).
    std::vector<uint8_t> WriteSelection(const CDateTime& from, const CDateTime& to, uint32_t taskId);
    // Deletes what an archive of the same arguments holds: the time, expense and completed
    // to-do entries of the task and those below it in the days of the range, and, only
    // without a "to" end, their outstanding to-do entries. A running entry among them
    // stops the timer first. Marks the document modified and updates the views.
    void DeleteArchivedEntries(const CDateTime& from, const CDateTime& to, uint32_t taskId);

    // Modified flag and views.
    bool IsModified() const { return m_modified; }
    void SetModifiedFlag(bool modified = true) override;
    using Observer = std::function<void(unsigned hint)>;
    int AddObserver(Observer observer);
    void RemoveObserver(int handle);
    void UpdateAllViews(unsigned hint = hintAll);
    // Called after the modified flag is set while the document is not being
    // created or opened (the automatic save listens here).
    std::function<void()> m_onModified;
    bool IsLoading() const { return m_loading; }

    // Settings the document needs from the application.
    // True: siblings are ordered and paths are built by full names ("ListType" 1).
    bool m_fullTaskNames = true;
    // The current moment rounded to the configured interval: the end of the running entry.
    std::function<CDateTime()> m_roundedNow;
    CDateTime RoundedNow() const;
    CTinyTime RunningEnd() const { return CTinyTime::FromDate(RoundedNow()); }
    // The current moment, unrounded (falls back to RoundedNow when not handed in).
    std::function<CDateTime()> m_now;
    // The running entry's end in conflict tests and adjustments: the rounded current time,
    // or the current time when that is later, so that an entry typed inside the time the
    // timer has already run overlaps it even before the rounded time moves on.
    CDateTime ConflictNow() const;

    // Level names.
    std::string GetLevelName(uint32_t level) const;
    void SetLevelName(uint32_t level, const std::string& name);

    // Ids of the given tasks and of every task below them (unknown ids are skipped).
    std::unordered_set<uint32_t> GetSubtreeIds(const std::vector<uint32_t>& taskIds) const;

    // Lookups (nullptr when absent).
    CTask* GetTask(uint32_t id) const;
    CTask* GetRootTask() const { return GetTask(kRootTaskId); }
    CDay* GetDay(const std::string& key) const;
    CDay* GetDay(const CDateTime& date) const { return GetDay(date.DayKey()); }
    // The day of `date`, created and counted when missing.
    CDay* GetOrCreateDay(const CDateTime& date);
    // Drops a day that holds nothing.
    void RemoveDayIfEmpty(CDay* day);
    CActivity* GetActivity(uint32_t id) const;
    CExpenseType* GetExpenseType(uint32_t id) const;
    CPaymentMethod* GetPaymentMethod(uint32_t id) const;
    CContact* GetContact(uint32_t id) const;
    CProject* GetProject(uint32_t id) const;
    CReport* GetReport(uint32_t id) const;

    // Display path of a task: display texts from the first level below the root down,
    // joined by "/" (the root alone gives its own name). With `shownLevels`, only the
    // levels for which it answers true.
    std::string GetTaskPath(const CTask* task,
                            const std::function<bool(int level)>& shownLevels = nullptr) const;

    // Task tree operations. Refusals return the message number (40011, 40012, 40025,
    // 40026, 40032) and change nothing; 0 means done.
    CTask* AddTask(CTask* parent, uint16_t level);
    int MoveTask(CTask* source, CTask* destination);
    // Asks 41003/41004 and, with entries below, 41005/41006 (Yes roll-up, No delete).
    // Returns true when the task was deleted.
    bool DeleteTask(CTask* task, platform::Prompter& prompter);
    void RenameTask(CTask* task, const std::string& name);
    void SetTaskInactive(CTask* task, bool inactive);
    // Re-sorts a parent's children (after a rename or a change of "ListType").
    void SortChildren(CTask* parent);

    // Catalogs. Deleting asks the question of its kind; true when deleted.
    CActivity* AddActivity(const std::string& name);
    CExpenseType* AddExpenseType(const std::string& name);
    CPaymentMethod* AddPaymentMethod(const std::string& name);
    CContact* AddContact();
    CReport* AddReport(CReport::Kind kind);
    bool DeleteActivity(uint32_t id, platform::Prompter& prompter);
    bool DeleteExpenseType(uint32_t id, platform::Prompter& prompter);
    bool DeletePaymentMethod(uint32_t id, platform::Prompter& prompter);
    bool DeleteContact(uint32_t id, platform::Prompter& prompter);
    void DeleteReport(uint32_t id);
    CProject* AddProject(std::unique_ptr<CProject> project);
    void DeleteProject(uint32_t id);

    // Entries. Filing links the entry to its day and its task's list. These building
    // blocks neither mark the document modified nor update the views: their callers do,
    // once the whole change is made.
    CTimeEntry* FileTimeEntry(CDay* day, std::unique_ptr<CTimeEntry> entry);
    CExpenseEntry* FileExpenseEntry(CDay* day, std::unique_ptr<CExpenseEntry> entry);
    CToDoEntry* FileCompletedToDo(CDay* day, std::unique_ptr<CToDoEntry> entry);
    CToDoEntry* AddOutstandingToDo(std::unique_ptr<CToDoEntry> entry);
    // Takes an entry out of its day (or the to-do list) and its task; the caller owns it.
    // A running entry stops the timer first.
    std::unique_ptr<CTimeEntry> UnfileTimeEntry(CTimeEntry* entry);
    std::unique_ptr<CExpenseEntry> UnfileExpenseEntry(CExpenseEntry* entry);
    std::unique_ptr<CToDoEntry> UnfileToDo(CToDoEntry* entry);
    // Moves an entry to another task; it stays in its day.
    void ChangeEntryTask(CEntry* entry, CTask* newTask);
    // Adjusts time entry `a` against the conflicting entry `b` of the same day:
    // deletes, splits or trims `a`. Returns false when `a` was deleted. Marks the
    // document modified; the caller updates the views once the day is settled.
    bool AdjustTimeEntry(CTimeEntry* a, const CTimeEntry* b);
    // Completes an outstanding to-do on `date` (files it in that day); a completed one
    // moves to the day of `date`.
    void CompleteToDo(CToDoEntry* todo, const CDateTime& date);
    // Takes a completed to-do out of its day back into the outstanding list.
    void ReopenToDo(CToDoEntry* todo);
    // Moves an expense to another date; nothing happens for the same date.
    void MoveExpense(CExpenseEntry* expense, const CDateTime& date);

    // Counts.
    size_t CountTimeEntries() const;
    size_t CountExpenseEntries() const;
    size_t CountToDoEntries() const; // outstanding and completed

    // Timer state (the timekeeping layer drives it).
    void ClearTimerState();
    bool m_timerRunning = false;
    CTimeEntry* m_activeEntry = nullptr;
    bool m_paused = false;
    CTask* m_pausedTask = nullptr;
    bool m_editorOpen = false;
    // Told when the timer stops because its entry lost its open end or was deleted.
    std::function<void()> m_onTimerStopped;
    void StopTimerState();

    // Collections.
    std::map<uint32_t, std::unique_ptr<CTask>> m_tasks;
    std::map<std::string, std::unique_ptr<CDay>> m_days;
    std::vector<std::unique_ptr<CToDoEntry>> m_todoList;
    std::vector<std::unique_ptr<CReport>> m_reports;
    std::map<uint32_t, std::unique_ptr<CActivity>> m_activities;
    std::map<uint32_t, std::string> m_levelNames;
    std::map<uint32_t, std::unique_ptr<CExpenseType>> m_expenseTypes;
    std::map<uint32_t, std::unique_ptr<CPaymentMethod>> m_paymentMethods;
    std::map<uint32_t, std::unique_ptr<CContact>> m_contacts;
    std::map<uint32_t, std::unique_ptr<CProject>> m_projects;
    std::vector<uint32_t> m_recentTasks;

    uint32_t m_lastTaskId = 0;
    uint32_t m_lastReportId = 0;
    uint32_t m_lastContactId = 0;
    uint32_t m_lastProjectId = 0;
    uint32_t m_lastActivityId = 0;
    uint32_t m_lastExpenseTypeId = 0;
    uint32_t m_lastPaymentMethodId = 0;
    float m_defaultMileageRate = 0.0f;
    uint32_t m_headerValue = 0;
    // Version of the file last read (11 for new documents).
    uint32_t m_fileVersion = kCurrentVersion;

protected:
    bool ReadFromBytes(const std::vector<uint8_t>& bytes, platform::Prompter& prompter) override;
    std::vector<uint8_t> WriteToBytes() override { return SaveToBytes(); }

private:
    void LinkTask(CTask* task, CTask* parent);
    void UnlinkTask(CTask* task);
    // Reading: the two layouts and the steps they share.
    void ReadCurrentLayout(CArchive& ar, uint32_t version);
    void ReadOldLayout(CArchive& ar, uint32_t version);
    void ReadTasks(CArchive& ar, uint32_t count);
    void ReadReports(CArchive& ar, uint32_t count);
    void ReadDays(CArchive& ar, uint32_t count);
    void ReadCatalogs(CArchive& ar);
    void ReadToDoList(CArchive& ar);
    void LinkAllTasks();
    // The task an entry read from a file belongs to; an unknown id gives the root.
    CTask* OwnerForRead(CEntry& entry);
    // Takes destroyed entries out of their tasks' lists, all at once.
    void DetachFromTasks(const std::vector<std::unique_ptr<CEntry>>& entries);
    // Activities, expense types and payment methods are kept and removed alike.
    template <class T>
    T* AddNamedRecord(std::map<uint32_t, std::unique_ptr<T>>& catalog, uint32_t& lastId,
                      const std::string& name);
    template <class T>
    bool DeleteNamedRecord(std::map<uint32_t, std::unique_ptr<T>>& catalog, uint32_t id,
                           unsigned questionId, unsigned detailId, platform::Prompter& prompter);

    LoadResult m_lastLoad;
    // Reading: the last task looked up (entries of one task tend to come together).
    CTask* m_readTask = nullptr;

    mutable std::recursive_mutex m_lock;
    std::atomic<bool> m_modified{false};
    std::atomic<bool> m_loading{false};
    std::map<int, Observer> m_observers;
    int m_nextObserver = 1;
};
