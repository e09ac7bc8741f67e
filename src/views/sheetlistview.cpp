#include "views/sheetlistview.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "reports/daterange.h"
#include "reports/exportfile.h"
#include "reports/reportrunner.h"
#include "timekeeping/timer.h"
#include "views/entrysheets.h"
#include "views/gotodatedlg.h"
#include "views/icons.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "views/reports/reportcommands.h"
#include "views/taskview.h"
#include "views/timesheetview.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QListWidget>
#include <QMenu>
#include <QMimeData>
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QTabBar>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>
#include <mutex>

namespace
{

constexpr int kOrderRole = Qt::UserRole + 3;
const char* const kSettings = "Settings";

// A row that sorts by the values the list put under kSortRole: numbers as numbers,
// texts without regard to case, ties in the order the rows were filled. The keys are
// kept beside the item's data too, since a sort of thousands of rows reads them often.
class CSheetItem : public QTreeWidgetItem
{
public:
    using QTreeWidgetItem::QTreeWidgetItem;

    void setData(int column, int role, const QVariant& value) override
    {
        if (role == CSheetListView::kSortRole && column >= 0)
        {
            if (size_t(column) >= m_keys.size())
                m_keys.resize(size_t(column) + 1);
            Key& key = m_keys[size_t(column)];
            key.isText = value.typeId() == QMetaType::QString;
            // Folded once here, so that the many comparisons of a sort are plain ones.
            key.text = key.isText ? value.toString().toCaseFolded() : QString();
            key.number = key.isText ? 0.0 : value.toDouble();
        }
        else if (role == kOrderRole && column == 0)
            m_order = value.toInt();
        QTreeWidgetItem::setData(column, role, value);
    }

    bool operator<(const QTreeWidgetItem& other) const override
    {
        const int column = treeWidget() ? treeWidget()->sortColumn() : 0;
        const auto* row = dynamic_cast<const CSheetItem*>(&other);
        if (row == nullptr || column < 0)
            return QTreeWidgetItem::operator<(other);
        const Key& a = KeyOf(column);
        const Key& b = row->KeyOf(column);
        int order = 0;
        if (a.isText && b.isText)
            order = a.text.compare(b.text);
        else if (a.isText || b.isText)
            order = QString::compare(a.isText ? a.text : QString::number(a.number),
                                     b.isText ? b.text : QString::number(b.number), Qt::CaseInsensitive);
        else
            order = a.number < b.number ? -1 : (b.number < a.number ? 1 : 0);
        if (order != 0)
            return order < 0;
        return m_order < row->m_order;
    }

private:
    struct Key
    {
        bool isText = false;
        double number = 0.0;
        QString text;
    };

    const Key& KeyOf(int column) const
    {
        static const Key none;
        return size_t(column) < m_keys.size() ? m_keys[size_t(column)] : none;
    }

    std::vector<Key> m_keys;
    int m_order = 0;
};

// Task paths lose their beginning first: the task itself matters most.
class CPathDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        option->textElideMode = Qt::ElideLeft;
    }
};

// Dates sort by their value; a missing date after every real one.
double DateKey(const CDateTime& d)
{
    return d.IsValid() ? d.GetValue() : std::numeric_limits<double>::max();
}

// Task view lists entries of many days: a start or end sorts by its day first, then
// by its time of day.
double TaskViewTimeKey(const CDateTime& date, const CTinyTime& time)
{
    const double day = DateKey(date);
    return day == std::numeric_limits<double>::max() ? day : day + time.MinutesOfDay() / 1440.0;
}

// A running entry has no end yet: it sorts after every end of its day.
double TaskViewEndKey(const CDateTime& date, const CTimeEntry& entry)
{
    if (!entry.IsRunning())
        return TaskViewTimeKey(date, entry.m_end);
    const double day = DateKey(date);
    return day == std::numeric_limits<double>::max() ? day : day + 1440.5 / 1440.0;
}

// The day a date belongs to, at midnight.
CDateTime DayOf(const CDateTime& d)
{
    return d.DatePart();
}

} // namespace

CSheetListView::CSheetListView(CMainFrame& frame, QWidget* parent)
    : QWidget(parent), m_frame(frame), m_tabs(new QTabBar(this)), m_stack(new QStackedWidget(this)),
      m_list(new QTreeWidget(this)), m_reportIcons(new QListWidget(this)), m_tick(new QTimer(this))
{
    setObjectName(QStringLiteral("sheetListView"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_tabs->setObjectName(QStringLiteral("pages"));
    m_tabs->setDrawBase(false);
    m_tabs->setExpanding(false);
    for (const QString& title : {tr("Time"), tr("Expenses"), tr("To Do"), tr("Reports")})
        m_tabs->addTab(title);
    layout->addWidget(m_tabs);
    layout->addWidget(m_stack, 1);

    m_list->setObjectName(QStringLiteral("entryList"));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->setIconSize(QSize(16, 16));
    m_pathDelegate = new CPathDelegate(this);
    m_list->header()->setSectionsClickable(true);
    m_list->header()->setSortIndicatorShown(true);
    m_list->header()->setStretchLastSection(false);
    m_stack->addWidget(m_list);

    m_reportIcons->setObjectName(QStringLiteral("reportIcons"));
    m_reportIcons->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_reportIcons->setContextMenuPolicy(Qt::CustomContextMenu);
    m_reportIcons->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    m_reportIcons->setResizeMode(QListView::Adjust);
    m_reportIcons->setMovement(QListView::Static);
    m_stack->addWidget(m_reportIcons);

    setAcceptDrops(true);
    for (QWidget* w : {static_cast<QWidget*>(m_list), static_cast<QWidget*>(m_reportIcons)})
    {
        w->installEventFilter(this);
        static_cast<QAbstractItemView*>(w)->viewport()->installEventFilter(this);
        static_cast<QAbstractItemView*>(w)->viewport()->setAcceptDrops(true);
    }
    m_tabs->installEventFilter(this);

    connect(m_list->header(), &QHeaderView::sectionClicked, this, &CSheetListView::SortByColumn);
    connect(m_list, &QTreeWidget::customContextMenuRequested, this,
            [this](const QPoint& pos) { ShowContextMenuAt(m_list->viewport()->mapToGlobal(pos)); });
    connect(m_reportIcons, &QListWidget::customContextMenuRequested, this,
            [this](const QPoint& pos) { ShowContextMenuAt(m_reportIcons->viewport()->mapToGlobal(pos)); });
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, [this] { EditProperties(); });
    connect(m_reportIcons, &QListWidget::itemDoubleClicked, this, [this] { EditProperties(); });
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &CSheetListView::UpdateStates);
    connect(m_reportIcons, &QListWidget::itemSelectionChanged, this, &CSheetListView::UpdateStates);
    connect(m_list, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        if (!m_filling && column == 0 && IsReportsPage())
            OnReportRenamed(item->data(0, kRecordRole + 1).toUInt(), item->text(0));
    });
    connect(m_reportIcons, &QListWidget::itemChanged, this, [this](QListWidgetItem* item) {
        if (!m_filling)
            OnReportRenamed(item->data(kRecordRole).toUInt(), item->text());
    });
    connect(m_tabs, &QTabBar::currentChanged, this, &CSheetListView::OnPageChanged);
    for (QAbstractItemView* view : {static_cast<QAbstractItemView*>(m_list), static_cast<QAbstractItemView*>(m_reportIcons)})
        connect(view->itemDelegate(), &QAbstractItemDelegate::closeEditor, this, [this] {
            m_editing = false;
            if (m_refillAfterEdit)
            {
                m_refillAfterEdit = false;
                QMetaObject::invokeMethod(this, &CSheetListView::Refill, Qt::QueuedConnection);
            }
        });

    m_tick->setInterval(CTimer::kTickMilliseconds);
    connect(m_tick, &QTimer::timeout, &m_frame, &CMainFrame::TimerTick);

    m_page = std::clamp(m_frame.App().GetTab(), 0, 3);
    m_filling = true;
    m_tabs->setCurrentIndex(m_page);
    m_filling = false;
    RebuildColumns();
}

