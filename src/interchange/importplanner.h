#pragma once

#include "interchange/importplan.h"
#include "interchange/importsource.h"
#include "model/datetime.h"

#include <cstdint>

class CTimeKeeperDoc;

namespace interchange
{

struct ImportOptions
{
    // The task that the source's task paths start below (the top task by default).
    uint32_t underTaskId = 1;
    // An interval still running in the source becomes the document's running entry;
    // otherwise it is skipped.
    bool openStart = false;
    // The current moment: a running entry must have started before it.
    CDateTime now;
};

// Why an interval still running in the source is skipped (unless it becomes the timer).
inline constexpr char kStillRunningReason[] = "still running in the source (no end)";

// Matches what a source holds against the document: finds or plans the tasks and
// activities, cuts stretches of time into one entry per local day (to the nearest
// minute), and sets aside what is there already (the same task, date, start, end and
// note), what cannot be filed, and why. Reads the document under its lock.
CImportPlan PlanImport(const CTimeKeeperDoc& doc, const ImportSource& source,
                       const ImportOptions& options);

} // namespace interchange
