#include "views/qtprompter.h"

#include "views/qtconvert.h"

#include <QApplication>
#include <QMessageBox>
#include <QThread>

namespace
{

QMessageBox::Icon ToQIcon(platform::Icon icon)
{
    switch (icon)
    {
    case platform::Icon::information:
        return QMessageBox::Information;
    case platform::Icon::warning:
        return QMessageBox::Warning;
    case platform::Icon::error:
        return QMessageBox::Critical;
    case platform::Icon::question:
        return QMessageBox::Question;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButton Ask(QWidget* parent, const std::string& text, platform::Icon icon,
                                QMessageBox::StandardButtons buttons)
{
    QMessageBox box(ToQIcon(icon), QApplication::applicationDisplayName(), ToQ(text), buttons, parent);
    if (buttons & QMessageBox::Yes)
        box.setDefaultButton(QMessageBox::Yes);
    return QMessageBox::StandardButton(box.exec());
}

// Message boxes belong to the user-interface thread; the automatic save reports
// from its own thread and waits for the answer there.
QMessageBox::StandardButton Run(const std::function<QWidget*()>& parent, const std::string& text,
                                platform::Icon icon, QMessageBox::StandardButtons buttons)
{
    QMessageBox::StandardButton answer = QMessageBox::NoButton;
    if (QThread::currentThread() == qApp->thread())
        return Ask(parent ? parent() : nullptr, text, icon, buttons);
    QMetaObject::invokeMethod(
        qApp, [&] { answer = Ask(parent ? parent() : nullptr, text, icon, buttons); },
        Qt::BlockingQueuedConnection);
    return answer;
}

} // namespace

void CQtPrompter::ShowMessage(const std::string& text, platform::Icon icon)
{
    Run(m_parent, text, icon, QMessageBox::Ok);
}

platform::Answer CQtPrompter::AskYesNo(const std::string& text, platform::Icon icon)
{
    const auto b = Run(m_parent, text, icon, QMessageBox::Yes | QMessageBox::No);
    return b == QMessageBox::Yes ? platform::Answer::yes : platform::Answer::no;
}

platform::Answer CQtPrompter::AskYesNoCancel(const std::string& text, platform::Icon icon)
{
    const auto b = Run(m_parent, text, icon,
                       QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    if (b == QMessageBox::Yes)
        return platform::Answer::yes;
    if (b == QMessageBox::No)
        return platform::Answer::no;
    return platform::Answer::cancel;
}
