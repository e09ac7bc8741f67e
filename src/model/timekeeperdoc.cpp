#include "model/timekeeperdoc.h"

#include "platform/messages.h"

#include <algorithm>
#include <ctime>
#include <new>

#include <sys/mman.h>

namespace
{
const char kNotADocument[] = "not a Quorvane Time & Expense document";

using Lock = std::lock_guard<std::recursive_mutex>;

const char* const kDefaultLevelNames[] = {"Employee", "Client", "Project", "Sub Project", "Task"};

const char* const kDefaultExpenseTypes[] = {
    "Airfare", "Breakfast", "Car Rental", "Dinner",    "Entertainment", "Gas",  "Lodging",
    "Lunch",   "Mileage",   "Parking",    "Postage",   "Telephone",     "Taxi", "Tips",
};

// The smallest object a collection can hold in a stream; bounds reservations made
// from counts read out of the file.
constexpr size_t kMinObjectBytes = 8;

bool LessNoCase(const std::string& a, const std::string& b)
{
    const size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i)
    {
        unsigned char ca = static_cast<unsigned char>(a[i]);
        unsigned char cb = static_cast<unsigned char>(b[i]);
        if (ca >= 'A' && ca <= 'Z')
            ca = static_cast<unsigned char>(ca - 'A' + 'a');
        if (cb >= 'A' && cb <= 'Z')
            cb = static_cast<unsigned char>(cb - 'A' + 'a');
        if (ca != cb)
            return ca < cb;
    }
    return a.size() < b.size();
}

template <class T> void EraseByIdentity(std::vector<T*>& list, const T* item)
{
    // Entries just filed sit at the back; look there first.
    for (size_t i = list.size(); i-- > 0;)
        if (list[i] == item)
        {
            list.erase(list.begin() + long(i));
            return;
        }
}

CTinyTime TimeFromMinutes(int64_t minutes)
{
    // A moment on a later day than the entry's own ends that day.
    if (minutes >= 24 * 60)
        return CTinyTime(24, 0);
    if (minutes < 0)
        return CTinyTime(0, 0);
    return CTinyTime(int(minutes / 60), int(minutes % 60));
}

// A large buffer filled front to back faults far less in huge pages.
void AdviseHugePages(void* data, size_t size)
{
    constexpr uintptr_t kHuge = uintptr_t(2) << 20;
    const uintptr_t begin = (reinterpret_cast<uintptr_t>(data) + kHuge - 1) & ~(kHuge - 1);
    const uintptr_t end = (reinterpret_cast<uintptr_t>(data) + size) & ~(kHuge - 1);
    if (end > begin)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

// The record a map of owned records holds under `key`, or null.
template <class Map, class Key>
auto FindOwned(const Map& map, const Key& key) -> decltype(map.begin()->second.get())
{
    auto it = map.find(key);
    return it == map.end() ? nullptr : it->second.get();
}

bool InRange(const std::string& key, const std::string& fromKey, const std::string& toKey)
{
    return (fromKey.empty() || key >= fromKey) && (toKey.empty() || key <= toKey);
}
} // namespace

CTimeKeeperDoc::CTimeKeeperDoc() = default;

CTimeKeeperDoc::~CTimeKeeperDoc() { DeleteContents(); }

void CTimeKeeperDoc::DeleteContents()
{
    Lock lock(m_lock);
    ClearTimerState();
    m_days.clear();
    m_todoList.clear();
    m_tasks.clear();
    m_reports.clear();
    m_activities.clear();
    m_levelNames.clear();
    m_expenseTypes.clear();
    m_paymentMethods.clear();
    m_contacts.clear();
    m_projects.clear();
    m_recentTasks.clear();
    m_readTask = nullptr;
}

void CTimeKeeperDoc::NewDocument(const std::string& employeeName)
{
    Lock lock(m_lock);
    m_loading = true;
    CloseHeldFile();
    SetPathName(std::string());
    DeleteContents();

    auto root = std::make_unique<CTask>();
    root->m_id = kRootTaskId;
    root->m_parentId = 0;
    root->m_name = employeeName;
    root->m_level = 0;
    root->m_billable = true;
    root->m_regularRate = 0.0;
    root->m_useParentBilling = false;
    root->m_useParentTaskId = false;
    root->m_useParentContact = false;
    root->m_expanded = true;
    m_tasks.emplace(kRootTaskId, std::move(root));

    m_lastTaskId = kRootTaskId;
    m_lastReportId = 0;
    m_lastContactId = 0;
    m_lastProjectId = 0;
    m_lastActivityId = 0;
    m_lastExpenseTypeId = 0;
    m_lastPaymentMethodId = 0;
    m_headerValue = 0;
    m_defaultMileageRate = 0.0f;

    for (const char* name : kDefaultExpenseTypes)
    {
        auto type = std::make_unique<CExpenseType>();
        type->m_id = ++m_lastExpenseTypeId;
        type->m_name = name;
        m_expenseTypes.emplace(type->m_id, std::move(type));
    }
    ClearTimerState();
    for (uint32_t level = 0; level < 5; ++level)
        m_levelNames[level] = kDefaultLevelNames[level];

    m_fileVersion = kCurrentVersion;
    m_modified = false;
    m_loading = false;
    UpdateAllViews(hintAll);
}

std::unique_ptr<CObject> CTimeKeeperDoc::CreateRecord(std::string_view className)
{
    // The entries come first: a large document is almost all entries. Every field is
    // read or defaulted by Serialize, so they are not zeroed first.
    if (className == "CTimeEntry")
        return std::unique_ptr<CObject>(new CTimeEntry);
    if (className == "CExpenseEntry")
        return std::unique_ptr<CObject>(new CExpenseEntry);
    if (className == "CDay")
        return std::make_unique<CDay>();
    if (className == "CToDoEntry")
        return std::unique_ptr<CObject>(new CToDoEntry);
    if (className == "CTask")
        return std::make_unique<CTask>();
    if (className == "CActivityRate")
        return std::make_unique<CActivityRate>();
    if (className == "CActivity")
        return std::make_unique<CActivity>();
    if (className == "CExpenseType")
        return std::make_unique<CExpenseType>();
    if (className == "CPaymentMethod")
        return std::make_unique<CPaymentMethod>();
    if (className == "CContact")
        return std::make_unique<CContact>();
    if (className == "CProject")
        return std::make_unique<CProject>();
    return CReport::CreateByClassName(className);
}

