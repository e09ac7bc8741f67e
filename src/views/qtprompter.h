#pragma once

#include "platform/prompter.h"

#include <functional>

class QWidget;

// Messages and questions as message boxes over the main window.
class CQtPrompter : public platform::Prompter
{
public:
    // `parent` is asked for each time: the main window may not exist yet at start-up.
    explicit CQtPrompter(std::function<QWidget*()> parent) : m_parent(std::move(parent)) {}

    void ShowMessage(const std::string& text, platform::Icon icon = platform::Icon::warning) override;
    platform::Answer AskYesNo(const std::string& text,
                              platform::Icon icon = platform::Icon::question) override;
    platform::Answer AskYesNoCancel(const std::string& text,
                                    platform::Icon icon = platform::Icon::question) override;

private:
    std::function<QWidget*()> m_parent;
};
