#include "timerfixture.h"

#include "model/day.h"
#include "platform/messages.h"

#include <tuple>

using Strings = std::vector<std::string>;

TEST_F(TimerTest, StartRoundsToTheIntervalAndBackToBackLeavesNoGap)
{
    app.SetTimeInterval(4); // 15 minutes
    At(9, 7, 29);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    EXPECT_EQ(Entries(), Strings({"09:00-run"}));
    EXPECT_TRUE(timer.IsRunning());
    EXPECT_EQ(timer.GetActiveEntry()->m_taskId, website->m_id);
    EXPECT_EQ(ui.icon, TimerIcon::running);
    EXPECT_TRUE(ui.ticking);
    EXPECT_TRUE(doc.IsModified());

    // An exact half rounds up: the first entry ends, the second starts, at 09:15.
    At(9, 7, 30);
    ASSERT_EQ(timer.StartTimer(support, 0, ""), 1);
    EXPECT_EQ(Entries(), Strings({"09:00-09:15", "09:15-run"}));
    EXPECT_EQ(timer.GetActiveEntry()->m_taskId, support->m_id);
    EXPECT_EQ(doc.m_recentTasks, std::vector<uint32_t>({support->m_id, website->m_id}));
    EXPECT_TRUE(prompter.Questions().empty());
}

TEST_F(TimerTest, NextEntryStartsWhereTheStopEditorEndedThePreviousOne)
{
    app.SetShowTimeEntryOnStop(1);
    At(9, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, "Layout"), 1);
    EXPECT_EQ(timer.GetActiveEntry()->m_note, "Layout");

    At(10, 20);
    ui.edits.push_back([](CDay&, CTimeEntry& e) {
        e.m_end = CTinyTime(10, 5);
        e.m_note = "Design review";
        return 1;
    });
    ASSERT_EQ(timer.StartTimer(support, 0, ""), 1);
    EXPECT_EQ(Entries(), Strings({"09:00-10:05", "10:05-run"}));
    EXPECT_FALSE(doc.m_editorOpen);
    // The editor's note becomes the task's last note, which the next start uses.
    EXPECT_EQ(website->m_lastNote, "Design review");
    At(11, 0);
    ui.edits.push_back(ScriptedTimerUi::Ok());
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    EXPECT_EQ(timer.GetActiveEntry()->m_note, "Design review");
}

TEST_F(TimerTest, ZeroLengthWithinTheMinuteIsDeletedWithoutAQuestion)
{
    app.SetTimeInterval(4);
    At(9, 0, 10);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    At(9, 0, 20);
    EXPECT_EQ(timer.StopTimer(true, 0), 1);
    EXPECT_EQ(doc.GetDay(Date()), nullptr);
    EXPECT_TRUE(website->m_timeEntries.empty());
    EXPECT_TRUE(prompter.Questions().empty());
    EXPECT_FALSE(timer.IsRunning());
    EXPECT_EQ(ui.icon, TimerIcon::inactive);
    EXPECT_EQ(ui.tip, "Timer Inactive");
    EXPECT_FALSE(ui.ticking);
}

