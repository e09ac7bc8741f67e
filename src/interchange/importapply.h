#pragma once

#include "interchange/importplan.h"

#include <cstddef>
#include <functional>

class CTimeKeeperDoc;
class CTimer;

namespace interchange
{

// How new entries that overlap others are fitted, as the timer's conflict question
// answers it.
enum class OverlapChoice
{
    adjustOthers = 0, // the other entries make room
    adjustThis = 1,   // the new entry fills the gaps between the others
};

struct ImportOutcome
{
    size_t tasks = 0;
    size_t activities = 0;
    size_t entries = 0;  // new entries filed (pieces of a new entry fitted around others count once)
    size_t dropped = 0;  // new entries that lay wholly within others (adjustThis)
    size_t adjusted = 0; // new entries whose overlaps were resolved
    size_t todos = 0;
    bool running = false; // the running entry was made
};

// Called now and then with the items made so far and the number of all of them.
using ImportProgress = std::function<void(size_t done, size_t total)>;

// Makes what `plan` says in one step under the document lock: activities, tasks,
// entries (overlaps resolved by `choice` through the timer, as when an entry is added
// by hand) and to-dos; then marks the document modified and updates the views once.
// Throws std::runtime_error, changing nothing, when the document lost a task or
// activity that the plan refers to since it was made.
ImportOutcome ApplyImport(CTimeKeeperDoc& doc, CTimer& timer, const CImportPlan& plan,
                          OverlapChoice choice, const ImportProgress& progress = {});

} // namespace interchange
