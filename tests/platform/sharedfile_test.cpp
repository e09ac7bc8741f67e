#include "platform/sharedfile.h"
#include "scratchdir.h"

#include <cerrno>
#include <gtest/gtest.h>

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