CSheetListView::~CSheetListView() = default;

int CSheetListView::CurrentPage() const
{
    return m_page;
}

void CSheetListView::SetPage(int page)
{
    m_tabs->setCurrentIndex(std::clamp(page, 0, 3));
}

void CSheetListView::OnPageChanged(int page)
{
    if (m_filling || page < 0)
        return;
    SaveColumnWidths();
    m_page = page;
    m_frame.App().SetTab(page);
    RebuildColumns();
    Refill();
    m_frame.UpdateCommandStates();
}

bool CSheetListView::IsTaskView() const
{
    return m_frame.App().GetTaskViewType() != 0;
}

CSheetListView::Kind CSheetListView::PageKind() const
{
    switch (m_page)
    {
    case pageExpenses:
        return Kind::expense;
    case pageToDo:
        return Kind::todo;
    case pageReports:
        return Kind::report;
    default:
        return Kind::time;
    }
}

std::vector<CSheetListView::Column> CSheetListView::Columns() const
{
    const bool task = IsTaskView();
    switch (m_page)
    {
    case pageTime:
        if (task)
            return {{"Date", "TimeDateCol", 85},
                    {"Note", "TimeNoteCol", 200},
                    {"Start", "TimeStartCol2", 65},
                    {"End", "TimeEndCol2", 65},
                    {"Elapsed", "TimeElapsedCol2", 55}};
        return {{"Task", "TimeTaskCol", 200},
                {"Start", "TimeStartCol", 65},
                {"End", "TimeEndCol", 65},
                {"Elapsed", "TimeElapsedCol", 55}};
    case pageExpenses:
        if (task)
            return {{"Date", "ExpenseDateCol", 85},
                    {"Type", "ExpenseTypeCol2", 75},
                    {"Note", "ExpenseNoteCol", 200},
                    {"Amount", "ExpenseAmountCol2", 75}};
        return {{"Task", "ExpenseTaskCol", 200}, {"Type", "ExpenseTypeCol", 75}, {"Amount", "ExpenseAmountCol", 75}};
    case pageToDo:
        if (task)
            return {{"Description", "ToDoDescriptionCol2", 150},
                    {"Due Date", "ToDoDueDateCol2", 85},
                    {"Completed", "ToDoCompleteDateCol", 85},
                    {"Priority", "ToDoPriorityCol2", 50}};
        return {{"Task", "ToDoTaskCol", 200},
                {"Description", "ToDoDescriptionCol", 150},
                {"Due Date", "ToDoDueDateCol", 75},
                {"Priority", "ToDoPriorityCol", 50}};
    default:
        return {{"Title", "ReportTitleCol", 250}, {"Task", "ReportTaskCol", 120}, {"Dates", "ReportDateCol", 120}};
    }
}

void CSheetListView::RebuildColumns()
{
    m_filling = true;
    m_list->clear();
    const std::vector<Column> columns = Columns();
    QStringList titles;
    for (const Column& c : columns)
        titles.append(tr(c.title));
    m_list->setColumnCount(int(columns.size()));
    m_list->setHeaderLabels(titles);
    for (int i = 0; i < int(columns.size()); ++i)
    {
        m_list->setColumnWidth(i, m_frame.App().GetStore().GetInt(kSettings, columns[size_t(i)].key,
                                                                   DefaultWidth(columns[size_t(i)].defaultWidth)));
        const bool path = QLatin1String(columns[size_t(i)].title) == QLatin1String("Task");
        m_list->setItemDelegateForColumn(i, path ? m_pathDelegate : nullptr);
    }
    // Amounts and durations read best aligned on the right.
    for (int i = 0; i < int(columns.size()); ++i)
    {
        const QString t = QString::fromLatin1(columns[size_t(i)].title);
        const bool right = t == QLatin1String("Amount") || t == QLatin1String("Elapsed");
        m_list->headerItem()->setTextAlignment(i, right ? Qt::AlignRight | Qt::AlignVCenter : Qt::AlignLeft | Qt::AlignVCenter);
    }
    m_builtPage = m_page;
    m_builtView = m_frame.App().GetTaskViewType();

    const int listType = m_frame.App().GetReportListType();
    const bool icons = m_page == pageReports && listType != 3;
    m_stack->setCurrentWidget(icons ? static_cast<QWidget*>(m_reportIcons) : m_list);
    if (icons)
    {
        m_reportIcons->setViewMode(listType == 2 ? QListView::ListMode : QListView::IconMode);
        m_reportIcons->setIconSize(listType == 2 ? QSize(16, 16) : QSize(32, 32));
        m_reportIcons->setGridSize(listType == 2 ? QSize() : QSize(110, 70));
        m_reportIcons->setWordWrap(listType != 2);
        m_reportIcons->setFlow(listType == 2 ? QListView::TopToBottom : QListView::LeftToRight);
        m_reportIcons->setWrapping(true);
    }
    m_list->setEditTriggers(m_page == pageReports ? QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked
                                                  : QAbstractItemView::NoEditTriggers);
    m_filling = false;
}

int CSheetListView::DefaultWidth(int width) const
{
    // The built-in widths suit a small font of about 5.5 pixels a digit; larger
    // fonts get proportionally wider columns.
    const double digit = m_list->fontMetrics().horizontalAdvance(QStringLiteral("0123456789")) / 10.0;
    return int(width * std::max(1.0, digit / 5.5) + 0.5);
}

