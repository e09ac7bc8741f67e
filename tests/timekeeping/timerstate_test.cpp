#include "timerfixture.h"

#include "model/day.h"

using Strings = std::vector<std::string>;

TEST_F(TimerTest, MidnightStopsOnceTheRoundedTimeReachesIt)
{
    app.SetTimeInterval(4);
    app.SetStopAtMidnight(1);
    At(23, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    doc.SetModifiedFlag(false);

    At(23, 52, 29);
    EXPECT_TRUE(timer.OnTimerTick());
    EXPECT_EQ(Entries(), Strings({"23:00-run"}));
    EXPECT_FALSE(doc.IsModified());

    At(23, 52, 30);
    EXPECT_FALSE(timer.OnTimerTick());
    EXPECT_EQ(Entries(), Strings({"23:00-24:00"}));
    EXPECT_TRUE(Entries(1).empty());
    EXPECT_FALSE(timer.IsRunning());
    EXPECT_FALSE(ui.ticking);
    EXPECT_EQ(ui.icon, TimerIcon::inactive);
    EXPECT_TRUE(doc.IsModified());
}

TEST_F(TimerTest, MidnightSplitGivesOneEntryPerDay)
{
    app.SetStopAtMidnight(0);
    At(22, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, "Migration"), 1);

    At(10, 0, 0, 2);
    EXPECT_TRUE(timer.OnTimerTick());
    EXPECT_EQ(Entries(0), Strings({"22:00-24:00"}));
    EXPECT_EQ(Entries(1), Strings({"00:00-24:00"}));
    EXPECT_EQ(Entries(2), Strings({"00:00-run"}));
    CTimeEntry* active = timer.GetActiveEntry();
    ASSERT_NE(active, nullptr);
    EXPECT_EQ(active->m_day, doc.GetDay(Date(2)));
    EXPECT_EQ(active->m_note, "Migration");
    EXPECT_EQ(website->m_timeEntries.size(), 3u);
    EXPECT_EQ(ui.icon, TimerIcon::running);
}

