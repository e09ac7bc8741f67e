#include "views/options/optionspage.h"

#include "platform/prompter.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"

#include <QTabWidget>

bool COptionsPage::Refuse(const QString& text, QWidget* field)
{
    for (QWidget* w = parentWidget(); w != nullptr; w = w->parentWidget())
        if (auto* tabs = qobject_cast<QTabWidget*>(w))
        {
            tabs->setCurrentWidget(this);
            break;
        }
    m_frame.Prompter().ShowMessage(FromQ(text), platform::Icon::warning);
    field->setFocus();
    return false;
}