LoadResult CTimeKeeperDoc::LoadFromBytes(const uint8_t* data, size_t size, platform::Prompter& prompter)
{
    {
        Lock lock(m_lock);
        m_loading = true;
        DeleteContents();
        m_modified = false;
    }
    LoadResult result;
    // The questions about the file's version come first, without the lock held; the
    // reading below then takes the answer as given.
    class Confirmed : public platform::Prompter
    {
    public:
        void ShowMessage(const std::string&, platform::Icon) override {}
        platform::Answer AskYesNo(const std::string&, platform::Icon) override { return platform::Answer::yes; }
        platform::Answer AskYesNoCancel(const std::string&, platform::Icon) override
        {
            return platform::Answer::yes;
        }
    } confirmed;
    platform::Prompter* reader = &prompter;
    if (size >= 4)
    {
        const uint32_t version = uint32_t(data[0]) | uint32_t(data[1]) << 8 | uint32_t(data[2]) << 16 |
                                 uint32_t(data[3]) << 24;
        result.version = version;
        if (version == 0 || version > kHighestPlausibleVersion)
        {
            result.status = LoadResult::failed;
            result.notDocument = true;
            result.error = kNotADocument;
            m_loading = false;
            m_lastLoad = result;
            return result;
        }
        if (version > kCurrentVersion)
        {
            prompter.ShowMessage(platform::LoadString(40029), platform::Icon::error);
            result.status = LoadResult::cancelled;
        }
        else if (version >= 5 && version < kCurrentVersion)
        {
            if (prompter.AskYesNo(platform::LoadString(41018)) != platform::Answer::yes)
                result.status = LoadResult::cancelled;
            reader = &confirmed;
        }
        if (result.status == LoadResult::cancelled)
        {
            m_loading = false;
            m_lastLoad = result;
            return result;
        }
    }

    Lock lock(m_lock);
    try
    {
        CArchive ar(data, size, &CTimeKeeperDoc::CreateRecord);
        ReadDocument(ar, *reader, result);
    }
    catch (const ArchiveError& e)
    {
        result.status = LoadResult::failed;
        result.error = (e.GetRecord().empty() ? std::string("CTimeKeeperDoc") : e.GetRecord()) +
                       " record at offset " + std::to_string(e.GetOffset()) + ": " + e.GetDetail();
    }
    catch (const std::bad_alloc&)
    {
        result.status = LoadResult::failed;
        result.error = "the document does not fit in memory";
    }
    catch (const std::exception& e)
    {
        result.status = LoadResult::failed;
        result.error = std::string("the document could not be read: ") + e.what();
    }
    if (result.status != LoadResult::loaded)
    {
        DeleteContents();
        m_modified = false;
    }
    m_readTask = nullptr;
    m_loading = false;
    m_lastLoad = result;
    return result;
}

bool CTimeKeeperDoc::ReadFromBytes(const std::vector<uint8_t>& bytes, platform::Prompter& prompter)
{
    const LoadResult result = LoadFromBytes(bytes.data(), bytes.size(), prompter);
    // A cancelled load has already said why (40029) or was the user's choice (41018).
    if (result.notDocument)
        prompter.ShowMessage("The file '" + (m_heldFile ? m_heldFile->GetPath() : m_pathName) +
                                 "' is " + kNotADocument + ".",
                             platform::Icon::error);
    else if (result.status == LoadResult::failed)
        prompter.ShowMessage("Failed to open document.\n\n" + result.error, platform::Icon::error);
    return result.status == LoadResult::loaded;
}

void CTimeKeeperDoc::ReadDocument(CArchive& ar, platform::Prompter& prompter, LoadResult& result)
{
    Lock lock(m_lock);
    const uint32_t version = ar.ReadU32();
    result.version = version;
    if (version > kCurrentVersion)
    {
        prompter.ShowMessage(platform::LoadString(40029), platform::Icon::error);
        result.status = LoadResult::cancelled;
        return;
    }
    if (version < 5)
        throw ArchiveError(ArchiveError::badSchema, "CTimeKeeperDoc", 0,
                           "document version " + std::to_string(version) + " is not supported");
    if (version < kCurrentVersion &&
        prompter.AskYesNo(platform::LoadString(41018)) != platform::Answer::yes)
    {
        result.status = LoadResult::cancelled;
        return;
    }

    if (version >= 9)
        ReadCurrentLayout(ar, version);
    else
        ReadOldLayout(ar, version);

    LinkAllTasks();
    m_timerRunning = m_activeEntry != nullptr;
    m_fileVersion = version;
    // Closing a converted file asks to save it in the current layout.
    m_modified = version < kCurrentVersion;
    result.status = LoadResult::loaded;
}

void CTimeKeeperDoc::ReadCurrentLayout(CArchive& ar, uint32_t)
{
    m_headerValue = ar.ReadU32();
    ar.ReadDate(); // reserved
    m_lastTaskId = ar.ReadU32();
    const uint32_t taskCount = ar.ReadU32();
    m_lastReportId = ar.ReadU32();
    m_lastContactId = ar.ReadU32();
    m_lastProjectId = ar.ReadU32();
    m_lastActivityId = ar.ReadU32();
    m_lastExpenseTypeId = ar.ReadU32();
    m_lastPaymentMethodId = ar.ReadU32();
    const uint32_t reportCount = ar.ReadU32();
    const uint32_t dayCount = ar.ReadU32();
    ar.ReadF64(); // reserved
    m_defaultMileageRate = ar.ReadF32();
    m_recentTasks = ar.ReadIdArray();
    ar.ReadF64(); // reserved

    const uint32_t contacts = ar.ReadU32();
    for (uint32_t i = 0; i < contacts; ++i)
        if (auto contact = ar.ReadObjectOf<CContact>("CContact"))
        {
            const uint32_t id = contact->m_id;
            m_contacts[id] = std::move(contact);
        }
    const uint32_t projects = ar.ReadU32();
    for (uint32_t i = 0; i < projects; ++i)
        if (auto project = ar.ReadObjectOf<CProject>("CProject"))
        {
            const uint32_t id = project->m_id;
            m_projects[id] = std::move(project);
        }

    ReadTasks(ar, taskCount);
    ar.ReadF64(); // reserved
    ReadReports(ar, reportCount);
    ar.ReadF64(); // reserved
    ReadDays(ar, dayCount);

    const uint32_t activities = ar.ReadU32();
    for (uint32_t i = 0; i < activities; ++i)
        if (auto activity = ar.ReadObjectOf<CActivity>("CActivity"))
        {
            const uint32_t id = activity->m_id;
            m_activities[id] = std::move(activity);
        }
    ReadCatalogs(ar);
    ReadToDoList(ar);
}

void CTimeKeeperDoc::ReadOldLayout(CArchive& ar, uint32_t version)
{
    ar.ReadOldDate(); // reserved
    m_headerValue = 0;
    m_lastTaskId = ar.ReadU32();
    const uint32_t taskCount = ar.ReadU32();
    m_lastReportId = ar.ReadU32();
    m_lastExpenseTypeId = ar.ReadU32();
    m_lastPaymentMethodId = ar.ReadU32();
    const uint32_t reportCount = ar.ReadU32();
    const uint32_t dayCount = ar.ReadU32();
    ar.ReadF64(); // reserved
    m_defaultMileageRate = ar.ReadF32();
    m_recentTasks = ar.ReadIdArray();
    ar.ReadF64(); // reserved

    ReadTasks(ar, taskCount);
    ar.ReadF64(); // reserved
    ReadReports(ar, reportCount);
    ar.ReadF64(); // reserved
    ReadDays(ar, dayCount);

    // Activities were bare id and name pairs then.
    m_lastActivityId = ar.ReadU32();
    const uint32_t activities = ar.ReadU32();
    for (uint32_t i = 0; i < activities; ++i)
    {
        auto activity = std::make_unique<CActivity>();
        activity->m_id = ar.ReadU32();
        activity->m_name = ar.ReadString();
        activity->m_flag1 = 1;
        activity->m_flag2 = 0;
        activity->m_rate = 0.0;
        const uint32_t id = activity->m_id;
        m_activities[id] = std::move(activity);
    }
    ReadCatalogs(ar);
    if (version >= 6)
        ReadToDoList(ar);
    m_lastContactId = 0;
    m_lastProjectId = 0;
}

