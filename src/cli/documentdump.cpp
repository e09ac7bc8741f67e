#include "cli/documentdump.h"

#include "cli/jsonwriter.h"
#include "model/timekeeperdoc.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace cli
{

namespace
{
void WriteDate(JsonWriter& w, const CDateTime& d)
{
    if (d.IsNull() || !d.IsValid())
        w.Null();
    else
        w.String(d.Format("%Y-%m-%d"));
}

void WriteTime(JsonWriter& w, const CTinyTime& t)
{
    if (t.IsNull())
        w.Null();
    else
        w.String(t.ToText());
}

void WriteIds(JsonWriter& w, const std::vector<uint32_t>& ids)
{
    w.BeginArray();
    for (uint32_t id : ids)
        w.UInt(id);
    w.EndArray();
}

void WriteTask(JsonWriter& w, const CTask& t)
{
    w.BeginObject();
    w.Key("id").UInt(t.m_id);
    w.Key("parent").UInt(t.m_parentId);
    w.Key("name").String(t.m_name);
    w.Key("level").UInt(t.m_level);
    w.Key("abbreviation").String(t.m_abbreviation);
    w.Key("inactive").Bool(t.m_inactive);
    w.Key("expanded").Bool(t.m_expanded);
    w.Key("use_parent_billing").Bool(t.m_useParentBilling);
    w.Key("use_parent_task_id").Bool(t.m_useParentTaskId);
    w.Key("use_parent_contact").Bool(t.m_useParentContact);
    w.Key("billable").Bool(t.m_billable);
    w.Key("rate").Double(t.m_regularRate);
    w.Key("use_activity_rates").Bool(t.m_useActivityRates);
    w.Key("overtime_multiplier").Float(t.m_overtimeMultiplier);
    w.Key("task_id").String(t.m_taskId);
    w.Key("contact").UInt(t.m_contactId);
    w.Key("project").UInt(t.m_projectId);
    w.Key("project_task").UInt(t.m_projectTaskNumber);
    w.Key("hours_estimate").Double(t.m_hoursEstimate);
    w.Key("cost_estimate").Double(t.m_costEstimate);
    w.Key("notes").String(t.m_notes);
    w.Key("last_note").String(t.m_lastNote);
    w.Key("last_activity").UInt(t.m_lastActivityId);
    w.Key("activity_rates").BeginArray();
    for (const auto& [activity, rate] : t.m_activityRates)
    {
        w.BeginObject();
        w.Key("activity").UInt(activity);
        w.Key("billable").Bool(rate->m_billable);
        w.Key("rate").Double(rate->m_rate);
        w.EndObject();
    }
    w.EndArray();
    w.Key("children").BeginArray();
    for (const CTask* child : t.m_children)
        w.UInt(child->m_id);
    w.EndArray();
    w.Key("effective").BeginObject();
    w.Key("billable").Bool(t.GetEffectiveBillable());
    w.Key("rate").Double(t.GetEffectiveRate());
    w.Key("use_activity_rates").Bool(t.GetEffectiveUseActivityRates());
    w.Key("overtime_multiplier").Float(t.GetEffectiveOvertimeMultiplier());
    w.Key("task_id").String(t.GetEffectiveTaskId());
    w.Key("contact").UInt(t.GetEffectiveContactId());
    w.EndObject();
    w.EndObject();
}

void WriteToDo(JsonWriter& w, const CToDoEntry& e)
{
    w.BeginObject();
    w.Key("task").UInt(e.m_taskId);
    w.Key("description").String(e.m_description);
    w.Key("priority").String(e.m_priority);
    w.Key("due");
    WriteDate(w, e.m_dueDate);
    w.Key("completed");
    WriteDate(w, e.m_completeDate);
    w.Key("imported").Bool(e.m_imported);
    w.Key("note").String(e.m_note);
    w.EndObject();
}

void WriteDay(JsonWriter& w, const CDay& day)
{
    w.BeginObject();
    w.Key("key").String(day.GetKey());
    w.Key("time").BeginArray();
    for (const auto& e : day.TimeEntries())
    {
        w.BeginObject();
        w.Key("task").UInt(e->m_taskId);
        w.Key("start");
        WriteTime(w, e->m_start);
        w.Key("end");
        WriteTime(w, e->m_end);
        w.Key("activity").UInt(e->m_activityId);
        w.Key("note").String(e->m_note);
        w.Key("custom_billing").Bool(e->m_customBilling);
        w.Key("billable").Bool(e->m_billable);
        w.Key("rate").Double(e->m_rate);
        w.Key("overtime").Bool(e->m_overtime);
        w.Key("overtime_multiplier").Float(e->m_overtimeMultiplier);
        w.EndObject();
    }
    w.EndArray();
    w.Key("expenses").BeginArray();
    for (const auto& e : day.ExpenseEntries())
    {
        w.BeginObject();
        w.Key("task").UInt(e->m_taskId);
        w.Key("date");
        WriteDate(w, e->m_date);
        w.Key("amount").Double(e->m_amount);
        w.Key("expense_type").Int(int32_t(e->m_expenseTypeId));
        w.Key("payment_method").Int(int32_t(e->m_paymentMethodId));
        w.Key("billable").Bool(e->m_billable);
        w.Key("number").UInt(e->m_number);
        w.Key("distance").Float(e->m_distance);
        w.Key("note").String(e->m_note);
        w.EndObject();
    }
    w.EndArray();
    w.Key("todos").BeginArray();
    for (const auto& e : day.ToDoEntries())
        WriteToDo(w, *e);
    w.EndArray();
    w.EndObject();
}

void WriteReport(JsonWriter& w, const CReport& r)
{
    w.BeginObject();
    w.Key("id").UInt(r.m_id);
    w.Key("kind").UInt(r.m_kind);
    w.Key("name").String(r.m_name);
    w.Key("preset").UInt(r.m_preset);
    w.Key("start");
    WriteDate(w, r.m_startDate);
    w.Key("end");
    WriteDate(w, r.m_endDate);
    w.Key("tasks");
    WriteIds(w, r.m_selectedTasks);
    w.Key("fields").UInt(r.m_fieldFlags);
    w.Key("include_billable").Bool(r.m_includeBillable);
    w.Key("include_non_billable").Bool(r.m_includeNonBillable);
    w.Key("show_empty_rows").Bool(r.m_showEmptyRows);
    w.Key("orientation").UInt(r.m_orientation);
    w.Key("font").BeginObject();
    w.Key("height").Int(r.m_font.height);
    w.Key("weight").Int(r.m_font.weight);
    w.Key("italic").Bool(r.m_font.italic != 0);
    w.Key("face").String(r.m_font.faceName);
    w.EndObject();

    const bool summary = r.IsSummaryKind() || r.m_kind == CReport::invoice;
    if (summary)
    {
        w.Key("summarize_level").Int(r.m_summarizeLevel);
        w.Key("time_frame").UInt(r.m_timeFrame);
        if (r.m_kind != CReport::invoice)
        {
            w.Key("rollup").Bool(r.m_rollup);
            w.Key("show_totals").Bool(r.m_showTotals);
        }
    }
    if (r.IsDetailKind())
    {
        w.Key("selected_tasks_only").Bool(r.m_selectedTasksOnly);
        if (r.m_kind == CReport::timeDetail)
            w.Key("reserved").UInt(r.m_detailReserved);
    }
    if (r.m_kind == CReport::invoice)
    {
        w.Key("recipient").String(r.m_recipient);
        w.Key("show_terms").Bool(r.m_showTerms);
        w.Key("terms").String(r.m_terms);
        w.Key("add_tax").Bool(r.m_addTax);
        w.Key("tax_rate").Double(r.m_taxRate);
        w.Key("number_mode").UInt(r.m_numberMode);
        w.Key("invoice_number").Int(r.m_invoiceNumber);
    }
    const uint32_t k = r.m_kind;
    const bool activities = k == CReport::timeDetail || k == CReport::timeSummary ||
                            k == CReport::billingSummary || k == CReport::timeExpenseSummary ||
                            k == CReport::invoice;
    const bool expenseFilters = k == CReport::expenseDetail || k == CReport::expenseSummary ||
                                k == CReport::timeExpenseSummary || k == CReport::invoice;
    if (activities)
    {
        w.Key("activities");
        WriteIds(w, r.m_selectedActivities);
    }
    if (expenseFilters)
    {
        w.Key("expense_types");
        WriteIds(w, r.m_selectedExpenseTypes);
        w.Key("payment_methods");
        WriteIds(w, r.m_selectedPaymentMethods);
    }
    w.EndObject();
}

template <class Map, class Fn> void WriteMap(JsonWriter& w, const char* key, const Map& map, Fn fn)
{
    // std::map enumerates in id order already.
    w.Key(key).BeginArray();
    for (const auto& [id, record] : map)
        fn(*record);
    w.EndArray();
}
} // namespace

std::string DumpJson(const CTimeKeeperDoc& doc)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    JsonWriter w;
    w.BeginObject();
    w.Key("version").UInt(doc.m_fileVersion);
    w.Key("header").UInt(doc.m_headerValue);
    w.Key("last_ids").BeginObject();
    w.Key("task").UInt(doc.m_lastTaskId);
    w.Key("report").UInt(doc.m_lastReportId);
    w.Key("contact").UInt(doc.m_lastContactId);
    w.Key("project").UInt(doc.m_lastProjectId);
    w.Key("activity").UInt(doc.m_lastActivityId);
    w.Key("expense_type").UInt(doc.m_lastExpenseTypeId);
    w.Key("payment_method").UInt(doc.m_lastPaymentMethodId);
    w.EndObject();
    w.Key("mileage_rate").Float(doc.m_defaultMileageRate);
    w.Key("recent_tasks");
    WriteIds(w, doc.m_recentTasks);
    w.Key("level_names").BeginObject();
    for (const auto& [level, name] : doc.m_levelNames)
        w.Key(std::to_string(level)).String(name);
    w.EndObject();

    WriteMap(w, "tasks", doc.m_tasks, [&](const CTask& t) { WriteTask(w, t); });
    WriteMap(w, "days", doc.m_days, [&](const CDay& d) { WriteDay(w, d); });

    w.Key("todos").BeginArray();
    for (const auto& e : doc.m_todoList)
        WriteToDo(w, *e);
    w.EndArray();

    WriteMap(w, "activities", doc.m_activities,
             [&](const CActivity& a)
             {
                 w.BeginObject();
                 w.Key("id").UInt(a.m_id);
                 w.Key("name").String(a.m_name);
                 w.Key("flag1").UInt(a.m_flag1);
                 w.Key("flag2").UInt(a.m_flag2);
                 w.Key("rate").Double(a.m_rate);
                 w.EndObject();
             });
    WriteMap(w, "expense_types", doc.m_expenseTypes,
             [&](const CExpenseType& e)
             {
                 w.BeginObject();
                 w.Key("id").UInt(e.m_id);
                 w.Key("name").String(e.m_name);
                 w.Key("flag").UInt(e.m_flag);
                 w.EndObject();
             });
    WriteMap(w, "payment_methods", doc.m_paymentMethods,
             [&](const CPaymentMethod& p)
             {
                 w.BeginObject();
                 w.Key("id").UInt(p.m_id);
                 w.Key("name").String(p.m_name);
                 w.Key("account_number").String(p.m_accountNumber);
                 w.Key("account_type").UInt(p.m_accountType);
                 w.EndObject();
             });
    WriteMap(w, "contacts", doc.m_contacts,
             [&](const CContact& c)
             {
                 w.BeginObject();
                 w.Key("id").UInt(c.m_id);
                 w.Key("first").String(c.m_first);
                 w.Key("middle").String(c.m_middle);
                 w.Key("last").String(c.m_last);
                 w.Key("address").String(c.m_address);
                 w.Key("phone").String(c.m_phone);
                 w.Key("fax").String(c.m_fax);
                 w.Key("email").String(c.m_email);
                 w.Key("notes").String(c.m_notes);
                 w.EndObject();
             });
    WriteMap(w, "projects", doc.m_projects,
             [&](const CProject& p)
             {
                 w.BeginObject();
                 w.Key("id").UInt(p.m_id);
                 w.Key("prog_id").String(p.m_progId);
                 w.Key("name").String(p.m_name);
                 w.Key("file_identity").UInt(p.m_fileIdentity);
                 w.Key("path").String(p.m_path);
                 w.Key("parent_task").UInt(p.m_parentTaskId);
                 w.Key("resource_id").Int(int32_t(p.m_resourceId));
                 w.Key("resource_name").String(p.m_resourceName);
                 w.Key("last_updated");
                 WriteDate(w, p.m_lastUpdated);
                 w.EndObject();
             });

    std::vector<const CReport*> reports;
    for (const auto& r : doc.m_reports)
        reports.push_back(r.get());
    std::stable_sort(reports.begin(), reports.end(),
                     [](const CReport* a, const CReport* b) { return a->m_id < b->m_id; });
    w.Key("reports").BeginArray();
    for (const CReport* r : reports)
        WriteReport(w, *r);
    w.EndArray();
    w.EndObject();
    w.Text() += '\n';
    return std::move(w.Text());
}

