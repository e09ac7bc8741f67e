#pragma once

#include "cli/cliargs.h"
#include "cli/terminalprompter.h"

#include <functional>
#include <string>
#include <vector>

namespace cli
{

// What every command gets: its own arguments (the command words removed) and the
// prompter that answers questions from --yes / --no or the terminal.
struct Context
{
    std::vector<std::string> argv;
    TerminalPrompter& prompter;
};

struct Command
{
    std::string name;    // "new", "task add", "report export"
    std::string usage;   // "FILE --employee NAME"
    std::string summary; // one line for the help text
    std::function<int(Context&)> run;
    std::string details; // further lines for "qvx help COMMAND"; may be empty
    // Works on the files as they lie on disk and is never handed to a desktop program
    // that holds one of them.
    bool local = false;
};

class CommandTable
{
public:
    void Add(Command command) { m_commands.push_back(std::move(command)); }
    // The longest command name that the words at the start of `argv` spell.
    const Command* Find(const std::vector<std::string>& argv, size_t& wordsUsed) const;
    const std::vector<Command>& All() const { return m_commands; }

private:
    std::vector<Command> m_commands;
};

void RegisterFileCommands(CommandTable& table);
void RegisterTaskCommands(CommandTable& table);
void RegisterCatalogCommands(CommandTable& table);
void RegisterEntryCommands(CommandTable& table);
void RegisterTimerCommands(CommandTable& table);
void RegisterReportCommands(CommandTable& table);
void RegisterOptionsCommands(CommandTable& table);
void RegisterProjectCommands(CommandTable& table);
void RegisterDatabaseCommands(CommandTable& table);
void RegisterInterchangeCommands(CommandTable& table);

} // namespace cli
