#pragma once

#include <string>

namespace cli
{

class CommandSession;

// The timer as one line for a panel or a status bar (qvx status --format).
struct StatusFields
{
    std::string state;   // "running", "paused" or "inactive"
    std::string task;    // path of the running or paused task
    std::string start;   // start of the running entry, as the program shows times
    std::string elapsed; // elapsed time of the running entry, as the program shows it
    long minutes = 0;    // elapsed whole minutes
    std::string note;
};

StatusFields CurrentStatus(CommandSession& session);

// Replaces %S state, %t task, %s start, %e elapsed, %m minutes, %n note, %% a percent sign;
// throws UsageError on any other %-sequence.
std::string FormatStatus(const std::string& format, const StatusFields& fields);

inline constexpr const char* kStatusFormatHelp =
    "--format TEXT prints one line: %S state (running, paused, inactive), %t task, %s start, "
    "%e elapsed, %m elapsed minutes, %n note, %% percent sign";

} // namespace cli
