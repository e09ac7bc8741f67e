#include "model/entry.h"

#include <cmath>

#include "model/entrypool.h"
#include "model/task.h"

namespace
{
constexpr uint32_t kVersion = 11;
constexpr uint32_t kNoActivity = uint32_t(-1);

// Old layouts store moments as seconds since 1970; the entry keeps the local time of day.
CTinyTime LocalTimeOfDay(const CDateTime& d)
{
    CTinyTime t(d.GetHour(), d.GetMinute());
    if (!d.IsValid())
        t.SetStatus(CTinyTime::invalid);
    return t;
}
} // namespace

void* CEntry::operator new(std::size_t size) { return entrypool::Allocate(size); }

void CEntry::operator delete(void* p, std::size_t size) noexcept { entrypool::Release(p, size); }

void CEntry::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_taskId);
        ar.WriteString(m_note);
        return;
    }
    ar.ReadVersion("CEntry", 5, kVersion);
    m_taskId = ar.ReadU32();
    m_note = ar.ReadString();
}

void CTimeEntry::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_taskId);
        ar.WriteString(m_note);
        ar.WriteU32(m_activityId);
        ar.WriteU32(m_customBilling);
        ar.WriteU32(m_overtime);
        m_start.Serialize(ar);
        m_end.Serialize(ar);
        if (m_customBilling)
        {
            ar.WriteU32(m_billable);
            ar.WriteF64(m_rate);
            if (m_overtime)
                ar.WriteF32(m_overtimeMultiplier);
        }
        return;
    }

    const uint32_t version = ar.ReadVersion("CTimeEntry", 5, kVersion);
    m_customBilling = false;
    m_billable = true;
    m_rate = 0.0;
    m_overtime = false;
    m_overtimeMultiplier = 0.0f;

    if (version <= 8)
    {
        m_taskId = ar.ReadU32();
        const CDateTime start = ar.ReadOldDate();
        const CDateTime end = ar.ReadOldDate(true);
        m_note = ar.ReadString();
        m_activityId = ar.ReadU32();
        m_start = LocalTimeOfDay(start);
        if (end.IsNull())
            m_end = CTinyTime::Null(); // the running entry
        else if (end.GetHour() == 0 && end.GetMinute() == 0 && end.GetSecond() == 0 &&
                 !end.SameDay(start))
            m_end = CTinyTime(24, 0);
        else
            m_end = LocalTimeOfDay(end);
    }
    else if (version <= 10)
    {
        m_taskId = ar.ReadU32();
        const CDateTime start = ar.ReadDate();
        const CDateTime end = ar.ReadDate();
        m_note = ar.ReadString();
        m_activityId = ar.ReadU32();
        m_customBilling = ar.ReadU32() != 0;
        m_overtime = ar.ReadU32() != 0;
        m_start = CTinyTime::FromDate(start);
        if (m_start.IsNull())
            m_start = CTinyTime(0, 0);
        if (end.IsNull())
            m_end = CTinyTime::Null();
        else if (end.SameDay(start))
            m_end = CTinyTime::FromDate(end);
        else
            m_end = CTinyTime(24, 0);
    }
    else
    {
        m_taskId = ar.ReadU32();
        m_note = ar.ReadString();
        m_activityId = ar.ReadU32();
        m_customBilling = ar.ReadU32() != 0;
        m_overtime = ar.ReadU32() != 0;
        m_start.Serialize(ar);
        m_end.Serialize(ar);
    }
    // In every layout: an end of 00:00 is the end of the day. An older body can give one
    // (an end on the start's own day at 00:00); kept as 00:00 it would be written so and
    // turn into 24:00 only when the saved file is read again.
    if (m_end.IsValid() && m_end.GetHour() == 0 && m_end.GetMinute() == 0)
        m_end = CTinyTime(24, 0);

    if (version >= 9 && m_customBilling)
    {
        m_billable = ar.ReadU32() != 0;
        m_rate = ar.ReadF64();
        if (m_overtime)
            m_overtimeMultiplier = ar.ReadF32();
    }
    if (m_activityId == kNoActivity)
        m_activityId = 0;
}

CTinyElapsedTime CTimeEntry::GetElapsed(const CTinyTime& runningEnd) const
{
    const CTinyTime& end = m_end.IsNull() ? runningEnd : m_end;
    if (end.IsNull())
        return CTinyElapsedTime();
    return CTinyElapsedTime::FromMinutes(end.MinutesOfDay() - m_start.MinutesOfDay());
}

double CTimeEntry::GetEffectiveRate(const CTask& task) const
{
    double rate = m_customBilling ? m_rate : task.GetRateFor(m_activityId);
    if (m_overtime)
        rate *= m_customBilling ? m_overtimeMultiplier : task.GetEffectiveOvertimeMultiplier();
    return rate;
}

bool CTimeEntry::IsEffectiveBillable(const CTask& task) const
{
    return m_customBilling ? m_billable : task.IsBillableFor(m_activityId);
}

double CTimeEntry::GetBillingAmount(const CTask& task, const CTinyTime& runningEnd) const
{
    return GetElapsed(runningEnd).Hours() * GetEffectiveRate(task);
}

void CExpenseEntry::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_taskId);
        ar.WriteDate(m_date);
        ar.WriteF64(m_amount);
        ar.WriteString(m_note);
        ar.WriteU32(m_expenseTypeId);
        ar.WriteU32(m_billable);
        ar.WriteU32(m_paymentMethodId);
        ar.WriteU32(m_number);
        ar.WriteF32(m_distance);
        return;
    }
    const uint32_t version = ar.ReadVersion("CExpenseEntry", 5, kVersion);
    m_taskId = ar.ReadU32();
    m_date = version >= 9 ? ar.ReadDate() : ar.ReadOldDate();
    m_amount = version >= 7 ? ar.ReadF64() : double(ar.ReadF32());
    m_note = ar.ReadString();
    m_expenseTypeId = ar.ReadU32();
    m_billable = ar.ReadU32() != 0;
    m_paymentMethodId = ar.ReadU32();
    m_number = ar.ReadU32();
    m_distance = ar.ReadF32();
}

double CExpenseEntry::MileageAmount(int distance, float rate)
{
    const double cents = double(distance) * double(rate) * 100.0;
    double whole = std::floor(cents);
    if (cents - whole >= 0.5)
        whole += 1.0;
    return whole / 100.0;
}

std::string CExpenseEntry::GetNumberText() const
{
    return m_number == 0 ? std::string() : std::to_string(m_number);
}

void CToDoEntry::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_taskId);
        ar.WriteString(m_description);
        ar.WriteString(m_note);
        ar.WriteString(m_priority);
        ar.WriteDate(m_completeDate);
        ar.WriteDate(m_dueDate);
        ar.WriteU32(m_imported);
        return;
    }
    const uint32_t version = ar.ReadVersion("CToDoEntry", 6, kVersion);
    m_taskId = ar.ReadU32();
    m_description = ar.ReadString();
    m_note = ar.ReadString();
    m_priority = ar.ReadString();
    if (version >= 9)
    {
        m_completeDate = ar.ReadDate();
        m_dueDate = ar.ReadDate();
        m_imported = ar.ReadU32() != 0;
    }
    else
    {
        m_completeDate = ar.ReadOldDate(true);
        m_dueDate = ar.ReadOldDate(true);
        m_imported = false;
    }
}

std::string CToDoEntry::GetStatusText(const CDateTime& today) const
{
    if (!m_completeDate.IsNull())
        return "Completed";
    if (!m_dueDate.IsNull() && m_dueDate < today.DatePart())
        return "Overdue";
    return "Outstanding";
}
