#include "model/timekeeperdoc.h"
#include "platform/scratchdir.h"
#include "platform/sharedfile.h"
#include "testsupport.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// The document's hold on its file and its save, with real documents and real processes.
// The header value is written back unchanged, so it serves to tell one save from another.
namespace
{

using platform::ScriptedPrompter;

std::string ReadOnlyNotice(const std::string& path)
{
    return "File '" + path + "' is not available for updating.\nIt will be opened read-only";
}

std::string InUse(const std::string& path)
{
    return "File '" + path + "' is in use.\nSave with a different name.";
}

bool HeldElsewhere(const std::string& path)
{
    auto probe = platform::SharedFile::OpenShared(path, false);
    return probe && probe->IsReadOnly();
}

// The header value of the document at `path`, or -1 when it does not load.
int64_t HeaderIn(const std::string& path)
{
    CTimeKeeperDoc doc;
    ScriptedPrompter prompter;
    return doc.OnOpenDocument(path, prompter) ? int64_t(doc.m_headerValue) : -1;
}

std::unique_ptr<CTimeKeeperDoc> SavedDoc(const std::string& path, uint32_t header)
{
    auto doc = qvtest::NewDoc();
    doc->m_headerValue = header;
    ScriptedPrompter prompter;
    EXPECT_TRUE(doc->OnSaveDocument(path, prompter)) << path;
    return doc;
}

ino_t Inode(const std::string& path)
{
    struct stat st{};
    ::stat(path.c_str(), &st);
    return st.st_ino;
}

// Runs `body` in a forked child process; returns what it reports (empty: all well).
std::string RunInChild(const std::function<std::string()>& body)
{
    int fds[2];
    if (::pipe(fds) != 0)
        return "pipe failed";
    const pid_t pid = ::fork();
    if (pid == 0)
    {
        ::close(fds[0]);
        const std::string report = body();
        if (!report.empty() && ::write(fds[1], report.data(), report.size()) < 0)
            ::_exit(2);
        ::_exit(0);
    }
    ::close(fds[1]);
    std::string report;
    char buffer[256];
    ssize_t n;
    while ((n = ::read(fds[0], buffer, sizeof buffer)) > 0)
        report.append(buffer, size_t(n));
    ::close(fds[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        report += " (child ended abnormally)";
    return report;
}

} // namespace

TEST(DocumentFile, SaveRewritesTheHeldFileInPlaceAndRemovesTheBackup)
{
    ScratchDir dir;
    const std::string path = dir.File("Hours.qvx");
    auto doc = SavedDoc(path, 1);
    int saves = 0;
    doc->m_onSaved = [&] { ++saves; };
    const ino_t inode = Inode(path);
    ScriptedPrompter prompter;
    doc->m_headerValue = 2;
    qvtest::AddTask(*doc, doc->GetRootTask(), "Acme");
    ASSERT_TRUE(doc->OnSaveDocument(path, prompter));
    // Replacing the file would leave the hold on a deleted one.
    EXPECT_EQ(Inode(path), inode);
    EXPECT_TRUE(HeldElsewhere(path));
    EXPECT_FALSE(std::filesystem::exists(path + " Backup"));
    EXPECT_EQ(saves, 1);
    EXPECT_TRUE(prompter.Texts().empty());
    doc->CloseHeldFile();
    EXPECT_EQ(HeaderIn(path), 2);
}

TEST(DocumentFile, SecondCopyIsReadOnlyAndSavesOnlyUnderAnotherName)
{
    ScratchDir dir;
    const std::string path = dir.File("Hours.qvx");
    const std::string mine = dir.File("Mine.qvx");
    auto first = SavedDoc(path, 1);

    CTimeKeeperDoc second;
    ScriptedPrompter prompter;
    ASSERT_TRUE(second.OnOpenDocument(path, prompter));
    EXPECT_TRUE(second.IsReadOnly());
    EXPECT_TRUE(second.SaveNeedsNewName());
    EXPECT_EQ(prompter.Messages(), std::vector<std::string>{ReadOnlyNotice(path)});
    second.m_headerValue = 9;
    EXPECT_FALSE(second.OnSaveDocument(path, prompter));
    EXPECT_EQ(prompter.Messages().back(), InUse(path));

    // Save As a free name moves the hold there.
    ASSERT_TRUE(second.OnSaveDocument(mine, prompter));
    EXPECT_FALSE(second.IsReadOnly());
    EXPECT_EQ(second.GetPathName(), mine);
    EXPECT_TRUE(HeldElsewhere(mine));

    // Save As onto the file the first copy holds fails and keeps the current hold.
    EXPECT_FALSE(second.OnSaveDocument(path, prompter));
    EXPECT_EQ(prompter.Messages().back(), InUse(path));
    EXPECT_EQ(second.GetPathName(), mine);
    EXPECT_TRUE(HeldElsewhere(mine));

    first->CloseHeldFile();
    EXPECT_EQ(HeaderIn(path), 1);
    ASSERT_TRUE(second.OnSaveDocument(path, prompter));
    EXPECT_FALSE(HeldElsewhere(mine)) << "the previous file is released";
    EXPECT_EQ(HeaderIn(mine), 9);
}

TEST(DocumentFile, OpeningReportsMissingAndDamagedFiles)
{
    ScratchDir dir;
    CTimeKeeperDoc doc;
    ScriptedPrompter prompter;
    const std::string missing = dir.File("missing.qvx");
    EXPECT_FALSE(doc.OnOpenDocument(missing, prompter));
    EXPECT_EQ(prompter.Messages(), std::vector<std::string>{"Unknown error opening file '" + missing + "'"});

    const std::string damaged = dir.File("damaged.qvx");
    WriteText(damaged, "not a document");
    EXPECT_FALSE(doc.OnOpenDocument(damaged, prompter));
    EXPECT_FALSE(doc.HoldsFile()) << "a failed load releases the file";
    EXPECT_TRUE(doc.GetPathName().empty()) << "nothing may be saved over it by accident";
    EXPECT_FALSE(CSharedDoc::HasBackup(damaged));
}

TEST(DocumentFile, FailedCopyOrWriteAlwaysLeavesALoadableCopy)
{
    ScratchDir dir;
    const std::string path = dir.File("Hours.qvx");
    auto doc = SavedDoc(path, 1);
    ScriptedPrompter prompter;

    // A folder where the backup goes: the copy fails and the file is not touched.
    std::filesystem::create_directory(path + " Backup");
    doc->m_headerValue = 2;
    EXPECT_FALSE(doc->OnSaveDocument(path, prompter));
    ASSERT_FALSE(prompter.Messages().empty());
    const std::string message = prompter.Messages().back();
    EXPECT_EQ(message.rfind("File copy error ", 0), 0u) << message;
    EXPECT_GT(std::stoul(message.substr(16)), 0u) << "the system's error code";
    std::filesystem::remove(path + " Backup");
    doc.reset();
    EXPECT_EQ(HeaderIn(path), 1);

    // The file-size limit cuts the write short; it must not reach this process.
    const std::string report = RunInChild([&]() -> std::string {
        std::signal(SIGXFSZ, SIG_IGN);
        CTimeKeeperDoc child;
        ScriptedPrompter childPrompter;
        if (!child.OnOpenDocument(path, childPrompter))
            return "open failed";
        const off_t size = std::filesystem::file_size(path);
        struct rlimit limit{rlim_t(size + 512), rlim_t(size + 512)};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        for (int i = 0; i < 200; ++i)
            qvtest::AddTask(child, child.GetRootTask(), "Task number " + std::to_string(i));
        const std::string expected = "The file '" + path + "' could not be saved: File too large.\n" +
                                     "The previous contents are kept in '" + path + " Backup'.";
        // Trying again must not copy the damaged file over the good backup.
        for (int attempt = 0; attempt < 2; ++attempt)
        {
            if (child.OnSaveDocument(path, childPrompter))
                return "the save past the size limit succeeded";
            if (childPrompter.Messages().back() != expected)
                return childPrompter.Messages().back();
        }
        return std::string();
    });
    ASSERT_EQ(report, "");
    EXPECT_EQ(HeaderIn(path), -1) << "the cut-off write left a damaged file";
    ASSERT_TRUE(CSharedDoc::HasBackup(path));

    CTimeKeeperDoc restored;
    ASSERT_TRUE(restored.RestoreFromBackup(path, prompter));
    EXPECT_EQ(restored.m_headerValue, 1u);
    EXPECT_FALSE(restored.IsReadOnly());
    EXPECT_FALSE(std::filesystem::exists(path + " Backup")) << "written back, the backup is done";
    restored.CloseHeldFile();
    EXPECT_EQ(HeaderIn(path), 1);
}

TEST(DocumentFile, AnotherProcessGetsTheFileReadOnlyUntilTheHolderEnds)
{
    ScratchDir dir;
    const std::string path = dir.File("Shared.qvx");
    auto holder = SavedDoc(path, 1);
    const std::string report = RunInChild([&]() -> std::string {
        CTimeKeeperDoc doc;
        ScriptedPrompter prompter;
        if (!doc.OnOpenDocument(path, prompter) || !doc.IsReadOnly())
            return "the second process did not get the file read-only";
        if (prompter.Messages() != std::vector<std::string>{ReadOnlyNotice(path)})
            return "no read-only notice";
        doc.m_headerValue = 2;
        if (doc.OnSaveDocument(path, prompter) || prompter.Messages().back() != InUse(path))
            return "the read-only copy saved";
        return std::string();
    });
    EXPECT_EQ(report, "");
    holder.reset();

    // A holder that is killed loses its hold with its life.
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t pid = ::fork();
    if (pid == 0)
    {
        CTimeKeeperDoc doc;
        ScriptedPrompter prompter;
        const char ok = doc.OnOpenDocument(path, prompter) && !doc.IsReadOnly() ? 'y' : 'n';
        (void)!::write(ready[1], &ok, 1);
        for (;;)
            ::pause();
    }
    char ok = 0;
    ASSERT_EQ(::read(ready[0], &ok, 1), 1);
    EXPECT_EQ(ok, 'y');
    EXPECT_TRUE(HeldElsewhere(path));
    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
    EXPECT_FALSE(HeldElsewhere(path));
}

// A process saving over and over is killed at a random moment of a save: the file then
// loads with the last or the next contents, or else its backup loads with the last ones.
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
        ScriptedPrompter prompter;
        for (uint32_t g = 1; g <= 3; ++g)
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
            ScriptedPrompter prompter;
            if (!doc.OnOpenDocument(path, prompter) && !doc.RestoreFromBackup(path, prompter))
                ::_exit(3);
            uint32_t generation = doc.m_headerValue;
            if (::write(progress[1], &generation, 4) != 4)
                ::_exit(4);
            for (;;)
            {
                doc.m_headerValue = ++generation;
                const uint32_t starting = generation | kStarting;
                if (::write(progress[1], &starting, 4) != 4 || !doc.OnSaveDocument(path, prompter) ||
                    ::write(progress[1], &generation, 4) != 4)
                    ::_exit(4);
            }
        }
        ::close(progress[1]);
        uint32_t loaded = 0;
        ASSERT_EQ(::read(progress[0], &loaded, 4), 4);
        EXPECT_GE(int64_t(loaded), lastKnown) << "a completed save was lost";
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

    CTimeKeeperDoc doc;
    ScriptedPrompter prompter;
    ASSERT_TRUE(doc.OnOpenDocument(path, prompter) || doc.RestoreFromBackup(path, prompter));
    EXPECT_EQ(doc.CountTimeEntries(), 4u + kMonths * 28 * 20 * 3);
}
