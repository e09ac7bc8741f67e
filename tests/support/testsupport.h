#pragma once

#include "model/datetime.h"
#include "model/timekeeperdoc.h"

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Builders shared by the test suites: hand-assembled archive streams, documents with a
// task tree and entries, and a canonical dump of a document for comparisons.
namespace qvtest
{

// Assembles an archive byte stream value by value, for the layouts of older files and
// for malformed input. Object tags follow the writer's numbering: the first object of a
// class describes the class, later ones name its index; classes and objects share one
// running index.
class StreamBuilder
{
public:
    StreamBuilder& U8(uint8_t v);
    StreamBuilder& U16(uint16_t v);
    StreamBuilder& U32(uint32_t v);
    StreamBuilder& F32(float v);
    StreamBuilder& F64(double v);
    StreamBuilder& Bytes(std::initializer_list<uint8_t> bytes);
    StreamBuilder& Bytes(const std::vector<uint8_t>& bytes);
    // A text as the stream stores it: the shortest length prefix, then `bytes` unchanged.
    StreamBuilder& Text(std::string_view bytes);
    StreamBuilder& Date(uint32_t status, double value);
    StreamBuilder& Date(const CDateTime& d) { return Date(d.GetStatus(), d.GetValue()); }
    StreamBuilder& NullDate() { return Date(CDateTime::null, 0.0); }
    // Seconds since 1970 UTC, as files before version 9 store moments.
    StreamBuilder& OldDate(uint32_t seconds) { return U32(seconds); }
    StreamBuilder& Count(uint32_t count);
    StreamBuilder& IdArray(const std::vector<uint32_t>& ids);
    // The tag of a new object of `className` (its body must follow).
    StreamBuilder& Object(const std::string& className);
    StreamBuilder& NullReference() { return U16(0); }

    const std::vector<uint8_t>& Data() const { return m_bytes; }
    size_t Size() const { return m_bytes.size(); }

private:
    std::vector<uint8_t> m_bytes;
    uint32_t m_mapCount = 1;
    std::map<std::string, uint32_t> m_classes;
};

// Seconds since 1970 UTC of a local date and time (the inverse of the old date reading).
uint32_t LocalSeconds(int year, int month, int day, int hour = 0, int minute = 0);

CDateTime Day(int year, int month, int day);
CDateTime At(int year, int month, int day, int hour, int minute);

// A new document (root task named `employee`, default catalogs) whose "rounded now"
// stands still at `now`.
std::unique_ptr<CTimeKeeperDoc> NewDoc(const std::string& employee = "Pat Example",
                                       const CDateTime& now = At(2024, 3, 15, 12, 0));
void SetNow(CTimeKeeperDoc& doc, const CDateTime& now);

CTask* AddTask(CTimeKeeperDoc& doc, CTask* parent, const std::string& name);
// Files a time entry without the conflict test; an end hour of -1 makes it the running
// entry (and sets the document's timer state on it).
CTimeEntry* AddTime(CTimeKeeperDoc& doc, const CTask* task, const CDateTime& day, int startHour,
                    int startMinute, int endHour, int endMinute, const std::string& note = "");
CExpenseEntry* AddExpense(CTimeKeeperDoc& doc, const CTask* task, const CDateTime& day, double amount,
                          uint32_t expenseTypeId = 1, const std::string& note = "");
CToDoEntry* AddToDo(CTimeKeeperDoc& doc, const CTask* task, const std::string& description,
                    const CDateTime& due = CDateTime::Null());
CToDoEntry* AddCompletedToDo(CTimeKeeperDoc& doc, const CTask* task, const std::string& description,
                             const CDateTime& completed);

// A document with a small tree and entries of every kind:
//   root "Pat Example"
//     "Acme" (Client)         -> "Website" (Project) -> "Design" (Sub Project)
//     "Globex" (Client)       -> "Audit" (Project)
// Time entries on 2024-03-11 (Website 09:00-10:30, Design 11:00-12:00, Audit 13:00-14:15),
// on 2024-03-12 (Design 08:00-09:00); an expense on each of those days (Website 12.50,
// Audit 40.00); an outstanding to-do on Design and on Audit; a completed to-do on
// Website (2024-03-12); one activity "Consulting", one payment method "Cash", one contact.
struct SampleDoc
{
    SampleDoc();
    std::unique_ptr<CTimeKeeperDoc> doc;
    CTask* root = nullptr;
    CTask* acme = nullptr;
    CTask* website = nullptr;
    CTask* design = nullptr;
    CTask* globex = nullptr;
    CTask* audit = nullptr;
};

// Saves `doc` and loads the bytes into a fresh document; fails the test when the load
// does not succeed.
std::unique_ptr<CTimeKeeperDoc> RoundTrip(CTimeKeeperDoc& doc);
// Loads bytes into a fresh document, answering Yes to the conversion question.
std::unique_ptr<CTimeKeeperDoc> Load(const std::vector<uint8_t>& bytes, LoadResult* result = nullptr);

// Every persisted value of the document as text, one line per record, in a fixed order:
// equal dumps mean equal documents.
std::string Dump(const CTimeKeeperDoc& doc);

} // namespace qvtest
