// Bytes that are no document of this program are named as such, not as a newer version.

#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "platform/prompter.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

using platform::ScriptedPrompter;

namespace
{
LoadResult LoadBytes(const std::vector<uint8_t>& bytes, ScriptedPrompter& prompter)
{
    CTimeKeeperDoc doc;
    const LoadResult r = doc.LoadFromBytes(bytes.data(), bytes.size(), prompter);
    EXPECT_TRUE(doc.m_tasks.empty());
    return r;
}

std::vector<uint8_t> Le32(uint32_t v)
{
    return {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
}
} // namespace

TEST(ForeignFile, TextAndRandomBytesAreNotDocuments)
{
    const std::string passwd = "root:x:0:0:root:/root:/bin/bash\n";
    const std::vector<std::vector<uint8_t>> foreign = {
        std::vector<uint8_t>(passwd.begin(), passwd.end()),
        {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A},
        Le32(CTimeKeeperDoc::kHighestPlausibleVersion + 1),
        Le32(0),
        {0x00, 0x00, 0x00, 0x00, 0x11, 0x22},
    };
    for (const auto& bytes : foreign)
    {
        ScriptedPrompter prompter;
        const LoadResult r = LoadBytes(bytes, prompter);
        EXPECT_EQ(r.status, LoadResult::failed);
        EXPECT_TRUE(r.notDocument);
        EXPECT_EQ(r.error, "not a Quorvane Time & Expense document");
        EXPECT_TRUE(prompter.Messages().empty()) << "no newer-version message";
    }
}

TEST(ForeignFile, PlausibleNewerVersionsKeepTheirMessage)
{
    for (const uint32_t version :
         {CTimeKeeperDoc::kCurrentVersion + 1, CTimeKeeperDoc::kHighestPlausibleVersion})
    {
        ScriptedPrompter prompter;
        const LoadResult r = LoadBytes(Le32(version), prompter);
        EXPECT_EQ(r.status, LoadResult::cancelled) << version;
        EXPECT_FALSE(r.notDocument);
        EXPECT_EQ(prompter.Messages(), std::vector<std::string>{platform::LoadString(40029)});
    }
    // Versions too old to read are still said to be unsupported, not foreign.
    ScriptedPrompter prompter;
    const LoadResult old = LoadBytes(Le32(4), prompter);
    EXPECT_EQ(old.status, LoadResult::failed);
    EXPECT_FALSE(old.notDocument);
    EXPECT_NE(old.error.find("document version 4 is not supported"), std::string::npos)
        << old.error;
}
