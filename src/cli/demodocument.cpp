#include "cli/demodocument.h"


#include "model/timekeeperdoc.h"

#include <memory>
#include <vector>

namespace cli
{

namespace
{
// A small generator of our own: the standard distributions differ between
// library versions, and the same seed must give the same document everywhere.
class Random
{
public:
    explicit Random(uint64_t seed) : m_state(seed * 0x9E3779B97F4A7C15ull + 0x632BE59BD9B4E019ull)
    {
    }

    uint64_t Next()
    {
        uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    // 0 <= result < n
    int Below(int n) { return n <= 1 ? 0 : int(Next() % uint64_t(n)); }
    int Between(int low, int high) { return low + Below(high - low + 1); }
    bool Chance(int percent) { return Below(100) < percent; }
    template <class T, size_t N> const T& Pick(const T (&items)[N]) { return items[Below(int(N))]; }
    template <class T> const T& Pick(const std::vector<T>& items)
    {
        return items[size_t(Below(int(items.size())))];
    }

private:
    uint64_t m_state;
};

// A task one level below its parent, or at `level` when given.
CTask* AddNamedTask(CTimeKeeperDoc& doc, CTask* parent, const std::string& name,
                    const std::string& abbreviation = {}, int level = 0)
{
    CTask* task =
        doc.AddTask(parent, uint16_t(level > parent->m_level ? level : parent->m_level + 1));
    task->m_abbreviation = abbreviation;
    doc.RenameTask(task, name);
    return task;
}

void SetBilling(CTask* task, bool billable, double rate)
{
    task->m_useParentBilling = false;
    task->m_billable = billable;
    task->m_regularRate = rate;
}

std::unique_ptr<CTimeEntry> MakeTime(const CTask* task, int startMinute, int endMinute,
                                     uint32_t activity, std::string note)
{
    auto e = std::make_unique<CTimeEntry>();
    e->m_taskId = task->m_id;
    e->m_start = CTinyTime(startMinute / 60, startMinute % 60);
    e->m_end = CTinyTime(endMinute / 60, endMinute % 60);
    e->m_activityId = activity;
    e->m_note = std::move(note);
    return e;
}

std::unique_ptr<CExpenseEntry> MakeExpense(const CTask* task, const CDateTime& date, uint32_t type,
                                           double amount, uint32_t method, std::string note)
{
    auto e = std::make_unique<CExpenseEntry>();
    e->m_taskId = task->m_id;
    e->m_date = date;
    e->m_expenseTypeId = type;
    e->m_amount = amount;
    e->m_paymentMethodId = method;
    e->m_note = std::move(note);
    return e;
}

std::unique_ptr<CToDoEntry> MakeToDo(const CTask* task, std::string description,
                                     std::string priority, const CDateTime& due)
{
    auto e = std::make_unique<CToDoEntry>();
    e->m_taskId = task->m_id;
    e->m_description = std::move(description);
    e->m_priority = std::move(priority);
    e->m_dueDate = due;
    e->m_completeDate = CDateTime::Null();
    return e;
}

CReport* AddReport(CTimeKeeperDoc& doc, CReport::Kind kind, const char* name,
                   CReport::Preset preset, const CTask* over)
{
    CReport* report = doc.AddReport(kind);
    report->m_name = name;
    report->m_preset = preset;
    report->m_selectedTasks = {over->m_id};
    return report;
}

bool IsWorkingDay(const CDateTime& day)
{
    const int dow = day.GetDayOfWeek();
    return dow != 1 && dow != 7;
}

// One stretch of work the demo days are made of.
struct Work
{
    CTask* task;
    uint32_t activity;
    const char* notes[3];
};
} // namespace

void MakeDemoDocument(CTimeKeeperDoc& doc, const CDateTime& today, const std::string& employee)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    doc.NewDocument(employee);
    doc.m_defaultMileageRate = 0.55f;
    CTask* root = doc.GetRootTask();

