#include "cli/dispatch.h"

#include "cli/cliargs.h"

#include <algorithm>
#include <iostream>
#include <sstream>

namespace cli
{

const Command* CommandTable::Find(const std::vector<std::string>& argv, size_t& wordsUsed) const
{
    const Command* best = nullptr;
    size_t bestWords = 0;
    for (const Command& c : m_commands)
    {
        std::istringstream words(c.name);
        std::string word;
        size_t n = 0;
        bool match = true;
        while (words >> word)
        {
            if (n >= argv.size() || argv[n] != word)
            {
                match = false;
                break;
            }
            ++n;
        }
        if (match && n > bestWords)
        {
            best = &c;
            bestWords = n;
        }
    }
    wordsUsed = bestWords;
    return best;
}

namespace
{
const char kNumbersNote[] =
    "Amounts, rates, estimates and multipliers are decimal numbers such as 12.50 (no exponent,\n"
    "no thousands separator), below one trillion. An expense --amount may be negative (a refund\n"
    "or credit); rates, estimates, distances and multipliers may not.\n";
const char kWaitNote[] =
    "--wait SECONDS: how long to wait while another qvx command holds the document, or another\n"
    "program's save keeps it locked (default 10). A document open in the desktop program is\n"
    "handed to that program when it answers, else refused at once.\n";

void PrintUsage(const CommandTable& table, std::ostream& out)
{
    size_t width = 0;
    for (const Command& c : table.All())
        width = std::max(width, c.name.size());
    out << "qvx " QV_VERSION ", the command line of Quorvane Time & Expense\n\n"
           "Usage: qvx COMMAND [ARGUMENTS] [--yes | --no] [--wait SECONDS] [--no-forward]\n\n"
           "Commands (qvx help COMMAND shows the arguments of one):\n";
    for (const Command& c : table.All())
        out << "  " << c.name << std::string(width - c.name.size() + 2, ' ') << c.summary << "\n";
    out << "\nFILE is a .qvx document. TASK is a path of task names such as \"Acme/Website\" (any "
           "case)\n"
           "or \"#id\". DATE is YYYY-MM-DD, TIME is HH:MM. --yes / --no answer every question the\n"
           "command would ask; without them questions are asked on the terminal. "
           "QVX_NOW=\"YYYY-MM-DD\n"
           "HH:MM\" fixes the clock.\n"
           "While the desktop program holds FILE, the command runs in that program (on its open\n"
           "document, with its clock); --no-forward works on the file instead.\n"
        << kNumbersNote << kWaitNote;
}
} // namespace

const CommandTable& AllCommands()
{
    static const CommandTable table = []
    {
        CommandTable t;
        RegisterFileCommands(t);
        RegisterTaskCommands(t);
        RegisterCatalogCommands(t);
        RegisterEntryCommands(t);
        RegisterTimerCommands(t);
        RegisterReportCommands(t);
        RegisterOptionsCommands(t);
        RegisterProjectCommands(t);
        RegisterDatabaseCommands(t);
        RegisterInterchangeCommands(t);
        return t;
    }();
    return table;
}

CommandLine ParseCommandLine(const std::vector<std::string>& args)
{
    CommandLine line;
    for (size_t i = 0; i < args.size(); ++i)
    {
        const std::string& a = args[i];
        if (a == "--wait" || a.rfind("--wait=", 0) == 0)
        {
            const bool joined = a != "--wait";
            if (!joined && i + 1 >= args.size())
            {
                line.usageError = "--wait needs a number of seconds";
                continue;
            }
            try
            {
                line.wait = ParseWaitSeconds(joined ? a.substr(7) : args[++i]);
            }
            catch (const UsageError& e)
            {
                line.usageError = e.what();
            }
        }
        else if (a == "--yes")
            line.preset = TerminalPrompter::Preset::yes;
        else if (a == "--no")
            line.preset = TerminalPrompter::Preset::no;
        else if (a == "--no-forward")
            line.noForward = true;
        else
            line.words.push_back(a);
    }
    return line;
}

int RunCommandLine(const CommandLine& line)
{
    const CommandTable& table = AllCommands();
    const std::vector<std::string>& args = line.words;
    const TerminalPrompter::Preset preset = line.preset;
    if (!line.usageError.empty())
    {
        std::cerr << "qvx: " << line.usageError << "\n";
        return 2;
    }
    if (args.size() == 1 && args[0] == "--version")
    {
        std::cout << "qvx (Quorvane Time & Expense) " QV_VERSION "\n";
        return 0;
    }
    if (args.empty() || args[0] == "help" || args[0] == "--help" || args[0] == "-h")
    {
        if (args.size() > 1)
        {
            size_t used = 0;
            const std::vector<std::string> words(args.begin() + 1, args.end());
            if (const Command* c = table.Find(words, used); c && used == words.size())
            {
                std::cout << "usage: qvx " << c->name << " " << c->usage << "\n"
                          << c->summary << "\n";
                if (!c->details.empty())
                    std::cout << "\n" << c->details << "\n";
                for (const char* option :
                     {"--amount", "--rate", "--distance", "--estimate", "--multiplier", "--tax"})
                    if (c->usage.find(option) != std::string::npos)
                    {
                        std::cout << "\n" << kNumbersNote;
                        break;
                    }
                return 0;
            }
            std::cerr << "qvx: unknown command '" << words[0]
                      << "' (qvx help lists the commands)\n";
            return 2;
        }
        PrintUsage(table, args.empty() ? std::cerr : std::cout);
        return args.empty() ? 2 : 0;
    }

    size_t used = 0;
    const Command* command = table.Find(args, used);
    if (!command)
    {
        std::string group;
        for (const Command& c : table.All())
            if (c.name.rfind(args[0] + " ", 0) == 0)
                group += (group.empty() ? "" : ", ") + c.name.substr(args[0].size() + 1);
        if (!group.empty())
            std::cerr << "qvx " << args[0] << ": give one of " << group
                      << " (qvx help lists the commands)\n";
        else
            std::cerr << "qvx: unknown command '" << args[0] << "' (qvx help lists the commands)\n";
        return 2;
    }

    TerminalPrompter prompter(preset);
    Context ctx{std::vector<std::string>(args.begin() + long(used), args.end()), prompter};
    try
    {
        return command->run(ctx);
    }
    catch (const UsageError& e)
    {
        std::cerr << "qvx " << command->name << ": " << e.what() << " (qvx help " << command->name
                  << " shows the usage)\n";
        return 2;
    }
    catch (const CommandError& e)
    {
        std::cerr << "qvx " << command->name << ": " << e.what() << "\n";
        return 1;
    }
    catch (const std::bad_alloc&)
    {
        std::cerr << "qvx " << command->name << ": out of memory\n";
        return 1;
    }
    catch (const std::exception& e)
    {
        std::cerr << "qvx " << command->name << ": " << e.what() << "\n";
        return 1;
    }
}

} // namespace cli
