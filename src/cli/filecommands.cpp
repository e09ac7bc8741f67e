#include "cli/commands.h"
#include "cli/docsession.h"
#include "cli/documentdump.h"

#include <iostream>
#include <sys/stat.h>

namespace cli
{

namespace
{
bool Exists(const std::string& path)
{
    struct stat st{};
    return ::stat(path.c_str(), &st) == 0;
}

int New(Context& ctx)
{
    Args args(ctx.argv, {"force"});
    args.Expect(1, 1, {"employee", "force"});
    const std::string path = args.At(0, "FILE");
    const auto employee = args.Option("employee");
    if (!employee || employee->find_first_not_of(" \t") == std::string::npos)
        throw UsageError("--employee NAME is required (the name of the top task)");
    if (Exists(path) && !args.Flag("force"))
        throw CommandError("'" + path + "' already exists (use --force to replace it)");

    DocSession session(ctx.prompter);
    session.Doc().NewDocument(*employee);
    session.SaveAs(path);
    std::cout << "Created " << path << " for " << *employee << "\n";
    return 0;
}

std::string Summary(const CTimeKeeperDoc& doc)
{
    return "version " + std::to_string(doc.m_fileVersion) + ", " + std::to_string(doc.m_tasks.size()) +
           " tasks, " + std::to_string(doc.m_days.size()) + " days, " +
           std::to_string(doc.CountTimeEntries()) + " time entries, " +
           std::to_string(doc.CountExpenseEntries()) + " expense entries, " +
           std::to_string(doc.CountToDoEntries()) + " to-do entries, " +
           std::to_string(doc.m_reports.size()) + " reports";
}

int Check(Context& ctx)
{
    Args args(ctx.argv, {});
    args.Expect(1, 1, {});
    const std::string path = args.At(0, "FILE");
    // Reading converts an older layout in memory only, so there is nothing to ask.
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    DocSession session(reader);
    session.OpenForReading(path);
    std::cout << path << ": " << Summary(session.Doc()) << "\n";
    return 0;
}

int Convert(Context& ctx)
{
    Args args(ctx.argv, {"force"});
    args.Expect(2, 2, {"force"});
    const std::string in = args.At(0, "FILE");
    const std::string out = args.At(1, "OUT");
    if (Exists(out) && !args.Flag("force"))
        throw CommandError("'" + out + "' already exists (use --force to replace it)");
    DocSession session(ctx.prompter);
    session.OpenForReading(in);
    const uint32_t from = session.Doc().m_fileVersion;
    session.SaveAs(out);
    std::cout << "Converted " << in << " (version " << from << ") to " << out << " (version "
              << CTimeKeeperDoc::kCurrentVersion << ")\n";
    return 0;
}

int Dump(Context& ctx)
{
    Args args(ctx.argv, {"json"});
    args.Expect(1, 1, {"json"});
    TerminalPrompter reader(TerminalPrompter::Preset::yes);
    DocSession session(reader);
    session.OpenForReading(args.At(0, "FILE"));
    std::cout << (args.Flag("json") ? DumpJson(session.Doc()) : DumpOutline(session.Doc()));
    return 0;
}
} // namespace

void RegisterFileCommands(CommandTable& table)
{
    table.Add({"new", "FILE --employee NAME [--force]",
               "create a document with the defaults of a new file", New});
    table.Add({"check", "FILE", "load a document and print its version and counts", Check});
    table.Add({"convert", "FILE OUT [--force]",
               "read a document of an older layout and write it in the current one", Convert});
    table.Add({"dump", "[--json] FILE", "print every record of a document", Dump});
}

} // namespace cli
