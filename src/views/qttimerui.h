#pragma once

#include "timekeeping/timerui.h"

class CMainFrame;

// The timer's questions and displays in the desktop program: the time-entry editor,
// the "Time Entry Conflict" dialog, the notification icon and the tick.
class CQtTimerUi : public TimerUi
{
public:
    explicit CQtTimerUi(CMainFrame& frame) : m_frame(frame) {}

    int EditTimeEntry(CDay& day, CTimeEntry& entry) override;
    int ChooseConflictResolution() override;
    void ShowTimerState(TimerIcon icon, const std::string& tip) override;
    void StartTick() override;
    void StopTick() override;
    void RefreshStatus() override;
    // On the status bar, until the next message replaces it.
    void ShowEntryChanges(const std::string& text) override;

private:
    CMainFrame& m_frame;
};