TEST_F(TimerTest, MidnightStopFitsTheClosedEntryAroundAnother)
{
    app.SetStopAtMidnight(1);
    At(22, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    AddEntry(audit, CTinyTime(23, 0), CTinyTime(23, 30));
    At(0, 5, 0, 1);
    EXPECT_FALSE(timer.OnTimerTick());
    EXPECT_EQ(Entries(), Strings({"22:00-23:00", "23:00-23:30", "23:30-24:00"}));
    EXPECT_EQ(ui.choiceCalls, 0);
    EXPECT_EQ(ui.shownChanges, Strings({"Acme/Website 10:00 PM-12:00 AM on 03/11/2024 was split around other "
                                        "entries into 10:00 PM-11:00 PM and 11:30 PM-12:00 AM."}));
}

class OpenedDocument : public TimerTest
{
protected:
    // Saves the document and reads it afresh, as opening its file would.
    void Reopen()
    {
        reopened = qvtest::RoundTrip(doc);
        reopened->m_roundedNow = [this] { return app.RoundTime(app.Now()); };
    }

    // A timer over the reopened document, told that it was opened.
    void OpenTimer()
    {
        reopenedUi = std::make_unique<ScriptedTimerUi>(*reopened);
        reopenedTimer = std::make_unique<CTimer>(*reopened, app, *reopenedUi, prompter);
        reopenedTimer->OnDocumentOpened();
    }

    std::unique_ptr<CTimeKeeperDoc> reopened;
    std::unique_ptr<ScriptedTimerUi> reopenedUi;
    std::unique_ptr<CTimer> reopenedTimer;
};

TEST_F(OpenedDocument, ResumesTheTimerOnTheRunningEntry)
{
    At(9, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    Reopen();
    At(9, 40);
    OpenTimer();
    ASSERT_TRUE(reopenedTimer->IsRunning());
    EXPECT_EQ(reopenedTimer->GetActiveEntry()->m_taskId, website->m_id);
    EXPECT_EQ(reopenedUi->icon, TimerIcon::running);
    EXPECT_EQ(reopenedUi->tip, "Acme/Website  0:40");
    EXPECT_TRUE(reopenedUi->ticking);
    EXPECT_EQ(reopenedTimer->StopTimer(true, 0), 1);
}

TEST_F(OpenedDocument, RunsTheMidnightCheckOnce)
{
    app.SetStopAtMidnight(1);
    At(22, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    Reopen();
    At(8, 0, 0, 1);
    OpenTimer();
    EXPECT_FALSE(reopenedTimer->IsRunning());
    EXPECT_EQ(reopenedUi->icon, TimerIcon::inactive);
    EXPECT_FALSE(reopenedUi->ticking);
    const CDay* day = reopened->GetDay(Date());
    ASSERT_NE(day, nullptr);
    ASSERT_EQ(day->TimeEntries().size(), 1u);
    EXPECT_EQ(day->TimeEntries()[0]->m_end, CTinyTime(24, 0));
    EXPECT_TRUE(reopened->IsModified());
}

TEST_F(TimerTest, RecentTasksKeepTheLatestDistinctOnes)
{
    app.SetRecentTaskCount(3);
    int minute = 0;
    for (CTask* task : {website, support, audit, website, globex})
    {
        At(9, minute += 10);
        ASSERT_EQ(timer.StartTimer(task, 0, ""), 1);
    }
    EXPECT_EQ(doc.m_recentTasks, std::vector<uint32_t>({globex->m_id, website->m_id, audit->m_id}));
    EXPECT_EQ(timer.GetRecentTaskName(1), "Globex");
    EXPECT_EQ(timer.GetRecentTaskName(3), "Globex/Audit");
    EXPECT_EQ(timer.GetRecentTaskName(0), "");
    EXPECT_EQ(timer.GetRecentTaskName(4), "");

    auto menu = timer.GetRecentTaskMenu();
    ASSERT_EQ(menu.size(), 3u);
    EXPECT_EQ(menu[0].name, "Acme/Website");
    EXPECT_EQ(menu[0].commandId, 39001u);
    EXPECT_EQ(menu[0].position, 2);
    EXPECT_EQ(menu[1].name, "Globex");
    EXPECT_EQ(menu[2].name, "Globex/Audit");

    app.SetRecentTaskSortOrder(1);
    menu = timer.GetRecentTaskMenu();
    ASSERT_EQ(menu.size(), 3u);
    EXPECT_EQ(menu[0].name, "Globex");
    EXPECT_EQ(menu[0].commandId, 39000u);

    At(10, 0);
    ASSERT_EQ(timer.StartRecentTask(2), 1);
    EXPECT_EQ(timer.GetActiveEntry()->m_taskId, website->m_id);
    EXPECT_EQ(doc.m_recentTasks, std::vector<uint32_t>({website->m_id, globex->m_id, audit->m_id}));
    EXPECT_EQ(timer.StartRecentTask(4), 0);
}

TEST_F(TimerTest, TipIsShortenedToSixtyThreeCharacters)
{
    At(9, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    At(10, 5);
    // The path and the elapsed suffix each bring their own blank.
    EXPECT_EQ(timer.GetTimerTip(), "Acme/Website  1:05");

    doc.RenameTask(acme, "Consolidated Interplanetary Holdings");
    doc.RenameTask(website, "Website Redesign and Content Migration");
    const std::string full = "Consolidated Interplanetary Holdings/Website Redesign and Content Migration";

    // Only the shown levels, when that fits.
    app.SetShowLevel(2, true);
    EXPECT_EQ(timer.GetTimerTip(), "Website Redesign and Content Migration  1:05");

    // Still too long with every level shown, and with none: cut to fit.
    app.SetShowLevel(1, true);
    std::string tip = timer.GetTimerTip();
    EXPECT_EQ(tip, full.substr(0, 57) + "  1:05");
    EXPECT_EQ(tip.size(), 63u);
    app.SetShowLevel(1, false);
    app.SetShowLevel(2, false);
    EXPECT_EQ(timer.GetTimerTip(), tip);

    ASSERT_EQ(timer.PauseResumeTimer(), 1);
    tip = timer.GetTimerTip();
    EXPECT_EQ(tip, full.substr(0, 56) + " Paused");
    EXPECT_EQ(tip.size(), 63u);
    EXPECT_EQ(ui.tip, tip);
}

TEST_F(TimerTest, PausedTaskSurvivesBetweenRuns)
{
    const std::string path = "/tmp/qv-timer/../qv-timer/Work Log.qvx";
    const std::string key = CTimer::PausedStateKey(path);
    EXPECT_EQ(key, CTimer::PausedStateKey("/tmp/qv-timer/Work Log.qvx"));

    At(9, 0);
    ASSERT_EQ(timer.StartTimer(website, 0, ""), 1);
    At(9, 30);
    ASSERT_EQ(timer.PauseResumeTimer(), 1);
    timer.SavePausedState(store, path);
    EXPECT_EQ(store.GetString(CTimer::kPausedSection, key, ""), std::to_string(website->m_id));

    // A later run reads the document afresh: nothing is paused until restored.
    timer.ClearPausedState();
    EXPECT_FALSE(timer.IsPaused());
    ASSERT_TRUE(timer.RestorePausedState(store, path));
    EXPECT_EQ(timer.GetPausedTask(), website);
    EXPECT_EQ(ui.icon, TimerIcon::paused);

    At(9, 45);
    ASSERT_EQ(timer.PauseResumeTimer(), 1);
    EXPECT_EQ(Entries(), Strings({"09:00-09:30", "09:45-run"}));
    // A running timer wins over a stale paused task.
    EXPECT_FALSE(timer.RestorePausedState(store, path));
    timer.SavePausedState(store, path);
    EXPECT_FALSE(store.Has(CTimer::kPausedSection, key));
}
