#include "timekeeping/timer.h"

#include "app/timekeeperapp.h"
#include "model/day.h"
#include "model/entry.h"
#include "model/task.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "platform/prompter.h"
#include "platform/settingsstore.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace
{

constexpr unsigned kMsgZeroLength = 40002;
constexpr unsigned kTextTimerInactive = 42000;
constexpr unsigned kTextPauseTimer = 42001;
constexpr unsigned kTextResumeTimer = 42002;
constexpr unsigned kTextPaused = 42003;

// Adjustments normally settle in a round or two; the bound only guards against an
// adjustment that fails to remove a conflict.
constexpr int kMaxAdjustRounds = 1000;

const CTinyTime kEndOfDay(24, 0);

// A moment as the end of an entry filed in `day`: another calendar day means the
// end of the entry's day.
CTinyTime EndOnDay(const CDateTime& end, const CDay& day)
{
    if (!end.SameDay(day.GetDate()))
        return kEndOfDay;
    return CTinyTime(end.GetHour(), end.GetMinute());
}

std::vector<const CTimeEntry*> FiledEntries(const CDay& day)
{
    std::vector<const CTimeEntry*> filed;
    for (const auto& e : day.TimeEntries())
        filed.push_back(e.get());
    return filed;
}

// The entries of `day` that are not among `filed`: the copies an adjustment split off.
std::vector<CTimeEntry*> AddedSince(const CDay& day, const std::vector<const CTimeEntry*>& filed)
{
    std::vector<CTimeEntry*> added;
    for (const auto& e : day.TimeEntries())
        if (std::find(filed.begin(), filed.end(), e.get()) == filed.end())
            added.push_back(e.get());
    return added;
}

bool IsFiledIn(const CDay& day, const CTimeEntry* entry)
{
    const auto& entries = day.TimeEntries();
    return std::any_of(entries.begin(), entries.end(),
                       [entry](const std::unique_ptr<CTimeEntry>& e) { return e.get() == entry; });
}

// Puts a filed entry back at its place in start order after its start changed.
void PlaceInOrder(CDay& day, CTimeEntry* entry)
{
    if (!IsFiledIn(day, entry))
        return;
    std::unique_ptr<CTimeEntry> owned = day.RemoveTimeEntry(entry);
    day.InsertTimeEntry(std::move(owned));
}

// The longest prefix of `text` of at most `bytes` bytes that does not cut a
// multi-byte character.
std::string Utf8Prefix(const std::string& text, size_t bytes)
{
    if (text.size() <= bytes)
        return text;
    size_t cut = bytes;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        --cut;
    return text.substr(0, cut);
}

} // namespace

CTimer::CTimer(CTimeKeeperDoc& doc, CTimeKeeperApp& app, TimerUi& ui, platform::Prompter& prompter)
    : m_doc(doc), m_app(app), m_ui(ui), m_prompter(prompter)
{
    Lock lock(m_doc.GetLock());
    m_doc.m_onTimerStopped = [this] { ShowInactive(); };
    if (!m_doc.m_roundedNow)
    {
        m_doc.m_roundedNow = [this] { return m_app.RoundTime(m_app.Now()); };
        m_ownsRoundedNow = true;
    }
    if (!m_doc.m_now)
    {
        m_doc.m_now = [this] { return m_app.Now(); };
        m_ownsNow = true;
    }
    m_previousOnSaved = m_doc.m_onSaved;
    m_doc.m_onSaved = [this] {
        if (m_previousOnSaved)
            m_previousOnSaved();
        KeepPausedState();
    };
}

CTimer::~CTimer()
{
    Lock lock(m_doc.GetLock());
    m_doc.m_onTimerStopped = nullptr;
    m_doc.m_onSaved = m_previousOnSaved;
    if (m_ownsRoundedNow)
        m_doc.m_roundedNow = nullptr;
    if (m_ownsNow)
        m_doc.m_now = nullptr;
}

CTimer::OperationScope::OperationScope(CTimer& timer) : m_timer(timer)
{
    if (m_timer.m_operationDepth++ == 0)
        m_timer.m_changes.clear();
}