void CTimeKeeperDoc::ReadTasks(CArchive& ar, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i)
        if (auto task = ar.ReadObjectOf<CTask>("CTask"))
        {
            const uint32_t id = task->m_id;
            task->m_parent = nullptr;
            m_tasks[id] = std::move(task);
        }
    // Entries, to-dos and the tree all hang on the root.
    if (!GetRootTask())
        ar.Fail(ArchiveError::badFormat, "the file has no root task (id 1)");
}

void CTimeKeeperDoc::ReadReports(CArchive& ar, uint32_t count)
{
    static const std::vector<std::string_view> kReportClasses = {
        "CTimeDetailReport",     "CTimeSummaryReport",        "CExpenseDetailReport",
        "CExpenseSummaryReport", "CToDoDetailReport",         "CInvoiceReport",
        "CTimeExpenseSummaryReport", "CBillingSummaryReport", "CReport",
    };
    for (uint32_t i = 0; i < count; ++i)
    {
        std::unique_ptr<CObject> obj = ar.ReadObject(kReportClasses);
        if (obj)
            m_reports.emplace_back(static_cast<CReport*>(obj.release()));
    }
}

CTask* CTimeKeeperDoc::OwnerForRead(CEntry& entry)
{
    if (m_readTask && m_readTask->m_id == entry.m_taskId)
        return m_readTask;
    auto it = m_tasks.find(entry.m_taskId);
    if (it != m_tasks.end())
        return m_readTask = it->second.get();
    // An entry of a task that is not in the file goes to the root, as to-dos do: kept
    // and visible to the user rather than silently dropped.
    entry.m_taskId = kRootTaskId;
    return GetRootTask();
}

void CTimeKeeperDoc::ReadDays(CArchive& ar, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i)
    {
        std::unique_ptr<CDay> day = ar.ReadObjectOf<CDay>("CDay");
        if (!day || day->IsEmpty())
            continue;
        for (const auto& e : day->TimeEntries())
        {
            OwnerForRead(*e)->m_timeEntries.push_back(e.get());
            if (e->IsRunning() && !m_activeEntry)
                m_activeEntry = e.get();
        }
        for (const auto& e : day->ExpenseEntries())
            OwnerForRead(*e)->m_expenseEntries.push_back(e.get());
        for (const auto& e : day->ToDoEntries())
            OwnerForRead(*e)->m_todoEntries.push_back(e.get());

        // Days are written in key order: the hint makes each insertion constant time.
        auto it = m_days.empty() || m_days.rbegin()->first < day->GetKey() ? m_days.end()
                                                                            : m_days.lower_bound(day->GetKey());
        if (it == m_days.end() || it->first != day->GetKey())
        {
            std::string key = day->GetKey();
            m_days.emplace_hint(it, std::move(key), std::move(day));
            continue;
        }
        // The same day twice: one day holds the entries of both.
        CDay* into = it->second.get();
        std::vector<std::unique_ptr<CEntry>> moved;
        day->ExtractEntries([](const CEntry&) { return true; }, moved);
        std::reverse(moved.begin(), moved.end());
        for (auto& e : moved)
        {
            CEntry* raw = e.release();
            if (auto* t = dynamic_cast<CTimeEntry*>(raw))
                into->InsertTimeEntry(std::unique_ptr<CTimeEntry>(t));
            else if (auto* x = dynamic_cast<CExpenseEntry*>(raw))
                into->AddExpenseEntry(std::unique_ptr<CExpenseEntry>(x));
            else
                into->AddToDoEntry(std::unique_ptr<CToDoEntry>(static_cast<CToDoEntry*>(raw)));
        }
    }
}

void CTimeKeeperDoc::ReadCatalogs(CArchive& ar)
{
    const uint32_t levels = ar.ReadU32();
    for (uint32_t i = 0; i < levels; ++i)
    {
        const uint32_t level = ar.ReadU32();
        m_levelNames[level] = ar.ReadString();
    }
    const uint32_t types = ar.ReadU32();
    for (uint32_t i = 0; i < types; ++i)
        if (auto type = ar.ReadObjectOf<CExpenseType>("CExpenseType"))
        {
            const uint32_t id = type->m_id;
            m_expenseTypes[id] = std::move(type);
        }
    const uint32_t methods = ar.ReadU32();
    for (uint32_t i = 0; i < methods; ++i)
        if (auto method = ar.ReadObjectOf<CPaymentMethod>("CPaymentMethod"))
        {
            const uint32_t id = method->m_id;
            m_paymentMethods[id] = std::move(method);
        }
}

void CTimeKeeperDoc::ReadToDoList(CArchive& ar)
{
    const uint32_t count = ar.ReadU32();
    m_todoList.reserve(std::min<size_t>(count, ar.Remaining() / kMinObjectBytes));
    for (uint32_t i = 0; i < count; ++i)
        if (auto todo = ar.ReadObjectOf<CToDoEntry>("CToDoEntry"))
        {
            todo->m_day = nullptr;
            OwnerForRead(*todo)->m_todoEntries.push_back(todo.get());
            m_todoList.push_back(std::move(todo));
        }
}

void CTimeKeeperDoc::LinkAllTasks()
{
    // Children are linked in id order; inserting each after the last sibling that sorts
    // before it puts equal names in reverse order of linking, which a stable sort of the
    // reversed list reproduces in one pass.
    for (auto& [id, task] : m_tasks)
    {
        task->m_parent = nullptr;
        task->m_children.clear();
    }
    for (auto& [id, task] : m_tasks)
    {
        // The root stays at the top whatever parent it names.
        if (task->m_parentId == 0 || task->m_parentId == id || id == kRootTaskId)
            continue;
        auto it = m_tasks.find(task->m_parentId);
        if (it == m_tasks.end())
            continue;
        CTask* parent = it->second.get();
        // A parent chain that comes back to the task would make a cycle: leave it unlinked.
        if (parent->IsSelfOrDescendantOf(task.get()))
            continue;
        task->m_parent = parent;
        parent->m_children.push_back(task.get());
    }
    for (auto& [id, task] : m_tasks)
    {
        auto& children = task->m_children;
        if (children.size() < 2)
            continue;
        std::reverse(children.begin(), children.end());
        std::stable_sort(children.begin(), children.end(), [this](const CTask* a, const CTask* b) {
            return LessNoCase(a->GetDisplayText(m_fullTaskNames), b->GetDisplayText(m_fullTaskNames));
        });
    }
}

