#pragma once

#include "cli/commands.h"
#include "cli/terminalprompter.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace cli
{

// Every command of qvx, registered once.
const CommandTable& AllCommands();

// One qvx command line with the options that apply to every command taken out.
struct CommandLine
{
    std::vector<std::string> words; // the command words and the command's own arguments
    TerminalPrompter::Preset preset = TerminalPrompter::Preset::none;
    bool noForward = false; // --no-forward: work on the file even when a program holds it
    // --wait SECONDS: how long this process waits for a document another qvx holds. Only qvx
    // itself applies it; a program running a handed-over command has the document open.
    std::optional<std::chrono::milliseconds> wait;
    std::string usageError; // a malformed common option, reported as a usage error
};

CommandLine ParseCommandLine(const std::vector<std::string>& args);

// Runs one command line (help included): what it prints goes to std::cout and std::cerr,
// its errors as one line on std::cerr. Returns the exit status.
int RunCommandLine(const CommandLine& line);

} // namespace cli
