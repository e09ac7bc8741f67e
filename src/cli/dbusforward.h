#pragma once

#include "cli/dispatch.h"
#include "cli/documenthost.h"

#include <optional>

namespace cli
{

// When a file named on the command line is held by a desktop program that answers on the
// session bus for it, runs the command line there, prints what it answers and returns its
// exit status. When the program holding the file does not answer in time: says so and
// returns 1, having changed nothing. Nothing (std::nullopt) when no program holds such a
// file or there is no session bus: the command then works on the file.
std::optional<int> ForwardToProgram(const CommandLine& line);

} // namespace cli