std::vector<uint8_t> CTimeKeeperDoc::SaveToBytes()
{
    Lock lock(m_lock);
    std::vector<uint8_t> bytes;
    size_t entries = m_todoList.size();
    for (const auto& [key, day] : m_days)
        entries += day->TimeEntries().size() + day->ExpenseEntries().size() + day->ToDoEntries().size();
    bytes.reserve(4096 + m_tasks.size() * 128 + m_days.size() * 32 + entries * 64);
    AdviseHugePages(bytes.data(), bytes.capacity());
    CArchive ar(bytes);
    WriteDocument(ar, false, CDateTime::Null(), CDateTime::Null(), {});
    ar.Flush();
    return bytes;
}

std::vector<uint8_t> CTimeKeeperDoc::WriteSelection(const CDateTime& from, const CDateTime& to,
                                                    uint32_t taskId)
{
    Lock lock(m_lock);
    std::vector<uint8_t> bytes;
    CArchive ar(bytes);
    WriteDocument(ar, true, from, to, {taskId});
    ar.Flush();
    return bytes;
}

void CTimeKeeperDoc::WriteDocument(CArchive& ar, bool selection, const CDateTime& from,
                                   const CDateTime& to, const std::vector<uint32_t>& selectedTasks)
{
    Lock lock(m_lock);
    const bool allTasks =
        !selection || (selectedTasks.size() == 1 && selectedTasks.front() == kRootTaskId);

    // Entries are written for the selected tasks and those below them; tasks also for
    // the ancestors, so that every written task keeps its path to the root.
    std::unordered_set<uint32_t> entryTasks;
    std::vector<CTask*> tasks;
    tasks.reserve(m_tasks.size());
    if (allTasks)
    {
        for (auto& [id, task] : m_tasks)
            tasks.push_back(task.get());
    }
    else
    {
        entryTasks = GetSubtreeIds(selectedTasks);
        // The root is above every task; it stays even when the selection names none
        // that exists, so that the archive can always be opened.
        std::unordered_set<uint32_t> written = entryTasks;
        written.insert(kRootTaskId);
        for (uint32_t id : selectedTasks)
            if (const CTask* task = GetTask(id))
                for (const CTask* t = task->m_parent; t; t = t->m_parent)
                    written.insert(t->m_id);
        for (auto& [id, task] : m_tasks)
            if (written.count(id))
                tasks.push_back(task.get());
    }
    const std::unordered_set<uint32_t>* entrySelection = allTasks ? nullptr : &entryTasks;

    std::vector<CDay*> days;
    days.reserve(m_days.size());
    const std::string fromKey = selection && !from.IsNull() ? from.DayKey() : std::string();
    const std::string toKey = selection && !to.IsNull() ? to.DayKey() : std::string();
    for (auto& [key, day] : m_days)
        if (InRange(key, fromKey, toKey))
            days.push_back(day.get());

    std::vector<CToDoEntry*> todos;
    if (!selection || to.IsNull())
        for (const auto& todo : m_todoList)
            if (!entrySelection || entrySelection->count(todo->m_taskId))
                todos.push_back(todo.get());

    ar.WriteU32(kCurrentVersion);
    ar.WriteU32(m_headerValue);
    ar.WriteDate(CDateTime::Null());
    ar.WriteU32(m_lastTaskId);
    ar.WriteU32(uint32_t(tasks.size()));
    ar.WriteU32(m_lastReportId);
    ar.WriteU32(m_lastContactId);
    ar.WriteU32(m_lastProjectId);
    ar.WriteU32(m_lastActivityId);
    ar.WriteU32(m_lastExpenseTypeId);
    ar.WriteU32(m_lastPaymentMethodId);
    ar.WriteU32(uint32_t(m_reports.size()));
    ar.WriteU32(uint32_t(days.size()));
    ar.WriteF64(0.0);
    ar.WriteF32(m_defaultMileageRate);
    ar.WriteIdArray(m_recentTasks);
    ar.WriteF64(0.0);

    ar.WriteU32(uint32_t(m_contacts.size()));
    for (auto& [id, contact] : m_contacts)
        ar.WriteObject(*contact);
    ar.WriteU32(uint32_t(m_projects.size()));
    for (auto& [id, project] : m_projects)
        ar.WriteObject(*project);
    for (CTask* task : tasks)
        ar.WriteObject(*task);
    ar.WriteF64(0.0);
    for (auto& report : m_reports)
        ar.WriteObject(*report);
    ar.WriteF64(0.0);
    for (CDay* day : days)
    {
        // The selection lives on this stack: never leave a day pointing at it.
        struct SelectionScope
        {
            CDay* day;
            ~SelectionScope() { day->SetSelection(nullptr); }
        } scope{day};
        day->SetSelection(entrySelection);
        ar.WriteObject(*day);
    }

    ar.WriteU32(uint32_t(m_activities.size()));
    for (auto& [id, activity] : m_activities)
        ar.WriteObject(*activity);
    ar.WriteU32(uint32_t(m_levelNames.size()));
    for (const auto& [level, name] : m_levelNames)
    {
        ar.WriteU32(level);
        ar.WriteString(name);
    }
    ar.WriteU32(uint32_t(m_expenseTypes.size()));
    for (auto& [id, type] : m_expenseTypes)
        ar.WriteObject(*type);
    ar.WriteU32(uint32_t(m_paymentMethods.size()));
    for (auto& [id, method] : m_paymentMethods)
        ar.WriteObject(*method);
    ar.WriteU32(uint32_t(todos.size()));
    for (CToDoEntry* todo : todos)
        ar.WriteObject(*todo);
}

void CTimeKeeperDoc::DeleteArchivedEntries(const CDateTime& from, const CDateTime& to, uint32_t taskId)
{
    Lock lock(m_lock);
    const bool all = taskId == kRootTaskId;
    const std::unordered_set<uint32_t> selected = all ? std::unordered_set<uint32_t>()
                                                      : GetSubtreeIds({taskId});
    auto matches = [&](const CEntry& e) { return all || selected.count(e.m_taskId) != 0; };
    const std::string fromKey = from.IsNull() ? std::string() : from.DayKey();
    const std::string toKey = to.IsNull() ? std::string() : to.DayKey();

    std::vector<std::unique_ptr<CEntry>> removed;
    for (auto& [key, day] : m_days)
    {
        if (!InRange(key, fromKey, toKey))
            continue;
        if (m_activeEntry && m_activeEntry->m_day == day.get() && matches(*m_activeEntry))
            StopTimerState();
        day->ExtractEntries(matches, removed);
    }
    if (to.IsNull())
    {
        for (size_t i = m_todoList.size(); i-- > 0;)
            if (matches(*m_todoList[i]))
                removed.push_back(std::move(m_todoList[i]));
        std::erase_if(m_todoList, [](const std::unique_ptr<CToDoEntry>& t) { return !t; });
    }
    DetachFromTasks(removed);
    removed.clear();
    SetModifiedFlag();
    UpdateAllViews(hintEntries | hintTimer);
}

