#include "model/day.h"

#include "model/entrypool.h"
#include "model/task.h"

#include <algorithm>

namespace
{
constexpr uint32_t kVersion = 11;
// The smallest object a day can hold in a stream: a class index tag and a few fields.
constexpr size_t kMinEntryBytes = 16;

template <class T>
size_t CountSelected(const std::vector<std::unique_ptr<T>>& list,
                     const std::unordered_set<uint32_t>* selection)
{
    if (!selection)
        return list.size();
    size_t n = 0;
    for (const auto& e : list)
        n += selection->count(e->m_taskId);
    return n;
}

template <class T>
void WriteSelected(CArchive& ar, const std::vector<std::unique_ptr<T>>& list,
                   const std::unordered_set<uint32_t>* selection)
{
    for (const auto& e : list)
        if (!selection || selection->count(e->m_taskId))
            ar.WriteObject(*e);
}

template <class T>
void ReadList(CArchive& ar, CDay* day, uint32_t count, const char* className,
              std::vector<std::unique_ptr<T>>& list)
{
    // A count larger than the stream can hold is caught by the reads; do not let it
    // drive the allocation.
    list.reserve(list.size() + std::min<size_t>(count, ar.Remaining() / kMinEntryBytes));
    for (uint32_t i = 0; i < count; ++i)
    {
        std::unique_ptr<T> entry = ar.ReadObjectOf<T>(className);
        if (!entry)
            continue;
        entry->m_day = day;
        list.push_back(std::move(entry));
    }
}

template <class T>
std::unique_ptr<T> TakeOut(std::vector<std::unique_ptr<T>>& list, const T* entry)
{
    for (auto it = list.begin(); it != list.end(); ++it)
        if (it->get() == entry)
        {
            std::unique_ptr<T> owned = std::move(*it);
            list.erase(it);
            owned->m_day = nullptr;
            return owned;
        }
    return nullptr;
}

template <class T>
void ExtractFrom(std::vector<std::unique_ptr<T>>& list,
                 const std::function<bool(const CEntry&)>& remove,
                 std::vector<std::unique_ptr<CEntry>>& removed)
{
    bool any = false;
    for (size_t i = list.size(); i-- > 0;)
        if (remove(*list[i]))
        {
            list[i]->m_day = nullptr;
            removed.push_back(std::move(list[i]));
            any = true;
        }
    if (any)
        std::erase_if(list, [](const std::unique_ptr<T>& e) { return !e; });
}
} // namespace

void* CDay::operator new(std::size_t size) { return entrypool::Allocate(size); }

void CDay::operator delete(void* p, std::size_t size) noexcept { entrypool::Release(p, size); }

CDay::CDay(const CDateTime& date)
    : m_key(date.DayKey()), m_date(CDateTime(date.DatePart().GetValue(), CDateTime::valid))
{
}

CDay::~CDay() = default;

void CDay::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteString(m_key);
        ar.WriteU32(uint32_t(CountSelected(m_timeEntries, m_selection)));
        ar.WriteU32(uint32_t(CountSelected(m_expenseEntries, m_selection)));
        ar.WriteU32(uint32_t(CountSelected(m_todoEntries, m_selection)));
        WriteSelected(ar, m_timeEntries, m_selection);
        WriteSelected(ar, m_expenseEntries, m_selection);
        WriteSelected(ar, m_todoEntries, m_selection);
        return;
    }

    const uint32_t version = ar.ReadVersion("CDay", 5, kVersion);
    m_key = ar.ReadString();
    m_date = CDateTime::FromDayKey(m_key);
    if (!m_date.IsValid())
        ar.Fail(ArchiveError::badFormat, "day key \"" + m_key + "\" is not a date");
    const uint32_t timeCount = ar.ReadU32();
    const uint32_t expenseCount = ar.ReadU32();
    const uint32_t todoCount = version >= 6 ? ar.ReadU32() : 0;
    ReadList(ar, this, timeCount, "CTimeEntry", m_timeEntries);
    ReadList(ar, this, expenseCount, "CExpenseEntry", m_expenseEntries);
    ReadList(ar, this, todoCount, "CToDoEntry", m_todoEntries);
    for (auto& e : m_expenseEntries)
        e->m_date = m_date;
}

bool CDay::AddTimeEntry(std::unique_ptr<CTimeEntry>&& entry, const CDateTime& now)
{
    if (!entry || Conflicts(*entry, nullptr, now))
        return false;
    InsertTimeEntry(std::move(entry));
    return true;
}

CTimeEntry* CDay::InsertTimeEntry(std::unique_ptr<CTimeEntry> entry)
{
    // After the last entry that starts earlier, so an equal start goes before the others.
    const int start = entry->m_start.MinutesOfDay();
    size_t at = m_timeEntries.size();
    while (at > 0 && m_timeEntries[at - 1]->m_start.MinutesOfDay() >= start)
        --at;
    entry->m_day = this;
    CTimeEntry* raw = entry.get();
    m_timeEntries.insert(m_timeEntries.begin() + at, std::move(entry));
    return raw;
}

