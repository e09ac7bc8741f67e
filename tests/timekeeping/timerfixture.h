#pragma once

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/prompter.h"
#include "platform/settingsstore.h"
#include "timekeeping/timer.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>

// Answers the editor and the conflict question from a script, and records what the
// timer showed. Every question checks that the document lock is free for another
// thread, as it must be while the user is asked.
class ScriptedTimerUi : public TimerUi
{
public:
    using Edit = std::function<int(CDay&, CTimeEntry&)>;

    explicit ScriptedTimerUi(CTimeKeeperDoc& doc) : m_doc(doc) {}

    int EditTimeEntry(CDay& day, CTimeEntry& entry) override
    {
        ++editCalls;
        CheckLockFree("EditTimeEntry");
        EXPECT_TRUE(m_doc.m_editorOpen);
        if (edits.empty())
        {
            ADD_FAILURE() << "unscripted EditTimeEntry";
            return 2;
        }
        Edit edit = edits.front();
        edits.pop_front();
        return edit(day, entry);
    }
    int ChooseConflictResolution() override
    {
        ++choiceCalls;
        CheckLockFree("ChooseConflictResolution");
        if (choices.empty())
        {
            ADD_FAILURE() << "unscripted ChooseConflictResolution";
            return 2;
        }
        const int choice = choices.front();
        choices.pop_front();
        return choice;
    }
    void ShowTimerState(TimerIcon shown, const std::string& shownTip) override
    {
        icon = shown;
        tip = shownTip;
    }
    void ShowEntryChanges(const std::string& text) override { shownChanges.push_back(text); }
    void StartTick() override { ticking = true; }
    void StopTick() override { ticking = false; }

    static Edit Ok() { return [](CDay&, CTimeEntry&) { return 1; }; }
    static Edit Cancel() { return [](CDay&, CTimeEntry&) { return 2; }; }

    std::deque<Edit> edits;
    std::deque<int> choices;
    int editCalls = 0;
    int choiceCalls = 0;
    TimerIcon icon = TimerIcon::inactive;
    std::string tip;
    std::vector<std::string> shownChanges;
    bool ticking = false;

private:
    void CheckLockFree(const char* what)
    {
        const bool free = std::async(std::launch::async, [this] {
                              std::unique_lock lock(m_doc.GetLock(), std::try_to_lock);
                              return lock.owns_lock();
                          }).get();
        EXPECT_TRUE(free) << what << " was called with the document lock held";
    }

    CTimeKeeperDoc& m_doc;
};

// Records whether the document lock was held while a question was asked.
class LockCheckingPrompter : public platform::ScriptedPrompter
{
public:
    explicit LockCheckingPrompter(CTimeKeeperDoc& doc) : m_doc(doc) {}

    platform::Answer AskYesNoCancel(const std::string& text, platform::Icon icon) override
    {
        lockHeldWhileAsking = !std::async(std::launch::async, [this] {
                                   std::unique_lock lock(m_doc.GetLock(), std::try_to_lock);
                                   return lock.owns_lock();
                               }).get();
        return ScriptedPrompter::AskYesNoCancel(text, icon);
    }

    bool lockHeldWhileAsking = false;

private:
    CTimeKeeperDoc& m_doc;
};

// A document with the tasks Acme/Website, Acme/Support and Globex/Audit, a fixed clock
// on Monday 2024-03-11 and the timer over them.
class TimerTest : public ::testing::Test
{
protected:
    TimerTest()
    {
        doc.NewDocument("Pat");
        doc.m_roundedNow = [this] { return app.RoundTime(app.Now()); };
        acme = qvtest::AddTask(doc, doc.GetRootTask(), "Acme");
        website = qvtest::AddTask(doc, acme, "Website");
        support = qvtest::AddTask(doc, acme, "Support");
        globex = qvtest::AddTask(doc, doc.GetRootTask(), "Globex");
        audit = qvtest::AddTask(doc, globex, "Audit");
        doc.SetModifiedFlag(false);
    }

    // Moves the clock to `hour`:`minute`:`second` of the test day plus `dayOffset`.
    void At(int hour, int minute, int second = 0, int dayOffset = 0)
    {
        clock.Set({2024, 3, 11 + dayOffset, hour, minute, second});
    }

    static CDateTime Date(int dayOffset = 0) { return CDateTime::FromDate(2024, 3, 11 + dayOffset); }

    // Files a closed entry of the test day directly, without the timer.
    CTimeEntry* AddEntry(CTask* task, CTinyTime start, CTinyTime end)
    {
        return qvtest::AddTime(doc, task, Date(), start.GetHour(), start.GetMinute(), end.GetHour(),
                               end.GetMinute());
    }

    // "HH:MM-HH:MM" of each time entry of the day, in day order; running ends read "run".
    std::vector<std::string> Entries(int dayOffset = 0)
    {
        std::vector<std::string> result;
        if (CDay* day = doc.GetDay(Date(dayOffset)))
            for (const auto& e : day->TimeEntries())
                result.push_back(e->m_start.ToText() + "-" + (e->IsRunning() ? "run" : e->m_end.ToText()));
        return result;
    }

    platform::SettingsStore store;
    platform::FixedClock clock{{2024, 3, 11, 9, 0, 0}};
    CTimeKeeperApp app{store, clock, platform::LocaleInfo::UnitedStates()};
    CTimeKeeperDoc doc;
    ScriptedTimerUi ui{doc};
    LockCheckingPrompter prompter{doc};
    CTimer timer{doc, app, ui, prompter};
    CTask* acme = nullptr;
    CTask* website = nullptr;
    CTask* support = nullptr;
    CTask* globex = nullptr;
    CTask* audit = nullptr;
};