void CTimeKeeperDoc::DetachFromTasks(const std::vector<std::unique_ptr<CEntry>>& entries)
{
    if (entries.empty())
        return;
    std::unordered_set<const CEntry*> gone;
    std::unordered_set<uint32_t> owners;
    gone.reserve(entries.size());
    for (const auto& e : entries)
    {
        gone.insert(e.get());
        owners.insert(e->m_taskId);
    }
    auto isGone = [&gone](const CEntry* e) { return gone.count(e) != 0; };
    for (uint32_t id : owners)
        if (CTask* task = GetTask(id))
        {
            std::erase_if(task->m_timeEntries, isGone);
            std::erase_if(task->m_expenseEntries, isGone);
            std::erase_if(task->m_todoEntries, isGone);
        }
}

void CTimeKeeperDoc::SetModifiedFlag(bool modified)
{
    m_modified = modified;
    if (modified && !m_loading && m_onModified)
        m_onModified();
}

int CTimeKeeperDoc::AddObserver(Observer observer)
{
    Lock lock(m_lock);
    const int handle = m_nextObserver++;
    m_observers.emplace(handle, std::move(observer));
    return handle;
}

void CTimeKeeperDoc::RemoveObserver(int handle)
{
    Lock lock(m_lock);
    m_observers.erase(handle);
}

void CTimeKeeperDoc::UpdateAllViews(unsigned hint)
{
    Lock lock(m_lock);
    // An observer may remove itself (or others) while being told.
    std::vector<int> handles;
    for (const auto& [handle, observer] : m_observers)
        handles.push_back(handle);
    for (int handle : handles)
    {
        auto it = m_observers.find(handle);
        if (it != m_observers.end())
        {
            Observer observer = it->second;
            observer(hint);
        }
    }
}

CDateTime CTimeKeeperDoc::ConflictNow() const
{
    const CDateTime rounded = RoundedNow();
    if (!m_now)
        return rounded;
    const CDateTime now = m_now();
    return rounded < now ? now : rounded;
}

CDateTime CTimeKeeperDoc::RoundedNow() const
{
    if (m_roundedNow)
        return m_roundedNow();
    const std::time_t now = std::time(nullptr);
    std::tm tm{};
    localtime_r(&now, &tm);
    return CDateTime::FromDate(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min);
}

std::string CTimeKeeperDoc::GetLevelName(uint32_t level) const
{
    Lock lock(m_lock);
    auto it = m_levelNames.find(level);
    if (it != m_levelNames.end() && !it->second.empty())
        return it->second;
    if (level < 5)
        return kDefaultLevelNames[level];
    return "Level " + std::to_string(level);
}

void CTimeKeeperDoc::SetLevelName(uint32_t level, const std::string& name)
{
    Lock lock(m_lock);
    m_levelNames[level] = name;
    SetModifiedFlag();
    UpdateAllViews(hintTasks);
}

std::unordered_set<uint32_t> CTimeKeeperDoc::GetSubtreeIds(const std::vector<uint32_t>& taskIds) const
{
    Lock lock(m_lock);
    std::unordered_set<uint32_t> ids;
    std::vector<const CTask*> stack;
    for (uint32_t id : taskIds)
        if (const CTask* task = GetTask(id))
            stack.push_back(task);
    while (!stack.empty())
    {
        const CTask* task = stack.back();
        stack.pop_back();
        if (!ids.insert(task->m_id).second)
            continue;
        for (const CTask* child : task->m_children)
            stack.push_back(child);
    }
    return ids;
}

CTask* CTimeKeeperDoc::GetTask(uint32_t id) const
{
    Lock lock(m_lock);
    return FindOwned(m_tasks, id);
}

CDay* CTimeKeeperDoc::GetDay(const std::string& key) const
{
    Lock lock(m_lock);
    return FindOwned(m_days, key);
}

CDay* CTimeKeeperDoc::GetOrCreateDay(const CDateTime& date)
{
    Lock lock(m_lock);
    std::string key = date.DayKey();
    auto it = m_days.find(key);
    if (it != m_days.end())
        return it->second.get();
    auto day = std::make_unique<CDay>(date);
    CDay* raw = day.get();
    m_days.emplace(std::move(key), std::move(day));
    return raw;
}

void CTimeKeeperDoc::RemoveDayIfEmpty(CDay* day)
{
    Lock lock(m_lock);
    if (!day || !day->IsEmpty())
        return;
    auto it = m_days.find(day->GetKey());
    if (it != m_days.end() && it->second.get() == day)
        m_days.erase(it);
}

CActivity* CTimeKeeperDoc::GetActivity(uint32_t id) const
{
    Lock lock(m_lock);
    return FindOwned(m_activities, id);
}

CExpenseType* CTimeKeeperDoc::GetExpenseType(uint32_t id) const
{
    Lock lock(m_lock);
    return FindOwned(m_expenseTypes, id);
}

CPaymentMethod* CTimeKeeperDoc::GetPaymentMethod(uint32_t id) const
{
    Lock lock(m_lock);
    return FindOwned(m_paymentMethods, id);
}

CContact* CTimeKeeperDoc::GetContact(uint32_t id) const
{
    Lock lock(m_lock);
    return FindOwned(m_contacts, id);
}

CProject* CTimeKeeperDoc::GetProject(uint32_t id) const
{
    Lock lock(m_lock);
    return FindOwned(m_projects, id);
}

CReport* CTimeKeeperDoc::GetReport(uint32_t id) const
{
    Lock lock(m_lock);
    for (const auto& report : m_reports)
        if (report->m_id == id)
            return report.get();
    return nullptr;
}

std::string CTimeKeeperDoc::GetTaskPath(const CTask* task,
                                        const std::function<bool(int level)>& shownLevels) const
{
    Lock lock(m_lock);
    if (!task)
        return std::string();
    if (!task->m_parent)
    {
        if (shownLevels && !shownLevels(task->m_level))
            return std::string();
        return task->GetDisplayText(m_fullTaskNames);
    }
    std::vector<const CTask*> chain;
    for (const CTask* t = task; t && t->m_parent; t = t->m_parent)
        chain.push_back(t);
    std::string path;
    for (auto it = chain.rbegin(); it != chain.rend(); ++it)
    {
        if (shownLevels && !shownLevels((*it)->m_level))
            continue;
        if (!path.empty())
            path += '/';
        path += (*it)->GetDisplayText(m_fullTaskNames);
    }
    return path;
}

void CTimeKeeperDoc::LinkTask(CTask* task, CTask* parent)
{
    task->m_parent = parent;
    if (!parent)
        return;
    task->m_parentId = parent->m_id;
    // After the last child whose text sorts before the task's own; else first.
    const std::string& text = task->GetDisplayText(m_fullTaskNames);
    auto& children = parent->m_children;
    size_t at = children.size();
    while (at > 0 && !LessNoCase(children[at - 1]->GetDisplayText(m_fullTaskNames), text))
        --at;
    children.insert(children.begin() + long(at), task);
}