TEST_F(TimerTest, EndBeforeStartIsDeletedWithoutAQuestion)
{
    At(9, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    At(8, 58);
    EXPECT_EQ(timer.StopTimer(true, 0), 1);
    EXPECT_TRUE(Entries().empty());
    EXPECT_TRUE(prompter.Questions().empty());
}

class ZeroLengthQuestion : public TimerTest
{
protected:
    // Start and stop inside one 15-minute interval, a minute apart.
    int StartAndStop(platform::Answer answer)
    {
        app.SetTimeInterval(4);
        prompter.Script(answer);
        At(9, 0, 10);
        EXPECT_EQ(timer.StartTimer(website, 0, ""), 1);
        At(9, 1, 0);
        const int result = timer.StopTimer(true, 0);
        EXPECT_EQ(prompter.Questions(), Strings({platform::LoadString(40002)}));
        EXPECT_TRUE(prompter.lockHeldWhileAsking);
        return result;
    }
};

TEST_F(ZeroLengthQuestion, YesDeletesTheEntry)
{
    EXPECT_EQ(StartAndStop(platform::Answer::yes), 1);
    EXPECT_TRUE(Entries().empty());
    EXPECT_FALSE(timer.IsRunning());
}

TEST_F(ZeroLengthQuestion, NoRoundsTheEndToTheMinute)
{
    EXPECT_EQ(StartAndStop(platform::Answer::no), 1);
    EXPECT_EQ(Entries(), Strings({"09:00-09:01"}));
    EXPECT_FALSE(timer.IsRunning());
}

TEST_F(ZeroLengthQuestion, CancelKeepsTheTimerRunning)
{
    EXPECT_EQ(StartAndStop(platform::Answer::cancel), 0);
    EXPECT_EQ(Entries(), Strings({"09:00-run"}));
    EXPECT_TRUE(timer.IsRunning());
    EXPECT_TRUE(ui.ticking);
    EXPECT_EQ(ui.icon, TimerIcon::running);
}

TEST_F(TimerTest, PauseClosesToTheMinuteAndResumeReopensOnTheSameTask)
{
    app.SetTimeInterval(4);
    At(9, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    PauseMenuState menu = timer.GetPauseMenuState();
    EXPECT_TRUE(menu.enabled);
    EXPECT_FALSE(menu.checked);
    EXPECT_EQ(menu.text, "Pa&use Timer\tCtrl+U");

    At(9, 32, 10);
    ASSERT_EQ(timer.PauseResumeTimer(), 1);
    EXPECT_EQ(Entries(), Strings({"09:00-09:32"}));
    EXPECT_FALSE(timer.IsRunning());
    EXPECT_TRUE(timer.IsPaused());
    EXPECT_EQ(timer.GetPausedTask(), website);
    EXPECT_EQ(ui.icon, TimerIcon::paused);
    EXPECT_EQ(ui.tip, "Acme/Website Paused");
    menu = timer.GetPauseMenuState();
    EXPECT_TRUE(menu.enabled);
    EXPECT_TRUE(menu.checked);
    EXPECT_EQ(menu.text, "Res&ume Timer\tCtrl+U");

    At(9, 40, 40);
    ASSERT_EQ(timer.PauseResumeTimer(), 1);
    EXPECT_EQ(Entries(), Strings({"09:00-09:32", "09:41-run"}));
    EXPECT_FALSE(timer.IsPaused());
    EXPECT_EQ(timer.GetActiveEntry()->m_taskId, website->m_id);

    ASSERT_EQ(timer.StopTimer(true, 0), 1);
    menu = timer.GetPauseMenuState();
    EXPECT_FALSE(menu.enabled);
    EXPECT_FALSE(menu.checked);
    EXPECT_EQ(menu.text, "Pa&use Timer\tCtrl+U");
    EXPECT_EQ(timer.PauseResumeTimer(), 0);
}

TEST_F(TimerTest, ResumeFitsOtherEntriesAroundItWithoutAsking)
{
    app.SetTimeInterval(4);
    At(9, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    At(10, 0);
    ASSERT_EQ(timer.PauseResumeTimer(), 1);
    AddEntry(audit, CTinyTime(10, 10), CTinyTime(10, 25));

    // Resumed at 10:23 with the running end at 10:30 (15-minute rounding).
    At(10, 23);
    ASSERT_EQ(timer.PauseResumeTimer(), 1);
    EXPECT_EQ(ui.choiceCalls, 0);
    EXPECT_EQ(Entries(), Strings({"09:00-10:00", "10:10-10:23", "10:23-run"}));
    EXPECT_EQ(ui.shownChanges, Strings({"Globex/Audit 10:10 AM-10:25 AM is now 10:10 AM-10:23 AM."}));
}

// A pause is not asked about: what was typed inside the paused entry's time stays as typed,
// the paused entry gives way, and the person is told how. Website runs from 11:15.
TEST_F(TimerTest, PauseGivesWayToEntriesTypedWhileTheTimerRan)
{
    const std::string paused = "Acme/Website 11:15 AM-11:19 AM ";
    const std::tuple<int, int, Strings, std::string> cases[] = {
        {16, 18, {"11:15-11:16", "11:16-11:18", "11:18-11:19"},
         "was split around other entries into 11:15 AM-11:16 AM and 11:18 AM-11:19 AM."},
        {17, 45, {"11:15-11:17", "11:17-11:45"}, "was fitted around other entries to 11:15 AM-11:17 AM."},
        {0, 30, {"11:00-11:30"}, "lay within other entries and was removed."},
    };
    app.SetTimeInterval(4);
    for (int day = 0; day < 3; ++day)
    {
        const auto& [typedFrom, typedTo, entries, told] = cases[day];
        At(11, 12, 0, day);
        ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
        qvtest::AddTime(doc, audit, Date(day), 11, typedFrom, 11, typedTo);
        At(11, 19, 0, day);
        ui.shownChanges.clear();
        ASSERT_EQ(timer.PauseResumeTimer(), 1);
        EXPECT_EQ(Entries(day), entries);
        EXPECT_EQ(ui.shownChanges, Strings({paused + told}));
        EXPECT_EQ(timer.GetPausedTask(), website);
    }
    EXPECT_EQ(ui.choiceCalls, 0);
}

// The running entry spans its start to now even while the rounded time lags behind: an entry
// typed into that span is a conflict and is resolved like any other.
TEST_F(TimerTest, EntryTypedIntoTheTimeAlreadyRunIsAConflict)
{
    app.SetTimeInterval(4);
    At(11, 12);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    At(11, 17); // rounded: still 11:15
    ui.choices = {1};
    CTimeEntry* typed = AddEntry(audit, CTinyTime(11, 16), CTinyTime(11, 18));
    EXPECT_EQ(timer.ResolveTimeConflict(*doc.GetDay(Date()), *typed), 0);
    EXPECT_EQ(ui.choiceCalls, 1);
    EXPECT_EQ(Entries(), Strings({"11:15-run", "11:17-11:18"}));
}

class StopConflict : public TimerTest
{
protected:
    // Website runs from 09:30; Audit holds 10:00-10:30; the stop at 10:15 overlaps it.
    int StopOverlapping()
    {
        AddEntry(audit, CTinyTime(10, 0), CTinyTime(10, 30));
        At(9, 30);
        EXPECT_EQ(timer.StartTimer(website, 0, ""), 1);
        At(10, 15);
        return timer.StopTimer(true, 0);
    }
};

TEST_F(StopConflict, AdjustOthers)
{
    ui.choices = {0};
    EXPECT_EQ(StopOverlapping(), 1);
    EXPECT_EQ(Entries(), Strings({"09:30-10:15", "10:15-10:30"}));
    EXPECT_FALSE(timer.IsRunning());
    EXPECT_EQ(ui.shownChanges, Strings({"Globex/Audit 10:00 AM-10:30 AM is now 10:15 AM-10:30 AM."}));
}

TEST_F(StopConflict, AdjustThis)
{
    ui.choices = {1};
    EXPECT_EQ(StopOverlapping(), 1);
    EXPECT_EQ(Entries(), Strings({"09:30-10:00", "10:00-10:30"}));
}

TEST_F(StopConflict, EditByHandThenOk)
{
    ui.choices = {2};
    ui.edits.push_back([](CDay&, CTimeEntry& e) {
        e.m_end = CTinyTime(9, 55);
        return 1;
    });
    EXPECT_EQ(StopOverlapping(), 1);
    EXPECT_EQ(ui.choiceCalls, 1);
    EXPECT_EQ(Entries(), Strings({"09:30-09:55", "10:00-10:30"}));
}

TEST_F(StopConflict, EditByHandThenCancelKeepsTheTimerRunning)
{
    ui.choices = {2};
    ui.edits.push_back([](CDay&, CTimeEntry& e) {
        e.m_start = CTinyTime(8, 0);
        return 2;
    });
    EXPECT_EQ(StopOverlapping(), 0);
    EXPECT_EQ(Entries(), Strings({"09:30-run", "10:00-10:30"}));
    EXPECT_TRUE(timer.IsRunning());
    EXPECT_TRUE(ui.ticking);
}

TEST_F(TimerTest, StopWhoseEntryIsSwallowedByTheAdjustmentEndsTheTimer)
{
    AddEntry(audit, CTinyTime(9, 0), CTinyTime(11, 0));
    At(9, 30);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    At(10, 15);
    ui.choices = {1};
    EXPECT_EQ(timer.StopTimer(true, 0), 1);
    EXPECT_EQ(Entries(), Strings({"09:00-11:00"}));
    EXPECT_TRUE(website->m_timeEntries.empty());
    EXPECT_FALSE(timer.IsRunning());
}

TEST_F(TimerTest, CancelledStartRestoresTheRunningEntry)
{
    app.SetShowTimeEntryOnStart(1);
    At(9, 0);
    ui.edits = {ScriptedTimerUi::Ok()};
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    CTimeEntry* first = timer.GetActiveEntry();

    At(10, 0);
    ui.edits = {ScriptedTimerUi::Cancel()};
    EXPECT_EQ(timer.StartTimer(support, 0, ""), 0);
    EXPECT_EQ(Entries(), Strings({"09:00-run"}));
    EXPECT_EQ(timer.GetActiveEntry(), first);
    EXPECT_TRUE(support->m_timeEntries.empty());
    EXPECT_TRUE(ui.ticking);
    EXPECT_EQ(ui.icon, TimerIcon::running);
}

TEST_F(TimerTest, CancelledStartRebuildsAnEntryThatTheStopDeleted)
{
    app.SetShowTimeEntryOnStart(1);
    At(9, 0, 10);
    ui.edits = {[](CDay&, CTimeEntry& e) {
        e.m_note = "Kick-off";
        return 1;
    }};
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);

    // Within the same minute: the stop deletes the zero-length entry silently.
    At(9, 0, 20);
    ui.edits = {ScriptedTimerUi::Cancel()};
    EXPECT_EQ(timer.StartTimer(support, 0, ""), 0);
    EXPECT_EQ(Entries(), Strings({"09:00-run"}));
    ASSERT_TRUE(timer.IsRunning());
    EXPECT_EQ(timer.GetActiveEntry()->m_taskId, website->m_id);
    EXPECT_EQ(timer.GetActiveEntry()->m_note, "Kick-off");
    EXPECT_EQ(website->m_timeEntries, std::vector<CTimeEntry*>({timer.GetActiveEntry()}));
}

TEST_F(TimerTest, NewEntryResolvedBeforeItIsFiled)
{
    AddEntry(audit, CTinyTime(10, 0), CTinyTime(11, 0));
    CDay* day = doc.GetDay(Date());

    // Trimmed to fit: handed back to the caller, not filed.
    auto pending = std::make_unique<CTimeEntry>();
    pending->m_taskId = website->m_id;
    pending->m_start = CTinyTime(10, 30);
    pending->m_end = CTinyTime(11, 30);
    ui.choices = {1};
    EXPECT_EQ(timer.ResolveTimeConflict(*day, pending), 0);
    ASSERT_TRUE(pending);
    EXPECT_EQ(pending->m_start, CTinyTime(11, 0));
    EXPECT_EQ(Entries(), Strings({"10:00-11:00"}));
    EXPECT_TRUE(website->m_timeEntries.empty());

    // Inside another entry: consumed.
    pending->m_start = CTinyTime(10, 15);
    pending->m_end = CTinyTime(10, 45);
    ui.choices = {1};
    EXPECT_EQ(timer.ResolveTimeConflict(*day, pending), 1);
    EXPECT_FALSE(pending);
    EXPECT_EQ(Entries(), Strings({"10:00-11:00"}));
    EXPECT_TRUE(website->m_timeEntries.empty());
}

TEST_F(TimerTest, AdjustingThisEntryFitsEveryPieceOfASplitAroundTheOthers)
{
    AddEntry(audit, CTinyTime(9, 0), CTinyTime(10, 0));
    AddEntry(audit, CTinyTime(11, 0), CTinyTime(11, 30));
    AddEntry(audit, CTinyTime(12, 0), CTinyTime(13, 0));
    CTimeEntry* wide = AddEntry(website, CTinyTime(8, 0), CTinyTime(14, 0));
    CDay* day = doc.GetDay(Date());

    // The part after each entry inside it is fitted in turn, not left overlapping.
    EXPECT_EQ(timer.AdjustConflicts(*day, *wide, 1), 0);
    EXPECT_EQ(Entries(), Strings({"08:00-09:00", "09:00-10:00", "10:00-11:00", "11:00-11:30",
                                  "11:30-12:00", "12:00-13:00", "13:00-14:00"}));
    EXPECT_EQ(website->m_timeEntries.size(), 4u);
    EXPECT_EQ(audit->m_timeEntries.size(), 3u);
}

TEST_F(TimerTest, DeletingTheRunningEntryElsewhereShowsTheTimerInactive)
{
    At(9, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    At(9, 30);
    doc.UnfileTimeEntry(timer.GetActiveEntry());
    EXPECT_FALSE(timer.IsRunning());
    EXPECT_EQ(ui.icon, TimerIcon::inactive);
    EXPECT_FALSE(ui.ticking);
}
