#include "model/timekeeperdoc.h"
#include "platform/scratchdir.h"
#include "testsupport.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

// The header value is written back unchanged, so it serves as the number of the save.
int64_t HeaderIn(const std::string& path)
{
    CTimeKeeperDoc doc;
    platform::ScriptedPrompter prompter;
    return doc.OnOpenDocument(path, prompter) ? int64_t(doc.m_headerValue) : -1;
}

} // namespace

// The real document, saved over and over by a process that is killed at a random moment:
// the file always loads with the last or the next contents, or else its backup loads
// with the last ones.
TEST(DocumentFile, KilledSaverAlwaysLeavesALoadableDocument)
{
    ScratchDir dir;
    const std::string path = dir.File("Work.qvx");
    constexpr int kMonths = 4;
    constexpr uint32_t kStarting = 0x80000000u; // flag of the "save begins" report
    std::chrono::steady_clock::duration saveTime{};
    {
        qvtest::SampleDoc sample;
        CTimeKeeperDoc& doc = *sample.doc;
        CTask* const tasks[3] = {sample.website, sample.design, sample.audit};
        for (int month = 1; month <= kMonths; ++month)
            for (int day = 1; day <= 28; ++day)
                for (int hour = 0; hour < 20; ++hour)
                    for (int k = 0; k < 3; ++k)
                        qvtest::AddTime(doc, tasks[k], qvtest::Day(2023, month, day), hour, k * 20, hour,
                                        k * 20 + 15, "note " + std::to_string(day * 100 + hour));
        platform::ScriptedPrompter prompter;
        doc.m_headerValue = 1;
        ASSERT_TRUE(doc.OnSaveDocument(path, prompter));
        for (uint32_t g = 2; g <= 3; ++g)
        {
            doc.m_headerValue = g;
            const auto t0 = std::chrono::steady_clock::now();
            ASSERT_TRUE(doc.OnSaveDocument(path, prompter));
            saveTime = std::chrono::steady_clock::now() - t0;
        }
    }
    const auto saveMicros =
        std::max<int64_t>(200, std::chrono::duration_cast<std::chrono::microseconds>(saveTime).count());

    std::mt19937 random(2024);
    int64_t lastKnown = 3;
    int damaged = 0;
    for (int round = 0; round < 15; ++round)
    {
        int progress[2];
        ASSERT_EQ(::pipe(progress), 0);
        const pid_t pid = ::fork();
        if (pid == 0)
        {
            ::close(progress[0]);
            CTimeKeeperDoc doc;
            platform::ScriptedPrompter prompter;
            if (!doc.OnOpenDocument(path, prompter) && !doc.RestoreFromBackup(path, prompter))
                ::_exit(3);
            uint32_t generation = doc.m_headerValue;
            if (::write(progress[1], &generation, 4) != 4)
                ::_exit(4);
            for (;;)
            {
                doc.m_headerValue = ++generation;
                const uint32_t starting = generation | kStarting;
                if (::write(progress[1], &starting, 4) != 4)
                    ::_exit(4);
                if (!doc.OnSaveDocument(path, prompter))
                    ::_exit(5);
                if (::write(progress[1], &generation, 4) != 4)
                    ::_exit(4);
            }
        }
        ::close(progress[1]);
        uint32_t loaded = 0;
        ASSERT_EQ(::read(progress[0], &loaded, 4), 4);
        // The kill falls at a random moment of the child's second save, or just after it.
        int64_t done = loaded;
        uint32_t value = 0;
        int starts = 0;
        while (starts < 2 && ::read(progress[0], &value, 4) == 4)
        {
            if (value & kStarting)
                ++starts;
            else
                done = value;
        }
        ::usleep(useconds_t(
            std::uniform_int_distribution<int64_t>(saveMicros / 3, saveMicros * 6 / 5)(random)));
        ::kill(pid, SIGKILL);
        int status = 0;
        ::waitpid(pid, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the saver stopped on its own, status " << status;
        while (::read(progress[0], &value, 4) == 4)
            if (!(value & kStarting))
                done = value;
        ::close(progress[0]);

        EXPECT_GE(int64_t(loaded), lastKnown) << "a completed save was lost";
        const int64_t inFile = HeaderIn(path);
        if (inFile >= 0)
            EXPECT_TRUE(inFile == done || inFile == done + 1)
                << "round " << round << ": file holds " << inFile << ", last save " << done;
        else
        {
            ASSERT_TRUE(CSharedDoc::HasBackup(path)) << "round " << round << ": no loadable copy";
            EXPECT_EQ(HeaderIn(CSharedDoc::BackupPathFor(path)), done) << "round " << round;
            ++damaged;
        }
        lastKnown = done;
    }
    RecordProperty("KilledWhileRewriting", damaged);

    // Whatever the last kill left, the document opens with every entry.
    CTimeKeeperDoc doc;
    platform::ScriptedPrompter prompter;
    ASSERT_TRUE(doc.OnOpenDocument(path, prompter) || doc.RestoreFromBackup(path, prompter));
    EXPECT_EQ(doc.CountTimeEntries(), 4u + kMonths * 28 * 20 * 3);
}