void CTimeKeeperDoc::UnlinkTask(CTask* task)
{
    if (task->m_parent)
        EraseByIdentity(task->m_parent->m_children, task);
    task->m_parent = nullptr;
}

void CTimeKeeperDoc::SortChildren(CTask* parent)
{
    Lock lock(m_lock);
    if (!parent)
        return;
    std::stable_sort(parent->m_children.begin(), parent->m_children.end(),
                     [this](const CTask* a, const CTask* b) {
                         return LessNoCase(a->GetDisplayText(m_fullTaskNames),
                                           b->GetDisplayText(m_fullTaskNames));
                     });
}

CTask* CTimeKeeperDoc::AddTask(CTask* parent, uint16_t level)
{
    Lock lock(m_lock);
    if (!parent)
        return nullptr;
    auto task = std::make_unique<CTask>();
    task->m_id = ++m_lastTaskId;
    task->m_name = "New " + GetLevelName(level);
    task->m_level = level;
    task->m_parentId = parent->m_id;
    task->m_useParentBilling = true;
    task->m_useParentTaskId = true;
    task->m_useParentContact = true;
    task->m_billable = true;
    task->m_regularRate = 0.0;
    task->m_useActivityRates = false;
    task->m_overtimeMultiplier = 1.0f;
    task->m_contactId = 0;
    task->m_expanded = false;
    task->m_inactive = false;
    task->m_projectId = 0;
    CTask* raw = task.get();
    m_tasks[raw->m_id] = std::move(task);
    LinkTask(raw, parent);
    SetModifiedFlag();
    UpdateAllViews(hintTasks);
    return raw;
}

int CTimeKeeperDoc::MoveTask(CTask* source, CTask* destination)
{
    Lock lock(m_lock);
    if (!source || !destination)
        return 0;
    if (source->IsImported())
        return 40026;
    if (destination->IsImported())
        return 40025;
    if (source == destination)
        return 0;
    if (destination->m_level >= source->m_level)
        return 40012;
    if (destination->IsSelfOrDescendantOf(source))
        return 40011;
    UnlinkTask(source);
    LinkTask(source, destination);
    SetModifiedFlag();
    UpdateAllViews(hintTasks);
    return 0;
}

bool CTimeKeeperDoc::DeleteTask(CTask* task, platform::Prompter& prompter)
{
    using platform::Answer;
    using platform::LoadString;
    if (!task || !task->m_parent)
        return false; // the root stands for the employee and stays

    std::vector<CTask*> subtree; // parents before children
    uint32_t entryCount = 0;
    bool imported = false;
    {
        Lock lock(m_lock);
        subtree.push_back(task);
        for (size_t i = 0; i < subtree.size(); ++i)
            for (CTask* child : subtree[i]->m_children)
                subtree.push_back(child);
        for (const CTask* t : subtree)
            imported = imported || t->IsImported();
    }
    if (imported)
    {
        prompter.ShowMessage(LoadString(40032));
        return false;
    }

    // The questions are asked without the lock held.
    const bool wasEditorOpen = m_editorOpen;
    m_editorOpen = true;
    struct Restore
    {
        bool& flag;
        bool value;
        ~Restore() { flag = value; }
    } restore{m_editorOpen, wasEditorOpen};

    if (prompter.AskYesNo(LoadString(41003) + GetLevelName(task->m_level) + " " + task->m_name +
                          LoadString(41004)) != Answer::yes)
        return false;

    {
        Lock lock(m_lock);
        for (const CTask* t : subtree)
            entryCount += uint32_t(t->m_timeEntries.size() + t->m_expenseEntries.size() +
                                   t->m_todoEntries.size());
    }
    CTask* parent = task->m_parent;
    Answer rollup = Answer::no;
    if (entryCount > 0)
    {
        rollup = prompter.AskYesNoCancel(LoadString(41005) + GetLevelName(parent->m_level) + " " +
                                         parent->m_name + LoadString(41006));
        if (rollup != Answer::yes && rollup != Answer::no)
            return false;
    }

    Lock lock(m_lock);
    std::unordered_set<uint32_t> ids;
    for (const CTask* t : subtree)
        ids.insert(t->m_id);

    if (entryCount > 0 && rollup == Answer::yes)
    {
        for (CTask* t : subtree)
        {
            for (CTimeEntry* e : t->m_timeEntries)
            {
                e->m_taskId = parent->m_id;
                parent->m_timeEntries.push_back(e);
            }
            for (CExpenseEntry* e : t->m_expenseEntries)
            {
                e->m_taskId = parent->m_id;
                parent->m_expenseEntries.push_back(e);
            }
            for (CToDoEntry* e : t->m_todoEntries)
            {
                e->m_taskId = parent->m_id;
                parent->m_todoEntries.push_back(e);
            }
            t->m_timeEntries.clear();
            t->m_expenseEntries.clear();
            t->m_todoEntries.clear();
        }
    }
    else if (entryCount > 0)
    {
        auto matches = [&ids](const CEntry& e) { return ids.count(e.m_taskId) != 0; };
        if (m_activeEntry && matches(*m_activeEntry))
            StopTimerState();
        std::unordered_set<CDay*> days;
        for (const CTask* t : subtree)
        {
            for (const CTimeEntry* e : t->m_timeEntries)
                days.insert(e->m_day);
            for (const CExpenseEntry* e : t->m_expenseEntries)
                days.insert(e->m_day);
            for (const CToDoEntry* e : t->m_todoEntries)
                days.insert(e->m_day);
        }
        std::vector<std::unique_ptr<CEntry>> removed;
        for (CDay* day : days)
            if (day)
                day->ExtractEntries(matches, removed);
        for (auto& todo : m_todoList)
            if (matches(*todo))
                removed.push_back(std::move(todo));
        std::erase_if(m_todoList, [](const std::unique_ptr<CToDoEntry>& t) { return !t; });
        // The tasks are about to go: their lists need not be kept in step.
        for (CTask* t : subtree)
        {
            t->m_timeEntries.clear();
            t->m_expenseEntries.clear();
            t->m_todoEntries.clear();
        }
    }

    for (auto it = subtree.rbegin(); it != subtree.rend(); ++it)
    {
        CTask* t = *it;
        if (m_pausedTask == t)
            m_pausedTask = nullptr;
        UnlinkTask(t);
        m_tasks.erase(t->m_id);
    }
    SetModifiedFlag();
    UpdateAllViews(hintTasks | hintEntries | hintTimer);
    return true;
}

void CTimeKeeperDoc::RenameTask(CTask* task, const std::string& name)
{
    Lock lock(m_lock);
    if (!task)
        return;
    task->m_name = name;
    if (CTask* parent = task->m_parent)
    {
        UnlinkTask(task);
        LinkTask(task, parent);
    }
    SetModifiedFlag();
    UpdateAllViews(hintTasks);
}

void CTimeKeeperDoc::SetTaskInactive(CTask* task, bool inactive)
{
    Lock lock(m_lock);
    if (!task)
        return;
    task->m_inactive = inactive;
    SetModifiedFlag();
    UpdateAllViews(hintTasks);
}

