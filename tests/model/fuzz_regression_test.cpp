// Inputs the document-loading fuzzer (fuzz/) found wrong, reduced to their point.

#include "model/archive.h"
#include "model/timekeeperdoc.h"
#include "oldlayouts.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <vector>

namespace
{

using qvtest::At;
using qvtest::LocalSeconds;
using qvtest::StreamBuilder;

// A document of `version` (9 to 11) with one day, 2005-03-01, holding `entry` as its only
// time entry; the entry's body may be of an older version than the document.
std::vector<uint8_t> DocumentWithEntry(uint32_t version, const StreamBuilder& entry)
{
    StreamBuilder b;
    oldlayout::CurrentHead(b, version, 1, 1, 1);
    oldlayout::InheritingTask(b, version, 1, 0, "Pat", 0);
    b.F64(0.0).F64(0.0);
    b.Object("CDay").U32(version).Text("20050301").U32(1).U32(0).U32(0);
    b.Bytes(entry.Data());
    oldlayout::CurrentTail(b);
    b.U32(0);
    return b.Data();
}

TEST(FuzzRegression, OlderEndAtMidnightOfTheStartDayIsTheEndOfTheDay)
{
    // Versions 9 and 10 keep an end on the start's day as its hour and minute; at 00:00
    // that was kept as 00:00, written so, and read back as 24:00 by the next load.
    StreamBuilder v10;
    v10.Object("CTimeEntry").U32(10).U32(1).Date(At(2005, 3, 1, 0, 0)).Date(At(2005, 3, 1, 0, 0));
    v10.Text("").U32(0).U32(0).U32(0);
    for (uint32_t version : {10u, 11u})
    {
        SCOPED_TRACE(version);
        auto doc = qvtest::Load(DocumentWithEntry(version, v10));
        const CDay* day = doc->GetDay("20050301");
        ASSERT_NE(day, nullptr);
        ASSERT_EQ(day->TimeEntries().size(), 1u);
        EXPECT_EQ(day->TimeEntries()[0]->m_end, CTinyTime(24, 0));

        const std::vector<uint8_t> saved = doc->SaveToBytes();
        auto again = qvtest::Load(saved);
        EXPECT_EQ(again->SaveToBytes(), saved) << "the first save changed on reading it back";
    }

    // The same for a version 8 end at local midnight of the start's own date.
    StreamBuilder v8;
    oldlayout::TimeEntry(v8, 8, 4, LocalSeconds(2001, 6, 1, 0, 0), LocalSeconds(2001, 6, 1, 0, 0));
    auto old = oldlayout::ReadOne<CTimeEntry>(v8, "CTimeEntry");
    EXPECT_EQ(old->m_end, CTinyTime(24, 0));
    EXPECT_EQ(old->m_start, CTinyTime(0, 0));
}

} // namespace

TEST(FuzzRegression, OddDetailDefinitionsSaveAndReadBackTheSame)
{
    // A detail definition with an impossible orientation (read sanely in neither form), or
    // an older one selecting task id 0, was kept as read; saved so, it read back in the
    // other form, four bytes off: the saved document no longer loaded ("unexpected end of
    // file"), or saved again to other bytes.
    for (const char* name : {"odd-detail-definition.qvx", "old-detail-definition-with-task-0.qvx"})
    {
        SCOPED_TRACE(name);
        std::ifstream in(std::string(QV_FUZZ_CORPUS_DIR "/") + name, std::ios::binary);
        ASSERT_TRUE(in);
        const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(in),
                                         std::istreambuf_iterator<char>()};
        platform::ScriptedPrompter prompter;
        CTimeKeeperDoc doc;
        ASSERT_EQ(doc.LoadFromBytes(bytes.data(), bytes.size(), prompter).status, LoadResult::loaded);
        ASSERT_EQ(doc.m_reports.size(), 1u);

        const std::vector<uint8_t> saved = doc.SaveToBytes();
        CTimeKeeperDoc again;
        const LoadResult reread = again.LoadFromBytes(saved.data(), saved.size(), prompter);
        ASSERT_EQ(reread.status, LoadResult::loaded) << reread.error;
        EXPECT_EQ(again.SaveToBytes(), saved);
    }
}
