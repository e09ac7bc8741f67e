#pragma once

#include "model/datetime.h"
#include "model/tinytime.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class CDay;
class CTimeEntry;
class CTimeKeeperApp;
class CTimeKeeperDoc;

// One time entry as a conflict adjustment of the timer found it and as it left it. The
// entries of one timer operation (a stop, a pause, a start, the midnight check) make the
// record that the person is told of, and that an undo of the operation restores from.
struct EntryChange
{
    using Span = std::pair<CTinyTime, CTinyTime>; // a null end: still running

    uint32_t taskId = 0;
    CDateTime date; // the entry's day
    Span before;
    std::vector<Span> after; // empty: the entry was removed
    // The entry the operation was about (the one stopped or started), fitted around the
    // others; otherwise another entry, fitted around it.
    bool timed = false;

    static Span SpanOf(const CTimeEntry& entry);
};

// The change of `entry` from `before` to the pieces of it now filed in `day` (`entry`
// itself unless `removed`, and the copies in `added`). Nothing when nothing moved.
void RecordEntryChange(std::vector<EntryChange>& changes, const CDay& day, uint32_t taskId,
                       const EntryChange::Span& before, const CTimeEntry* entry, bool removed,
                       const std::vector<CTimeEntry*>& added, bool timed);

// One line for the person: each change as "Acme/Audit 11:16 AM-11:18 AM was removed",
// joined with "; " and closed with a full stop. Empty when there is nothing to tell.
std::string DescribeEntryChanges(const std::vector<EntryChange>& changes, const CTimeKeeperDoc& doc,
                                 const CTimeKeeperApp& app);