CTimer::OperationScope::~OperationScope()
{
    if (--m_timer.m_operationDepth != 0)
        return;
    m_timer.m_lastChanges = std::move(m_timer.m_changes);
    m_timer.m_changes.clear();
    const std::string text = DescribeEntryChanges(m_timer.m_lastChanges, m_timer.m_doc, m_timer.m_app);
    if (!text.empty())
        m_timer.m_ui.ShowEntryChanges(text);
}

int CTimer::StartTimer(CTask* task, int minuteRounding, const std::string& note)
{
    if (task == nullptr || !TaskExists(task))
        return 0;
    OperationScope scope(*this);
    const CDateTime start = m_app.RoundTime(m_app.Now(), minuteRounding == 1 ? 0 : -1);

    std::optional<CTimeEntry> previousCopy;
    CTimeEntry* previous = nullptr;
    CDateTime previousDate;
    {
        Lock lock(m_doc.GetLock());
        if (m_doc.m_timerRunning && m_doc.m_activeEntry != nullptr && m_doc.m_activeEntry->m_day != nullptr)
        {
            previous = m_doc.m_activeEntry;
            previousCopy = *previous;
            previousDate = previous->m_day->GetDate();
        }
    }

    const StopOutcome stop = StopTimerImpl(false, minuteRounding);
    if (stop.result == 0)
        return 0;
    const bool previousGone = previous != nullptr && stop.entryGone;

    Lock lock(m_doc.GetLock());
    CDay* day = m_doc.GetOrCreateDay(start.DatePart());
    auto entry = std::make_unique<CTimeEntry>();
    entry->m_taskId = task->m_id;
    entry->m_day = day;
    entry->m_start = CTinyTime(start.GetHour(), start.GetMinute());
    // Back-to-back timing leaves no gap: the new entry starts where the old one ended,
    // unless that end lies on another day.
    if (previous != nullptr && !previousGone && previousDate.SameDay(start) && IsFiledIn(*day, previous)
        && previous->m_end.IsValid() && previous->m_end.MinutesOfDay() < kEndOfDay.MinutesOfDay())
        entry->m_start = previous->m_end;
    entry->m_note = note.empty() ? task->m_lastNote : note;
    entry->m_activityId = task->m_lastActivityId;
    const bool conflict = day->Conflicts(*entry, entry.get(), m_doc.ConflictNow());
    lock.unlock();

    int r = 1;
    int c = 0;
    const bool showEditor = m_app.GetShowTimeEntryOnStart() != 0;
    if (showEditor || conflict)
    {
        r = showEditor && minuteRounding == 0 ? EditTimeEntry(*day, *entry) : 1;
        while (r == 1)
        {
            // A resume fits the other entries around the new one without asking.
            c = minuteRounding == 1 ? AdjustConflicts(*day, entry, 0) : ResolveTimeConflict(*day, entry);
            if (c != 2)
                break;
            r = EditTimeEntry(*day, *entry);
        }
    }

    lock.lock();
    CTimeEntry* running = nullptr;
    if (r == 1 && entry)
    {
        entry->m_day = nullptr;
        CTimeEntry* filed = m_doc.FileTimeEntry(day, std::move(entry));
        running = filed->IsRunning() ? filed : FindRunningTail(*day, task->m_id);
        if (!running)
        {
            // "Adjust this entry" closed the new entry before another one: it is kept as
            // it is, and no timer runs.
            AddRecentTask(task);
            m_doc.m_paused = false;
            m_doc.m_pausedTask = nullptr;
            m_doc.SetModifiedFlag();
            m_doc.UpdateAllViews(hintEntries | hintTimer);
            ShowInactive();
            return 0;
        }
    }
    else if (r == 1)
    {
        // The adjustment consumed the new entry; a split may have left its running tail.
        running = FindRunningTail(*day, task->m_id);
    }

    if (running == nullptr)
    {
        entry.reset();
        m_doc.RemoveDayIfEmpty(day);
        if (previousCopy)
            RestorePrevious(*previousCopy, previousDate, previous, previousGone);
        else
            m_doc.UpdateAllViews(hintEntries | hintTimer);
        return 0;
    }

    AddRecentTask(task);
    m_doc.m_activeEntry = running;
    m_doc.m_timerRunning = true;
    m_doc.m_paused = false;
    m_doc.m_pausedTask = nullptr;
    m_doc.SetModifiedFlag();
    m_doc.UpdateAllViews(hintEntries | hintTimer);
    ShowRunning();
    return 1;
}