template <class T>
T* CTimeKeeperDoc::AddNamedRecord(std::map<uint32_t, std::unique_ptr<T>>& catalog, uint32_t& lastId,
                                  const std::string& name)
{
    Lock lock(m_lock);
    auto record = std::make_unique<T>();
    record->m_id = ++lastId;
    record->m_name = name;
    T* raw = record.get();
    catalog[raw->m_id] = std::move(record);
    SetModifiedFlag();
    UpdateAllViews(hintCatalogs);
    return raw;
}

CActivity* CTimeKeeperDoc::AddActivity(const std::string& name)
{
    return AddNamedRecord(m_activities, m_lastActivityId, name);
}

CExpenseType* CTimeKeeperDoc::AddExpenseType(const std::string& name)
{
    return AddNamedRecord(m_expenseTypes, m_lastExpenseTypeId, name);
}

CPaymentMethod* CTimeKeeperDoc::AddPaymentMethod(const std::string& name)
{
    return AddNamedRecord(m_paymentMethods, m_lastPaymentMethodId, name);
}

CContact* CTimeKeeperDoc::AddContact()
{
    Lock lock(m_lock);
    auto record = std::make_unique<CContact>();
    record->m_id = ++m_lastContactId;
    CContact* raw = record.get();
    m_contacts[raw->m_id] = std::move(record);
    SetModifiedFlag();
    UpdateAllViews(hintCatalogs);
    return raw;
}

CReport* CTimeKeeperDoc::AddReport(CReport::Kind kind)
{
    Lock lock(m_lock);
    std::unique_ptr<CReport> report = CReport::Create(kind);
    report->m_id = ++m_lastReportId;
    CReport* raw = report.get();
    m_reports.push_back(std::move(report));
    SetModifiedFlag();
    UpdateAllViews(hintReports);
    return raw;
}

template <class T>
bool CTimeKeeperDoc::DeleteNamedRecord(std::map<uint32_t, std::unique_ptr<T>>& catalog, uint32_t id,
                                       unsigned questionId, unsigned detailId,
                                       platform::Prompter& prompter)
{
    using platform::LoadString;
    std::string name;
    {
        Lock lock(m_lock);
        const T* record = FindOwned(catalog, id);
        if (!record)
            return false;
        name = record->m_name;
    }
    if (prompter.AskYesNo(LoadString(questionId) + name + "?" + LoadString(detailId) + name +
                          LoadString(41014)) != platform::Answer::yes)
        return false;
    Lock lock(m_lock);
    catalog.erase(id);
    SetModifiedFlag();
    UpdateAllViews(hintCatalogs);
    return true;
}

bool CTimeKeeperDoc::DeleteActivity(uint32_t id, platform::Prompter& prompter)
{
    return DeleteNamedRecord(m_activities, id, 41010, 41015, prompter);
}

bool CTimeKeeperDoc::DeleteExpenseType(uint32_t id, platform::Prompter& prompter)
{
    return DeleteNamedRecord(m_expenseTypes, id, 41011, 41016, prompter);
}

bool CTimeKeeperDoc::DeletePaymentMethod(uint32_t id, platform::Prompter& prompter)
{
    return DeleteNamedRecord(m_paymentMethods, id, 41012, 41013, prompter);
}

bool CTimeKeeperDoc::DeleteContact(uint32_t id, platform::Prompter& prompter)
{
    const CContact* record = GetContact(id);
    if (!record)
        return false;
    if (prompter.AskYesNo(platform::FormatMessage(platform::LoadString(41025),
                                                  record->GetDisplayName())) != platform::Answer::yes)
        return false;
    Lock lock(m_lock);
    m_contacts.erase(id);
    SetModifiedFlag();
    UpdateAllViews(hintCatalogs);
    return true;
}

void CTimeKeeperDoc::DeleteReport(uint32_t id)
{
    Lock lock(m_lock);
    std::erase_if(m_reports, [id](const std::unique_ptr<CReport>& r) { return r->m_id == id; });
    SetModifiedFlag();
    UpdateAllViews(hintReports);
}

CProject* CTimeKeeperDoc::AddProject(std::unique_ptr<CProject> project)
{
    Lock lock(m_lock);
    if (!project)
        return nullptr;
    project->m_id = ++m_lastProjectId;
    CProject* raw = project.get();
    m_projects[raw->m_id] = std::move(project);
    SetModifiedFlag();
    UpdateAllViews(hintTasks);
    return raw;
}

void CTimeKeeperDoc::DeleteProject(uint32_t id)
{
    Lock lock(m_lock);
    m_projects.erase(id);
    SetModifiedFlag();
    UpdateAllViews(hintTasks);
}

CTimeEntry* CTimeKeeperDoc::FileTimeEntry(CDay* day, std::unique_ptr<CTimeEntry> entry)
{
    Lock lock(m_lock);
    if (!day || !entry)
        return nullptr;
    CTimeEntry* raw = day->InsertTimeEntry(std::move(entry));
    if (CTask* task = GetTask(raw->m_taskId))
        task->m_timeEntries.push_back(raw);
    return raw;
}

CExpenseEntry* CTimeKeeperDoc::FileExpenseEntry(CDay* day, std::unique_ptr<CExpenseEntry> entry)
{
    Lock lock(m_lock);
    if (!day || !entry)
        return nullptr;
    CExpenseEntry* raw = day->AddExpenseEntry(std::move(entry));
    if (CTask* task = GetTask(raw->m_taskId))
        task->m_expenseEntries.push_back(raw);
    return raw;
}

CToDoEntry* CTimeKeeperDoc::FileCompletedToDo(CDay* day, std::unique_ptr<CToDoEntry> entry)
{
    Lock lock(m_lock);
    if (!day || !entry)
        return nullptr;
    CToDoEntry* raw = day->AddToDoEntry(std::move(entry));
    if (CTask* task = GetTask(raw->m_taskId))
        task->m_todoEntries.push_back(raw);
    return raw;
}

CToDoEntry* CTimeKeeperDoc::AddOutstandingToDo(std::unique_ptr<CToDoEntry> entry)
{
    Lock lock(m_lock);
    if (!entry)
        return nullptr;
    entry->m_day = nullptr;
    CToDoEntry* raw = entry.get();
    m_todoList.push_back(std::move(entry));
    if (CTask* task = GetTask(raw->m_taskId))
        task->m_todoEntries.push_back(raw);
    return raw;
}

std::unique_ptr<CTimeEntry> CTimeKeeperDoc::UnfileTimeEntry(CTimeEntry* entry)
{
    Lock lock(m_lock);
    if (!entry || !entry->m_day)
        return nullptr;
    if (entry == m_activeEntry)
        StopTimerState();
    if (CTask* task = GetTask(entry->m_taskId))
        EraseByIdentity(task->m_timeEntries, entry);
    return entry->m_day->RemoveTimeEntry(entry);
}

