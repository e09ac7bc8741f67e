#include "platform/sharedfile.h"
#include "scratchdir.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

using platform::SharedFile;

TEST(SharedFile, FirstOpenerHoldsTheFileLaterOpenersOnlyRead)
{
    ScratchDir dir;
    const std::string path = dir.File("Hours.qvx");
    WriteText(path, "a longer old text");

    auto first = SharedFile::OpenShared(path, false);
    ASSERT_TRUE(first);
    EXPECT_FALSE(first->IsReadOnly());
    // A second open() in this process has its own open file description, so the hold
    // conflicts with it just as with another process.
    auto second = SharedFile::OpenShared(path, false);
    ASSERT_TRUE(second);
    EXPECT_TRUE(second->IsReadOnly());
    const std::string text = "new";
    EXPECT_FALSE(second->Rewrite(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
    int err = 0;
    EXPECT_FALSE(SharedFile::OpenShared(path, true, &err)) << "create never takes a held file";
    EXPECT_EQ(ReadText(path), "a longer old text");

    ASSERT_TRUE(first->LockForWriting());
    ASSERT_TRUE(first->Rewrite(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
    first->UnlockAfterWriting();
    std::vector<uint8_t> bytes;
    ASSERT_TRUE(second->ReadAll(bytes));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "new");
    // Unlocking the range of the save must leave the hold in place.
    EXPECT_TRUE(SharedFile::OpenShared(path, false)->IsReadOnly());

    first.reset();
    auto third = SharedFile::OpenShared(path, false);
    ASSERT_TRUE(third);
    EXPECT_FALSE(third->IsReadOnly());
}

TEST(SharedFile, MissingFilesAndFoldersDoNotOpen)
{
    ScratchDir dir;
    int err = 0;
    EXPECT_FALSE(SharedFile::OpenShared(dir.File("missing.qvx"), false, &err));
    EXPECT_EQ(err, ENOENT);
    EXPECT_FALSE(SharedFile::OpenShared(dir.Path(), false, &err));
    EXPECT_FALSE(SharedFile::OpenShared(dir.Path(), true, &err));
    auto created = SharedFile::OpenShared(dir.File("new.qvx"), true);
    ASSERT_TRUE(created);
    EXPECT_FALSE(created->IsReadOnly());
}

TEST(SharedFile, FailedCopyRemovesWhatItWroteAndKeepsTheReason)
{
    ScratchDir dir;
    const std::string from = dir.File("Hours.qvx");
    WriteText(from, std::string(100000, 'h'));
    int err = 0;
    // A full disk: the reason is the system's, and a device is never removed.
    EXPECT_FALSE(SharedFile::CopyFile(from, "/dev/full", &err));
    EXPECT_EQ(err, ENOSPC);
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
    EXPECT_FALSE(std::filesystem::is_regular_file("/dev/full"));
    // A source that cannot be read leaves an older target alone.
    const std::string to = dir.File("Hours.qvx Backup");
    WriteText(to, "older");
    EXPECT_FALSE(SharedFile::CopyFile(dir.File("missing.qvx"), to, &err));
    EXPECT_EQ(err, ENOENT);
    EXPECT_EQ(ReadText(to), "older");
    ASSERT_TRUE(SharedFile::CopyFile(from, to, &err));
    EXPECT_EQ(ReadText(to), std::string(100000, 'h'));
}

TEST(SharedFile, WaitsForOtherProgramsEndWithinTheLimit)
{
    ScratchDir dir;
    const std::string path = dir.File("Hours.qvx");
    WriteText(path, "contents");
    const auto limit = SharedFile::GetWaitLimit();
    SharedFile::SetWaitLimit(std::chrono::milliseconds(200));
    std::vector<SharedFile::WaitEvent> events;
    SharedFile::SetWaitObserver([&](SharedFile::WaitEvent e, const std::string&)
                                { events.push_back(e); });

    auto holder = SharedFile::OpenShared(path, false);
    auto reader = SharedFile::OpenShared(path, false);
    ASSERT_TRUE(holder && reader && reader->IsReadOnly());
    EXPECT_EQ(reader->GetOtherHolder(), SharedFile::HoldKind::lasting);
    EXPECT_TRUE(events.empty()) << "a lasting holder is not waited for";

    // A save that does not end: the reader gives up with ETIMEDOUT, and says so.
    ASSERT_TRUE(holder->LockForWriting());
    std::vector<uint8_t> bytes;
    int err = 0;
    EXPECT_FALSE(reader->ReadAll(bytes, &err));
    EXPECT_EQ(err, ETIMEDOUT);
    EXPECT_EQ(events, (std::vector<SharedFile::WaitEvent>{SharedFile::WaitEvent::started,
                                                          SharedFile::WaitEvent::finished}));
    holder->UnlockAfterWriting();
    EXPECT_TRUE(reader->ReadAll(bytes, &err));

    // A reader that does not let go keeps a save out just as long.
    holder.reset();
    reader.reset();
    auto brief = SharedFile::OpenShared(path, false, nullptr, SharedFile::HoldKind::brief);
    ASSERT_TRUE(brief && !brief->IsReadOnly());
    auto other = SharedFile::OpenShared(path, false);
    ASSERT_TRUE(other && other->IsReadOnly());
    EXPECT_EQ(other->GetOtherHolder(), SharedFile::HoldKind::brief) << "waited for, then gave up";
    const int fd = ::open(path.c_str(), O_RDONLY);
    ASSERT_TRUE(SharedFile::LockContents(fd, false, path));
    EXPECT_FALSE(brief->LockForWriting(&err));
    EXPECT_EQ(err, ETIMEDOUT);
    ::close(fd);
    EXPECT_TRUE(brief->LockForWriting(&err));
    brief->UnlockAfterWriting();

    SharedFile::SetWaitObserver(nullptr);
    SharedFile::SetWaitLimit(limit);
}