int CTimer::StopTimer(bool setModified, int minuteRounding)
{
    return StopTimerImpl(setModified, minuteRounding).result;
}

CTimer::StopOutcome CTimer::StopTimerImpl(bool setModified, int minuteRounding)
{
    OperationScope scope(*this);
    Lock lock(m_doc.GetLock());
    CTimeEntry* entry = m_doc.m_timerRunning ? m_doc.m_activeEntry : nullptr;
    if (entry == nullptr || entry->m_day == nullptr)
    {
        // A running flag without a filed entry is left over; nothing can run on it.
        m_doc.m_timerRunning = false;
        m_doc.m_activeEntry = nullptr;
        lock.unlock();
        m_ui.RefreshStatus();
        return {1, false};
    }

    const CTimeEntry saved = *entry;
    CDay* day = entry->m_day;
    m_ui.StopTick();
    const CDateTime now = m_app.Now();
    entry->m_end = EndOnDay(m_app.RoundTime(now, minuteRounding == 1 ? 0 : -1), *day);

    if (entry->m_end < entry->m_start)
    {
        DeleteStoppedEntry(entry, setModified);
        return {1, true};
    }

    const bool showEditor = m_app.GetShowTimeEntryOnStop() != 0;
    if (!showEditor && entry->m_end == entry->m_start)
    {
        const CTinyTime minuteEnd = EndOnDay(m_app.RoundTime(now, 0), *day);
        if (!(entry->m_start < minuteEnd))
        {
            DeleteStoppedEntry(entry, setModified);
            return {1, true};
        }
        // Asked with the lock held, so that an automatic save waits for the answer.
        const platform::Answer answer =
            m_prompter.AskYesNoCancel(platform::LoadString(kMsgZeroLength), platform::Icon::information);
        if (answer == platform::Answer::yes)
        {
            DeleteStoppedEntry(entry, setModified);
            return {1, true};
        }
        if (answer != platform::Answer::no)
        {
            entry->m_end.SetNull();
            lock.unlock();
            ShowRunning();
            return {0, false};
        }
        entry->m_end = minuteEnd;
    }

    const bool conflict = day->Conflicts(*entry, entry, m_doc.ConflictNow());
    lock.unlock();

    int r = 1;
    bool gone = false;
    if (showEditor || conflict)
    {
        r = showEditor && minuteRounding == 0 ? EditTimeEntry(*day, *entry) : 1;
        while (r == 1)
        {
            // A pause is not asked about, so it may not take time from entries the person
            // typed: the paused entry is fitted around them instead.
            const int c = minuteRounding == 1 ? AdjustConflicts(*day, *entry, 1) : ResolveTimeConflict(*day, *entry);
            gone = c == 1;
            if (c != 2)
                break;
            r = EditTimeEntry(*day, *entry);
        }
    }

    lock.lock();
    if (r != 1)
    {
        // The entry keeps running with its values from before the stop.
        *entry = saved;
        entry->m_day = day;
        entry->m_end.SetNull();
        PlaceInOrder(*day, entry);
        lock.unlock();
        ShowRunning();
        return {0, false};
    }

    m_doc.m_activeEntry = nullptr;
    m_doc.m_timerRunning = false;
    m_doc.m_paused = false;
    if (setModified)
        m_doc.SetModifiedFlag();
    ShowInactive();
    lock.unlock();
    m_ui.RefreshStatus();
    return {1, gone};
}

