#include "app/autosave.h"
#include "model/timekeeperdoc.h"
#include "platform/scratchdir.h"
#include "testsupport.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace
{

// The quiet time before a save: 20 steps of 5 ms.
constexpr auto kStep = 5ms;
constexpr int kSteps = 20;
constexpr auto kQuiet = kStep * kSteps;

// A saved document at a path, with the saves counted.
struct SavedDoc
{
    SavedDoc()
    {
        doc = qvtest::NewDoc();
        path = dir.File("Auto.qvx");
        doc->m_onSaved = [this] {
            lastSave = Clock::now();
            ++saves;
        };
        EXPECT_TRUE(doc->OnSaveDocument(path, prompter));
        doc->SetModifiedFlag(false);
        saves = 0;
    }

    void Change(const std::string& name)
    {
        lastChange = Clock::now();
        qvtest::AddTask(*doc, doc->GetRootTask(), name);
    }

    // Waits until `count` saves happened, or gives up after a generous while.
    bool WaitForSaves(int count)
    {
        const auto deadline = Clock::now() + 10s;
        while (saves.load() < count && Clock::now() < deadline)
            std::this_thread::sleep_for(2ms);
        return saves.load() >= count;
    }

    ScratchDir dir;
    std::string path;
    std::unique_ptr<CTimeKeeperDoc> doc;
    platform::ScriptedPrompter prompter;
    std::atomic<int> saves{0};
    Clock::time_point lastChange;
    Clock::time_point lastSave;
};

} // namespace

TEST(AutoSave, BurstOfChangesEndsInOneSaveAfterTheLastChange)
{
    SavedDoc f;
    platform::ScriptedPrompter messages;
    CAutoSave autoSave(*f.doc, messages, [] { return true; }, kStep, kSteps);
    for (int i = 0; i < 10; ++i)
    {
        f.Change("Task " + std::to_string(i));
        std::this_thread::sleep_for(kQuiet / 5);
    }
    ASSERT_TRUE(f.WaitForSaves(1));
    EXPECT_GE(f.lastSave - f.lastChange, kQuiet) << "saved before the changes had settled";
    std::this_thread::sleep_for(kQuiet * 3);
    EXPECT_EQ(f.saves.load(), 1);
    EXPECT_FALSE(f.doc->IsModified());
    EXPECT_TRUE(messages.Texts().empty());

    f.doc->CloseHeldFile();
    CTimeKeeperDoc reread;
    platform::ScriptedPrompter prompter;
    ASSERT_TRUE(reread.OnOpenDocument(f.path, prompter));
    EXPECT_EQ(reread.m_tasks.size(), 11u);
}

TEST(AutoSave, NothingIsSavedWhenSwitchedOffOrReadOnly)
{
    SavedDoc f;
    platform::ScriptedPrompter messages;
    std::atomic<bool> enabled{false};
    {
        CAutoSave autoSave(*f.doc, messages, [&] { return enabled.load(); }, kStep, kSteps);
        f.Change("while off");
        std::this_thread::sleep_for(kQuiet * 4);
        EXPECT_EQ(f.saves.load(), 0);
        EXPECT_TRUE(f.doc->IsModified());
        EXPECT_FALSE(autoSave.SaveOnClose()) << "with automatic saving off the user is asked";
        EXPECT_EQ(f.saves.load(), 0);
    }

    // A second copy of the same file is read-only: it never saves on its own.
    CTimeKeeperDoc second;
    platform::ScriptedPrompter prompter;
    ASSERT_TRUE(second.OnOpenDocument(f.path, prompter));
    ASSERT_TRUE(second.IsReadOnly());
    int secondSaves = 0;
    second.m_onSaved = [&] { ++secondSaves; };
    enabled = true;
    CAutoSave autoSave(second, messages, [&] { return enabled.load(); }, kStep, kSteps);
    qvtest::AddTask(second, second.GetRootTask(), "in the read-only copy");
    std::this_thread::sleep_for(kQuiet * 4);
    EXPECT_EQ(secondSaves, 0);
    EXPECT_TRUE(messages.Texts().empty());
    EXPECT_FALSE(autoSave.SaveOnClose()) << "a read-only copy needs the Save As question";
}

TEST(AutoSave, FailureStopsAutomaticSavingUntilASaveSucceeds)
{
    SavedDoc f;
    platform::ScriptedPrompter messages;
    CAutoSave autoSave(*f.doc, messages, [] { return true; }, kStep, kSteps);
    // A folder where the backup goes makes the save fail.
    std::filesystem::create_directory(f.path + " Backup");
    f.Change("first");
    const auto deadline = Clock::now() + 10s;
    while (!autoSave.HasFailed() && Clock::now() < deadline)
        std::this_thread::sleep_for(2ms);
    ASSERT_TRUE(autoSave.HasFailed());
    std::this_thread::sleep_for(kQuiet / 2); // the message follows the release of the lock
    ASSERT_EQ(messages.Messages().size(), 1u);
    EXPECT_EQ(messages.Messages()[0].rfind("File copy error ", 0), 0u) << messages.Messages()[0];

    std::filesystem::remove(f.path + " Backup");
    f.Change("second");
    std::this_thread::sleep_for(kQuiet * 4);
    EXPECT_EQ(f.saves.load(), 0) << "no automatic save after a failure";
    EXPECT_EQ(messages.Messages().size(), 1u);
    EXPECT_FALSE(autoSave.SaveOnClose()) << "after a failure the user is asked";

    // The user's own save succeeds: automatic saving resumes.
    platform::ScriptedPrompter prompter;
    ASSERT_TRUE(f.doc->OnSaveDocument(f.path, prompter));
    f.doc->SetModifiedFlag(false);
    EXPECT_FALSE(autoSave.HasFailed());
    f.Change("third");
    ASSERT_TRUE(f.WaitForSaves(2));
    EXPECT_FALSE(f.doc->IsModified());
}

TEST(AutoSave, SaveOnCloseSavesWithoutAsking)
{
    SavedDoc f;
    platform::ScriptedPrompter messages;
    // A long quiet time, so that only the close saves.
    CAutoSave autoSave(*f.doc, messages, [] { return true; }, 1s, 60);
    EXPECT_TRUE(autoSave.SaveOnClose()) << "nothing to ask for an unmodified document";
    EXPECT_EQ(f.saves.load(), 0);
    f.Change("before closing");
    EXPECT_TRUE(autoSave.SaveOnClose());
    EXPECT_EQ(f.saves.load(), 1);
    EXPECT_FALSE(f.doc->IsModified());

    // A new document without a path cannot be saved without asking for a name.
    f.doc->NewDocument("Someone Else");
    f.Change("unsaved");
    EXPECT_FALSE(autoSave.SaveOnClose());
    EXPECT_FALSE(autoSave.HasFailed());
}