void CSheetListView::SaveColumnWidths()
{
    if (m_builtPage < 0)
        return;
    // The columns on screen belong to the page and view they were built for.
    const int page = m_page;
    const int view = m_frame.App().GetTaskViewType();
    m_page = m_builtPage;
    m_frame.App().SetTaskViewType(m_builtView);
    const std::vector<Column> columns = Columns();
    m_page = page;
    m_frame.App().SetTaskViewType(view);
    if (int(columns.size()) != m_list->columnCount())
        return;
    for (int i = 0; i < int(columns.size()); ++i)
        m_frame.App().GetStore().SetInt(kSettings, columns[size_t(i)].key, m_list->columnWidth(i));
}

const char* CSheetListView::SortKeyName() const
{
    switch (m_page)
    {
    case pageTime:
        return "TimeSortOrder";
    case pageExpenses:
        return "ExpenseSortOrder";
    case pageToDo:
        return "ToDoSortOrder";
    default:
        return "ReportSortOrder";
    }
}

int CSheetListView::SortSetting() const
{
    const CTimeKeeperApp& app = m_frame.App();
    switch (m_page)
    {
    case pageTime:
        return app.GetTimeSortOrder();
    case pageExpenses:
        return app.GetExpenseSortOrder();
    case pageToDo:
        return app.GetToDoSortOrder();
    default:
        return app.GetReportSortOrder();
    }
}

void CSheetListView::SortByColumn(int column)
{
    if (column < 0 || column >= m_list->columnCount())
        return;
    const int key = (IsTaskView() && m_page != pageReports) ? column + 10 : column;
    CTimeKeeperApp& app = m_frame.App();
    switch (m_page)
    {
    case pageTime:
        app.SetTimeSortOrder(key);
        break;
    case pageExpenses:
        app.SetExpenseSortOrder(key);
        break;
    case pageToDo:
        app.SetToDoSortOrder(key);
        break;
    default:
        app.SetReportSortOrder(key);
        break;
    }
    ApplySort();
}

void CSheetListView::ApplySort()
{
    int column = SortSetting() % 10;
    if (column >= m_list->columnCount())
        column = 0;
    m_list->sortItems(column, Qt::AscendingOrder);
    m_list->header()->setSortIndicator(column, Qt::AscendingOrder);
    if (m_stack->currentWidget() == m_reportIcons)
        m_reportIcons->sortItems(Qt::AscendingOrder);
}

QTreeWidgetItem* CSheetListView::AddRow(const QStringList& texts, const QList<QVariant>& sortValues, void* record)
{
    // Built outside the list and added with the others once the page is filled: an
    // item in the list reports every change of its data to the views.
    auto* item = new CSheetItem(texts);
    const QTreeWidgetItem* header = m_list->headerItem();
    for (int i = 0; i < texts.size(); ++i)
    {
        item->setData(i, kSortRole, sortValues.value(i, texts[i]));
        if (header->textAlignment(i) & Qt::AlignRight)
            item->setTextAlignment(i, Qt::AlignRight | Qt::AlignVCenter);
    }
    item->setData(0, kRecordRole, QVariant::fromValue(quintptr(record)));
    item->setData(0, kOrderRole, int(m_pendingRows.size()));
    m_pendingRows.append(item);
    m_shown.push_back(record);
    return item;
}

void CSheetListView::Changed(unsigned hint)
{
    m_frame.Doc().UpdateAllViews(hint);
    Refill();
    m_frame.RefreshStatus();
}

void CSheetListView::Refill()
{
    // A refill would take away the row whose title is being edited; it waits.
    if (m_editing)
    {
        m_refillAfterEdit = true;
        return;
    }
    if (m_builtPage != m_page || m_builtView != m_frame.App().GetTaskViewType())
    {
        SaveColumnWidths();
        RebuildColumns();
    }
    const std::vector<void*> selected = SelectedRecords();
    m_filling = true;
    m_list->clear();
    m_reportIcons->clear();
    m_shown.clear();
    {
        std::lock_guard lock(m_frame.Doc().GetLock());
        switch (m_page)
        {
        case pageTime:
            FillTime();
            break;
        case pageExpenses:
            FillExpenses();
            break;
        case pageToDo:
            FillToDo();
            break;
        default:
            FillReports();
            break;
        }
    }
    m_list->addTopLevelItems(m_pendingRows);
    m_pendingRows.clear();
    ApplySort();
    // The rows selected before stay selected while they are still listed.
    for (int i = 0; i < m_list->topLevelItemCount(); ++i)
    {
        QTreeWidgetItem* item = m_list->topLevelItem(i);
        void* record = reinterpret_cast<void*>(item->data(0, kRecordRole).value<quintptr>());
        if (std::find(selected.begin(), selected.end(), record) != selected.end())
        {
            item->setSelected(true);
            m_list->setCurrentItem(item, 0, QItemSelectionModel::Select);
        }
    }
    for (int i = 0; i < m_reportIcons->count(); ++i)
    {
        QListWidgetItem* item = m_reportIcons->item(i);
        void* record = reinterpret_cast<void*>(item->data(kRecordRole + 1).value<quintptr>());
        if (std::find(selected.begin(), selected.end(), record) != selected.end())
            item->setSelected(true);
    }
    m_filling = false;
    UpdateStates();
}

void CSheetListView::FillTime()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    const CTimeKeeperApp& app = m_frame.App();
    const CTinyTime runningEnd = doc.RunningEnd();
    auto row = [&](CTimeEntry* e, const CDay* day) {
        const CTinyElapsedTime elapsed = e->GetElapsed(runningEnd);
        const QString start = ToQ(app.FormatTime(e->m_start));
        const QString end = e->IsRunning() ? QString() : ToQ(app.FormatTime(e->m_end));
        const QString elapsedText = ToQ(app.GetElapsedText(elapsed));
        QTreeWidgetItem* item = nullptr;
        if (IsTaskView())
        {
            const CDateTime date = day ? day->GetDate() : CDateTime();
            item = AddRow({ToQ(app.FormatShortDate(date)), ToQ(e->m_note), start, end, elapsedText},
                          {DateKey(date) + e->m_start.MinutesOfDay() / 1440.0, ToQ(e->m_note),
                           TaskViewTimeKey(date, e->m_start), TaskViewEndKey(date, *e),
                           double(elapsed.TotalMinutes())},
                          e);
        }
        else
        {
            const QString task = ToQ(doc.GetTaskPath(doc.GetTask(e->m_taskId)));
            item = AddRow({task, start, end, elapsedText},
                          {task, e->m_start.MinutesOfDay(), e->IsRunning() ? 100000 : e->m_end.MinutesOfDay(),
                           double(elapsed.TotalMinutes())},
                          e);
        }
        item->setIcon(0, icons::TimeEntryIcon(e->IsRunning()));
        if (!e->m_note.empty())
            item->setToolTip(0, ToQ(e->m_note));
    };
    if (IsTaskView())
    {
        if (const CTask* task = m_frame.TaskView()->SelectedTask())
            for (CTimeEntry* e : task->m_timeEntries)
                row(e, e->m_day);
    }
    else if (const CDay* day = doc.GetDay(m_frame.TimeSheet()->SelectedDate()))
        for (const auto& e : day->TimeEntries())
            row(e.get(), day);
}