std::unique_ptr<CExpenseEntry> CTimeKeeperDoc::UnfileExpenseEntry(CExpenseEntry* entry)
{
    Lock lock(m_lock);
    if (!entry || !entry->m_day)
        return nullptr;
    if (CTask* task = GetTask(entry->m_taskId))
        EraseByIdentity(task->m_expenseEntries, entry);
    return entry->m_day->RemoveExpenseEntry(entry);
}

std::unique_ptr<CToDoEntry> CTimeKeeperDoc::UnfileToDo(CToDoEntry* entry)
{
    Lock lock(m_lock);
    if (!entry)
        return nullptr;
    std::unique_ptr<CToDoEntry> owned;
    if (entry->m_day)
        owned = entry->m_day->RemoveToDoEntry(entry);
    else
        for (auto it = m_todoList.begin(); it != m_todoList.end(); ++it)
            if (it->get() == entry)
            {
                owned = std::move(*it);
                m_todoList.erase(it);
                break;
            }
    if (owned)
        if (CTask* task = GetTask(entry->m_taskId))
            EraseByIdentity(task->m_todoEntries, entry);
    return owned;
}

void CTimeKeeperDoc::ChangeEntryTask(CEntry* entry, CTask* newTask)
{
    Lock lock(m_lock);
    if (!entry || !newTask || entry->m_taskId == newTask->m_id)
        return;
    CTask* oldTask = GetTask(entry->m_taskId);
    if (auto* time = dynamic_cast<CTimeEntry*>(entry))
    {
        if (oldTask)
            EraseByIdentity(oldTask->m_timeEntries, time);
        newTask->m_timeEntries.push_back(time);
    }
    else if (auto* expense = dynamic_cast<CExpenseEntry*>(entry))
    {
        if (oldTask)
            EraseByIdentity(oldTask->m_expenseEntries, expense);
        newTask->m_expenseEntries.push_back(expense);
    }
    else if (auto* todo = dynamic_cast<CToDoEntry*>(entry))
    {
        if (oldTask)
            EraseByIdentity(oldTask->m_todoEntries, todo);
        newTask->m_todoEntries.push_back(todo);
    }
    else
        return;
    entry->m_taskId = newTask->m_id;
    SetModifiedFlag();
    UpdateAllViews(hintEntries);
}

bool CTimeKeeperDoc::AdjustTimeEntry(CTimeEntry* a, const CTimeEntry* b)
{
    Lock lock(m_lock);
    CDay* day = a ? a->m_day : nullptr;
    if (!day || !b || a == b || b->m_day != day)
        return true;
    const CDateTime now = ConflictNow();
    const int64_t as = day->StartMinutes(*a);
    const int64_t ae = day->EndMinutes(*a, now);
    const int64_t bs = day->StartMinutes(*b);
    const int64_t be = day->EndMinutes(*b, now);
    if (ae <= bs || as >= be)
        return true; // they do not overlap

    const bool running = a->IsRunning() && a == m_activeEntry;
    SetModifiedFlag();
    if (as >= bs && ae <= be)
    {
        // Inside B: nothing of A is left.
        UnfileTimeEntry(a);
        return false;
    }
    if (as < bs && ae > be)
    {
        // A encloses B: A keeps the part before B, a copy takes the part after it.
        auto tail = std::make_unique<CTimeEntry>(*a);
        tail->m_day = nullptr;
        tail->m_start = TimeFromMinutes(be);
        a->m_end = TimeFromMinutes(bs);
        CTimeEntry* copy = FileTimeEntry(day, std::move(tail));
        // A running A hands its open end to the copy: the timer runs on, on the copy.
        if (running)
            m_activeEntry = copy;
        return true;
    }
    if (as < bs)
    {
        a->m_end = TimeFromMinutes(bs);
        if (running)
            StopTimerState();
        return true;
    }
    a->m_start = TimeFromMinutes(be);
    // Keep the day in start order.
    day->InsertTimeEntry(day->RemoveTimeEntry(a));
    return true;
}

void CTimeKeeperDoc::CompleteToDo(CToDoEntry* todo, const CDateTime& date)
{
    Lock lock(m_lock);
    if (!todo || date.IsNull())
        return;
    CDay* target = GetOrCreateDay(date);
    std::unique_ptr<CToDoEntry> owned;
    if (!todo->m_day)
    {
        for (auto it = m_todoList.begin(); it != m_todoList.end(); ++it)
            if (it->get() == todo)
            {
                owned = std::move(*it);
                m_todoList.erase(it);
                break;
            }
    }
    else if (todo->m_day != target)
        owned = todo->m_day->RemoveToDoEntry(todo);
    todo->m_completeDate = target->GetDate();
    if (owned)
        target->AddToDoEntry(std::move(owned));
    SetModifiedFlag();
    UpdateAllViews(hintEntries);
}

void CTimeKeeperDoc::ReopenToDo(CToDoEntry* todo)
{
    Lock lock(m_lock);
    if (!todo || !todo->m_day)
        return;
    std::unique_ptr<CToDoEntry> owned = todo->m_day->RemoveToDoEntry(todo);
    if (!owned)
        return;
    owned->m_completeDate = CDateTime::Null();
    m_todoList.push_back(std::move(owned));
    SetModifiedFlag();
    UpdateAllViews(hintEntries);
}

void CTimeKeeperDoc::MoveExpense(CExpenseEntry* expense, const CDateTime& date)
{
    Lock lock(m_lock);
    if (!expense || !expense->m_day || date.IsNull() || expense->m_day->GetKey() == date.DayKey())
        return;
    std::unique_ptr<CExpenseEntry> owned = expense->m_day->RemoveExpenseEntry(expense);
    if (!owned)
        return;
    GetOrCreateDay(date)->AddExpenseEntry(std::move(owned));
    SetModifiedFlag();
    UpdateAllViews(hintEntries);
}

size_t CTimeKeeperDoc::CountTimeEntries() const
{
    Lock lock(m_lock);
    size_t n = 0;
    for (const auto& [key, day] : m_days)
        n += day->TimeEntries().size();
    return n;
}

size_t CTimeKeeperDoc::CountExpenseEntries() const
{
    Lock lock(m_lock);
    size_t n = 0;
    for (const auto& [key, day] : m_days)
        n += day->ExpenseEntries().size();
    return n;
}

size_t CTimeKeeperDoc::CountToDoEntries() const
{
    Lock lock(m_lock);
    size_t n = m_todoList.size();
    for (const auto& [key, day] : m_days)
        n += day->ToDoEntries().size();
    return n;
}

void CTimeKeeperDoc::ClearTimerState()
{
    Lock lock(m_lock);
    m_timerRunning = false;
    m_activeEntry = nullptr;
    m_paused = false;
    m_pausedTask = nullptr;
}

void CTimeKeeperDoc::StopTimerState()
{
    Lock lock(m_lock);
    if (!m_timerRunning && !m_activeEntry)
        return;
    m_timerRunning = false;
    m_activeEntry = nullptr;
    if (m_onTimerStopped)
        m_onTimerStopped();
}
