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

// Date view: `task` is null; Task view: `date` is ignored.
EntryTable BuildEntryTable(CommandSession& session, EntryKind kind, const CDateTime& date,
                           const CTask* task);

// The table as aligned text, rows numbered from 1.
std::string FormatEntryTable(const EntryTable& table);

// The page's title: "Time", "Expenses", "To Do".
const char* PageTitle(EntryKind kind);

} // namespace cli