void CSheetListView::FillExpenses()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    const CTimeKeeperApp& app = m_frame.App();
    auto typeName = [&](const CExpenseEntry* e) {
        const CExpenseType* type = doc.GetExpenseType(e->m_expenseTypeId);
        return type ? ToQ(type->m_name) : QString();
    };
    auto row = [&](CExpenseEntry* e) {
        const QString amount = ToQ(app.FormatCurrency(e->m_amount));
        QTreeWidgetItem* item = nullptr;
        if (IsTaskView())
            item = AddRow({ToQ(app.FormatShortDate(e->m_date)), typeName(e), ToQ(e->m_note), amount},
                          {DateKey(e->m_date), typeName(e), ToQ(e->m_note), e->m_amount}, e);
        else
        {
            const QString task = ToQ(doc.GetTaskPath(doc.GetTask(e->m_taskId)));
            item = AddRow({task, typeName(e), amount}, {task, typeName(e), e->m_amount}, e);
        }
        item->setIcon(0, icons::ExpenseIcon());
        if (!e->m_note.empty())
            item->setToolTip(0, ToQ(e->m_note));
    };
    if (IsTaskView())
    {
        if (const CTask* task = m_frame.TaskView()->SelectedTask())
            for (CExpenseEntry* e : task->m_expenseEntries)
                row(e);
    }
    else if (const CDay* day = doc.GetDay(m_frame.TimeSheet()->SelectedDate()))
        for (const auto& e : day->ExpenseEntries())
            row(e.get());
}

void CSheetListView::FillToDo()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    const CTimeKeeperApp& app = m_frame.App();
    const CDateTime today = app.Today();
    auto dateText = [&](const CDateTime& d) { return d.IsValid() ? ToQ(app.FormatShortDate(d)) : QString(); };
    auto row = [&](CToDoEntry* e) {
        QTreeWidgetItem* item = nullptr;
        const QString description = ToQ(e->m_description);
        if (IsTaskView())
            item = AddRow({description, dateText(e->m_dueDate), dateText(e->m_completeDate), ToQ(e->m_priority)},
                          {description, DateKey(e->m_dueDate), DateKey(e->m_completeDate), ToQ(e->m_priority)}, e);
        else
        {
            const QString task = ToQ(doc.GetTaskPath(doc.GetTask(e->m_taskId)));
            item = AddRow({task, description, dateText(e->m_dueDate), ToQ(e->m_priority)},
                          {task, description, DateKey(e->m_dueDate), ToQ(e->m_priority)}, e);
        }
        const std::string status = e->GetStatusText(today);
        item->setIcon(0, icons::ToDoIcon(e->IsCompleted() ? 2 : (status == "Overdue" ? 1 : 0)));
        item->setToolTip(0, ToQ(status) + (e->m_note.empty() ? QString() : QStringLiteral("\n") + ToQ(e->m_note)));
    };
    if (IsTaskView())
    {
        if (const CTask* task = m_frame.TaskView()->SelectedTask())
            for (CToDoEntry* e : task->m_todoEntries)
                row(e);
        return;
    }
    for (const auto& e : doc.m_todoList)
        row(e.get());
    if (const CDay* day = doc.GetDay(m_frame.TimeSheet()->SelectedDate()))
        for (const auto& e : day->ToDoEntries())
            row(e.get());
}

void CSheetListView::FillReports()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    const CTimeKeeperApp& app = m_frame.App();
    const bool icons = m_stack->currentWidget() == m_reportIcons;
    for (const auto& report : doc.m_reports)
    {
        const QString dates = ToQ(reports::DateRangeText(*report, doc, app));
        const uint32_t taskId = report->GetFirstSelectedTask();
        const CTask* task = doc.GetTask(taskId);
        const QString taskText = (task == nullptr || taskId == CTimeKeeperDoc::kRootTaskId)
                                     ? tr("All Tasks")
                                     : ToQ(doc.GetTaskPath(task));
        const QString title = ToQ(report->m_name);
        if (icons)
        {
            auto* item = new QListWidgetItem(icons::ReportIcon(int(report->m_kind)), title, m_reportIcons);
            item->setFlags(item->flags() | Qt::ItemIsEditable);
            item->setData(kRecordRole, report->m_id);
            item->setData(kRecordRole + 1, QVariant::fromValue(quintptr(report.get())));
            item->setToolTip(taskText + QStringLiteral("\n") + dates);
            m_shown.push_back(report.get());
            continue;
        }
        QTreeWidgetItem* item = AddRow({title, taskText, dates}, {title, taskText, dates}, report.get());
        item->setIcon(0, icons::ReportIcon(int(report->m_kind), 16));
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        item->setData(0, kRecordRole + 1, report->m_id);
    }
}

void* CSheetListView::RowRecord(QTreeWidgetItem* item) const
{
    if (item == nullptr)
        return nullptr;
    void* record = reinterpret_cast<void*>(item->data(0, kRecordRole).value<quintptr>());
    return std::find(m_shown.begin(), m_shown.end(), record) != m_shown.end() ? record : nullptr;
}

std::vector<void*> CSheetListView::SelectedRecords() const
{
    std::vector<void*> records;
    if (m_stack->currentWidget() == m_reportIcons)
    {
        for (QListWidgetItem* item : m_reportIcons->selectedItems())
        {
            void* record = reinterpret_cast<void*>(item->data(kRecordRole + 1).value<quintptr>());
            if (std::find(m_shown.begin(), m_shown.end(), record) != m_shown.end())
                records.push_back(record);
        }
        return records;
    }
    for (QTreeWidgetItem* item : m_list->selectedItems())
        if (void* record = RowRecord(item))
            records.push_back(record);
    return records;
}

template <class T>
std::vector<T*> CSheetListView::SelectedOfKind(Kind kind) const
{
    std::vector<T*> out;
    if (PageKind() == kind)
        for (void* r : SelectedRecords())
            out.push_back(static_cast<T*>(r));
    return out;
}

std::vector<CTimeEntry*> CSheetListView::SelectedTimeEntries() const
{
    return SelectedOfKind<CTimeEntry>(Kind::time);
}

