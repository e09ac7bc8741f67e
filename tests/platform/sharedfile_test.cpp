#include "platform/sharedfile.h"
#include "scratchdir.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>

using platform::SharedFile;

TEST(SharedFile, FirstOpenerHoldsLaterOpenersReadOnlyUntilReleased)
{
    ScratchDir dir;
    const std::string path = dir.File("Hours.qvx");
    WriteText(path, "old contents");

    auto first = SharedFile::OpenShared(path, false);
    ASSERT_TRUE(first);
    EXPECT_FALSE(first->IsReadOnly());

    // A second open() in the same process has its own open file description, so the
    // hold conflicts with it just as with another process.
    auto second = SharedFile::OpenShared(path, false);
    ASSERT_TRUE(second);
    EXPECT_TRUE(second->IsReadOnly());
    std::vector<uint8_t> bytes;
    ASSERT_TRUE(second->ReadAll(bytes));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "old contents");
    int err = 0;
    EXPECT_FALSE(second->LockForWriting(&err));
    const std::string replacement = "overwritten";
    EXPECT_FALSE(second->Rewrite(reinterpret_cast<const uint8_t*>(replacement.data()),
                                 replacement.size(), &err));
    EXPECT_EQ(ReadText(path), "old contents");

    // With create, a held file is not taken at all (and not truncated).
    EXPECT_FALSE(SharedFile::OpenShared(path, true, &err));
    EXPECT_EQ(ReadText(path), "old contents");

    first.reset();
    auto third = SharedFile::OpenShared(path, false);
    ASSERT_TRUE(third);
    EXPECT_FALSE(third->IsReadOnly());
}

TEST(SharedFile, RewriteReplacesTheWholeContentsAndKeepsTheHold)
{
    ScratchDir dir;
    const std::string path = dir.File("a.qvx");
    WriteText(path, "a much longer old text than the new one");
    auto file = SharedFile::OpenShared(path, false);
    ASSERT_TRUE(file && !file->IsReadOnly());

    const std::string text = "short";
    ASSERT_TRUE(file->LockForWriting());
    ASSERT_TRUE(file->Rewrite(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
    file->UnlockAfterWriting();
    EXPECT_EQ(ReadText(path), "short");

    // Unlocking the save range must not release the hold byte.
    auto other = SharedFile::OpenShared(path, false);
    ASSERT_TRUE(other);
    EXPECT_TRUE(other->IsReadOnly());
}

TEST(SharedFile, OpeningFailsForMissingFilesAndDirectories)
{
    ScratchDir dir;
    int err = 0;
    EXPECT_FALSE(SharedFile::OpenShared(dir.File("missing.qvx"), false, &err));
    EXPECT_EQ(err, ENOENT);
    EXPECT_FALSE(SharedFile::OpenShared(dir.Path(), false, &err));
    EXPECT_NE(err, 0);

    auto created = SharedFile::OpenShared(dir.File("new.qvx"), true);
    ASSERT_TRUE(created);
    EXPECT_FALSE(created->IsReadOnly());
    EXPECT_TRUE(std::filesystem::exists(dir.File("new.qvx")));
}

TEST(SharedFile, CopyReplacesAnOlderCopyAndReportsErrors)
{
    ScratchDir dir;
    WriteText(dir.File("src"), "new");
    WriteText(dir.File("dst"), "older and longer");
    int err = 0;
    ASSERT_TRUE(SharedFile::CopyFile(dir.File("src"), dir.File("dst"), &err));
    EXPECT_EQ(ReadText(dir.File("dst")), "new");

    EXPECT_FALSE(SharedFile::CopyFile(dir.File("nothing"), dir.File("dst2"), &err));
    EXPECT_EQ(err, ENOENT);

    ASSERT_TRUE(SharedFile::DeleteFile(dir.File("dst")));
    EXPECT_FALSE(std::filesystem::exists(dir.File("dst")));
    EXPECT_TRUE(SharedFile::DeleteFile(dir.File("dst"))) << "a missing file counts as removed";
}
