#pragma once

#include "model/datetime.h"

#include <string>
#include <vector>

class CEntry;
class CTask;

namespace cli
{

class CommandSession;

enum class EntryKind
{
    time,
    expense,
    todo,
};

// The rows of one page of the entry lists: the entries of a day (Date view) or of a
// task (Task view), with the page's columns, in the page's sort order.
struct EntryTable
{
    std::vector<std::string> columns;
    struct Row
    {
        CEntry* entry = nullptr;
        std::vector<std::string> cells;
    };
    std::vector<Row> rows;
};

// Date view: `task` is null; Task view: `date` is ignored. The rows are numbered in the
// order of the desktop program's page (its stored sort order; ties keep the order in
// which the day or the task holds them), so one listing gives the commands their rows.
// The Date view of the to-do page holds the outstanding to-dos and those completed on
// `date`; its "Status" column marks the completed and overdue ones.
// With `billing`, time rows also show the activity, note, effective billable flag, rate
// and billing amount.
EntryTable BuildEntryTable(CommandSession& session, EntryKind kind, const CDateTime& date,
                           const CTask* task, bool billing = false);

// Hours and billing amounts of the time rows of a table: all, and the billable ones.
struct BillingTotals
{
    double hours = 0.0;
    double amount = 0.0;
    double billableHours = 0.0;
    double billableAmount = 0.0;
};
BillingTotals SumBilling(CommandSession& session, const EntryTable& table);

// The table as aligned text, rows numbered from 1.
std::string FormatEntryTable(const EntryTable& table);

// The page's title: "Time", "Expenses", "To Do".
const char* PageTitle(EntryKind kind);

} // namespace cli