std::vector<CExpenseEntry*> CSheetListView::SelectedExpenses() const
{
    return SelectedOfKind<CExpenseEntry>(Kind::expense);
}

std::vector<CToDoEntry*> CSheetListView::SelectedToDos() const
{
    return SelectedOfKind<CToDoEntry>(Kind::todo);
}

std::vector<CReport*> CSheetListView::SelectedReports() const
{
    return SelectedOfKind<CReport>(Kind::report);
}

int CSheetListView::RowCount() const
{
    return m_stack->currentWidget() == m_reportIcons ? m_reportIcons->count() : m_list->topLevelItemCount();
}

int CSheetListView::SelectedCount() const
{
    return int(SelectedRecords().size());
}

QStringList CSheetListView::RowTexts(int row) const
{
    QStringList texts;
    if (m_stack->currentWidget() == m_reportIcons)
    {
        if (QListWidgetItem* item = m_reportIcons->item(row))
            texts.append(item->text());
        return texts;
    }
    if (QTreeWidgetItem* item = m_list->topLevelItem(row))
        for (int i = 0; i < m_list->columnCount(); ++i)
            texts.append(item->text(i));
    return texts;
}

void CSheetListView::SelectRow(int row, bool add)
{
    if (m_stack->currentWidget() == m_reportIcons)
    {
        if (!add)
            m_reportIcons->clearSelection();
        if (QListWidgetItem* item = m_reportIcons->item(row))
            item->setSelected(true);
        return;
    }
    if (!add)
        m_list->clearSelection();
    if (QTreeWidgetItem* item = m_list->topLevelItem(row))
    {
        item->setSelected(true);
        m_list->setCurrentItem(item, 0, QItemSelectionModel::Select);
    }
}

void CSheetListView::SelectAll()
{
    if (m_stack->currentWidget() == m_reportIcons)
        m_reportIcons->selectAll();
    else
        m_list->selectAll();
}

CTask* CSheetListView::TaskOfRecord(void* record) const
{
    if (record == nullptr)
        return nullptr;
    switch (PageKind())
    {
    case Kind::time:
        return m_frame.Doc().GetTask(static_cast<CTimeEntry*>(record)->m_taskId);
    case Kind::expense:
        return m_frame.Doc().GetTask(static_cast<CExpenseEntry*>(record)->m_taskId);
    case Kind::todo:
        return m_frame.Doc().GetTask(static_cast<CToDoEntry*>(record)->m_taskId);
    case Kind::report:
        break;
    }
    return nullptr;
}

CTask* CSheetListView::TaskOfSelection() const
{
    const std::vector<void*> records = SelectedRecords();
    return records.size() == 1 ? TaskOfRecord(records.front()) : nullptr;
}

bool CSheetListView::CanStartOrAdd() const
{
    if (IsReportsPage())
        return false;
    const CTask* task = TaskOfSelection();
    return task != nullptr && !task->IsProjectSummary();
}

bool CSheetListView::CanRename() const
{
    return IsReportsPage() && SelectedCount() == 1;
}

bool CSheetListView::HasContact() const
{
    const CTask* task = TaskOfSelection();
    return task != nullptr && m_frame.Doc().GetContact(task->GetEffectiveContactId()) != nullptr;
}

bool CSheetListView::CanComplete() const
{
    const std::vector<CToDoEntry*> todos = SelectedToDos();
    return todos.size() == 1 && !todos.front()->IsCompleted();
}

bool CSheetListView::CanMoveExpense() const
{
    return SelectedExpenses().size() == 1;
}

void CSheetListView::UpdateStates()
{
    if (!m_filling)
        m_frame.UpdateCommandStates();
}

void CSheetListView::StartTick()
{
    if (!m_tick->isActive())
        m_tick->start();
}

void CSheetListView::StopTick()
{
    m_tick->stop();
}

bool CSheetListView::IsTicking() const
{
    return m_tick->isActive();
}

bool CSheetListView::UpdateRunningElapsed(bool repaint)
{
    if (m_page != pageTime)
        return false;
    CTimeKeeperDoc& doc = m_frame.Doc();
    std::lock_guard lock(doc.GetLock());
    const CTimeEntry* active = doc.m_timerRunning ? doc.m_activeEntry : nullptr;
    if (active == nullptr)
        return false;
    const int column = IsTaskView() ? 4 : 3;
    for (int i = 0; i < m_list->topLevelItemCount(); ++i)
    {
        QTreeWidgetItem* item = m_list->topLevelItem(i);
        if (RowRecord(item) != active)
            continue;
        const CTinyElapsedTime elapsed = active->GetElapsed(doc.RunningEnd());
        const QString text = ToQ(m_frame.App().GetElapsedText(elapsed));
        if (item->text(column) == text)
            return false;
        m_filling = true;
        item->setText(column, text);
        item->setData(column, kSortRole, double(elapsed.TotalMinutes()));
        m_filling = false;
        if (repaint)
            m_list->viewport()->update();
        return true;
    }
    return false;
}

void CSheetListView::OnTaskSelected()
{
    if (IsTaskView() && !IsReportsPage())
        Refill();
}

void CSheetListView::StartTimerOnSelected()
{
    CTask* task = TaskOfSelection();
    if (task == nullptr || task->IsProjectSummary())
        return;
    std::string note;
    if (PageKind() == Kind::todo)
        note = SelectedToDos().front()->m_description;
    m_frame.StartTimer(task, note);
}

void CSheetListView::StopTimer()
{
    m_frame.StopTimer();
}

bool CSheetListView::RefuseSummaryTask(const CTask& task)
{
    if (!task.IsProjectSummary())
        return false;
    m_frame.Prompter().ShowMessage(platform::LoadString(40027), platform::Icon::warning);
    return true;
}

