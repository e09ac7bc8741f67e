#include "views/qttimerui.h"

#include "views/conflictdlg.h"
#include "views/entrysheets.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "views/sheetlistview.h"
#include "views/trayicon.h"

#include <QStatusBar>

int CQtTimerUi::EditTimeEntry(CDay& day, CTimeEntry& entry)
{
    CTimeEntryPropertySheet sheet(m_frame, day, entry, &m_frame);
    return sheet.exec() == QDialog::Accepted ? 1 : 2;
}

int CQtTimerUi::ChooseConflictResolution()
{
    CTimeEntryConflictDlg dialog(&m_frame);
    if (m_frame.isMinimized() || !m_frame.isVisible())
    {
        dialog.setWindowFlag(Qt::WindowStaysOnTopHint);
        dialog.raise();
        dialog.activateWindow();
    }
    if (dialog.exec() != QDialog::Accepted)
        return 2;
    return dialog.Choice();
}

void CQtTimerUi::ShowTimerState(TimerIcon icon, const std::string& tip)
{
    if (CTrayIcon* tray = m_frame.Tray())
        tray->SetState(icon, ToQ(tip));
}

void CQtTimerUi::StartTick()
{
    m_frame.SheetList()->StartTick();
}

void CQtTimerUi::StopTick()
{
    m_frame.SheetList()->StopTick();
}

void CQtTimerUi::RefreshStatus()
{
    m_frame.RefreshStatus();
}

void CQtTimerUi::ShowEntryChanges(const std::string& text)
{
    m_frame.statusBar()->showMessage(ToQ(text));
}
