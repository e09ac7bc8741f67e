#include "checksumdoc.h"
#include "platform/prompter.h"
#include "platform/sharedfile.h"
#include "scratchdir.h"

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

using platform::ScriptedPrompter;
using platform::SharedFile;

namespace
{

std::string ReadOnlyNotice(const std::string& path)
{
    return "File '" + path + "' is not available for updating.\nIt will be opened read-only";
}

std::string InUse(const std::string& path)
{
    return "File '" + path + "' is in use.\nSave with a different name.";
}

bool Exists(const std::string& path) { return std::filesystem::exists(path); }

// Whether a fresh opener would get `path` for writing.
bool IsHeldElsewhere(const std::string& path)
{
    auto probe = SharedFile::OpenShared(path, false);
    return probe && probe->IsReadOnly();
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

// Loads `path` into a fresh document: its generation, or -1 when it does not load.
int64_t GenerationIn(const std::string& path)
{
    CChecksumDoc doc;
    ScriptedPrompter prompter;
    return doc.OnOpenDocument(path, prompter) ? int64_t(doc.GetGeneration()) : -1;
}

} // namespace

TEST(SharedDoc, SaveWritesInPlaceAndLeavesNoBackup)
{
    ScratchDir dir;
    const std::string path = dir.File("Hours.qvx");
    CChecksumDoc doc;
    ScriptedPrompter prompter;
    int saved = 0;
    doc.m_onSaved = [&] { ++saved; };

    doc.SetGeneration(1);
    ASSERT_TRUE(doc.OnSaveDocument(path, prompter));
    EXPECT_EQ(doc.GetPathName(), path);
    EXPECT_TRUE(doc.HoldsFile());
    EXPECT_FALSE(doc.SaveNeedsNewName());
    const ino_t before = [&] { struct stat st{}; ::stat(path.c_str(), &st); return st.st_ino; }();

    doc.SetGeneration(2, 5000);
    ASSERT_TRUE(doc.OnSaveDocument(path, prompter));
    doc.SetGeneration(3, 10);
    ASSERT_TRUE(doc.OnSaveDocument(path, prompter));
    const ino_t after = [&] { struct stat st{}; ::stat(path.c_str(), &st); return st.st_ino; }();
    EXPECT_EQ(before, after) << "the save must rewrite the held file, not replace it";
    EXPECT_FALSE(Exists(path + " Backup"));
    EXPECT_EQ(saved, 3);
    EXPECT_TRUE(prompter.Texts().empty());

    doc.CloseHeldFile();
    EXPECT_EQ(GenerationIn(path), 3);
}

TEST(SharedDoc, SecondOpenerIsReadOnlyAndSaveThereAsksForAnotherName)
{
    ScratchDir dir;
    const std::string path = dir.File("Hours.qvx");
    CChecksumDoc first;
    ScriptedPrompter prompter;
    first.SetGeneration(1);
    ASSERT_TRUE(first.OnSaveDocument(path, prompter));

    CChecksumDoc second;
    ScriptedPrompter secondPrompter;
    ASSERT_TRUE(second.OnOpenDocument(path, secondPrompter));
    EXPECT_TRUE(second.IsReadOnly());
    EXPECT_TRUE(second.SaveNeedsNewName());
    ASSERT_EQ(secondPrompter.Messages().size(), 1u);
    EXPECT_EQ(secondPrompter.Messages()[0], ReadOnlyNotice(path));

    second.SetGeneration(9);
    EXPECT_FALSE(second.OnSaveDocument(path, secondPrompter));
    EXPECT_EQ(secondPrompter.Messages().back(), InUse(path));
    EXPECT_FALSE(Exists(path + " Backup"));

    // Save As to a free name works and the copy now holds that file for writing.
    const std::string other = dir.File("Mine.qvx");
    ASSERT_TRUE(second.OnSaveDocument(other, secondPrompter));
    EXPECT_FALSE(second.IsReadOnly());
    EXPECT_EQ(second.GetPathName(), other);
    EXPECT_TRUE(IsHeldElsewhere(other));

    first.CloseHeldFile();
    EXPECT_EQ(GenerationIn(path), 1);
    EXPECT_EQ(GenerationIn(other), 9);
}

TEST(SharedDoc, SaveAsMovesTheHoldButNotOntoAFileHeldByAnotherCopy)
{
    ScratchDir dir;
    const std::string mine = dir.File("Mine.qvx");
    const std::string theirs = dir.File("Theirs.qvx");
    CChecksumDoc doc, other;
    ScriptedPrompter prompter;
    doc.SetGeneration(1);
    other.SetGeneration(7);
    ASSERT_TRUE(doc.OnSaveDocument(mine, prompter));
    ASSERT_TRUE(other.OnSaveDocument(theirs, prompter));

    doc.SetGeneration(2);
    EXPECT_FALSE(doc.OnSaveDocument(theirs, prompter));
    EXPECT_EQ(prompter.Messages().back(), InUse(theirs));
    EXPECT_EQ(doc.GetPathName(), mine);
    EXPECT_TRUE(IsHeldElsewhere(mine)) << "the current file stays held";
    other.CloseHeldFile();
    EXPECT_EQ(GenerationIn(theirs), 7);

    const std::string moved = dir.File("Moved.qvx");
    ASSERT_TRUE(doc.OnSaveDocument(moved, prompter));
    EXPECT_TRUE(IsHeldElsewhere(moved));
    EXPECT_FALSE(IsHeldElsewhere(mine)) << "the old file is released";
    EXPECT_EQ(GenerationIn(mine), 1);
}

TEST(SharedDoc, OpeningReportsMissingAndDamagedFiles)
{
    ScratchDir dir;
    CChecksumDoc doc;
    ScriptedPrompter prompter;
    const std::string missing = dir.File("missing.qvx");
    EXPECT_FALSE(doc.OnOpenDocument(missing, prompter));
    ASSERT_EQ(prompter.Messages().size(), 1u);
    EXPECT_EQ(prompter.Messages()[0], "Unknown error opening file '" + missing + "'");

    const std::string damaged = dir.File("damaged.qvx");
    WriteText(damaged, "not a document");
    EXPECT_FALSE(doc.OnOpenDocument(damaged, prompter));
    EXPECT_FALSE(doc.HoldsFile()) << "a failed load releases the file";
    EXPECT_TRUE(doc.GetPathName().empty());
    EXPECT_FALSE(IsHeldElsewhere(damaged));
    EXPECT_FALSE(CSharedDoc::HasBackup(damaged));
}

TEST(SharedDoc, FailedBackupCopyLeavesTheFileUntouched)
{
    ScratchDir dir;
    const std::string path = dir.File("Hours.qvx");
    CChecksumDoc doc;
    ScriptedPrompter prompter;
    doc.SetGeneration(1);
    ASSERT_TRUE(doc.OnSaveDocument(path, prompter));
    // A directory where the backup should go makes the copy fail.
    std::filesystem::create_directory(path + " Backup");

    doc.SetGeneration(2);
    EXPECT_FALSE(doc.OnSaveDocument(path, prompter));
    ASSERT_FALSE(prompter.Messages().empty());
    const std::string message = prompter.Messages().back();
    EXPECT_EQ(message.rfind("File copy error ", 0), 0u) << message;
    EXPECT_GT(std::stoul(message.substr(16)), 0u);
    doc.CloseHeldFile();
    EXPECT_EQ(GenerationIn(path), 1);
}

TEST(SharedDoc, FailedWriteKeepsTheBackupWhichRestoresTheFile)
{
    ScratchDir dir;
    const std::string path = dir.File("Hours.qvx");
    // The file-size limit makes the write fail half way; it must not touch this process.
    const std::string report = RunInChild([&]() -> std::string {
        std::signal(SIGXFSZ, SIG_IGN);
        CChecksumDoc doc;
        ScriptedPrompter prompter;
        doc.SetGeneration(1, 100);
        if (!doc.OnSaveDocument(path, prompter))
            return "first save failed";
        struct rlimit limit{4096, 4096};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        doc.SetGeneration(2, 100000);
        if (doc.OnSaveDocument(path, prompter))
            return "the save past the size limit succeeded";
        const std::string expected = "The file '" + path + "' could not be saved: File too large.\n" +
                                     "The previous contents are kept in '" + path + " Backup'.";
        if (prompter.Messages().empty() || prompter.Messages().back() != expected)
            return "unexpected message: " +
                   (prompter.Messages().empty() ? std::string() : prompter.Messages().back());
        return std::string();
    });
    ASSERT_EQ(report, "");
    ASSERT_TRUE(Exists(path + " Backup"));
    EXPECT_EQ(GenerationIn(path), -1) << "the interrupted write left a damaged file";
    ASSERT_TRUE(CSharedDoc::HasBackup(path));

    CChecksumDoc doc;
    ScriptedPrompter prompter;
    ASSERT_TRUE(doc.RestoreFromBackup(path, prompter));
    EXPECT_EQ(doc.GetGeneration(), 1u);
    EXPECT_EQ(doc.GetPathName(), path);
    EXPECT_FALSE(doc.IsReadOnly());
    EXPECT_FALSE(Exists(path + " Backup")) << "written back, the backup has done its work";
    doc.CloseHeldFile();
    EXPECT_EQ(GenerationIn(path), 1);
}

TEST(SharedDoc, BackupNameAndQuestion)
{
    EXPECT_EQ(CSharedDoc::BackupPathFor("/w/Hours.qvx"), "/w/Hours.qvx Backup");
    EXPECT_EQ(CSharedDoc::BackupQuestion("/w/Hours.qvx"),
              "The file '/w/Hours.qvx' could not be read. A backup copy from an interrupted save "
              "was found beside it:\n/w/Hours.qvx Backup\n\nWould you like to open the backup?");
}

TEST(SharedDocProcesses, SecondProcessGetsReadOnlyAndCannotOverwrite)
{
    ScratchDir dir;
    const std::string path = dir.File("Shared.qvx");
    CChecksumDoc holder;
    ScriptedPrompter prompter;
    holder.SetGeneration(1);
    ASSERT_TRUE(holder.OnSaveDocument(path, prompter));

    const std::string report = RunInChild([&]() -> std::string {
        CChecksumDoc doc;
        ScriptedPrompter childPrompter;
        if (!doc.OnOpenDocument(path, childPrompter))
            return "open failed";
        if (!doc.IsReadOnly())
            return "second process got the file for writing";
        if (childPrompter.Messages() != std::vector<std::string>{ReadOnlyNotice(path)})
            return "missing read-only notice";
        doc.SetGeneration(2);
        if (doc.OnSaveDocument(path, childPrompter))
            return "read-only save succeeded";
        if (childPrompter.Messages().back() != InUse(path))
            return "missing in-use message";
        if (SharedFile::OpenShared(path, true))
            return "create-open of a held file succeeded";
        return std::string();
    });
    EXPECT_EQ(report, "");
    holder.SetGeneration(3);
    EXPECT_TRUE(holder.OnSaveDocument(path, prompter)) << "the holder can still save";
    holder.CloseHeldFile();
    EXPECT_EQ(GenerationIn(path), 3);
}

TEST(SharedDocProcesses, HoldEndsWithTheHoldingProcess)
{
    ScratchDir dir;
    const std::string path = dir.File("Shared.qvx");
    {
        CChecksumDoc doc;
        ScriptedPrompter prompter;
        doc.SetGeneration(4);
        ASSERT_TRUE(doc.OnSaveDocument(path, prompter));
    }
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t pid = ::fork();
    if (pid == 0)
    {
        CChecksumDoc doc;
        ScriptedPrompter prompter;
        const char ok = doc.OnOpenDocument(path, prompter) && !doc.IsReadOnly() ? 'y' : 'n';
        (void)!::write(ready[1], &ok, 1);
        for (;;)
            ::pause();
    }
    ::close(ready[1]);
    char ok = 0;
    ASSERT_EQ(::read(ready[0], &ok, 1), 1);
    ::close(ready[0]);
    EXPECT_EQ(ok, 'y');

    CChecksumDoc doc;
    ScriptedPrompter prompter;
    ASSERT_TRUE(doc.OnOpenDocument(path, prompter));
    EXPECT_TRUE(doc.IsReadOnly());
    doc.CloseHeldFile();

    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
    ASSERT_TRUE(doc.OnOpenDocument(path, prompter));
    EXPECT_FALSE(doc.IsReadOnly());
    EXPECT_EQ(doc.GetGeneration(), 4u);
}

// A saver killed at any moment leaves either a loadable file with the old or the new
// contents, or a loadable backup with the old ones.
TEST(SharedDocProcesses, KilledSaverAlwaysLeavesALoadableCopy)
{
    ScratchDir dir;
    const std::string path = dir.File("Crash.qvx");
    constexpr size_t kSize = 4000000;
    constexpr uint32_t kStarting = 0x80000000u; // flag of the "save begins" report

    // How long one save takes here, so that the kills can be spread over a save.
    std::chrono::steady_clock::duration saveTime{};
    {
        CChecksumDoc doc;
        ScriptedPrompter prompter;
        for (uint32_t g = 1; g <= 3; ++g)
        {
            doc.SetGeneration(g, kSize);
            const auto t0 = std::chrono::steady_clock::now();
            ASSERT_TRUE(doc.OnSaveDocument(path, prompter));
            saveTime = std::chrono::steady_clock::now() - t0;
        }
    }
    const auto saveMicros = std::max<int64_t>(
        200, std::chrono::duration_cast<std::chrono::microseconds>(saveTime).count());

    std::mt19937 random(12345);
    int damaged = 0;
    int64_t lastKnown = 3;
    for (int round = 0; round < 20; ++round)
    {
        int progress[2];
        ASSERT_EQ(::pipe(progress), 0);
        const pid_t pid = ::fork();
        if (pid == 0)
        {
            ::close(progress[0]);
            CChecksumDoc doc;
            ScriptedPrompter prompter;
            if (!doc.OnOpenDocument(path, prompter) && !doc.RestoreFromBackup(path, prompter))
                ::_exit(3);
            uint32_t generation = doc.GetGeneration();
            if (::write(progress[1], &generation, 4) != 4)
                ::_exit(4);
            for (;;)
            {
                ++generation;
                doc.SetGeneration(generation, kSize + (generation % 7) * 1000);
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
        std::vector<uint32_t> reports;
        uint32_t value = 0;
        // What the child loaded, then the start of its second save: the kill falls at a
        // random moment of a save, or just after it.
        ASSERT_EQ(::read(progress[0], &value, 4), 4);
        reports.push_back(value);
        int starts = 0;
        while (starts < 2 && ::read(progress[0], &value, 4) == 4)
        {
            reports.push_back(value);
            starts += (value & kStarting) ? 1 : 0;
        }
        ::usleep(useconds_t(
            std::uniform_int_distribution<int64_t>(saveMicros / 3, saveMicros * 6 / 5)(random)));
        ::kill(pid, SIGKILL);
        int status = 0;
        ::waitpid(pid, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the saver stopped on its own, status " << status;
        while (::read(progress[0], &value, 4) == 4)
            reports.push_back(value);
        ::close(progress[0]);

        EXPECT_GE(int64_t(reports.front()), lastKnown) << "a completed save was lost";
        int64_t done = 0;
        for (uint32_t r : reports)
            if (!(r & kStarting))
                done = r;
        const int64_t inFile = GenerationIn(path);
        if (inFile >= 0)
        {
            EXPECT_TRUE(inFile == done || inFile == done + 1)
                << "round " << round << ": file holds " << inFile << ", last save " << done;
        }
        else
        {
            ASSERT_TRUE(CSharedDoc::HasBackup(path)) << "round " << round << ": no loadable copy";
            EXPECT_EQ(GenerationIn(CSharedDoc::BackupPathFor(path)), done) << "round " << round;
            ++damaged;
        }
        lastKnown = done;
    }
    RecordProperty("KilledWhileRewriting", damaged);
}
