#include "timekeeping/entrychange.h"

#include "app/timekeeperapp.h"
#include "model/day.h"
#include "model/entry.h"
#include "model/timekeeperdoc.h"

#include <algorithm>
#include <mutex>

namespace
{

std::string SpanText(const CTimeKeeperApp& app, const EntryChange::Span& span)
{
    return app.FormatTime(span.first) + "-" +
           (span.second.IsNull() ? std::string("(running)") : app.FormatTime(span.second));
}

std::string PiecesText(const CTimeKeeperApp& app, const std::vector<EntryChange::Span>& pieces)
{
    std::string text;
    for (size_t i = 0; i < pieces.size(); ++i)
        text += (i == 0 ? "" : i + 1 == pieces.size() ? " and " : ", ") + SpanText(app, pieces[i]);
    return text;
}

bool SameSpan(const EntryChange::Span& a, const EntryChange::Span& b)
{
    return a.first == b.first && a.second.IsNull() == b.second.IsNull() &&
           (a.second.IsNull() || a.second == b.second);
}

} // namespace

EntryChange::Span EntryChange::SpanOf(const CTimeEntry& entry)
{
    return {entry.m_start, entry.m_end};
}

void RecordEntryChange(std::vector<EntryChange>& changes, const CDay& day, uint32_t taskId,
                       const EntryChange::Span& before, const CTimeEntry* entry, bool removed,
                       const std::vector<CTimeEntry*>& added, bool timed)
{
    EntryChange change;
    change.taskId = taskId;
    change.date = day.GetDate();
    change.before = before;
    change.timed = timed;
    if (!removed && entry != nullptr)
        change.after.push_back(EntryChange::SpanOf(*entry));
    for (const CTimeEntry* piece : added)
        change.after.push_back(EntryChange::SpanOf(*piece));
    std::sort(change.after.begin(), change.after.end(),
              [](const auto& a, const auto& b)
              { return a.first.MinutesOfDay() < b.first.MinutesOfDay(); });
    if (change.after.size() == 1 && SameSpan(change.after.front(), before))
        return;
    changes.push_back(std::move(change));
}

std::string DescribeEntryChanges(const std::vector<EntryChange>& changes, const CTimeKeeperDoc& doc,
                                 const CTimeKeeperApp& app)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    std::string text;
    for (const EntryChange& c : changes)
    {
        std::string item = doc.GetTaskPath(doc.GetTask(c.taskId)) + " " + SpanText(app, c.before);
        if (!c.date.SameDay(app.Today()))
            item += " on " + app.FormatShortDate(c.date);
        if (c.after.empty())
            item += c.timed ? " lay within other entries and was removed" : " was removed";
        else if (c.after.size() == 1)
            item += (c.timed ? " was fitted around other entries to " : " is now ") +
                    SpanText(app, c.after.front());
        else
            item += (c.timed ? " was split around other entries into " : " was split into ") +
                    PiecesText(app, c.after);
        text += (text.empty() ? "" : "; ") + item;
    }
    return text.empty() ? text : text + ".";
}
