#include "platform/prompter.h"

namespace platform
{

void ScriptedPrompter::ShowMessage(const std::string& text, Icon)
{
    m_texts.push_back(text);
    m_messages.push_back(text);
}

Answer ScriptedPrompter::Next(Answer fallback)
{
    if (m_answers.empty())
    {
        m_ranOut = true;
        return fallback;
    }
    const Answer a = m_answers.front();
    m_answers.pop_front();
    return a;
}

Answer ScriptedPrompter::AskYesNo(const std::string& text, Icon)
{
    m_texts.push_back(text);
    m_questions.push_back(text);
    return Next(Answer::no);
}

Answer ScriptedPrompter::AskYesNoCancel(const std::string& text, Icon)
{
    m_texts.push_back(text);
    m_questions.push_back(text);
    return Next(Answer::cancel);
}

} // namespace platform