    const uint32_t design = doc.AddActivity("Design")->m_id;
    const uint32_t programming = doc.AddActivity("Programming")->m_id;
    const uint32_t meeting = doc.AddActivity("Meeting")->m_id;
    const uint32_t testing = doc.AddActivity("Testing")->m_id;
    const uint32_t travel = doc.AddActivity("Travel")->m_id;
    const uint32_t support = doc.AddActivity("Support")->m_id;

    CPaymentMethod* visa = doc.AddPaymentMethod("Company Visa");
    visa->m_accountNumber = "4000 1234 5678 9010";
    visa->m_accountType = 0;
    CPaymentMethod* cash = doc.AddPaymentMethod("Cash");
    cash->m_accountType = 2;
    CPaymentMethod* check = doc.AddPaymentMethod("Personal Check");
    check->m_accountType = 5;

    CContact* dana = doc.AddContact();
    dana->m_first = "Dana";
    dana->m_last = "Okafor";
    dana->m_address = "41 Mill Street\nSpringvale, OR 97301";
    dana->m_phone = "(503) 555-0142";
    dana->m_email = "dana.okafor@bellweather.example";
    dana->m_notes = "Prefers a call before 10 a.m.";
    CContact* lee = doc.AddContact();
    lee->m_first = "Morgan";
    lee->m_last = "Lee";
    lee->m_address = "900 Harbor Way, Suite 300\nPort Alder, WA 98101";
    lee->m_phone = "(206) 555-0187";
    lee->m_email = "mlee@harborpine.example";

    CTask* bellweather = AddNamedTask(doc, root, "Bellweather Foods", "BWF");
    SetBilling(bellweather, true, 95.0);
    bellweather->m_useParentContact = false;
    bellweather->m_contactId = dana->m_id;
    bellweather->m_useParentTaskId = false;
    bellweather->m_taskId = "BWF-2024";
    CTask* website = AddNamedTask(doc, bellweather, "Website Redesign");
    website->m_hoursEstimate = 120 * 60;
    website->m_costEstimate = 11400;
    CTask* wsDesign = AddNamedTask(doc, website, "Design", {}, 4);
    CTask* wsDevelopment = AddNamedTask(doc, website, "Development", {}, 4);
    CTask* wsContent = AddNamedTask(doc, website, "Content Migration", {}, 4);
    CTask* ordering = AddNamedTask(doc, bellweather, "Online Ordering");
    CTask* orRequirements = AddNamedTask(doc, ordering, "Requirements", {}, 4);
    CTask* orDevelopment = AddNamedTask(doc, ordering, "Development", {}, 4);
    CTask* orTesting = AddNamedTask(doc, ordering, "Testing", {}, 4);

    CTask* harbor = AddNamedTask(doc, root, "Harbor & Pine Architects", "HPA");
    SetBilling(harbor, true, 110.0);
    harbor->m_useParentContact = false;
    harbor->m_contactId = lee->m_id;
    CTask* tracker = AddNamedTask(doc, harbor, "Project Tracker");
    CTask* trDatabase = AddNamedTask(doc, tracker, "Database", {}, 4);
    CTask* trReports = AddNamedTask(doc, tracker, "Reports", {}, 4);
    CTask* trTraining = AddNamedTask(doc, tracker, "Training", {}, 4);

    CTask* larkspur = AddNamedTask(doc, root, "Larkspur Clinic", "LC");
    SetBilling(larkspur, true, 85.0);
    CTask* network = AddNamedTask(doc, larkspur, "Network Upgrade");
    CTask* nwSurvey = AddNamedTask(doc, network, "Site Survey", {}, 4);
    CTask* nwInstall = AddNamedTask(doc, network, "Installation", {}, 4);
    CTask* supportContract = AddNamedTask(doc, larkspur, "Support Contract");

    CTask* internal = AddNamedTask(doc, root, "Internal");
    SetBilling(internal, false, 0.0);
    CTask* admin = AddNamedTask(doc, internal, "Administration");
    CTask* learning = AddNamedTask(doc, internal, "Training & Reading");
    CTask* archived = AddNamedTask(doc, internal, "Old Brochure");
    archived->m_inactive = true;