void CTimer::DeleteStoppedEntry(CTimeEntry* entry, bool setModified)
{
    Lock lock(m_doc.GetLock());
    m_doc.m_activeEntry = nullptr;
    m_doc.m_timerRunning = false;
    CDay* day = entry->m_day;
    m_doc.UnfileTimeEntry(entry);
    m_doc.RemoveDayIfEmpty(day);
    ShowInactive();
    if (setModified)
        m_doc.SetModifiedFlag();
}

void CTimer::RestorePrevious(const CTimeEntry& copy, const CDateTime& date, CTimeEntry* previous,
                             bool previousGone)
{
    Lock lock(m_doc.GetLock());
    CTimeEntry* restored = nullptr;
    CDay* day = m_doc.GetDay(date);
    // The conflict resolution of the new entry may have removed the old one as well;
    // then it is rebuilt like an entry that the stop deleted.
    if (!previousGone && day != nullptr && IsFiledIn(*day, previous) && previous->m_taskId == copy.m_taskId
        && previous->m_start == copy.m_start)
    {
        previous->m_end.SetNull();
        restored = previous;
    }
    else
    {
        auto rebuilt = std::make_unique<CTimeEntry>(copy);
        rebuilt->m_day = nullptr;
        rebuilt->m_end.SetNull();
        restored = m_doc.FileTimeEntry(m_doc.GetOrCreateDay(date), std::move(rebuilt));
    }
    m_doc.m_activeEntry = restored;
    m_doc.m_timerRunning = true;
    m_doc.UpdateAllViews(hintEntries | hintTimer);
    ShowRunning();
}

CTimeEntry* CTimer::FindRunningTail(const CDay& day, uint32_t taskId) const
{
    for (const auto& e : day.TimeEntries())
        if (e->IsRunning() && e->m_taskId == taskId && e.get() != m_doc.m_activeEntry)
            return e.get();
    return nullptr;
}

int CTimer::PauseResumeTimer()
{
    OperationScope scope(*this);
    Lock lock(m_doc.GetLock());
    if (!m_doc.m_paused)
    {
        if (!m_doc.m_timerRunning || m_doc.m_activeEntry == nullptr)
            return 0;
        m_doc.m_pausedTask = m_doc.GetTask(m_doc.m_activeEntry->m_taskId);
        lock.unlock();
        const int r = StopTimer(true, 1);
        lock.lock();
        m_doc.m_paused = r == 1 && m_doc.m_pausedTask != nullptr;
        RefreshIcon();
        m_doc.UpdateAllViews(hintEntries | hintTimer);
        return r;
    }

    CTask* task = TaskExists(m_doc.m_pausedTask) ? m_doc.m_pausedTask : nullptr;
    if (task == nullptr)
    {
        m_doc.m_paused = false;
        m_doc.m_pausedTask = nullptr;
        RefreshIcon();
        return 0;
    }
    lock.unlock();
    const int r = StartTimer(task, 1, std::string());
    if (r == 1)
    {
        lock.lock();
        m_doc.m_paused = false;
        m_doc.m_pausedTask = nullptr;
    }
    return r;
}

PauseMenuState CTimer::GetPauseMenuState() const
{
    Lock lock(m_doc.GetLock());
    PauseMenuState state;
    if (m_doc.m_timerRunning)
    {
        state.enabled = true;
        state.text = platform::LoadString(kTextPauseTimer);
    }
    else if (m_doc.m_paused)
    {
        state.enabled = true;
        state.checked = true;
        state.text = platform::LoadString(kTextResumeTimer);
    }
    else
    {
        state.text = platform::LoadString(kTextPauseTimer);
    }
    return state;
}

void CTimer::ClearPausedState()
{
    Lock lock(m_doc.GetLock());
    m_doc.m_paused = false;
    m_doc.m_pausedTask = nullptr;
    RefreshIcon();
}

