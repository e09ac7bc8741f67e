#pragma once

#include "model/archive.h"
#include "model/entry.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

class CTimeKeeperDoc;

// The entries filed under one calendar day. The day owns its entries.
class CDay : public CObject
{
public:
    CDay() = default;
    explicit CDay(const CDateTime& date);
    ~CDay() override;

    // Days come by the ten thousand: they share the entries' pool (entrypool.h).
    static void* operator new(std::size_t size);
    static void operator delete(void* p, std::size_t size) noexcept;

    const char* GetClassName() const override { return "CDay"; }
    // Versions 5 to 11. While a selection is set (SetSelection) only the entries of
    // the selected tasks are written.
    void Serialize(CArchive& ar) override;

    const std::string& GetKey() const { return m_key; }
    const CDateTime& GetDate() const { return m_date; }
    bool IsEmpty() const
    {
        return m_timeEntries.empty() && m_expenseEntries.empty() && m_todoEntries.empty();
    }

    // Refused (false, nothing changes: `entry` stays with the caller) when the entry
    // conflicts with another of the day. `now` is the moment that stands for a running
    // entry's end.
    bool AddTimeEntry(std::unique_ptr<CTimeEntry>&& entry, const CDateTime& now);
    // Files the entry at its place in start order, without the conflict test.
    CTimeEntry* InsertTimeEntry(std::unique_ptr<CTimeEntry> entry);
    CExpenseEntry* AddExpenseEntry(std::unique_ptr<CExpenseEntry> entry);
    CToDoEntry* AddToDoEntry(std::unique_ptr<CToDoEntry> entry);

    // Take an entry out of the day (found by identity); the caller owns it afterwards.
    std::unique_ptr<CTimeEntry> RemoveTimeEntry(const CTimeEntry* entry);
    std::unique_ptr<CExpenseEntry> RemoveExpenseEntry(const CExpenseEntry* entry);
    std::unique_ptr<CToDoEntry> RemoveToDoEntry(const CToDoEntry* entry);

    // Takes out every entry for which `remove` answers true, walking each list from
    // last to first; their day is cleared and they are appended to `removed`.
    void ExtractEntries(const std::function<bool(const CEntry&)>& remove,
                        std::vector<std::unique_ptr<CEntry>>& removed);

    // Start and end of a time entry as minutes from this day's 00:00: a null end counts
    // as `now` (which may lie on another day), 24:00 as 1440.
    int StartMinutes(const CTimeEntry& e) const { return e.m_start.MinutesOfDay(); }
    int64_t EndMinutes(const CTimeEntry& e, const CDateTime& now) const;

    // Start and end of a time entry as moments of this day; a null end counts as `now`,
    // 24:00 as the next day at 00:00.
    CDateTime StartMoment(const CTimeEntry& e) const;
    CDateTime EndMoment(const CTimeEntry& e, const CDateTime& now) const;

    // Conflict of `entry` with the day's other time entries, skipping `ignore`.
    bool Conflicts(const CTimeEntry& entry, const CTimeEntry* ignore, const CDateTime& now) const;
    // The entries that `entry` conflicts with, skipping `ignore`.
    std::vector<CTimeEntry*> ConflictingEntries(const CTimeEntry& entry, const CTimeEntry* ignore,
                                                const CDateTime& now) const;

    CTinyElapsedTime TotalElapsed(const CTinyTime& runningEnd) const;
    CTinyElapsedTime ElapsedFor(uint32_t taskId, bool overtime, const CTinyTime& runningEnd) const;
    double BillingFor(const CTask& task, const CTinyTime& runningEnd) const;
    double ExpensesFor(uint32_t taskId) const;

    // Selective writing (archiving): only entries whose task is in `taskIds` are written.
    void SetSelection(const std::unordered_set<uint32_t>* taskIds) { m_selection = taskIds; }

    const std::vector<std::unique_ptr<CTimeEntry>>& TimeEntries() const { return m_timeEntries; }
    const std::vector<std::unique_ptr<CExpenseEntry>>& ExpenseEntries() const { return m_expenseEntries; }
    const std::vector<std::unique_ptr<CToDoEntry>>& ToDoEntries() const { return m_todoEntries; }

private:
    std::string m_key;
    CDateTime m_date;
    std::vector<std::unique_ptr<CTimeEntry>> m_timeEntries;
    std::vector<std::unique_ptr<CExpenseEntry>> m_expenseEntries;
    std::vector<std::unique_ptr<CToDoEntry>> m_todoEntries;
    const std::unordered_set<uint32_t>* m_selection = nullptr;
};