void CSheetListView::NewTimeEntry(CTask* task)
{
    if (task == nullptr)
        task = TaskOfSelection();
    if (task == nullptr || RefuseSummaryTask(*task))
        return;
    CTimeKeeperDoc& doc = m_frame.Doc();
    CTimeKeeperApp& app = m_frame.App();
    const uint32_t taskId = task->m_id;
    const CDateTime date = DayOf(m_frame.TimeSheet()->SelectedDate());
    CDay* day = nullptr;
    auto entry = std::make_unique<CTimeEntry>();
    {
        std::lock_guard lock(doc.GetLock());
        day = doc.GetOrCreateDay(date);
        const CTinyTime now = CTinyTime::FromDate(app.RoundTime(app.Now()));
        CTinyTime start = now;
        // Continue where the day's last entry ended, so that entries follow one another.
        if (!day->TimeEntries().empty() && !day->TimeEntries().back()->IsRunning())
            start = day->TimeEntries().back()->m_end;
        CTinyTime end = now;
        if (end < start)
            end = start;
        entry->m_taskId = taskId;
        entry->m_start = start;
        entry->m_end = end;
        entry->m_note = task->m_lastNote;
        entry->m_activityId = task->m_lastActivityId;
    }
    CTimer& timer = m_frame.Timer();
    int r = timer.EditTimeEntry(*day, *entry);
    int c = 0;
    while (r == 1)
    {
        c = timer.ResolveTimeConflict(*day, entry);
        if (c != 2)
            break;
        r = timer.EditTimeEntry(*day, *entry);
    }
    {
        std::lock_guard lock(doc.GetLock());
        if (r == 1 && c == 0 && entry)
        {
            doc.FileTimeEntry(day, std::move(entry));
            timer.AddRecentTask(doc.GetTask(taskId));
            doc.SetModifiedFlag(true);
        }
        else
            doc.RemoveDayIfEmpty(day);
    }
    Changed(hintEntries);
}

void CSheetListView::NewExpenseEntry(CTask* task)
{
    if (task == nullptr)
        task = TaskOfSelection();
    if (task == nullptr || RefuseSummaryTask(*task))
        return;
    CTimeKeeperDoc& doc = m_frame.Doc();
    auto entry = std::make_unique<CExpenseEntry>();
    entry->m_taskId = task->m_id;
    entry->m_date = DayOf(m_frame.TimeSheet()->SelectedDate());
    entry->m_billable = task->GetEffectiveBillable();
    CExpenseEntrySheet sheet(m_frame, *entry, this);
    if (sheet.exec() != QDialog::Accepted)
        return;
    {
        std::lock_guard lock(doc.GetLock());
        CDay* day = doc.GetOrCreateDay(entry->m_date);
        doc.FileExpenseEntry(day, std::move(entry));
        doc.SetModifiedFlag(true);
    }
    Changed(hintEntries);
}

void CSheetListView::NewToDoEntry(CTask* task)
{
    if (task == nullptr)
        task = TaskOfSelection();
    if (task == nullptr || RefuseSummaryTask(*task))
        return;
    CTimeKeeperDoc& doc = m_frame.Doc();
    auto entry = std::make_unique<CToDoEntry>();
    entry->m_taskId = task->m_id;
    entry->m_priority = "1";
    entry->m_dueDate = CDateTime::Null();
    entry->m_completeDate = CDateTime::Null();
    CToDoEntrySheet sheet(m_frame, *entry, this);
    if (sheet.exec() != QDialog::Accepted)
        return;
    {
        std::lock_guard lock(doc.GetLock());
        if (entry->IsCompleted())
        {
            CDay* day = doc.GetOrCreateDay(DayOf(entry->m_completeDate));
            doc.FileCompletedToDo(day, std::move(entry));
        }
        else
            doc.AddOutstandingToDo(std::move(entry));
        doc.SetModifiedFlag(true);
    }
    Changed(hintEntries);
}

void CSheetListView::DeleteSelected()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    const std::vector<void*> records = SelectedRecords();
    if (records.empty())
        return;
    const bool one = records.size() == 1;
    unsigned question = 0;
    switch (PageKind())
    {
    case Kind::time:
        question = one ? 41008 : 41019;
        break;
    case Kind::expense:
        question = one ? 41009 : 41020;
        break;
    case Kind::todo:
        question = one ? 41017 : 41021;
        break;
    case Kind::report:
        question = 41022;
        break;
    }
    doc.m_editorOpen = true;
    const platform::Answer answer = m_frame.Prompter().AskYesNo(platform::LoadString(question));
    doc.m_editorOpen = false;
    if (answer != platform::Answer::yes)
        return;
    {
        std::lock_guard lock(doc.GetLock());
        for (void* record : records)
        {
            switch (PageKind())
            {
            case Kind::time:
            {
                CDay* day = static_cast<CTimeEntry*>(record)->m_day;
                doc.UnfileTimeEntry(static_cast<CTimeEntry*>(record));
                if (day)
                    doc.RemoveDayIfEmpty(day);
                break;
            }
            case Kind::expense:
            {
                CDay* day = static_cast<CExpenseEntry*>(record)->m_day;
                doc.UnfileExpenseEntry(static_cast<CExpenseEntry*>(record));
                if (day)
                    doc.RemoveDayIfEmpty(day);
                break;
            }
            case Kind::todo:
            {
                CDay* day = static_cast<CToDoEntry*>(record)->m_day;
                doc.UnfileToDo(static_cast<CToDoEntry*>(record));
                if (day)
                    doc.RemoveDayIfEmpty(day);
                break;
            }
            case Kind::report:
                doc.DeleteReport(static_cast<CReport*>(record)->m_id);
                break;
            }
        }
        doc.SetModifiedFlag(true);
    }
    m_frame.Timer().RefreshIcon();
    Changed(PageKind() == Kind::report ? hintReports : hintEntries);
}

void CSheetListView::EditTimeEntry(CTimeEntry* entry)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    CDay* day = entry->m_day;
    if (day == nullptr)
        return;
    CTimer& timer = m_frame.Timer();
    int r = timer.EditTimeEntry(*day, *entry);
    while (r == 1)
    {
        const int c = timer.ResolveTimeConflict(*day, *entry);
        if (c != 2)
            break;
        r = timer.EditTimeEntry(*day, *entry);
    }
    if (r == 1)
    {
        std::lock_guard lock(doc.GetLock());
        // A changed start puts the entry elsewhere in its day's order.
        for (const auto& e : day->TimeEntries())
            if (e.get() == entry)
            {
                day->InsertTimeEntry(day->RemoveTimeEntry(entry));
                break;
            }
        doc.SetModifiedFlag(true);
    }
    Changed(hintEntries);
}

void CSheetListView::EditExpense(CExpenseEntry* expense)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    CExpenseEntrySheet sheet(m_frame, *expense, this);
    if (sheet.exec() != QDialog::Accepted)
        return;
    doc.SetModifiedFlag(true);
    Changed(hintEntries);
}

void CSheetListView::EditToDo(CToDoEntry* todo)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    const CDateTime completedBefore = todo->m_completeDate;
    CToDoEntrySheet sheet(m_frame, *todo, this);
    if (sheet.exec() != QDialog::Accepted)
        return;
    {
        std::lock_guard lock(doc.GetLock());
        // A to-do lives in the day it was completed on, or in the outstanding list.
        const bool moved = completedBefore.IsNull() != todo->m_completeDate.IsNull() ||
                           (todo->IsCompleted() && !DayOf(completedBefore).SameDay(DayOf(todo->m_completeDate)));
        if (moved)
        {
            const CDateTime completed = todo->m_completeDate;
            CDay* oldDay = todo->m_day;
            std::unique_ptr<CToDoEntry> owned = doc.UnfileToDo(todo);
            if (oldDay)
                doc.RemoveDayIfEmpty(oldDay);
            if (owned)
            {
                owned->m_completeDate = completed;
                if (owned->IsCompleted())
                    doc.FileCompletedToDo(doc.GetOrCreateDay(DayOf(completed)), std::move(owned));
                else
                    doc.AddOutstandingToDo(std::move(owned));
            }
        }
        doc.SetModifiedFlag(true);
    }
    Changed(hintEntries);
}