    const Work works[] = {
        {wsDesign, design, {"Home page mock-ups", "Colour palette review", "Menu page layout"}},
        {wsDevelopment, programming, {"Page templates", "Contact form", "Image gallery"}},
        {wsContent, programming, {"Moved recipe pages", "Fixed broken links", ""}},
        {orRequirements, meeting, {"Workshop with Dana", "Checkout flow notes", ""}},
        {orDevelopment, programming, {"Cart and checkout", "Payment gateway", "Order e-mails"}},
        {orTesting, testing, {"Test plan", "Checkout tests", "Regression run"}},
        {trDatabase, programming, {"Schema for phases", "Import of old sheets", ""}},
        {trReports, programming, {"Hours by phase report", "Budget report", ""}},
        {trTraining, meeting, {"Training session", "", ""}},
        {nwSurvey, travel, {"On site: server room", "Cable survey", ""}},
        {nwInstall, support, {"Switch installation", "Wi-Fi access points", "Firewall rules"}},
        {supportContract, support, {"Printer queue", "New laptop set-up", "Backup check"}},
        {admin, 0, {"E-mail", "Invoices", "Timesheets"}},
        {learning, 0, {"Reading", "", ""}},
    };

    Random random(20240611);
    const CDateTime first = today.DatePart().AddDays(-28);
    std::vector<CDateTime> workDays;
    for (int i = 0; i < 28; ++i)
    {
        const CDateTime day = first.AddDays(i).DatePart();
        if (IsWorkingDay(day))
            workDays.push_back(day);
    }

    for (size_t d = 0; d < workDays.size(); ++d)
    {
        const CDateTime date = workDays[d];
        CDay* day = doc.GetOrCreateDay(date);
        // A morning and an afternoon, each a few stretches with short breaks.
        int minute = 8 * 60 + 15 * random.Below(4);
        const int lunch = 12 * 60 + 15 * random.Below(3);
        const int stop = 17 * 60 + 15 * random.Below(5);
        bool hadLunch = false;
        // Work of this week leans on two projects.
        const size_t focus = (d / 5) % 4;
        while (minute < stop)
        {
            if (!hadLunch && minute >= lunch)
            {
                minute += 45;
                hadLunch = true;
                continue;
            }
            const Work& work = random.Chance(60)
                                   ? works[(focus * 3 + size_t(random.Below(4))) % std::size(works)]
                                   : random.Pick(works);
            int length = 15 * random.Between(2, 8);
            if (!hadLunch && minute + length > lunch)
                length = std::max(15, lunch - minute);
            length = std::min(length, stop - minute);
            if (length < 15)
                break;
            const char* note = work.notes[random.Below(3)];
            doc.FileTimeEntry(day,
                              MakeTime(work.task, minute, minute + length, work.activity, note));
            work.task->m_lastNote = note;
            work.task->m_lastActivityId = work.activity;
            minute += length + (random.Chance(30) ? 15 : 0);
        }

        if (random.Chance(25))
            doc.FileExpenseEntry(day, MakeExpense(random.Chance(50) ? orRequirements : trDatabase,
                                                  date, 8, 18.0 + random.Below(2600) / 100.0,
                                                  visa->m_id, "Working lunch"));
        if (date.GetDayOfWeek() == 3 || date.GetDayOfWeek() == 5)
        {
            const int miles = random.Between(12, 38);
            auto mileage = MakeExpense(random.Chance(50) ? nwSurvey : supportContract, date,
                                       CExpenseType::kMileageId,
                                       CExpenseEntry::MileageAmount(miles, doc.m_defaultMileageRate), uint32_t(-1),
                                       "Drive to the clinic and back");
            mileage->m_distance = float(miles);
            doc.FileExpenseEntry(day, std::move(mileage));
            if (random.Chance(50))
                doc.FileExpenseEntry(
                    day, MakeExpense(supportContract, date, 10, 6.0, cash->m_id, "Parking"));
        }
    }
    if (workDays.size() > 6)
    {
        const CDateTime tripDay = workDays[workDays.size() - 6];
        CDay* day = doc.GetOrCreateDay(tripDay);
        auto flight = MakeExpense(trTraining, tripDay, 1, 412.80, visa->m_id,
                                  "Flight to Port Alder for training");
        flight->m_number = 5531;
        doc.FileExpenseEntry(day, std::move(flight));
        doc.FileExpenseEntry(day, MakeExpense(trTraining, tripDay, 7, 189.00, visa->m_id,
                                              "Harborview Inn, 1 night"));
        doc.FileExpenseEntry(
            day, MakeExpense(trTraining, tripDay, 13, 42.50, cash->m_id, "Airport taxi"));
        auto software = MakeExpense(learning, tripDay, 11, 12.40, check->m_id, "Posted contracts");
        software->m_billable = false;
        doc.FileExpenseEntry(day, std::move(software));
    }

