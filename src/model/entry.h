#pragma once

#include "model/archive.h"
#include "model/tinytime.h"

#include <cstddef>
#include <cstdint>
#include <string>

class CDay;
class CTask;

// Base of the three kinds of entry: each belongs to one task (by id) and, once
// filed, to one day.
class CEntry : public CObject
{
public:
    const char* GetClassName() const override { return "CEntry"; }
    void Serialize(CArchive& ar) override; // versions 5 to 11: task id, note

    // Entries come by the million: they live in a pool of their own (entrypool.h).
    static void* operator new(std::size_t size);
    static void operator delete(void* p, std::size_t size) noexcept;

    // (Declared in this order so that the kinds' own fields fill the padding after it.)
    std::string m_note;
    // In memory: the day that holds the entry, set while it is filed there.
    CDay* m_day = nullptr;
    uint32_t m_taskId = 0;
};

class CTimeEntry : public CEntry
{
public:
    const char* GetClassName() const override { return "CTimeEntry"; }
    // Versions 5 to 11; older bodies are converted on reading.
    void Serialize(CArchive& ar) override;

    // The running entry: its end is null.
    bool IsRunning() const { return m_end.IsNull(); }
    // Elapsed time; `runningEnd` stands in for the end of a running entry
    // (the current time rounded to the configured interval).
    CTinyElapsedTime GetElapsed(const CTinyTime& runningEnd = CTinyTime()) const;
    // Billing of the entry on `task` (the entry's own with custom billing).
    double GetEffectiveRate(const CTask& task) const;
    bool IsEffectiveBillable(const CTask& task) const;
    // Elapsed hours times the effective rate; the billable flag does not enter it.
    double GetBillingAmount(const CTask& task, const CTinyTime& runningEnd = CTinyTime()) const;

    uint32_t m_activityId = 0;
    CTinyTime m_start{0, 0};
    CTinyTime m_end;
    bool m_customBilling = false;
    bool m_billable = true;
    bool m_overtime = false;
    float m_overtimeMultiplier = 0.0f;
    double m_rate = 0.0;
};

class CExpenseEntry : public CEntry
{
public:
    const char* GetClassName() const override { return "CExpenseEntry"; }
    // Versions 5 to 11; older bodies are converted on reading.
    void Serialize(CArchive& ar) override;

    // The number in decimal, or empty when 0.
    std::string GetNumberText() const;
    // Distance times rate, rounded to cents with a half cent rounding up. Distances are
    // whole units and the rate a single-precision value, as the expense editor keeps them.
    static double MileageAmount(int distance, float rate);

    uint32_t m_expenseTypeId = uint32_t(-1);
    CDateTime m_date;
    double m_amount = 0.0;
    uint32_t m_paymentMethodId = uint32_t(-1);
    uint32_t m_number = 0;
    float m_distance = 0.0f;
    bool m_billable = true;
};

class CToDoEntry : public CEntry
{
public:
    const char* GetClassName() const override { return "CToDoEntry"; }
    // Versions 6 to 11; older bodies are converted on reading.
    void Serialize(CArchive& ar) override;

    bool IsCompleted() const { return !m_completeDate.IsNull(); }
    // "Completed", "Overdue" (due before `today`) or "Outstanding".
    std::string GetStatusText(const CDateTime& today) const;

    std::string m_description;
    std::string m_priority;
    CDateTime m_dueDate;
    CDateTime m_completeDate;
    bool m_imported = false;
};
