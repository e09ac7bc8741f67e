#include "cli/terminalprompter.h"

#include "cli/documenthost.h"

#include <cstdio>
#include <iostream>
#include <string>
#include <unistd.h>

namespace cli
{

namespace
{
// Dialog texts hold "\n\n" paragraph breaks; on a terminal they read well as they are.
void Print(const std::string& text)
{
    std::cerr << text << "\n";
}
} // namespace

void TerminalPrompter::ShowMessage(const std::string& text, platform::Icon)
{
    Print(text);
}

platform::Answer TerminalPrompter::AskYesNo(const std::string& text, platform::Icon)
{
    return Ask(text, false);
}

platform::Answer TerminalPrompter::AskYesNoCancel(const std::string& text, platform::Icon)
{
    return Ask(text, true);
}

platform::Answer TerminalPrompter::Ask(const std::string& text, bool withCancel)
{
    if (m_preset == Preset::yes)
        return platform::Answer::yes;
    if (m_preset == Preset::no)
        return platform::Answer::no;
    if (!CanAskOnTerminal())
    {
        Print(text);
        Print("qvx: this question needs an answer: run again with --yes or --no");
        m_unanswered = true;
        return withCancel ? platform::Answer::cancel : platform::Answer::no;
    }
    for (;;)
    {
        std::cerr << text << (withCancel ? " [y]es / [n]o / [c]ancel: " : " [y]es / [n]o: ")
                  << std::flush;
        std::string line;
        if (!std::getline(std::cin, line))
        {
            m_unanswered = true;
            return withCancel ? platform::Answer::cancel : platform::Answer::no;
        }
        if (line == "y" || line == "Y" || line == "yes")
            return platform::Answer::yes;
        if (line == "n" || line == "N" || line == "no")
            return platform::Answer::no;
        if (withCancel && (line == "c" || line == "C" || line == "cancel"))
            return platform::Answer::cancel;
    }
}

} // namespace cli