    const CDateTime todayDate = today.DatePart();
    doc.AddOutstandingToDo(
        MakeToDo(orDevelopment, "Finish the order confirmation e-mail", "1", todayDate.AddDays(2)));
    doc.AddOutstandingToDo(
        MakeToDo(orTesting, "Test checkout with an expired card", "2", todayDate.AddDays(5)));
    doc.AddOutstandingToDo(
        MakeToDo(wsContent, "Move the last recipe pages", "3", todayDate.AddDays(-2)));
    doc.AddOutstandingToDo(
        MakeToDo(trReports, "Send the budget report draft to Morgan", "A", todayDate.AddDays(7)));
    doc.AddOutstandingToDo(
        MakeToDo(nwInstall, "Order two more access points", "B", CDateTime::Null()));
    doc.AddOutstandingToDo(
        MakeToDo(admin, "Send this month's invoices", "1", todayDate.AddDays(10)));
    const struct
    {
        CTask* task;
        const char* description;
        int daysAgo;
    } done[] = {
        {wsDesign, "Get sign-off on the home page design", 20},
        {orRequirements, "Write up the checkout workshop", 13},
        {nwSurvey, "Label the patch panel", 9},
        {admin, "Renew the liability insurance", 3},
    };
    for (const auto& d : done)
    {
        const CDateTime date = todayDate.AddDays(-d.daysAgo);
        auto todo = MakeToDo(d.task, d.description, "2", date);
        todo->m_completeDate = date;
        doc.FileCompletedToDo(doc.GetOrCreateDay(date), std::move(todo));
    }

    CReport* week =
        AddReport(doc, CReport::timeDetail, "This Week's Time", CReport::currentWeek, root);
    week->m_fieldFlags = CReport::fieldNote;
    CReport* month =
        AddReport(doc, CReport::timeSummary, "Hours by Client", CReport::currentMonth, root);
    month->m_summarizeLevel = 1;
    month->m_showTotals = true;
    month->m_rollup = true;
    AddReport(doc, CReport::expenseDetail, "Expenses Last Month", CReport::previousMonth, root);
    CReport* todos = AddReport(doc, CReport::todoDetail, "Open To Dos", CReport::allDates, root);
    todos->m_includeBillable = true;
    todos->m_includeNonBillable = false;
    CReport* invoice = AddReport(doc, CReport::invoice, "Bellweather Foods Invoice",
                                 CReport::previousMonth, bellweather);
    invoice->m_summarizeLevel = 2;
    invoice->m_recipient =
        "Bellweather Foods\nAttn: Dana Okafor\n41 Mill Street\nSpringvale, OR 97301";
    invoice->m_showTerms = true;
    invoice->m_terms = "Net 30";