void CTimer::CheckTimerMidnight(CTimeEntry* entry)
{
    OperationScope scope(*this);
    Lock lock(m_doc.GetLock());
    if (entry == nullptr || entry->m_day == nullptr || !entry->IsRunning())
        return;
    CDay* day = entry->m_day;
    const CDateTime end = m_doc.RoundedNow();
    if (day->StartMoment(*entry) > end)
        return;
    const CDateTime endDate = end.DatePart();
    const bool active = entry == m_doc.m_activeEntry;

    if (m_app.GetStopAtMidnight() != 0)
    {
        if (!(day->GetDate() < endDate))
            return;
        entry->m_end = kEndOfDay;
        if (active)
        {
            m_doc.m_activeEntry = nullptr;
            m_doc.m_timerRunning = false;
        }
        if (day->Conflicts(*entry, entry, end))
            AdjustConflicts(*day, *entry, 1);
        m_doc.UpdateAllViews(hintEntries | hintTimer);
        m_doc.SetModifiedFlag();
        if (active)
        {
            m_ui.StopTick();
            ShowInactive();
        }
        return;
    }

    while (day->GetDate() < endDate)
    {
        // A day and an hour later, so that a short day of a clock change still lands
        // on the next date.
        const CDateTime nextDate = day->GetDate().AddDays(1.0 + 1.0 / 24.0).DatePart();
        auto copy = std::make_unique<CTimeEntry>(*entry);
        copy->m_day = nullptr;
        copy->m_start = CTinyTime(0, 0);
        copy->m_end.SetNull();
        CDay* nextDay = m_doc.GetOrCreateDay(nextDate);
        CTimeEntry* next = m_doc.FileTimeEntry(nextDay, std::move(copy));
        if (m_doc.m_activeEntry == entry)
            m_doc.m_activeEntry = next;
        entry->m_end = kEndOfDay;
        if (day->Conflicts(*entry, entry, end))
            AdjustConflicts(*day, *entry, 1);
        m_doc.SetModifiedFlag();
        m_doc.UpdateAllViews(hintEntries | hintTimer);
        entry = next;
        day = nextDay;
    }
}

int CTimer::ResolveTimeConflict(CDay& day, CTimeEntry& entry)
{
    OperationScope scope(*this);
    {
        Lock lock(m_doc.GetLock());
        if (!day.Conflicts(entry, &entry, m_doc.ConflictNow()))
            return 0;
    }
    const int choice = m_ui.ChooseConflictResolution();
    if (choice != 0 && choice != 1)
        return 2;
    return AdjustConflicts(day, entry, choice);
}

int CTimer::ResolveTimeConflict(CDay& day, std::unique_ptr<CTimeEntry>& pending)
{
    if (!pending)
        return 1;
    OperationScope scope(*this);
    {
        Lock lock(m_doc.GetLock());
        pending->m_day = &day;
        if (!day.Conflicts(*pending, pending.get(), m_doc.ConflictNow()))
            return 0;
    }
    const int choice = m_ui.ChooseConflictResolution();
    if (choice != 0 && choice != 1)
        return 2;
    return AdjustConflicts(day, pending, choice);
}

