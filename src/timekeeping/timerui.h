#pragma once

#include <string>

class CDay;
class CTimeEntry;

// The notification-area pictures of the timer, by their icon resource numbers.
enum class TimerIcon
{
    running = 186,
    inactive = 188,
    paused = 229,
};

// What the timer needs from whoever shows it: the desktop program, qvx and the tests
// each implement it. The timer never holds the document lock while it calls
// EditTimeEntry or ChooseConflictResolution, so both may block on the user.
class TimerUi
{
public:
    virtual ~TimerUi() = default;

    // Shows the time-entry editor on `entry` (which may not be filed in `day` yet) and
    // writes the user's values into it under the document lock. 1 = OK, 2 = Cancel.
    virtual int EditTimeEntry(CDay& day, CTimeEntry& entry) = 0;

    // Asks how to resolve an overlap: 0 adjust the other entries, 1 adjust this entry,
    // 2 edit this entry by hand (also when the question is dismissed).
    virtual int ChooseConflictResolution() = 0;

    // The timer changed state or its tip changed (icon and tip of the notification area).
    virtual void ShowTimerState(TimerIcon icon, const std::string& tip) = 0;

    // The periodic tick (every 5,000 ms) that calls CTimer::OnTimerTick while a timer runs.
    virtual void StartTick() {}
    virtual void StopTick() {}

    // The running total of the status bar is out of date.
    virtual void RefreshStatus() {}

    // An operation of the timer changed time entries beyond the one it stopped or started
    // as it was (it fitted entries around each other): one line saying what, to be shown
    // where the person sees it.
    virtual void ShowEntryChanges(const std::string& text) = 0;
};