CExpenseEntry* CDay::AddExpenseEntry(std::unique_ptr<CExpenseEntry> entry)
{
    entry->m_day = this;
    entry->m_date = m_date;
    m_expenseEntries.push_back(std::move(entry));
    return m_expenseEntries.back().get();
}

CToDoEntry* CDay::AddToDoEntry(std::unique_ptr<CToDoEntry> entry)
{
    entry->m_day = this;
    m_todoEntries.push_back(std::move(entry));
    return m_todoEntries.back().get();
}

std::unique_ptr<CTimeEntry> CDay::RemoveTimeEntry(const CTimeEntry* entry)
{
    return TakeOut(m_timeEntries, entry);
}

std::unique_ptr<CExpenseEntry> CDay::RemoveExpenseEntry(const CExpenseEntry* entry)
{
    return TakeOut(m_expenseEntries, entry);
}

std::unique_ptr<CToDoEntry> CDay::RemoveToDoEntry(const CToDoEntry* entry)
{
    return TakeOut(m_todoEntries, entry);
}

void CDay::ExtractEntries(const std::function<bool(const CEntry&)>& remove,
                          std::vector<std::unique_ptr<CEntry>>& removed)
{
    ExtractFrom(m_timeEntries, remove, removed);
    ExtractFrom(m_expenseEntries, remove, removed);
    ExtractFrom(m_todoEntries, remove, removed);
}

int64_t CDay::EndMinutes(const CTimeEntry& e, const CDateTime& now) const
{
    if (!e.m_end.IsNull())
        return e.m_end.MinutesOfDay();
    const int64_t seconds = now.TotalSeconds() - m_date.TotalSeconds();
    return seconds >= 0 ? seconds / 60 : -((-seconds + 59) / 60);
}

CDateTime CDay::StartMoment(const CTimeEntry& e) const { return m_date.AddMinutes(StartMinutes(e)); }

CDateTime CDay::EndMoment(const CTimeEntry& e, const CDateTime& now) const
{
    return m_date.AddMinutes(long(EndMinutes(e, now)));
}

bool CDay::Conflicts(const CTimeEntry& entry, const CTimeEntry* ignore, const CDateTime& now) const
{
    const int64_t ns = StartMinutes(entry);
    const int64_t ne = EndMinutes(entry, now);
    if (ns >= ne)
        return false;
    for (const auto& other : m_timeEntries)
    {
        const CTimeEntry* e = other.get();
        if (e == ignore || e == &entry)
            continue;
        const int64_t es = StartMinutes(*e);
        if (es > ns)
        {
            if (ne > es)
                return true;
        }
        else if (es == ns)
        {
            if (es != EndMinutes(*e, now))
                return true;
        }
        else if (EndMinutes(*e, now) > ns)
            return true;
    }
    return false;
}

std::vector<CTimeEntry*> CDay::ConflictingEntries(const CTimeEntry& entry, const CTimeEntry* ignore,
                                                  const CDateTime& now) const
{
    std::vector<CTimeEntry*> result;
    const int64_t ns = StartMinutes(entry);
    const int64_t ne = EndMinutes(entry, now);
    if (ns >= ne)
        return result;
    for (const auto& other : m_timeEntries)
    {
        CTimeEntry* e = other.get();
        if (e == ignore || e == &entry)
            continue;
        const int64_t es = StartMinutes(*e);
        const bool conflict = es > ns ? ne > es
                              : es == ns ? es != EndMinutes(*e, now)
                                         : EndMinutes(*e, now) > ns;
        if (conflict)
            result.push_back(e);
    }
    return result;
}

CTinyElapsedTime CDay::TotalElapsed(const CTinyTime& runningEnd) const
{
    CTinyElapsedTime total;
    for (const auto& e : m_timeEntries)
        total += e->GetElapsed(runningEnd);
    return total;
}

CTinyElapsedTime CDay::ElapsedFor(uint32_t taskId, bool overtime, const CTinyTime& runningEnd) const
{
    CTinyElapsedTime total;
    for (const auto& e : m_timeEntries)
        if (e->m_taskId == taskId && e->m_overtime == overtime)
            total += e->GetElapsed(runningEnd);
    return total;
}

double CDay::BillingFor(const CTask& task, const CTinyTime& runningEnd) const
{
    double total = 0.0;
    for (const auto& e : m_timeEntries)
        if (e->m_taskId == task.m_id)
            total += e->GetBillingAmount(task, runningEnd);
    return total;
}

double CDay::ExpensesFor(uint32_t taskId) const
{
    double total = 0.0;
    for (const auto& e : m_expenseEntries)
        if (e->m_taskId == taskId)
            total += e->m_amount;
    return total;
}
