#pragma once

#include "platform/prompter.h"

namespace cli
{

// Questions on the terminal. An answer given on the command line (--yes / --no)
// answers every question; without one, questions need a terminal on standard input.
class TerminalPrompter : public platform::Prompter
{
public:
    enum class Preset
    {
        none,
        yes,
        no,
    };

    explicit TerminalPrompter(Preset preset) : m_preset(preset) {}

    void ShowMessage(const std::string& text, platform::Icon icon) override;
    platform::Answer AskYesNo(const std::string& text, platform::Icon icon) override;
    platform::Answer AskYesNoCancel(const std::string& text, platform::Icon icon) override;

    // A question came with no way to answer it (no terminal, no --yes/--no).
    bool Unanswered() const { return m_unanswered; }

private:
    platform::Answer Ask(const std::string& text, bool withCancel);

    Preset m_preset;
    bool m_unanswered = false;
};

} // namespace cli
