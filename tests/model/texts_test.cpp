// Texts of every script survive a save: what Windows-1252 holds is written in it, the
// rest in the archive's 16-bit form.

#include "model/timekeeperdoc.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
struct Script
{
    const char* name;
    std::string text;
};

const Script kScripts[] = {
    {"Latin beyond the code page", "\xC5\x81\xC3\xB3"
                                   "d\xC5\xBA \xC5\x91r \xC4\x8C"},     // Łódź őr Č
    {"Greek", "\xCE\x95\xCE\xBB\xCE\xBB\xCE\xAC\xCE\xB4\xCE\xB1"},      // Ελλάδα
    {"Cyrillic", "\xD0\x9C\xD0\xBE\xD1\x81\xD0\xBA\xD0\xB2\xD0\xB0"},   // Москва
    {"CJK", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E \xED\x95\x9C"},       // 日本語 한
    {"emoji", "Caf\xC3\xA9 \xF0\x9F\x98\x80 \xE6\x97\xA5\xE6\x9C\xAC"}, // Café 😀 日本
};

// Puts `text` into every kind of record that carries a name or a note.
void Label(CTimeKeeperDoc& doc, qvtest::SampleDoc& s, const std::string& text)
{
    s.website->m_notes = "notes " + text;
    s.design->m_abbreviation = text;
    s.design->m_taskId = "ID " + text;
    s.design->m_useParentTaskId = false;
    doc.RenameTask(s.audit, text);
    doc.GetDay("20240311")->TimeEntries()[0]->m_note = "time " + text;
    doc.GetDay("20240311")->ExpenseEntries()[0]->m_note = "expense " + text;
    doc.m_todoList[0]->m_description = "to do " + text;
    doc.AddActivity("activity " + text);
    doc.AddExpenseType("type " + text);
    doc.AddPaymentMethod("method " + text);
    CContact* contact = doc.AddContact();
    contact->m_first = text;
    contact->m_address = "1 " + text + " Street\r\n" + text;
    contact->m_notes = "contact " + text;
    doc.m_levelNames[3] = "level " + text;
    CReport* report = doc.AddReport(CReport::Kind::invoice);
    report->m_name = "report " + text;
}
} // namespace

TEST(DocumentTexts, EveryScriptSurvivesSaveAndLoad)
{
    for (const Script& script : kScripts)
    {
        SCOPED_TRACE(script.name);
        qvtest::SampleDoc s;
        CTimeKeeperDoc& doc = *s.doc;
        Label(doc, s, script.text);
        const std::vector<uint8_t> bytes = doc.SaveToBytes();
        const std::string dumped = qvtest::Dump(doc);
        ASSERT_EQ(dumped.find('?'), std::string::npos) << "no text may lose a character";

        auto loaded = qvtest::Load(bytes);
        ASSERT_NE(loaded->GetRootTask(), nullptr);
        EXPECT_EQ(qvtest::Dump(*loaded), dumped);
        EXPECT_EQ(loaded->SaveToBytes(), bytes) << "a loaded document saves to the same bytes";

        const CTask* audit = loaded->GetTask(s.audit->m_id);
        ASSERT_NE(audit, nullptr);
        EXPECT_EQ(audit->m_name, script.text);
        EXPECT_EQ(loaded->GetTask(s.design->m_id)->m_abbreviation, script.text);
        EXPECT_EQ(loaded->GetTask(s.website->m_id)->m_notes, "notes " + script.text);
        EXPECT_EQ(loaded->GetDay("20240311")->TimeEntries()[0]->m_note, "time " + script.text);
        EXPECT_EQ(loaded->m_levelNames[3], "level " + script.text);
        ASSERT_FALSE(loaded->m_reports.empty());
        EXPECT_EQ(loaded->m_reports.back()->m_name, "report " + script.text);
        const auto contact =
            std::find_if(loaded->m_contacts.begin(), loaded->m_contacts.end(),
                         [&](const auto& c) { return c.second->m_first == script.text; });
        ASSERT_NE(contact, loaded->m_contacts.end());
        EXPECT_EQ(contact->second->m_notes, "contact " + script.text);
    }
}

TEST(DocumentTexts, TextsOfTheCodePageKeepTheirBytes)
{
    // A document whose texts Windows-1252 holds has no 16-bit text in it at all, so the
    // files of users who write in it come out exactly as before.
    qvtest::SampleDoc s;
    Label(*s.doc, s, "Caf\xC3\xA9 \xE2\x82\xAC \xC3\x9F \xE2\x80\x9Cquoted\xE2\x80\x9D");
    const std::vector<uint8_t> bytes = s.doc->SaveToBytes();
    const uint8_t marker[] = {0xFF, 0xFE, 0xFF};
    EXPECT_EQ(std::search(bytes.begin(), bytes.end(), marker, marker + 3), bytes.end());
    const std::string text = "Caf\xE9 \x80 \xDF \x93quoted\x94";
    const std::vector<uint8_t> cp1252(text.begin(), text.end());
    EXPECT_NE(std::search(bytes.begin(), bytes.end(), cp1252.begin(), cp1252.end()), bytes.end());
}
