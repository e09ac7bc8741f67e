#pragma once

#include <deque>
#include <string>
#include <vector>

namespace platform
{

enum class Answer
{
    ok,
    yes,
    no,
    cancel,
};

enum class Icon
{
    information,
    warning,
    error,
    question,
};

// Messages and questions to the user. The desktop program answers with message
// boxes, qvx on the terminal or from its options, tests from a script.
class Prompter
{
public:
    virtual ~Prompter() = default;
    virtual void ShowMessage(const std::string& text, Icon icon = Icon::warning) = 0;
    // Returns yes or no.
    virtual Answer AskYesNo(const std::string& text, Icon icon = Icon::question) = 0;
    // Returns yes, no or cancel.
    virtual Answer AskYesNoCancel(const std::string& text, Icon icon = Icon::question) = 0;
};

// Answers from a list given in advance and records everything it was shown.
// A question with no scripted answer left is a test failure: it answers cancel
// (or no for a Yes/No question) and records the fact.
class ScriptedPrompter : public Prompter
{
public:
    ScriptedPrompter() = default;
    explicit ScriptedPrompter(std::deque<Answer> answers) : m_answers(std::move(answers)) {}

    void Script(Answer a) { m_answers.push_back(a); }
    void ShowMessage(const std::string& text, Icon icon = Icon::warning) override;
    Answer AskYesNo(const std::string& text, Icon icon = Icon::question) override;
    Answer AskYesNoCancel(const std::string& text, Icon icon = Icon::question) override;

    // Everything shown or asked, in order.
    const std::vector<std::string>& Texts() const { return m_texts; }
    const std::vector<std::string>& Messages() const { return m_messages; }
    const std::vector<std::string>& Questions() const { return m_questions; }
    bool RanOutOfAnswers() const { return m_ranOut; }
    size_t AnswersLeft() const { return m_answers.size(); }

private:
    Answer Next(Answer fallback);

    std::deque<Answer> m_answers;
    std::vector<std::string> m_texts;
    std::vector<std::string> m_messages;
    std::vector<std::string> m_questions;
    bool m_ranOut = false;
};

} // namespace platform
