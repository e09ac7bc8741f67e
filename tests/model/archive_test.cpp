#include "model/archive.h"
#include "model/catalogs.h"
#include "model/day.h"
#include "model/task.h"
#include "model/timekeeperdoc.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

using qvtest::StreamBuilder;

namespace
{
std::vector<uint8_t> Written(const std::function<void(CArchive&)>& write)
{
    std::vector<uint8_t> out;
    CArchive ar(out);
    write(ar);
    ar.Flush();
    return out;
}

CArchive Reader(const std::vector<uint8_t>& bytes)
{
    return CArchive(bytes.data(), bytes.size(), &CTimeKeeperDoc::CreateRecord);
}

std::vector<uint8_t> Prefix(const std::vector<uint8_t>& bytes, size_t n)
{
    return std::vector<uint8_t>(bytes.begin(), bytes.begin() + long(n));
}

ArchiveError ErrorOf(const std::function<void()>& read)
{
    try
    {
        read();
    }
    catch (const ArchiveError& e)
    {
        return e;
    }
    ADD_FAILURE() << "the read did not fail";
    return ArchiveError(ArchiveError::badFormat, "", 0, "");
}
} // namespace

TEST(ArchiveText, LengthPrefixTakesTheShortestForm)
{
    struct Case
    {
        size_t length;
        std::vector<uint8_t> prefix;
    };
    const Case cases[] = {
        {0, {0x00}},
        {254, {0xFE}},
        {255, {0xFF, 0xFF, 0x00}},
        {0xFFFD, {0xFF, 0xFD, 0xFF}},
        {0xFFFE, {0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0x00, 0x00}},
    };
    for (const Case& c : cases)
    {
        const std::string text(c.length, 'x');
        const auto bytes = Written([&](CArchive& ar) { ar.WriteString(text); });
        ASSERT_EQ(bytes.size(), c.prefix.size() + c.length) << c.length;
        EXPECT_EQ(Prefix(bytes, c.prefix.size()), c.prefix) << c.length;
        CArchive in = Reader(bytes);
        EXPECT_EQ(in.ReadString(), text) << c.length;
        EXPECT_TRUE(in.AtEnd());
    }
}

TEST(ArchiveText, TextsAreWindows1252InTheStream)
{
    // Every character the code page holds keeps its single byte, the C1 places that
    // Windows-1252 leaves undefined included, so that such files stay byte for byte.
    const auto bytes =
        Written([](CArchive& ar) { ar.WriteString("caf\xC3\xA9 \xE2\x82\xAC \xC5\xB8\xC2\x81?"); });
    const std::vector<uint8_t> expected = {10,   'c', 'a',  'f',  0xE9, ' ',
                                           0x80, ' ', 0x9F, 0x81, '?'};
    EXPECT_EQ(bytes, expected);
    CArchive in = Reader(bytes);
    EXPECT_EQ(in.ReadString(), "caf\xC3\xA9 \xE2\x82\xAC \xC5\xB8\xC2\x81?");
    // A malformed byte is no character of any script: it stays "?" in the 8-bit form.
    EXPECT_EQ(Written(
                  [](CArchive& ar)
                  {
                      ar.WriteString("a\xFF"
                                     "b");
                  }),
              (std::vector<uint8_t>{3, 'a', '?', 'b'}));
}