int CTimer::AdjustConflicts(CDay& day, CTimeEntry& entry, int choice)
{
    Lock lock(m_doc.GetLock());
    if (choice == 0)
    {
        for (int round = 0; round < kMaxAdjustRounds; ++round)
        {
            const std::vector<CTimeEntry*> others = day.ConflictingEntries(entry, &entry, m_doc.ConflictNow());
            if (others.empty())
                break;
            for (CTimeEntry* other : others)
            {
                const EntryChange::Span before = EntryChange::SpanOf(*other);
                const uint32_t taskId = other->m_taskId;
                const std::vector<const CTimeEntry*> filed = FiledEntries(day);
                const bool kept = m_doc.AdjustTimeEntry(other, &entry);
                RecordEntryChange(m_changes, day, taskId, before, other, !kept, AddedSince(day, filed), false);
            }
        }
        PlaceInOrder(day, &entry);
        return 0;
    }

    // Fitting the entry around an entry that lies inside it splits it; the part after
    // that entry is a new entry of its own and must be fitted around the rest in turn.
    const EntryChange::Span before = EntryChange::SpanOf(entry);
    const uint32_t taskId = entry.m_taskId;
    std::vector<CTimeEntry*> pieces = {&entry};
    for (size_t i = 0; i < pieces.size(); ++i)
    {
        CTimeEntry* piece = pieces[i];
        for (int round = 0; piece != nullptr && round < kMaxAdjustRounds; ++round)
        {
            const std::vector<CTimeEntry*> others = day.ConflictingEntries(*piece, piece, m_doc.ConflictNow());
            if (others.empty())
                break;
            const std::vector<const CTimeEntry*> filed = FiledEntries(day);
            if (!m_doc.AdjustTimeEntry(piece, others.front()))
            {
                pieces[i] = piece = nullptr;
                break;
            }
            for (CTimeEntry* added : AddedSince(day, filed))
                pieces.push_back(added);
        }
        if (piece != nullptr)
            PlaceInOrder(day, piece);
    }
    const bool entryGone = pieces.front() == nullptr;
    std::vector<CTimeEntry*> split;
    for (size_t i = 1; i < pieces.size(); ++i)
        if (pieces[i] != nullptr)
            split.push_back(pieces[i]);
    RecordEntryChange(m_changes, day, taskId, before, &entry, entryGone, split, true);
    return entryGone ? 1 : 0;
}

int CTimer::AdjustConflicts(CDay& day, std::unique_ptr<CTimeEntry>& pending, int choice)
{
    if (!pending)
        return 1;
    Lock lock(m_doc.GetLock());
    // The day adjusts other entries only against an entry that names it.
    pending->m_day = &day;
    if (choice != 1)
        return AdjustConflicts(day, *pending, 0);
    // The day adjusts only entries it holds: file the new entry for the adjustment and
    // hand it back to the caller afterwards.
    CTimeEntry* filed = m_doc.FileTimeEntry(&day, std::move(pending));
    if (AdjustConflicts(day, *filed, 1) == 1)
        return 1;
    pending = m_doc.UnfileTimeEntry(filed);
    pending->m_day = &day;
    return 0;
}

int CTimer::EditTimeEntry(CDay& day, CTimeEntry& entry)
{
    {
        Lock lock(m_doc.GetLock());
        m_doc.m_editorOpen = true;
    }
    const int r = m_ui.EditTimeEntry(day, entry);
    Lock lock(m_doc.GetLock());
    m_doc.m_editorOpen = false;
    if (r != 1)
        return 2;
    if (CTask* task = m_doc.GetTask(entry.m_taskId))
    {
        task->m_lastNote = entry.m_note;
        task->m_lastActivityId = entry.m_activityId;
    }
    PlaceInOrder(day, &entry);
    return 1;
}

void CTimer::AddRecentTask(const CTask* task)
{
    if (task == nullptr)
        return;
    Lock lock(m_doc.GetLock());
    std::vector<uint32_t>& ids = m_doc.m_recentTasks;
    ids.insert(ids.begin(), task->m_id);
    for (size_t i = ids.size(); i-- > 1;)
        if (ids[i] == task->m_id)
            ids.erase(ids.begin() + std::ptrdiff_t(i));
    const size_t count = size_t(std::max(0, m_app.GetRecentTaskCount()));
    if (ids.size() > count)
        ids.resize(count);
    ids.shrink_to_fit();
}

int CTimer::StartRecentTask(int index)
{
    CTask* task = nullptr;
    {
        Lock lock(m_doc.GetLock());
        if (index < 1 || size_t(index) > m_doc.m_recentTasks.size())
            return 0;
        task = m_doc.GetTask(m_doc.m_recentTasks[size_t(index) - 1]);
    }
    if (task == nullptr)
        return 0;
    return StartTimer(task, 0, std::string());
}

std::string CTimer::GetRecentTaskName(int index) const
{
    Lock lock(m_doc.GetLock());
    if (index < 1 || size_t(index) > m_doc.m_recentTasks.size())
        return std::string();
    const CTask* task = m_doc.GetTask(m_doc.m_recentTasks[size_t(index) - 1]);
    return task != nullptr ? m_doc.GetTaskPath(task) : std::string();
}