namespace
{
void OutlineTask(const CTimeKeeperDoc& doc, const CTask& t, int depth, std::string& out)
{
    out.append(size_t(depth) * 2, ' ');
    out += doc.GetLevelName(t.m_level) + ": " + t.m_name;
    if (!t.m_abbreviation.empty())
        out += " (" + t.m_abbreviation + ")";
    out += "  #" + std::to_string(t.m_id);
    if (t.m_inactive)
        out += "  [inactive]";
    if (!t.m_taskId.empty() && !t.m_useParentTaskId)
        out += "  id " + t.m_taskId;
    out += '\n';
    for (const CTask* child : t.m_children)
        OutlineTask(doc, *child, depth + 1, out);
}

std::string Money(double v)
{
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.2f", v);
    return buf;
}
} // namespace

std::string DumpOutline(const CTimeKeeperDoc& doc)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    std::string out;
    out += "Document version " + std::to_string(doc.m_fileVersion) + "\n\nTasks\n";
    if (const CTask* root = doc.GetRootTask())
        OutlineTask(doc, *root, 1, out);
    for (const auto& [id, t] : doc.m_tasks)
        if (!t->m_parent && t->m_id != CTimeKeeperDoc::kRootTaskId)
            OutlineTask(doc, *t, 1, out);

    out += "\nLevel names\n";
    for (uint32_t level = 0; level <= 4 || doc.m_levelNames.count(level); ++level)
        out += "  " + std::to_string(level) + " " + doc.GetLevelName(level) + "\n";

    auto catalog = [&](const char* title, const auto& map)
    {
        out += std::string("\n") + title + "\n";
        if (map.empty())
            out += "  (none)\n";
        for (const auto& [id, rec] : map)
            out += "  " + std::to_string(id) + " " + rec->m_name + "\n";
    };
    catalog("Activities", doc.m_activities);
    catalog("Expense types", doc.m_expenseTypes);
    catalog("Payment methods", doc.m_paymentMethods);
    out += "\nContacts\n";
    if (doc.m_contacts.empty())
        out += "  (none)\n";
    for (const auto& [id, c] : doc.m_contacts)
        out += "  " + std::to_string(id) + " " + c->GetDisplayName() + "\n";

    out += "\nDays\n";
    if (doc.m_days.empty())
        out += "  (none)\n";
    for (const auto& [key, day] : doc.m_days)
    {
        out += "  " + day->GetDate().Format("%Y-%m-%d") + "\n";
        for (const auto& e : day->TimeEntries())
        {
            const std::string end = e->m_end.IsNull() ? "running" : e->m_end.ToText();
            out += "    time     " + e->m_start.ToText() + "-" + end + "  " +
                   doc.GetTaskPath(doc.GetTask(e->m_taskId));
            if (!e->m_note.empty())
                out += "  \"" + e->m_note + "\"";
            out += '\n';
        }
        for (const auto& e : day->ExpenseEntries())
        {
            const CExpenseType* type = doc.GetExpenseType(e->m_expenseTypeId);
            out += "    expense  " + Money(e->m_amount) + "  " +
                   (type ? type->m_name : "**Unassigned**") + "  " +
                   doc.GetTaskPath(doc.GetTask(e->m_taskId)) + '\n';
        }
        for (const auto& e : day->ToDoEntries())
            out += "    done     " + e->m_description + "  " +
                   doc.GetTaskPath(doc.GetTask(e->m_taskId)) + '\n';
    }
    out += "\nOutstanding to-dos\n";
    if (doc.m_todoList.empty())
        out += "  (none)\n";
    for (const auto& e : doc.m_todoList)
    {
        out += "  [" + e->m_priority + "] " + e->m_description;
        if (!e->m_dueDate.IsNull())
            out += "  due " + e->m_dueDate.Format("%Y-%m-%d");
        out += "  " + doc.GetTaskPath(doc.GetTask(e->m_taskId)) + '\n';
    }
    out += "\nReports\n";
    if (doc.m_reports.empty())
        out += "  (none)\n";
    for (const auto& r : doc.m_reports)
        out += "  " + std::to_string(r->m_id) + " " + r->m_name + "\n";
    return out;
}

} // namespace cli