TEST(ArchiveText, OtherScriptsTakeTheSixteenBitForm)
{
    // "Café 😀 日本": the emoji is a surrogate pair, so 10 UTF-16 units.
    const std::string text = "Caf\xC3\xA9 \xF0\x9F\x98\x80 \xE6\x97\xA5\xE6\x9C\xAC";
    const auto bytes = Written([&](CArchive& ar) { ar.WriteString(text); });
    const std::vector<uint8_t> expected = {0xFF, 0xFE, 0xFF, 10, 'C',  0,    'a',  0,
                                           'f',  0,    0xE9, 0,  ' ',  0,    0x3D, 0xD8,
                                           0x00, 0xDE, ' ',  0,  0xE5, 0x65, 0x2C, 0x67};
    EXPECT_EQ(bytes, expected);
    CArchive in = Reader(bytes);
    EXPECT_EQ(in.ReadString(), text);

    // Long texts take the longer length prefixes inside the marker, counted in units.
    for (const size_t units :
         {size_t(254), size_t(255), size_t(0xFFFD), size_t(0xFFFE), size_t(70000)})
    {
        std::string greek;
        for (size_t i = 0; i < units; ++i)
            greek += "\xCE\xA9"; // Ω
        const auto long16 = Written(
            [&](CArchive& ar)
            {
                ar.WriteString(greek);
                ar.WriteString("end");
            });
        const size_t prefix = units < 0xFF ? 1 : units < 0xFFFE ? 3 : 7;
        ASSERT_EQ(long16.size(), 3 + prefix + 2 * units + 4) << units;
        CArchive back = Reader(long16);
        EXPECT_EQ(back.ReadString(), greek) << units;
        EXPECT_EQ(back.ReadString(), "end") << units;
        EXPECT_TRUE(back.AtEnd());
    }

    // What is not a character becomes U+FFFD rather than a lone surrogate in the file.
    const auto odd = Written([](CArchive& ar) { ar.WriteString("\xE6\x97\xA5\xED\xA0\x80"); });
    CArchive oddIn = Reader(odd);
    EXPECT_EQ(oddIn.ReadString(), "\xE6\x97\xA5\xEF\xBF\xBD");
}

TEST(ArchiveText, SixteenBitMarkerIsReadAsUtf16)
{
    StreamBuilder b;
    b.Bytes({0xFF, 0xFE, 0xFF, 0x03}).Bytes({'A', 0x00, 0xE9, 0x00, 0xAC, 0x20});
    b.Text("next");
    CArchive in = Reader(b.Data());
    EXPECT_EQ(in.ReadString(), "A\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(in.ReadString(), "next");
}

TEST(ArchiveValues, CountsAndDates)
{
    const auto bytes = Written([](CArchive& ar) {
        ar.WriteCount(0xFFFE);
        ar.WriteCount(0xFFFF);
    });
    EXPECT_EQ(bytes, (std::vector<uint8_t>{0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00}));

    StreamBuilder b;
    b.Date(CDateTime::null, 45000.5).Date(CDateTime::valid, 25569.25).Date(7, 1.0);
    CArchive in = Reader(b.Data());
    EXPECT_TRUE(in.ReadDate().IsNull());
    const CDateTime d = in.ReadDate();
    EXPECT_TRUE(d.IsValid());
    EXPECT_EQ(d.Format("%Y-%m-%d %H:%M"), "1970-01-01 06:00");
    EXPECT_EQ(in.ReadDate().GetStatus(), CDateTime::invalid);
}

TEST(ArchiveObjects, ClassesAndObjectsShareOneRunningIndex)
{
    CTask first, second;
    CDay day(CDateTime::FromDate(2024, 1, 2));
    const size_t taskTagSize = 2 + 2 + 2 + 5;
    const size_t oneTask = Written([&](CArchive& ar) { ar.WriteObject(first); }).size();
    const size_t taskBody = oneTask - taskTagSize;

    const auto bytes = Written([&](CArchive& ar) {
        ar.WriteObject(first);
        ar.WriteObject(second);
        ar.WriteObject(day);
    });
    EXPECT_EQ(Prefix(bytes, taskTagSize),
              (std::vector<uint8_t>{0xFF, 0xFF, 0x00, 0x00, 0x05, 0x00, 'C', 'T', 'a', 's', 'k'}));
    EXPECT_EQ(bytes[oneTask], 0x01);
    EXPECT_EQ(bytes[oneTask + 1], 0x80);
    const size_t dayTag = oneTask + 2 + taskBody;
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + long(dayTag), bytes.begin() + long(dayTag) + 10),
              (std::vector<uint8_t>{0xFF, 0xFF, 0x00, 0x00, 0x04, 0x00, 'C', 'D', 'a', 'y'}));

    // Read back, then a reference to the day (index 5) and a null reference.
    StreamBuilder b;
    b.Bytes(bytes).U16(5).NullReference().U16(4);
    CArchive in = Reader(b.Data());
    EXPECT_NE(in.ReadObject("CTask"), nullptr);
    EXPECT_NE(in.ReadObject("CTask"), nullptr);
    EXPECT_NE(in.ReadObject("CDay"), nullptr);
    EXPECT_EQ(in.ReadObject("CDay"), nullptr);
    EXPECT_EQ(in.ReadObject("CDay"), nullptr);
    // Index 4 is the class CDay, not an object.
    EXPECT_EQ(ErrorOf([&] { in.ReadObject("CDay"); }).GetKind(), ArchiveError::badClass);
}