std::vector<RecentTaskItem> CTimer::GetRecentTaskMenu() const
{
    Lock lock(m_doc.GetLock());
    std::vector<RecentTaskItem> items;
    // The list may still be longer than a lowered "Recent Task Count" until the next
    // start; the menu has ids for 25 items only.
    const size_t count = std::min({m_doc.m_recentTasks.size(), size_t(std::max(0, m_app.GetRecentTaskCount())),
                                   size_t(kRecentTaskCommandCount)});
    for (size_t i = 0; i < count; ++i)
    {
        const int position = int(i) + 1;
        std::string name = GetRecentTaskName(position);
        if (name.empty())
            continue;
        items.push_back({kFirstRecentTaskCommandId + unsigned(i), position, m_doc.m_recentTasks[i], std::move(name)});
    }
    if (m_app.GetRecentTaskSortOrder() != 1)
        std::stable_sort(items.begin(), items.end(),
                         [](const RecentTaskItem& a, const RecentTaskItem& b) { return a.name < b.name; });
    return items;
}

TimerIcon CTimer::GetTimerIcon() const
{
    Lock lock(m_doc.GetLock());
    if (m_doc.m_timerRunning && m_doc.m_activeEntry != nullptr)
        return TimerIcon::running;
    if (m_doc.m_paused && TaskExists(m_doc.m_pausedTask))
        return TimerIcon::paused;
    return TimerIcon::inactive;
}

std::string CTimer::GetTimerTip() const
{
    Lock lock(m_doc.GetLock());
    if (m_doc.m_timerRunning && m_doc.m_activeEntry != nullptr)
    {
        const CTask* task = m_doc.GetTask(m_doc.m_activeEntry->m_taskId);
        if (task != nullptr)
        {
            const std::string elapsed = GetActiveElapsedText();
            return BuildTip(*task, elapsed.empty() ? std::string() : " " + elapsed);
        }
    }
    else if (m_doc.m_paused && TaskExists(m_doc.m_pausedTask))
    {
        return BuildTip(*m_doc.m_pausedTask, platform::LoadString(kTextPaused));
    }
    return platform::LoadString(kTextTimerInactive);
}

std::string CTimer::BuildTip(const CTask& task, const std::string& suffix) const
{
    const size_t room = suffix.size() < kTipLimit ? kTipLimit - suffix.size() : 1;
    std::string name = m_doc.GetTaskPath(&task) + " ";
    if (name.size() > room)
    {
        const std::string shortened = m_doc.GetTaskPath(&task, [this](int level) { return m_app.GetShowLevel(level); });
        if (!shortened.empty())
            name = shortened + " ";
        if (name.size() > room)
            name = Utf8Prefix(name, room - 1) + " ";
    }
    return name + suffix;
}

void CTimer::RefreshIcon()
{
    Lock lock(m_doc.GetLock());
    m_ui.ShowTimerState(GetTimerIcon(), GetTimerTip());
}

void CTimer::ShowRunning()
{
    RefreshIcon();
    m_ui.StartTick();
}

void CTimer::ShowInactive()
{
    m_ui.StopTick();
    m_ui.ShowTimerState(TimerIcon::inactive, platform::LoadString(kTextTimerInactive));
}

bool CTimer::OnTimerTick()
{
    CTimeEntry* active = GetActiveEntry();
    if (active != nullptr)
        CheckTimerMidnight(active);
    if (!IsRunning())
        return false;
    m_ui.RefreshStatus();
    RefreshIcon();
    return true;
}

