#include "testsupport.h"

#include "platform/prompter.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <sstream>

namespace qvtest
{

StreamBuilder& StreamBuilder::U8(uint8_t v)
{
    m_bytes.push_back(v);
    return *this;
}

StreamBuilder& StreamBuilder::U16(uint16_t v)
{
    m_bytes.push_back(uint8_t(v));
    m_bytes.push_back(uint8_t(v >> 8));
    return *this;
}

StreamBuilder& StreamBuilder::U32(uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        m_bytes.push_back(uint8_t(v >> (8 * i)));
    return *this;
}

StreamBuilder& StreamBuilder::F32(float v)
{
    uint32_t bits;
    std::memcpy(&bits, &v, 4);
    return U32(bits);
}

StreamBuilder& StreamBuilder::F64(double v)
{
    uint64_t bits;
    std::memcpy(&bits, &v, 8);
    U32(uint32_t(bits));
    return U32(uint32_t(bits >> 32));
}

StreamBuilder& StreamBuilder::Bytes(std::initializer_list<uint8_t> bytes)
{
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    return *this;
}

StreamBuilder& StreamBuilder::Bytes(const std::vector<uint8_t>& bytes)
{
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    return *this;
}

StreamBuilder& StreamBuilder::Text(std::string_view bytes)
{
    const size_t n = bytes.size();
    if (n < 0xFF)
        U8(uint8_t(n));
    else if (n < 0xFFFE)
        U8(0xFF).U16(uint16_t(n));
    else
        U8(0xFF).U16(0xFFFF).U32(uint32_t(n));
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    return *this;
}

StreamBuilder& StreamBuilder::Date(uint32_t status, double value) { return U32(status).F64(value); }

StreamBuilder& StreamBuilder::Count(uint32_t count)
{
    if (count < 0xFFFF)
        return U16(uint16_t(count));
    return U16(0xFFFF).U32(count);
}

StreamBuilder& StreamBuilder::IdArray(const std::vector<uint32_t>& ids)
{
    Count(uint32_t(ids.size()));
    for (uint32_t id : ids)
        U32(id);
    return *this;
}

StreamBuilder& StreamBuilder::Object(const std::string& className)
{
    auto it = m_classes.find(className);
    if (it == m_classes.end())
    {
        U16(0xFFFF).U16(0).U16(uint16_t(className.size()));
        m_bytes.insert(m_bytes.end(), className.begin(), className.end());
        m_classes.emplace(className, m_mapCount++);
    }
    else if (it->second < 0x7FFF)
        U16(uint16_t(0x8000 | it->second));
    else
        U16(0x7FFF).U32(0x80000000u | it->second);
    ++m_mapCount;
    return *this;
}

uint32_t LocalSeconds(int year, int month, int day, int hour, int minute)
{
    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    tm.tm_hour = hour;
    tm.tm_min = minute;
    tm.tm_isdst = -1;
    return uint32_t(std::mktime(&tm));
}

CDateTime Day(int year, int month, int day) { return CDateTime::FromDate(year, month, day); }

CDateTime At(int year, int month, int day, int hour, int minute)
{
    return CDateTime::FromDate(year, month, day, hour, minute);
}

std::unique_ptr<CTimeKeeperDoc> NewDoc(const std::string& employee, const CDateTime& now)
{
    auto doc = std::make_unique<CTimeKeeperDoc>();
    SetNow(*doc, now);
    doc->NewDocument(employee);
    return doc;
}

void SetNow(CTimeKeeperDoc& doc, const CDateTime& now)
{
    doc.m_roundedNow = [now] { return now; };
}

CTask* AddTask(CTimeKeeperDoc& doc, CTask* parent, const std::string& name)
{
    CTask* task = doc.AddTask(parent, uint16_t(parent->m_level + 1));
    doc.RenameTask(task, name);
    return task;
}

CTimeEntry* AddTime(CTimeKeeperDoc& doc, const CTask* task, const CDateTime& day, int startHour,
                    int startMinute, int endHour, int endMinute, const std::string& note)
{
    auto entry = std::make_unique<CTimeEntry>();
    entry->m_taskId = task->m_id;
    entry->m_note = note;
    entry->m_start = CTinyTime(startHour, startMinute);
    entry->m_end = endHour < 0 ? CTinyTime::Null() : CTinyTime(endHour, endMinute);
    CTimeEntry* raw = doc.FileTimeEntry(doc.GetOrCreateDay(day), std::move(entry));
    if (raw->IsRunning())
    {
        doc.m_activeEntry = raw;
        doc.m_timerRunning = true;
    }
    return raw;
}

CExpenseEntry* AddExpense(CTimeKeeperDoc& doc, const CTask* task, const CDateTime& day, double amount,
                          uint32_t expenseTypeId, const std::string& note)
{
    auto entry = std::make_unique<CExpenseEntry>();
    entry->m_taskId = task->m_id;
    entry->m_amount = amount;
    entry->m_expenseTypeId = expenseTypeId;
    entry->m_note = note;
    return doc.FileExpenseEntry(doc.GetOrCreateDay(day), std::move(entry));
}

CToDoEntry* AddToDo(CTimeKeeperDoc& doc, const CTask* task, const std::string& description,
                    const CDateTime& due)
{
    auto entry = std::make_unique<CToDoEntry>();
    entry->m_taskId = task->m_id;
    entry->m_description = description;
    entry->m_priority = "5";
    entry->m_dueDate = due;
    return doc.AddOutstandingToDo(std::move(entry));
}

CToDoEntry* AddCompletedToDo(CTimeKeeperDoc& doc, const CTask* task, const std::string& description,
                             const CDateTime& completed)
{
    auto entry = std::make_unique<CToDoEntry>();
    entry->m_taskId = task->m_id;
    entry->m_description = description;
    entry->m_priority = "1";
    entry->m_completeDate = completed.DatePart();
    return doc.FileCompletedToDo(doc.GetOrCreateDay(completed), std::move(entry));
}

SampleDoc::SampleDoc() : doc(NewDoc())
{
    CTimeKeeperDoc& d = *doc;
    root = d.GetRootTask();
    acme = AddTask(d, root, "Acme");
    website = AddTask(d, acme, "Website");
    design = AddTask(d, website, "Design");
    globex = AddTask(d, root, "Globex");
    audit = AddTask(d, globex, "Audit");

    AddTime(d, website, Day(2024, 3, 11), 9, 0, 10, 30, "kick-off");
    AddTime(d, design, Day(2024, 3, 11), 11, 0, 12, 0);
    AddTime(d, audit, Day(2024, 3, 11), 13, 0, 14, 15);
    AddTime(d, design, Day(2024, 3, 12), 8, 0, 9, 0);
    AddExpense(d, website, Day(2024, 3, 11), 12.5);
    AddExpense(d, audit, Day(2024, 3, 12), 40.0, 9);
    AddToDo(d, design, "Sketch pages", Day(2024, 3, 20));
    AddToDo(d, audit, "Collect receipts");
    AddCompletedToDo(d, website, "Register domain", Day(2024, 3, 12));

    d.AddActivity("Consulting");
    d.AddPaymentMethod("Cash");
    CContact* contact = d.AddContact();
    contact->m_first = "Ann";
    contact->m_last = "Lee";
    d.SetModifiedFlag(false);
}

std::unique_ptr<CTimeKeeperDoc> Load(const std::vector<uint8_t>& bytes, LoadResult* result)
{
    auto doc = std::make_unique<CTimeKeeperDoc>();
    SetNow(*doc, At(2024, 3, 15, 12, 0));
    platform::ScriptedPrompter prompter({platform::Answer::yes});
    const LoadResult r = doc->LoadFromBytes(bytes.data(), bytes.size(), prompter);
    if (result)
        *result = r;
    return doc;
}

std::unique_ptr<CTimeKeeperDoc> RoundTrip(CTimeKeeperDoc& doc)
{
    const std::vector<uint8_t> bytes = doc.SaveToBytes();
    LoadResult result;
    auto loaded = Load(bytes, &result);
    EXPECT_EQ(result.status, LoadResult::loaded) << result.error;
    return loaded;
}

namespace
{
std::string Num(double v)
{
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.17g", v);
    return buf;
}

std::string DateText(const CDateTime& d)
{
    return d.IsNull() ? std::string("null") : std::to_string(d.GetStatus()) + ":" + Num(d.GetValue());
}

std::string TimeText(const CTinyTime& t)
{
    return std::to_string(t.GetHour()) + ":" + std::to_string(t.GetMinute()) + "/" +
           std::to_string(t.GetStatus());
}

std::string Ids(const std::vector<uint32_t>& ids)
{
    std::string s = "[";
    for (uint32_t id : ids)
        s += std::to_string(id) + ",";
    return s + "]";
}

void DumpEntries(std::ostringstream& out, const CDay& day)
{
    for (const auto& e : day.TimeEntries())
        out << "  time task=" << e->m_taskId << " note=" << e->m_note << " act=" << e->m_activityId
            << " " << TimeText(e->m_start) << "-" << TimeText(e->m_end) << " custom=" << e->m_customBilling
            << " billable=" << e->m_billable << " rate=" << Num(e->m_rate) << " ot=" << e->m_overtime
            << " otm=" << Num(e->m_overtimeMultiplier) << "\n";
    for (const auto& e : day.ExpenseEntries())
        out << "  expense task=" << e->m_taskId << " date=" << DateText(e->m_date)
            << " amount=" << Num(e->m_amount) << " note=" << e->m_note << " type=" << e->m_expenseTypeId
            << " billable=" << e->m_billable << " method=" << e->m_paymentMethodId
            << " number=" << e->m_number << " distance=" << Num(e->m_distance) << "\n";
    for (const auto& e : day.ToDoEntries())
        out << "  done task=" << e->m_taskId << " desc=" << e->m_description << " note=" << e->m_note
            << " prio=" << e->m_priority << " complete=" << DateText(e->m_completeDate)
            << " due=" << DateText(e->m_dueDate) << " imported=" << e->m_imported << "\n";
}
} // namespace

std::string Dump(const CTimeKeeperDoc& doc)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    std::ostringstream out;
    out << "header=" << doc.m_headerValue << " lastTask=" << doc.m_lastTaskId
        << " lastReport=" << doc.m_lastReportId << " lastContact=" << doc.m_lastContactId
        << " lastProject=" << doc.m_lastProjectId << " lastActivity=" << doc.m_lastActivityId
        << " lastType=" << doc.m_lastExpenseTypeId << " lastMethod=" << doc.m_lastPaymentMethodId
        << " mileage=" << Num(doc.m_defaultMileageRate) << " recent=" << Ids(doc.m_recentTasks) << "\n";
    for (const auto& [id, c] : doc.m_contacts)
        out << "contact " << id << " " << c->m_first << "|" << c->m_middle << "|" << c->m_last << "|"
            << c->m_address << "|" << c->m_phone << "|" << c->m_fax << "|" << c->m_email << "|"
            << c->m_notes << "\n";
    for (const auto& [id, p] : doc.m_projects)
        out << "project " << id << " " << p->m_progId << "|" << p->m_name << "|" << p->m_fileIdentity
            << "|" << p->m_path << "|" << p->m_parentTaskId << "|" << p->m_resourceId << "|"
            << p->m_resourceName << "|" << DateText(p->m_lastUpdated) << "\n";
    for (const auto& [id, t] : doc.m_tasks)
    {
        out << "task " << id << " parent=" << t->m_parentId << " name=" << t->m_name
            << " level=" << t->m_level << " abbr=" << t->m_abbreviation
            << " upb=" << t->m_useParentBilling << " upt=" << t->m_useParentTaskId
            << " upc=" << t->m_useParentContact << " exp=" << t->m_expanded
            << " lastNote=" << t->m_lastNote << " lastAct=" << t->m_lastActivityId
            << " inactive=" << t->m_inactive << " project=" << t->m_projectId
            << " est=" << Num(t->m_hoursEstimate) << "/" << Num(t->m_costEstimate)
            << " notes=" << t->m_notes << " taskId=" << t->m_taskId << " billable=" << t->m_billable
            << " rate=" << Num(t->m_regularRate) << " uar=" << t->m_useActivityRates
            << " otm=" << Num(t->m_overtimeMultiplier) << " contact=" << t->m_contactId
            << " ptn=" << t->m_projectTaskNumber << " todo=" << t->m_todoFlag
            << " plan=" << Num(t->m_planWorkEstimate) << "/" << Num(t->m_planCostEstimate)
            << " children=";
        for (const CTask* c : t->m_children)
            out << c->m_id << ",";
        out << " entries=" << t->m_timeEntries.size() << "/" << t->m_expenseEntries.size() << "/"
            << t->m_todoEntries.size() << "\n";
        for (const auto& [activity, r] : t->m_activityRates)
            out << "  rate " << activity << " task=" << r->m_taskId << " res=" << r->m_reserved
                << " billable=" << r->m_billable << " rate=" << Num(r->m_rate) << "\n";
    }
    for (const auto& r : doc.m_reports)
    {
        out << "report " << r->m_id << " " << r->GetClassName() << " kind=" << r->m_kind
            << " name=" << r->m_name << " preset=" << r->m_preset << " " << DateText(r->m_startDate)
            << ".." << DateText(r->m_endDate) << " tasks=" << Ids(r->m_selectedTasks)
            << " fields=" << r->m_fieldFlags << " nb=" << r->m_includeNonBillable
            << " b=" << r->m_includeBillable << " empty=" << r->m_showEmptyRows
            << " orient=" << r->m_orientation << " font=" << r->m_font.height << "," << r->m_font.width
            << "," << r->m_font.escapement << "," << r->m_font.orientation << "," << r->m_font.weight
            << "," << int(r->m_font.italic) << int(r->m_font.underline) << int(r->m_font.strikeOut)
            << int(r->m_font.charSet) << int(r->m_font.outPrecision) << int(r->m_font.clipPrecision)
            << int(r->m_font.quality) << int(r->m_font.pitchAndFamily) << "," << r->m_font.faceName
            << " level=" << r->m_summarizeLevel << " frame=" << r->m_timeFrame << " rollup=" << r->m_rollup
            << " totals=" << r->m_showTotals << " acts=" << Ids(r->m_selectedActivities)
            << " types=" << Ids(r->m_selectedExpenseTypes)
            << " methods=" << Ids(r->m_selectedPaymentMethods) << " only=" << r->m_selectedTasksOnly
            << " reserved=" << r->m_detailReserved << " recipient=" << r->m_recipient
            << " terms=" << r->m_showTerms << ":" << r->m_terms << " tax=" << r->m_addTax << ":"
            << Num(r->m_taxRate) << " numbering=" << r->m_numberMode << ":" << r->m_invoiceNumber << "\n";
    }
    for (const auto& [key, day] : doc.m_days)
    {
        out << "day " << key << " " << DateText(day->GetDate()) << "\n";
        DumpEntries(out, *day);
    }
    for (const auto& [id, a] : doc.m_activities)
        out << "activity " << id << " " << a->m_name << " " << a->m_flag1 << " " << a->m_flag2 << " "
            << Num(a->m_rate) << "\n";
    for (const auto& [level, name] : doc.m_levelNames)
        out << "level " << level << " " << name << "\n";
    for (const auto& [id, t] : doc.m_expenseTypes)
        out << "type " << id << " " << t->m_name << " " << t->m_flag << "\n";
    for (const auto& [id, m] : doc.m_paymentMethods)
        out << "method " << id << " " << m->m_name << " " << m->m_accountNumber << " "
            << m->m_accountType << "\n";
    for (const auto& t : doc.m_todoList)
        out << "todo task=" << t->m_taskId << " desc=" << t->m_description << " note=" << t->m_note
            << " prio=" << t->m_priority << " complete=" << DateText(t->m_completeDate)
            << " due=" << DateText(t->m_dueDate) << " imported=" << t->m_imported << "\n";
    return out.str();
}

} // namespace qvtest
