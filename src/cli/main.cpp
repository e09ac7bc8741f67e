// qvx: the command line over Quorvane Time & Expense documents.

#include "cli/checkedoutput.h"
#include "cli/commands.h"

#include "model/archive.h"
#include "platform/sharedfile.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
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
// Longer than the desktop program's wait: many commands started together by a script
// take their turns on the document, and nobody watches a frozen window meanwhile.
constexpr std::chrono::seconds kDefaultWait{10};
const char kWaitNote[] =
    "--wait SECONDS: how long to wait while another qvx command holds the document, or another\n"
    "program's save keeps it locked (default 10). A document open in the desktop program is\n"
    "refused at once.\n";

void PrintUsage(const CommandTable& table, std::ostream& out)
{
    size_t width = 0;
    for (const Command& c : table.All())
        width = std::max(width, c.name.size());
    out << "Usage: qvx COMMAND [ARGUMENTS] [--yes | --no] [--wait SECONDS]\n\n"
           "Commands (qvx help COMMAND shows the arguments of one):\n";
    for (const Command& c : table.All())
        out << "  " << c.name << std::string(width - c.name.size() + 2, ' ') << c.summary << "\n";
    out << "\nFILE is a .qvx document. TASK is a path of task names such as \"Acme/Website\" (any "
           "case)\n"
           "or \"#id\". DATE is YYYY-MM-DD, TIME is HH:MM. --yes / --no answer every question the\n"
           "command would ask; without them questions are asked on the terminal. "
           "QVX_NOW=\"YYYY-MM-DD\n"
           "HH:MM\" fixes the clock.\n"
        << kNumbersNote << kWaitNote;
}
} // namespace

} // namespace cli

static int RunQvx(int argc, char** argv)
{
    using namespace cli;
    CommandTable table;
    RegisterFileCommands(table);
    RegisterTaskCommands(table);
    RegisterCatalogCommands(table);
    RegisterEntryCommands(table);
    RegisterTimerCommands(table);
    RegisterReportCommands(table);
    RegisterOptionsCommands(table);

    std::vector<std::string> args;
    TerminalPrompter::Preset preset = TerminalPrompter::Preset::none;
    platform::SharedFile::SetWaitLimit(kDefaultWait);
    for (int i = 1; i < argc; ++i)
    {
        const std::string a = argv[i];
        if (a == "--yes")
            preset = TerminalPrompter::Preset::yes;
        else if (a == "--no")
            preset = TerminalPrompter::Preset::no;
        else if (a == "--wait" || a.rfind("--wait=", 0) == 0)
        {
            const bool joined = a != "--wait";
            if (!joined && i + 1 >= argc)
            {
                std::cerr << "qvx: --wait needs a number of seconds\n";
                return 2;
            }
            try
            {
                platform::SharedFile::SetWaitLimit(
                    ParseWaitSeconds(joined ? a.substr(7) : argv[++i]));
            }
            catch (const UsageError& e)
            {
                std::cerr << "qvx: " << e.what() << "\n";
                return 2;
            }
        }
        else
            args.push_back(a);
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

int main(int argc, char** argv)
{
    return cli::RunWithCheckedOutput("qvx", RunQvx, argc, argv);
}
