#include "database/documentwriter.h"

#include "database/dbconnection.h"
#include "model/timekeeperdoc.h"
#include "reports/reportoptions.h"

#include <cstdio>
#include <cstring>
#include <mutex>

namespace database
{

namespace
{
// Raised whenever the rows that a document gives change, so that the next sync rewrites
// documents whose files did not change.
constexpr uint32_t kRowsVersion = 1;

const char* const kAccountTypes[] = {"Company Credit Card", "Personal Credit Card", "Cash",
                                     "Direct Bill",         "Company Check",        "Personal Check"};

// A catalog id that stands for "none" (0 for activities, -1 for types and methods).
void CatalogId(CRowWriter& w, uint32_t id, uint32_t none)
{
    w.OptionalInt(id, id != none);
}

// "YYYY-MM-DD", or NULL for a date that is not valid.
void DateOf(CRowWriter& w, const CDateTime& date)
{
    date.IsValid() ? w.Text(date.Format("%Y-%m-%d")) : w.Null();
}

// "YYYY-MM" of a day.
std::string MonthOf(const CDateTime& date)
{
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02d", date.GetYear(), date.GetMonth());
    return text;
}

// "HH:MM" of a time of day (24:00 included), without the cost of a formatted print:
// a million entries have two each.
std::string_view TimeText(const CTinyTime& t, char (&text)[6])
{
    const int h = t.GetHour();
    const int m = t.GetMinute();
    text[0] = char('0' + h / 10 % 10);
    text[1] = char('0' + h % 10);
    text[2] = ':';
    text[3] = char('0' + m / 10 % 10);
    text[4] = char('0' + m % 10);
    return std::string_view(text, 5);
}

// Where a task sits: its path of names, its depth and its ancestors on the first two
// levels (the client and the project).
struct TaskPlace
{
    std::string path;
    int depth = 0;
    const CTask* client = nullptr;
    const CTask* project = nullptr;
};

TaskPlace PlaceOf(const CTask& task)
{
    std::vector<const CTask*> chain;
    for (const CTask* t = &task; t; t = t->m_parent)
        chain.push_back(t);
    TaskPlace place;
    place.depth = int(chain.size()) - 1;
    if (place.depth == 0)
    {
        place.path = task.m_name;
        return place;
    }
    // chain runs from the task up to the root; below the root it reads top down.
    for (size_t i = chain.size() - 1; i-- > 0;)
        place.path += (place.path.empty() ? "" : "/") + chain[i]->m_name;
    place.client = chain[chain.size() - 2];
    if (chain.size() >= 3)
        place.project = chain[chain.size() - 3];
    return place;
}
} // namespace

const std::vector<std::string>& CDocumentWriter::RecordTables()
{
    static const std::vector<std::string> tables = {
        "tasks",          "activity_rates",  "time_entries", "expenses",
        "todos",          "activities",      "expense_types", "payment_methods",
        "contacts",       "reports",         "report_tasks"};
    return tables;
}

DocumentCounts CDocumentWriter::Write()
{
    std::lock_guard<std::recursive_mutex> lock(m_doc.GetLock());
    m_counts = DocumentCounts();
    WriteTasks();
    WriteTimeEntries();
    WriteExpenses();
    WriteToDos();
    WriteCatalogs();
    WriteReports();
    return m_counts;
}

void CDocumentWriter::WriteTasks()
{
    auto w = m_db.WriteRows(
        "tasks", {"document_id", "id", "parent_id", "name", "abbreviation", "path", "depth", "level",
                  "level_name", "client_id", "project_id", "inactive", "billing_task_id",
                  "billable", "rate", "use_activity_rates", "overtime_multiplier", "task_code",
                  "contact_id", "hours_estimate", "cost_estimate", "notes"});
    for (const auto& [id, owned] : m_doc.m_tasks)
    {
        const CTask& task = *owned;
        const TaskPlace place = PlaceOf(task);
        const CTask* billing = task.GetBillingTask();
        w->Int(m_documentId);
        w->Int(task.m_id);
        w->OptionalInt(task.m_parentId, task.m_parent != nullptr);
        w->Text(task.m_name);
        w->Text(task.m_abbreviation);
        w->Text(place.path);
        w->Int(place.depth);
        w->Int(task.m_level);
        w->Text(m_doc.GetLevelName(task.m_level));
        w->OptionalInt(place.client ? place.client->m_id : 0, place.client != nullptr);
        w->OptionalInt(place.project ? place.project->m_id : 0, place.project != nullptr);
        w->Bool(task.IsInactive());
        w->Int(billing->m_id);
        w->Bool(task.GetEffectiveBillable());
        w->Real(task.GetEffectiveRate());
        w->Bool(task.GetEffectiveUseActivityRates());
        w->Real(task.GetEffectiveOvertimeMultiplier());
        w->Text(task.GetEffectiveTaskId());
        CatalogId(*w, task.GetEffectiveContactId(), 0);
        w->Real(task.m_hoursEstimate / 60.0); // kept in minutes
        w->Real(task.m_costEstimate);
        w->Text(task.m_notes);
        w->EndRow();
        ++m_counts.tasks;
    }
    w->Finish();

    // A connection takes the rows of one table at a time.
    auto rates = m_db.WriteRows("activity_rates",
                                {"document_id", "task_id", "activity_id", "billable", "rate"});
    for (const auto& [id, task] : m_doc.m_tasks)
        for (const auto& [activityId, rate] : task->m_activityRates)
        {
            rates->Int(m_documentId);
            rates->Int(id);
            rates->Int(activityId);
            rates->Bool(rate->m_billable);
            rates->Real(rate->m_rate);
            rates->EndRow();
        }
    rates->Finish();
}

void CDocumentWriter::WriteTimeEntries()
{
    auto w = m_db.WriteRows(
        "time_entries", {"document_id", "id", "task_id", "activity_id", "entry_date", "month",
                         "start_time", "end_time", "minutes", "hours", "note", "overtime",
                         "custom_billing", "billable", "rate", "amount"});
    const CTinyTime runningEnd = m_doc.RunningEnd();
    // Tasks by id, looked up a million times.
    std::vector<const CTask*> tasks(m_doc.m_tasks.empty() ? 1 : m_doc.m_tasks.rbegin()->first + 1);
    for (const auto& [id, task] : m_doc.m_tasks)
        tasks[id] = task.get();
    const CTask* root = m_doc.GetRootTask();
    char start[6];
    char end[6];
    for (const auto& [key, day] : m_doc.m_days)
    {
        if (day->TimeEntries().empty())
            continue;
        const std::string month = MonthOf(day->GetDate());
        const std::string date = day->GetDate().Format("%Y-%m-%d");
        for (const auto& owned : day->TimeEntries())
        {
            const CTimeEntry& e = *owned;
            // Reading gives an entry of a task that is not in the file to the root.
            const CTask* found = e.m_taskId < tasks.size() ? tasks[e.m_taskId] : nullptr;
            const CTask& task = found ? *found : *root;
            const CTinyElapsedTime elapsed = e.GetElapsed(runningEnd);
            w->Int(m_documentId);
            w->Int(++m_counts.timeEntries);
            w->Int(task.m_id);
            CatalogId(*w, e.m_activityId, 0);
            w->Text(date);
            w->Text(month);
            w->Text(TimeText(e.m_start, start));
            e.IsRunning() ? w->Null() : w->Text(TimeText(e.m_end, end));
            w->Int(elapsed.TotalMinutes());
            w->Real(elapsed.Hours());
            w->Text(e.m_note);
            w->Bool(e.m_overtime);
            w->Bool(e.m_customBilling);
            w->Bool(e.IsEffectiveBillable(task));
            w->Real(e.GetEffectiveRate(task));
            w->Real(e.GetBillingAmount(task, runningEnd));
            w->EndRow();
        }
    }
    w->Finish();
}

void CDocumentWriter::WriteExpenses()
{
    auto w = m_db.WriteRows("expenses", {"document_id", "id", "task_id", "expense_date", "month",
                                         "expense_type_id", "payment_method_id", "amount",
                                         "billable", "mileage", "distance", "number", "note"});
    for (const auto& [key, day] : m_doc.m_days)
    {
        if (day->ExpenseEntries().empty())
            continue;
        const std::string month = MonthOf(day->GetDate());
        const std::string date = day->GetDate().Format("%Y-%m-%d");
        for (const auto& owned : day->ExpenseEntries())
        {
            const CExpenseEntry& e = *owned;
            const bool mileage = e.m_expenseTypeId == CExpenseType::kMileageId;
            w->Int(m_documentId);
            w->Int(++m_counts.expenses);
            w->Int(e.m_taskId);
            w->Text(date);
            w->Text(month);
            CatalogId(*w, e.m_expenseTypeId, uint32_t(-1));
            CatalogId(*w, e.m_paymentMethodId, uint32_t(-1));
            w->Real(e.m_amount);
            w->Bool(e.m_billable);
            w->Bool(mileage);
            mileage || e.m_distance != 0.0f ? w->Real(e.m_distance) : w->Null();
            w->OptionalInt(e.m_number, e.m_number != 0);
            w->Text(e.m_note);
            w->EndRow();
        }
    }
    w->Finish();
}

void CDocumentWriter::WriteToDos()
{
    auto w = m_db.WriteRows("todos", {"document_id", "id", "task_id", "description", "note",
                                      "priority", "due_date", "completed_date", "imported"});
    auto row = [&](const CToDoEntry& e, const CDateTime& completed)
    {
        w->Int(m_documentId);
        w->Int(++m_counts.todos);
        w->Int(e.m_taskId);
        w->Text(e.m_description);
        w->Text(e.m_note);
        w->Text(e.m_priority);
        DateOf(*w, e.m_dueDate);
        DateOf(*w, completed);
        w->Bool(e.m_imported);
        w->EndRow();
    };
    // Completed ones in the order of their days, then the outstanding list.
    for (const auto& [key, day] : m_doc.m_days)
        for (const auto& e : day->ToDoEntries())
            row(*e, day->GetDate());
    for (const auto& e : m_doc.m_todoList)
        row(*e, CDateTime::Null());
    w->Finish();
}

void CDocumentWriter::WriteCatalogs()
{
    auto activities = m_db.WriteRows("activities", {"document_id", "id", "name"});
    for (const auto& [id, a] : m_doc.m_activities)
    {
        activities->Int(m_documentId);
        activities->Int(id);
        activities->Text(a->m_name);
        activities->EndRow();
    }
    activities->Finish();

    auto types = m_db.WriteRows("expense_types", {"document_id", "id", "name", "mileage"});
    for (const auto& [id, t] : m_doc.m_expenseTypes)
    {
        types->Int(m_documentId);
        types->Int(id);
        types->Text(t->m_name);
        types->Bool(id == CExpenseType::kMileageId);
        types->EndRow();
    }
    types->Finish();

    auto methods = m_db.WriteRows(
        "payment_methods", {"document_id", "id", "name", "account_number", "account_type"});
    for (const auto& [id, m] : m_doc.m_paymentMethods)
    {
        methods->Int(m_documentId);
        methods->Int(id);
        methods->Text(m->m_name);
        methods->Text(m->m_accountNumber);
        methods->Text(m->m_accountType < std::size(kAccountTypes) ? kAccountTypes[m->m_accountType]
                                                                  : "");
        methods->EndRow();
    }
    methods->Finish();

    auto contacts = m_db.WriteRows(
        "contacts", {"document_id", "id", "display_name", "first_name", "middle_name", "last_name",
                     "address", "phone", "fax", "email", "notes"});
    for (const auto& [id, c] : m_doc.m_contacts)
    {
        contacts->Int(m_documentId);
        contacts->Int(id);
        const std::string displayName = c->GetDisplayName();
        for (const std::string* text : std::initializer_list<const std::string*>{&displayName, &c->m_first, &c->m_middle, &c->m_last,
                                        &c->m_address, &c->m_phone, &c->m_fax, &c->m_email,
                                        &c->m_notes})
            contacts->Text(*text);
        contacts->EndRow();
    }
    contacts->Finish();
}

void CDocumentWriter::WriteReports()
{
    auto w = m_db.WriteRows(
        "reports", {"document_id", "id", "name", "kind", "date_range", "start_date", "end_date",
                    "summarize", "time_frame", "rollup", "show_totals", "show_empty_rows",
                    "include_billable", "include_non_billable", "field_flags", "recipient",
                    "terms", "tax_rate", "invoice_number"});
    for (const auto& owned : m_doc.m_reports)
    {
        const CReport& r = *owned;
        const bool invoice = r.m_kind == CReport::invoice;
        const bool grid = invoice || r.IsSummaryKind();
        const bool custom = r.m_preset == CReport::customDates;
        w->Int(m_documentId);
        w->Int(r.m_id);
        w->Text(r.m_name);
        w->Text(reports::KindKeyword(r.m_kind));
        w->Text(reports::PresetKeyword(r.m_preset));
        custom ? DateOf(*w, r.m_startDate) : w->Null();
        custom ? DateOf(*w, r.m_endDate) : w->Null();
        grid ? w->Text(reports::SummarizeLabel(r.m_summarizeLevel, m_doc)) : w->Null();
        grid ? w->Text(reports::TimeFrameLabel(r.m_timeFrame)) : w->Null();
        r.IsSummaryKind() ? w->Bool(r.m_rollup) : w->Null();
        r.IsSummaryKind() ? w->Bool(r.m_showTotals) : w->Null();
        w->Bool(r.m_showEmptyRows);
        w->Bool(r.m_includeBillable);
        w->Bool(r.m_includeNonBillable);
        w->Int(r.m_fieldFlags);
        invoice ? w->Text(r.m_recipient) : w->Null();
        invoice && r.m_showTerms ? w->Text(r.m_terms) : w->Null();
        invoice && r.m_addTax ? w->Real(r.m_taxRate) : w->Null();
        invoice && r.m_numberMode == 1 ? w->Int(r.m_invoiceNumber) : w->Null();
        w->EndRow();
    }
    w->Finish();

    auto tasks = m_db.WriteRows("report_tasks", {"document_id", "report_id", "position", "task_id"});
    for (const auto& r : m_doc.m_reports)
        for (size_t i = 0; i < r->m_selectedTasks.size(); ++i)
        {
            tasks->Int(m_documentId);
            tasks->Int(r->m_id);
            tasks->Int(int64_t(i) + 1);
            tasks->Int(r->m_selectedTasks[i]);
            tasks->EndRow();
        }
    tasks->Finish();
}

std::string DocumentFingerprint(const std::vector<uint8_t>& fileBytes, const std::string& sourcePath,
                                const CTimeKeeperDoc& doc)
{
    // Not a guard against anyone, only a test for change: eight bytes at a time, each step
    // a multiply and a fold (the bytes of a large document take a few milliseconds).
    uint64_t hash = 0xcbf29ce484222325ull;
    auto mix = [&hash](uint64_t word)
    {
        const unsigned __int128 product =
            static_cast<unsigned __int128>(hash ^ word) * 0x9e3779b97f4a7c15ull;
        hash = (uint64_t(product) ^ uint64_t(product >> 64)) + 0x632be59bd9b4e019ull;
    };
    auto add = [&mix](const void* data, size_t size)
    {
        const auto* p = static_cast<const uint8_t*>(data);
        size_t i = 0;
        for (; i + 8 <= size; i += 8)
        {
            uint64_t word;
            std::memcpy(&word, p + i, 8);
            mix(word);
        }
        uint64_t tail = size; // the length tells "ab" + "c" from "a" + "bc"
        for (; i < size; ++i)
            tail = (tail << 8) | p[i];
        mix(tail);
    };
    add(fileBytes.data(), fileBytes.size());
    add(sourcePath.data(), sourcePath.size() + 1);
    add(&kRowsVersion, sizeof kRowsVersion);
    bool running = false;
    for (const auto& [key, day] : doc.m_days)
        for (const auto& e : day->TimeEntries())
            running = running || e->IsRunning();
    if (running)
    {
        const std::string now = doc.RoundedNow().Format("%Y-%m-%d %H:%M");
        add(now.data(), now.size());
    }
    char text[40];
    std::snprintf(text, sizeof text, "%016llx-%zu", static_cast<unsigned long long>(hash),
                  fileBytes.size());
    return text;
}

} // namespace database
