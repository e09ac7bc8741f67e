#pragma once

#include "cli/cliargs.h"
#include "cli/entrytable.h"

#include <string>
#include <vector>

class CEntry;
class CTask;
class CTimeEntry;

namespace cli
{

class CommandSession;
struct Context;

// What the commands that act on listed entries share: the rows are those of
// `qvx entries FILE --date DATE --kind KIND`, numbered from 1 in that listing's order.

// The value of a required --`option` DATE.
CDateTime RequiredDate(const Args& args, const char* option);

// The entries of rows `numbers` (1-based) of the page of `kind` on `date`, each once,
// all resolved before anything changes.
std::vector<CEntry*> SelectRows(CommandSession& s, EntryKind kind, const CDateTime& date,
                                const std::vector<std::string>& numbers);
// The one row given after FILE.
CEntry* SelectOneRow(CommandSession& s, EntryKind kind, const CDateTime& date, const Args& args);

// Refuses with `messageId` an entry for a task imported from a project that has children.
void RefuseSummaryTask(const CTask* task, unsigned messageId);

// "09:00-10:30", or "09:00-running".
std::string Span(const CTimeEntry& e);

// "1" to "9" or "A" to "Z" (a lower-case letter is raised); UsageError otherwise.
std::string ParsePriority(const std::string& text);

// "Alice", "Bob" and "Carol" -> "Alice, Bob, Carol".
std::string JoinTexts(const std::vector<std::string>& texts);

// The `set` commands of the three kinds (entryeditcommands.cpp).
int TimeSet(Context& ctx);
int ExpenseSet(Context& ctx);
int ToDoSet(Context& ctx);

} // namespace cli