void CSheetListView::EditProperties()
{
    const std::vector<void*> records = SelectedRecords();
    if (records.size() != 1)
        return;
    switch (PageKind())
    {
    case Kind::time:
        EditTimeEntry(static_cast<CTimeEntry*>(records.front()));
        break;
    case Kind::expense:
        EditExpense(static_cast<CExpenseEntry*>(records.front()));
        break;
    case Kind::todo:
        EditToDo(static_cast<CToDoEntry*>(records.front()));
        break;
    case Kind::report:
        EditReportProperties(m_frame, static_cast<CReport*>(records.front())->m_id, this);
        break;
    }
}

void CSheetListView::EditContact()
{
    const CTask* task = TaskOfSelection();
    if (task == nullptr)
        return;
    CContact* contact = m_frame.Doc().GetContact(task->GetEffectiveContactId());
    if (contact == nullptr)
        return;
    CContactSheet sheet(m_frame, *contact, this);
    sheet.exec();
}

void CSheetListView::RenameSelected()
{
    if (!IsReportsPage())
        return;
    if (m_stack->currentWidget() == m_reportIcons)
    {
        if (QListWidgetItem* item = m_reportIcons->currentItem())
        {
            m_editing = true;
            m_reportIcons->editItem(item);
        }
        return;
    }
    if (QTreeWidgetItem* item = m_list->currentItem())
    {
        m_editing = true;
        m_list->editItem(item, 0);
    }
}

void CSheetListView::OnReportRenamed(uint32_t reportId, const QString& text)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    QString name = text.trimmed();
    {
        std::lock_guard lock(doc.GetLock());
        CReport* report = doc.GetReport(reportId);
        if (report == nullptr)
            return;
        if (!name.isEmpty() && FromQ(name) != report->m_name)
        {
            report->m_name = FromQ(name);
            doc.SetModifiedFlag(true);
        }
    }
    QMetaObject::invokeMethod(this, &CSheetListView::Refill, Qt::QueuedConnection);
}

void CSheetListView::CompleteSelected()
{
    const std::vector<CToDoEntry*> todos = SelectedToDos();
    if (todos.size() != 1 || todos.front()->IsCompleted())
        return;
    CTimeKeeperDoc& doc = m_frame.Doc();
    {
        std::lock_guard lock(doc.GetLock());
        doc.CompleteToDo(todos.front(), DayOf(m_frame.TimeSheet()->SelectedDate()));
        doc.SetModifiedFlag(true);
    }
    Changed(hintEntries);
}

void CSheetListView::MoveSelectedExpense()
{
    const std::vector<CExpenseEntry*> expenses = SelectedExpenses();
    if (expenses.size() != 1)
        return;
    CExpenseEntry* expense = expenses.front();
    CGoToDateDlg dialog(m_frame, ToQDate(expense->m_date), tr("Move To"), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    MoveExpenseTo(expense, dialog.Date());
}

void CSheetListView::MoveExpenseTo(CExpenseEntry* expense, const QDate& date)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    if (!date.isValid() || date == ToQDate(expense->m_date))
        return;
    {
        std::lock_guard lock(doc.GetLock());
        doc.MoveExpense(expense, FromQDate(date));
        doc.SetModifiedFlag(true);
    }
    Changed(hintEntries);
}

void CSheetListView::ShowContacts()
{
    CContactsDlg dialog(m_frame, this);
    dialog.exec();
}

void CSheetListView::ExportSelectedReport()
{
    const std::vector<CReport*> reportsChosen = SelectedReports();
    if (reportsChosen.size() != 1)
        return;
    CReport* report = reportsChosen.front();
    const QString proposed = ToQ(reports::DefaultExportFileName(*report)) + QStringLiteral(".csv");
    const QString path = m_frame.ChooseSaveFile(
        tr("Export"), proposed,
        tr("CSV (Comma Delimited) (*.csv);;HTML (Hypertext Markup Language) (*.htm);;Tab Delimited (*.tab)"));
    if (path.isEmpty())
        return;
    const int format = reports::ParseExportFormat(FromQ(QFileInfo(path).suffix().toLower())).value_or(reports::formatCsv);
    std::string error;
    if (!reports::ExportReportToFile(*report, m_frame.Doc(), m_frame.App(), format, FromQ(path), &error,
                                     &m_frame.Prompter()) &&
        !error.empty())
        m_frame.Prompter().ShowMessage(error, platform::Icon::error);
}

void CSheetListView::NewReport()
{
    const uint32_t id = NewReportWithWizard(m_frame, this);
    if (id == 0)
        return;
    SetPage(pageReports);
    Refill();
    for (int row = 0; row < RowCount(); ++row)
    {
        SelectRow(row);
        const std::vector<CReport*> chosen = SelectedReports();
        if (chosen.size() == 1 && chosen.front()->m_id == id)
            return;
    }
}

void CSheetListView::SetReportListType(int type)
{
    m_frame.App().SetReportListType(type);
    if (IsReportsPage())
    {
        SaveColumnWidths();
        RebuildColumns();
        Refill();
    }
}

void CSheetListView::FillDropMenu(QMenu& menu, uint32_t taskId)
{
    QAction* start = menu.addAction(tr("&Start Timer"));
    start->setObjectName(QStringLiteral("dropStartTimer"));
    connect(start, &QAction::triggered, this, [this, taskId] {
        if (CTask* task = m_frame.Doc().GetTask(taskId))
            m_frame.StartTimer(task);
    });
    QAction* add = menu.addAction(tr("&Add Time Entry"));
    add->setObjectName(QStringLiteral("dropAddTimeEntry"));
    connect(add, &QAction::triggered, this, [this, taskId] {
        if (CTask* task = m_frame.Doc().GetTask(taskId))
            NewTimeEntry(task);
    });
    menu.addSeparator();
    menu.addAction(tr("&Cancel"))->setObjectName(QStringLiteral("dropCancel"));
}