void CTimer::OnDocumentOpened()
{
    CTimeEntry* active = nullptr;
    {
        Lock lock(m_doc.GetLock());
        if (m_doc.m_activeEntry == nullptr)
        {
            // The latest entry with an open end, as the last one read wins.
            for (const auto& [key, day] : m_doc.m_days)
                for (const auto& e : day->TimeEntries())
                    if (e->IsRunning())
                        m_doc.m_activeEntry = e.get();
        }
        m_doc.m_timerRunning = m_doc.m_activeEntry != nullptr;
        active = m_doc.m_activeEntry;
    }
    if (active != nullptr)
    {
        m_ui.StartTick();
        CheckTimerMidnight(active);
    }
    const std::string path = m_doc.GetPathName();
    if (!path.empty())
    {
        // Another program may have paused or stopped the timer since this one read the file.
        m_app.GetStore().Refresh();
        RestorePausedState(m_app.GetStore(), path);
    }
    RefreshIcon();
}

bool CTimer::IsRunning() const
{
    Lock lock(m_doc.GetLock());
    return m_doc.m_timerRunning && m_doc.m_activeEntry != nullptr;
}

CTimeEntry* CTimer::GetActiveEntry() const
{
    Lock lock(m_doc.GetLock());
    return m_doc.m_timerRunning ? m_doc.m_activeEntry : nullptr;
}

bool CTimer::IsPaused() const
{
    Lock lock(m_doc.GetLock());
    return m_doc.m_paused;
}

CTask* CTimer::GetPausedTask() const
{
    Lock lock(m_doc.GetLock());
    return m_doc.m_paused && TaskExists(m_doc.m_pausedTask) ? m_doc.m_pausedTask : nullptr;
}

std::string CTimer::GetActiveElapsedText() const
{
    Lock lock(m_doc.GetLock());
    const CTimeEntry* active = GetActiveEntry();
    if (active == nullptr)
        return std::string();
    return m_app.GetElapsedText(active->GetElapsed(m_doc.RunningEnd()));
}

bool CTimer::TaskExists(const CTask* task) const
{
    if (task == nullptr)
        return false;
    // Compared by address only: a deleted task must not be read.
    Lock lock(m_doc.GetLock());
    return std::any_of(m_doc.m_tasks.begin(), m_doc.m_tasks.end(),
                       [task](const auto& pair) { return pair.second.get() == task; });
}

std::string CTimer::PausedStateKey(const std::string& documentPath)
{
    // One document reached by different spellings of its path is one key.
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(documentPath, error);
    if (error)
        return documentPath;
    const std::filesystem::path canonical = std::filesystem::weakly_canonical(absolute, error);
    return error ? absolute.string() : canonical.string();
}

void CTimer::SavePausedState(platform::SettingsStore& store, const std::string& documentPath) const
{
    const std::string key = PausedStateKey(documentPath);
    const CTask* task = GetPausedTask();
    if (task != nullptr && !IsRunning())
        store.SetString(kPausedSection, key, std::to_string(task->m_id));
    else
        store.Remove(kPausedSection, key);
}

void CTimer::KeepPausedState()
{
    const std::string path = m_doc.GetPathName();
    if (path.empty())
        return;
    platform::SettingsStore& store = m_app.GetStore();
    const std::string key = PausedStateKey(path);
    const std::string before = store.GetString(kPausedSection, key, "");
    SavePausedState(store, path);
    // A failed write stays pending in the store, which the next save of the settings
    // writes or reports.
    if (store.GetString(kPausedSection, key, "") != before)
        store.Save();
}

bool CTimer::RestorePausedState(const platform::SettingsStore& store, const std::string& documentPath)
{
    const std::string key = PausedStateKey(documentPath);
    if (!store.Has(kPausedSection, key))
        return false;
    const std::string text = store.GetString(kPausedSection, key, std::string());
    char* end = nullptr;
    const unsigned long id = std::strtoul(text.c_str(), &end, 10);
    if (text.empty() || end == nullptr || *end != '\0')
        return false;
    {
        Lock lock(m_doc.GetLock());
        CTask* task = m_doc.GetTask(uint32_t(id));
        if (task == nullptr || (m_doc.m_timerRunning && m_doc.m_activeEntry != nullptr))
            return false;
        m_doc.m_paused = true;
        m_doc.m_pausedTask = task;
    }
    RefreshIcon();
    return true;
}
