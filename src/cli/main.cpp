// qvx: the command line over Quorvane Time & Expense documents.

#include "cli/checkedoutput.h"
#include "cli/dispatch.h"
#ifdef QV_HAVE_SDBUS
#include "cli/dbusforward.h"
#endif

#include "platform/sharedfile.h"

#include <chrono>

namespace
{
// Longer than the desktop program's wait: many commands started together by a script
// take their turns on the document, and nobody watches a frozen window meanwhile.
constexpr std::chrono::seconds kDefaultWait{10};

int RunQvx(int argc, char** argv)
{
    using namespace cli;
    const CommandLine line = ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    platform::SharedFile::SetWaitLimit(line.wait.value_or(kDefaultWait));
#ifdef QV_HAVE_SDBUS
    if (!line.noForward && line.usageError.empty())
        if (const std::optional<int> status = ForwardToProgram(line))
            return *status;
#endif
    return RunCommandLine(line);
}
} // namespace

int main(int argc, char** argv)
{
    return cli::RunWithCheckedOutput("qvx", RunQvx, argc, argv);
}
