// qvx: the command line over Quorvane Time & Expense documents.

#include "cli/dispatch.h"
#ifdef QV_HAVE_SDBUS
#include "cli/dbusforward.h"
#endif

int main(int argc, char** argv)
{
    using namespace cli;
    const CommandLine line = ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
#ifdef QV_HAVE_SDBUS
    if (!line.noForward)
        if (const std::optional<int> status = ForwardToProgram(line))
            return *status;
#endif
    return RunCommandLine(line);
}