    doc.m_recentTasks = {orDevelopment->m_id, supportContract->m_id, wsDesign->m_id, admin->m_id};
    doc.SetModifiedFlag(true);
}

namespace
{
const char* const kClientFirst[] = {"Amber",   "Beacon",  "Cedar",    "Delta", "Ember",
                                    "Falcon",  "Granite", "Harbor",   "Iris",  "Juniper",
                                    "Kestrel", "Linden",  "Meridian", "Nimbus"};
const char* const kClientSecond[] = {"Foods",     "Logistics", "Clinic",     "Architects", "Bakery",
                                     "Insurance", "Museum",    "Outfitters", "Dental",     "Press"};
const char* const kProjects[] = {"Website",        "Mobile App",     "Data Warehouse",
                                 "Intranet",       "Annual Audit",   "Network Upgrade",
                                 "Billing System", "Marketing Site", "Support",
                                 "Migration",      "Reporting",      "Training Program"};
const char* const kSubProjects[] = {"Phase 1",     "Phase 2", "Phase 3",
                                    "Maintenance", "Pilot",   "Rollout"};
const char* const kTasks[] = {"Analysis", "Design",  "Development", "Testing",  "Documentation",
                              "Meetings", "Support", "Deployment",  "Research", "Review"};
const char* const kVerbs[] = {"Fixed",     "Reviewed", "Drafted", "Updated",    "Tested",
                              "Discussed", "Planned",  "Wrote",   "Cleaned up", "Called about"};
const char* const kObjects[] = {"login page",      "invoice export", "the schema",
                                "release notes",   "the test plan",  "user feedback",
                                "the budget",      "search results", "backup scripts",
                                "the style guide", "open tickets",   "the data import"};
const char* const kActivities[] = {"Analysis", "Programming", "Meeting",
                                   "Testing",  "Travel",      "Support"};
const char* const kToDos[] = {"Send the weekly status report",
                              "Book the project review",
                              "Update the estimate",
                              "Ask for the test accounts",
                              "Renew the certificate",
                              "Archive last year's files",
                              "Prepare the demo",
                              "Check the backup restore"};
const char kPriorities[] = "123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
} // namespace

void MakeSyntheticDocument(CTimeKeeperDoc& doc, const SyntheticOptions& options)
{
    std::lock_guard<std::recursive_mutex> lock(doc.GetLock());
    Random random(options.seed);
    doc.NewDocument("Synthetic User");
    doc.m_defaultMileageRate = 0.5f;
    CTask* root = doc.GetRootTask();

    std::vector<uint32_t> activities;
    for (const char* name : kActivities)
        activities.push_back(doc.AddActivity(name)->m_id);
    std::vector<uint32_t> methods;
    for (const char* name : {"Company Card", "Cash", "Personal Card"})
        methods.push_back(doc.AddPaymentMethod(name)->m_id);

    // Four levels: clients, projects, sub projects and tasks; time goes mostly to the leaves.
    std::vector<CTask*> leaves;
    std::vector<CTask*> subProjects;
    const int clients = 12;
    for (int c = 0; c < clients; ++c)
    {
        const std::string name = std::string(kClientFirst[size_t(c) % std::size(kClientFirst)]) +
                                 " " + kClientSecond[size_t(c * 7 + 3) % std::size(kClientSecond)];
        CTask* client = AddNamedTask(doc, root, name);
        SetBilling(client, c % 5 != 4, 60.0 + 5.0 * random.Below(13));
        const int projects = random.Between(2, 4);
        for (int p = 0; p < projects; ++p)
        {
            CTask* project =
                AddNamedTask(doc, client, kProjects[size_t(c + p * 5) % std::size(kProjects)]);
            const int subs = random.Between(2, 4);
            for (int s = 0; s < subs; ++s)
            {
                CTask* sub = AddNamedTask(doc, project, kSubProjects[size_t(s)]);
                subProjects.push_back(sub);
                const int tasks = random.Between(2, 4);
                for (int t = 0; t < tasks; ++t)
                    leaves.push_back(
                        AddNamedTask(doc, sub, kTasks[size_t(p + s + t * 3) % std::size(kTasks)]));
            }
        }
    }

    const int firstYear = options.firstYear;
    const int64_t firstDay = DaysFromCivil(firstYear, 1, 1);
    const int64_t endDay = DaysFromCivil(firstYear + options.years, 1, 1);
    const int perDay = std::max(1, options.timeEntriesPerDay);
    // Keep the day within 07:00 to 24:00 however many entries it holds.
    const int slot = std::max(2, (17 * 60 - 30) / perDay);
    std::vector<std::unique_ptr<CToDoEntry>> open;

    for (int64_t n = firstDay; n < endDay; ++n)
    {
        const int weekday = int((n + 4) % 7); // 1970-01-01 was a Thursday; 0 = Sunday
        if (weekday == 0 || weekday == 6)
            continue;
        int y = 0, m = 0, d = 0;
        CivilFromDays(n, y, m, d);
        const CDateTime date = CDateTime::FromDate(y, m, d);
        CDay* day = doc.GetOrCreateDay(date);

        // A day's work mostly stays within a few tasks.
        CTask* focus[3] = {random.Pick(leaves), random.Pick(leaves), random.Pick(leaves)};
        int minute = 7 * 60 + 5 * random.Below(12);
        for (int i = 0; i < perDay; ++i)
        {
            const int length = std::max(1, slot * random.Between(30, 60) / 100);
            const int end = std::min(24 * 60, minute + length);
            if (end <= minute)
                break;
            CTask* task = random.Chance(80) ? focus[random.Below(3)] : random.Pick(leaves);
            std::string note;
            if (random.Chance(60))
                note = std::string(random.Pick(kVerbs)) + " " + random.Pick(kObjects);
            const uint32_t activity = random.Chance(75) ? random.Pick(activities) : 0;
            auto entry = MakeTime(task, minute, end, activity, std::move(note));
            if (random.Chance(3))
            {
                entry->m_customBilling = true;
                entry->m_billable = random.Chance(70);
                entry->m_rate = 50.0 + random.Below(100);
            }
            doc.FileTimeEntry(day, std::move(entry));
            minute = end + (random.Chance(20) ? 5 : 0);
        }

        const int expenses =
            options.expensesPerDay <= 0 ? 0 : random.Below(2 * options.expensesPerDay + 1);
        for (int i = 0; i < expenses; ++i)
        {
            const uint32_t type = uint32_t(random.Between(1, 14));
            CTask* task = random.Pick(focus);
            std::unique_ptr<CExpenseEntry> expense;
            if (type == CExpenseType::kMileageId)
            {
                const int miles = random.Between(3, 120);
                expense =
                    MakeExpense(task, date, type, CExpenseEntry::MileageAmount(miles, doc.m_defaultMileageRate),
                                uint32_t(-1), "Client visit");
                expense->m_distance = float(miles);
            }
            else
                expense = MakeExpense(
                    task, date, type, random.Between(300, 25000) / 100.0, random.Pick(methods),
                    random.Chance(50) ? std::string(random.Pick(kObjects)) : std::string());
            expense->m_billable = random.Chance(80);
            doc.FileExpenseEntry(day, std::move(expense));
        }

        // About three to-dos a week; each is done within a few weeks or left open.
        if (random.Chance(60))
        {
            CTask* task = random.Chance(70) ? random.Pick(focus) : random.Pick(subProjects);
            open.push_back(MakeToDo(
                task, random.Pick(kToDos), std::string(1, kPriorities[random.Below(12)]),
                random.Chance(60) ? date.AddDays(random.Between(3, 30)) : CDateTime::Null()));
        }
        if (!open.empty() && random.Chance(55))
        {
            const size_t k = size_t(random.Below(int(open.size())));
            std::unique_ptr<CToDoEntry> todo = std::move(open[k]);
            open.erase(open.begin() + long(k));
            todo->m_completeDate = date;
            doc.FileCompletedToDo(day, std::move(todo));
        }
    }
    for (auto& todo : open)
        doc.AddOutstandingToDo(std::move(todo));

    AddReport(doc, CReport::timeDetail, "Time This Month", CReport::currentMonth, root);
    CReport* summary =
        AddReport(doc, CReport::timeSummary, "Weekly Hours by Project", CReport::allDates, root);
    summary->m_summarizeLevel = 2;
    summary->m_timeFrame = CReport::frameWeek;
    summary->m_showTotals = true;

    for (size_t i = 0; i < 10 && i < leaves.size(); ++i)
        doc.m_recentTasks.push_back(leaves[i * 7 % leaves.size()]->m_id);
    doc.SetModifiedFlag(true);
}

} // namespace cli