TEST(ArchiveObjects, BigIndexesUseTheEscape)
{
    // Class 1 and objects 2 to 32767 leave the next class at index 32768.
    constexpr int kTypes = 32766;
    std::vector<std::unique_ptr<CExpenseType>> types;
    for (int i = 0; i < kTypes; ++i)
        types.push_back(std::make_unique<CExpenseType>());
    CPaymentMethod a, b;
    const auto bytes = Written([&](CArchive& ar) {
        for (auto& t : types)
            ar.WriteObject(*t);
        ar.WriteObject(a);
        ar.WriteObject(b);
    });
    const size_t methodSize = Written([&](CArchive& ar) { ar.WriteObject(b); }).size();
    const size_t methodBody = methodSize - (2 + 2 + 2 + 14);
    const size_t secondTag = bytes.size() - methodBody - 6;
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + long(secondTag), bytes.begin() + long(secondTag) + 6),
              (std::vector<uint8_t>{0xFF, 0x7F, 0x00, 0x80, 0x00, 0x80}));

    StreamBuilder refs;
    // The second payment method is object 32770; refer to it with the escape.
    refs.Bytes(bytes).U16(0x7FFF).U32(32770);
    CArchive in = Reader(refs.Data());
    for (int i = 0; i < kTypes; ++i)
        ASSERT_NE(in.ReadObject("CExpenseType"), nullptr);
    EXPECT_NE(in.ReadObject("CPaymentMethod"), nullptr);
    EXPECT_NE(in.ReadObject("CPaymentMethod"), nullptr);
    EXPECT_EQ(in.ReadObject("CPaymentMethod"), nullptr);
    EXPECT_TRUE(in.AtEnd());
}

TEST(ArchiveObjects, MalformedTagsAreFormatErrors)
{
    StreamBuilder unknown;
    unknown.Object("CMystery").U32(11);
    EXPECT_EQ(ErrorOf([&] { Reader(unknown.Data()).ReadObject("CMystery"); }).GetKind(),
              ArchiveError::badClass);

    StreamBuilder wrong;
    wrong.Object("CDay").U32(11).Text("20240102").U32(0).U32(0).U32(0);
    const ArchiveError e = ErrorOf([&] { Reader(wrong.Data()).ReadObject("CTask"); });
    EXPECT_EQ(e.GetKind(), ArchiveError::badClass);
    EXPECT_EQ(e.GetOffset(), 0u);

    StreamBuilder unregistered;
    unregistered.U16(0x8003);
    EXPECT_EQ(ErrorOf([&] { Reader(unregistered.Data()).ReadObject("CTask"); }).GetKind(),
              ArchiveError::badClass);
}

TEST(ArchiveObjects, ErrorsNameTheRecordAndOffset)
{
    StreamBuilder future;
    future.Object("CExpenseType").U32(12);
    const ArchiveError schema = ErrorOf([&] { Reader(future.Data()).ReadObject("CExpenseType"); });
    EXPECT_EQ(schema.GetKind(), ArchiveError::badSchema);
    EXPECT_EQ(schema.GetRecord(), "CExpenseType");
    EXPECT_EQ(schema.GetOffset(), 18u);

    StreamBuilder cut;
    cut.Object("CExpenseType").U32(11).U32(3).Text("Gas");
    const ArchiveError eof = ErrorOf([&] { Reader(cut.Data()).ReadObject("CExpenseType"); });
    EXPECT_EQ(eof.GetKind(), ArchiveError::endOfFile);
    EXPECT_EQ(eof.GetRecord(), "CExpenseType");
    EXPECT_EQ(eof.GetOffset(), cut.Size());
}