void CSheetListView::DropTask(uint32_t taskId, bool rightButton, const QPoint& globalPos)
{
    CTask* task = m_frame.Doc().GetTask(taskId);
    if (task == nullptr || IsReportsPage() || RefuseSummaryTask(*task))
        return;
    switch (m_page)
    {
    case pageTime:
        if (rightButton)
        {
            QMenu menu(this);
            FillDropMenu(menu, taskId);
            menu.exec(globalPos);
        }
        else
            NewTimeEntry(task);
        break;
    case pageExpenses:
        NewExpenseEntry(task);
        break;
    case pageToDo:
        NewToDoEntry(task);
        break;
    default:
        break;
    }
}

void CSheetListView::FillContextMenu(QMenu& menu)
{
    const int selected = SelectedCount();
    auto add = [&](const QString& text, const char* name, bool enabled, auto slot) {
        QAction* a = menu.addAction(text);
        a->setObjectName(QString::fromLatin1(name));
        a->setEnabled(enabled);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    if (IsReportsPage())
    {
        add(tr("&New Report..."), "newReport", m_frame.Doc().GetRootTask() != nullptr, [this] { NewReport(); });
        add(tr("&Properties..."), "properties", selected == 1, [this] { EditProperties(); });
        menu.addSeparator();
        add(tr("&Rename"), "rename", selected == 1, [this] { RenameSelected(); });
        add(tr("&Delete"), "delete", selected > 0, [this] { DeleteSelected(); });
        add(tr("E&xport..."), "export", selected == 1, [this] { ExportSelectedReport(); });
        // Print, Print Preview and Export as PDF are the frame's commands on the selected report.
        for (const char* name : {"fileExportPdf", "filePrint", "filePrintPreview"})
            if (QAction* command = m_frame.Action(QString::fromLatin1(name)))
            {
                command->setEnabled(selected == 1);
                menu.addAction(command);
            }
        menu.addSeparator();
        QMenu* style = menu.addMenu(tr("&View"));
        const int current = m_frame.App().GetReportListType();
        const std::pair<int, QString> styles[] = {{0, tr("Lar&ge Icons")}, {2, tr("&List")}, {3, tr("&Details")}};
        for (const auto& [type, text] : styles)
        {
            QAction* a = style->addAction(text);
            a->setCheckable(true);
            a->setChecked(current == type);
            const int t = type;
            connect(a, &QAction::triggered, this, [this, t] { SetReportListType(t); });
        }
        return;
    }
    const bool canStart = CanStartOrAdd();
    add(tr("&Start Timer"), "startTimer", canStart, [this] { StartTimerOnSelected(); });
    add(tr("S&top Timer"), "stopTimer", m_frame.Timer().IsRunning(), [this] { StopTimer(); });
    menu.addSeparator();
    switch (m_page)
    {
    case pageTime:
        add(tr("New Ti&me Entry"), "newTimeEntry", canStart, [this] { NewTimeEntry(nullptr); });
        break;
    case pageExpenses:
        add(tr("New &Expense Entry"), "newExpense", canStart, [this] { NewExpenseEntry(nullptr); });
        add(tr("&Move To..."), "moveTo", CanMoveExpense(), [this] { MoveSelectedExpense(); });
        break;
    default:
        add(tr("New To D&o Entry"), "newToDo", canStart, [this] { NewToDoEntry(nullptr); });
        add(tr("&Complete"), "complete", CanComplete(), [this] { CompleteSelected(); });
        break;
    }
    add(tr("&Delete"), "delete", selected > 0, [this] { DeleteSelected(); });
    add(tr("Select &All"), "selectAll", RowCount() > 0, [this] { SelectAll(); });
    menu.addSeparator();
    add(tr("Co&ntact..."), "contact", HasContact(), [this] { EditContact(); });
    add(tr("&Properties..."), "properties", selected == 1, [this] { EditProperties(); });
}

void CSheetListView::ShowContextMenuAt(const QPoint& globalPos)
{
    if (m_frame.Doc().GetRootTask() == nullptr)
        return;
    QMenu menu(this);
    FillContextMenu(menu);
    menu.exec(globalPos);
}

void CSheetListView::dragEnterEvent(QDragEnterEvent* event)
{
    if (!IsReportsPage() && event->mimeData()->hasFormat(QString::fromLatin1(CTaskView::kMimeType)))
        event->acceptProposedAction();
    else
        event->ignore();
}

void CSheetListView::dragMoveEvent(QDragMoveEvent* event)
{
    if (!IsReportsPage() && event->mimeData()->hasFormat(QString::fromLatin1(CTaskView::kMimeType)))
        event->acceptProposedAction();
    else
        event->ignore();
}

void CSheetListView::dropEvent(QDropEvent* event)
{
    uint32_t taskId = 0;
    bool right = false;
    if (IsReportsPage() ||
        !CTaskView::DecodeDrag(event->mimeData()->data(QString::fromLatin1(CTaskView::kMimeType)), &taskId, &right))
    {
        event->ignore();
        return;
    }
    // Nothing moves in the tree: the drop only makes an entry here.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    const QPoint at = mapToGlobal(event->position().toPoint());
    QMetaObject::invokeMethod(
        this, [this, taskId, right, at] { DropTask(taskId, right, at); }, Qt::QueuedConnection);
}

bool CSheetListView::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type())
    {
    case QEvent::FocusIn:
        m_frame.SetActiveView(CMainFrame::ActiveView::list);
        m_frame.UpdateCommandStates();
        break;
    case QEvent::DragEnter:
        if (watched != m_list && watched != m_reportIcons && watched != m_tabs)
        {
            dragEnterEvent(static_cast<QDragEnterEvent*>(event));
            return true;
        }
        if (watched == m_tabs)
        {
            dragEnterEvent(static_cast<QDragEnterEvent*>(event));
            return true;
        }
        break;
    case QEvent::DragMove:
        if (watched != m_list && watched != m_reportIcons)
        {
            dragMoveEvent(static_cast<QDragMoveEvent*>(event));
            return true;
        }
        break;
    case QEvent::Drop:
        if (watched != m_list && watched != m_reportIcons)
        {
            auto* drop = static_cast<QDropEvent*>(event);
            uint32_t taskId = 0;
            bool right = false;
            if (!IsReportsPage() &&
                CTaskView::DecodeDrag(drop->mimeData()->data(QString::fromLatin1(CTaskView::kMimeType)), &taskId, &right))
            {
                drop->setDropAction(Qt::CopyAction);
                drop->accept();
                const QPoint at = static_cast<QWidget*>(watched)->mapToGlobal(drop->position().toPoint());
                QMetaObject::invokeMethod(
                    this, [this, taskId, right, at] { DropTask(taskId, right, at); }, Qt::QueuedConnection);
            }
            else
                drop->ignore();
            return true;
        }
        break;
    case QEvent::DragLeave:
        if (watched != m_list && watched != m_reportIcons)
            return true;
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}
