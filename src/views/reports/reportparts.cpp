#include "views/reports/reportparts.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "reports/reportoptions.h"
#include "views/catalogorder.h"
#include "views/gotodatedlg.h"
#include "views/icons.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "widgets/datetimeedit.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QFontDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <functional>
#include <mutex>

namespace
{

constexpr int kTaskIdRole = Qt::UserRole + 1;
constexpr int kRecordIdRole = Qt::UserRole + 1;

// The date range choices in list order, with the preset stored for each.
struct RangeChoice
{
    const char* label;
    uint32_t preset;
};
const RangeChoice kRangeChoices[] = {
    {"All Dates", CReport::allDates},
    {"Custom Dates", CReport::customDates},
    {"Today", CReport::today},
    {"Yesterday", CReport::yesterday},
    {"Current Week", CReport::currentWeek},
    {"Previous Week", CReport::previousWeek},
    {"Current Half Month", CReport::currentHalfMonth},
    {"Previous Half Month", CReport::previousHalfMonth},
    {"Current Month", CReport::currentMonth},
    {"Previous Month", CReport::previousMonth},
    {"Current Year", CReport::currentYear},
    {"Previous Year", CReport::previousYear},
};

const RangeChoice kTimeFrameChoices[] = {
    {"Day", CReport::frameDay},   {"Week", CReport::frameWeek},   {"Month", CReport::frameMonth},
    {"Year", CReport::frameYear}, {"Total", CReport::frameTotal},
};

QString Tr(const char* text)
{
    return QCoreApplication::translate("CReportParts", text);
}

// The deepest level the document knows: named levels and the levels of its tasks.
uint32_t DeepestLevel(const CTimeKeeperDoc& doc)
{
    uint32_t deepest = 0;
    for (const auto& [level, name] : doc.m_levelNames)
        deepest = std::max(deepest, level);
    for (const auto& [id, task] : doc.m_tasks)
        deepest = std::max<uint32_t>(deepest, task->m_level);
    return deepest;
}

} // namespace

bool ReportKindHasActivities(uint32_t kind)
{
    return kind == CReport::timeDetail || kind == CReport::timeSummary ||
           kind == CReport::billingSummary || kind == CReport::timeExpenseSummary ||
           kind == CReport::invoice;
}

bool ReportKindHasExpenseFilters(uint32_t kind)
{
    return kind == CReport::expenseDetail || kind == CReport::expenseSummary ||
           kind == CReport::timeExpenseSummary || kind == CReport::invoice;
}

bool ReportKindIsSummary(uint32_t kind)
{
    return kind == CReport::timeSummary || kind == CReport::expenseSummary ||
           kind == CReport::timeExpenseSummary || kind == CReport::billingSummary;
}

bool ReportKindIsDetail(uint32_t kind)
{
    return kind == CReport::timeDetail || kind == CReport::expenseDetail ||
           kind == CReport::todoDetail;
}

bool ReportKindHasSummarize(uint32_t kind)
{
    return ReportKindIsSummary(kind) || kind == CReport::invoice;
}

void RefuseReportField(CMainFrame& frame, unsigned message, QWidget* field)
{
    // In a property sheet the page of the field comes to the front first.
    for (QWidget* w = field; w != nullptr; w = w->parentWidget())
        if (auto* stack = qobject_cast<QStackedWidget*>(w->parentWidget()))
            if (auto* tabs = qobject_cast<QTabWidget*>(stack->parentWidget()))
            {
                tabs->setCurrentWidget(w);
                break;
            }
    frame.Prompter().ShowMessage(platform::LoadString(message), platform::Icon::warning);
    field->setFocus();
}

CReportTaskTree::CReportTaskTree(CTimeKeeperDoc& doc, QWidget* parent)
    : QTreeWidget(parent), m_doc(doc)
{
    setObjectName(QStringLiteral("taskTree"));
    setHeaderHidden(true);
    setIconSize(QSize(16, 16));
    setSelectionMode(QAbstractItemView::SingleSelection);
    Fill();
}

void CReportTaskTree::Fill()
{
    clear();
    std::lock_guard lock(m_doc.GetLock());
    std::function<void(const CTask*, QTreeWidgetItem*)> add =
        [&](const CTask* task, QTreeWidgetItem* parent)
    {
        auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(this);
        item->setText(0, ToQ(task->GetDisplayText(m_doc.m_fullTaskNames)));
        item->setIcon(0, icons::LetterIcon(icons::TaskImageIndex(
                             task->m_level, ToQ(m_doc.GetLevelName(task->m_level)))));
        item->setData(0, kTaskIdRole, task->m_id);
        for (const CTask* child : task->m_children)
            add(child, item);
    };
    if (const CTask* root = m_doc.GetRootTask())
        add(root, nullptr);
    for (int i = 0; i < topLevelItemCount(); ++i)
        topLevelItem(i)->setExpanded(true);
    if (topLevelItemCount() > 0)
        setCurrentItem(topLevelItem(0));
}

QTreeWidgetItem* CReportTaskTree::ItemOf(uint32_t taskId) const
{
    for (QTreeWidgetItemIterator it(const_cast<CReportTaskTree*>(this)); *it; ++it)
        if ((*it)->data(0, kTaskIdRole).toUInt() == taskId)
            return *it;
    return nullptr;
}

void CReportTaskTree::SelectTask(uint32_t taskId)
{
    QTreeWidgetItem* item = ItemOf(taskId);
    if (item == nullptr)
        item = topLevelItem(0);
    if (item == nullptr)
        return;
    for (QTreeWidgetItem* up = item->parent(); up != nullptr; up = up->parent())
        up->setExpanded(true);
    setCurrentItem(item);
    scrollToItem(item);
}

uint32_t CReportTaskTree::SelectedTaskId() const
{
    const QList<QTreeWidgetItem*> items = selectedItems();
    QTreeWidgetItem* item = items.isEmpty() ? currentItem() : items.front();
    return item ? item->data(0, kTaskIdRole).toUInt() : 0;
}

CFilterList::CFilterList(CTimeKeeperDoc& doc, Catalog catalog, const QString& groupTitle,
                         QWidget* parent)
    : QWidget(parent), m_catalog(catalog), m_all(new QRadioButton(Tr("All"))),
      m_selected(new QRadioButton(Tr("Selected"))), m_list(new QListWidget)
{
    m_all->setObjectName(QStringLiteral("all"));
    m_selected->setObjectName(QStringLiteral("selected"));
    m_list->setObjectName(QStringLiteral("filterList"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    QWidget* host = this;
    if (!groupTitle.isEmpty())
    {
        auto* group = new QGroupBox(groupTitle, this);
        outer->addWidget(group);
        host = group;
    }
    auto* layout = host == this ? outer : new QVBoxLayout(host);
    auto* radios = new QHBoxLayout;
    radios->addWidget(m_all);
    radios->addWidget(m_selected);
    radios->addStretch(1);
    layout->addLayout(radios);
    layout->addWidget(m_list, 1);
    auto* group = new QButtonGroup(this);
    group->addButton(m_all);
    group->addButton(m_selected);

    NamedIds records;
    {
        std::lock_guard lock(doc.GetLock());
        switch (catalog)
        {
        case Catalog::activities:
            records = ByName(doc.m_activities);
            break;
        case Catalog::expenseTypes:
            records = ByName(doc.m_expenseTypes);
            break;
        case Catalog::paymentMethods:
            records = ByName(doc.m_paymentMethods);
            break;
        }
    }
    for (const auto& [id, name] : records)
    {
        auto* item = new QListWidgetItem(name, m_list);
        item->setData(kRecordIdRole, id);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
        item->setCheckState(Qt::Unchecked);
    }
    m_all->setChecked(true);
    connect(m_all, &QRadioButton::toggled, this, &CFilterList::UpdateEnabled);
    UpdateEnabled();
}

void CFilterList::UpdateEnabled()
{
    m_list->setEnabled(m_selected->isChecked());
}

void CFilterList::SetIds(const std::vector<uint32_t>& ids)
{
    const bool all = ids.size() == 1 && ids.front() == 0;
    (all ? m_all : m_selected)->setChecked(true);
    for (int i = 0; i < m_list->count(); ++i)
    {
        QListWidgetItem* item = m_list->item(i);
        const bool checked = !all && std::find(ids.begin(), ids.end(),
                                               item->data(kRecordIdRole).toUInt()) != ids.end();
        item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    }
    UpdateEnabled();
}

std::vector<uint32_t> CFilterList::Ids() const
{
    if (m_all->isChecked())
        return {0};
    std::vector<uint32_t> ids;
    for (int i = 0; i < m_list->count(); ++i)
        if (m_list->item(i)->checkState() == Qt::Checked)
            ids.push_back(m_list->item(i)->data(kRecordIdRole).toUInt());
    return ids;
}

bool CFilterList::CheckName(const QString& name, bool checked)
{
    for (int i = 0; i < m_list->count(); ++i)
        if (m_list->item(i)->text() == name)
        {
            m_list->item(i)->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
            return true;
        }
    return false;
}

CDatesPart::CDatesPart(CMainFrame& frame, ReportPartMode mode, QWidget* parent)
    : QWidget(parent), m_frame(frame), m_range(new QComboBox(this)),
      m_start(new CDateTimeEdit(CDateTimeEdit::Mode::date, this)),
      m_end(new CDateTimeEdit(CDateTimeEdit::Mode::date, this))
{
    m_range->setObjectName(QStringLiteral("dateRange"));
    m_start->setObjectName(QStringLiteral("startDate"));
    m_end->setObjectName(QStringLiteral("endDate"));
    for (const RangeChoice& c : kRangeChoices)
        m_range->addItem(Tr(c.label), c.preset);
    for (CDateTimeEdit* field : {m_start, m_end})
    {
        ConfigureDateField(*field, frame.App());
        field->SetAllowEmpty(true);
        field->setMinimumWidth(130);
    }
    auto* form = new QFormLayout(this);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    form->addRow(mode == ReportPartMode::property ? Tr("&Time Frame:") : Tr("&Dates:"), m_range);
    form->addRow(Tr("&Start Date:"), m_start);
    form->addRow(Tr("&End Date:"), m_end);
    connect(m_range, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &CDatesPart::UpdateEnabled);
    m_range->setCurrentIndex(0);
    UpdateEnabled();
}

uint32_t CDatesPart::Preset() const
{
    return m_range->currentData().toUInt();
}

void CDatesPart::SetPreset(uint32_t preset)
{
    // A stored preset outside the list reads as All Dates, as the reports treat it.
    m_range->setCurrentIndex(std::max(0, m_range->findData(preset)));
}

void CDatesPart::UpdateEnabled()
{
    const bool custom = Preset() == CReport::customDates;
    m_start->setEnabled(custom);
    m_end->setEnabled(custom);
}

void CDatesPart::Load(const CReport& report)
{
    SetPreset(report.m_preset);
    m_start->Clear();
    m_end->Clear();
    if (report.m_startDate.IsValid())
        m_start->SetDate(ToQDate(report.m_startDate));
    if (report.m_endDate.IsValid())
        m_end->SetDate(ToQDate(report.m_endDate));
    UpdateEnabled();
}

bool CDatesPart::Check()
{
    if (Preset() != CReport::customDates)
        return true;
    for (auto [field, emptyMessage] : {std::pair{m_start, 40015u}, std::pair{m_end, 40016u}})
    {
        if (field->IsEmpty())
        {
            RefuseReportField(m_frame, emptyMessage, field);
            return false;
        }
        if (!field->Date().isValid() || !field->IsAcceptable())
        {
            RefuseReportField(m_frame, 40018, field);
            return false;
        }
    }
    if (m_start->Date() > m_end->Date())
    {
        RefuseReportField(m_frame, 40017, m_start);
        return false;
    }
    return true;
}

void CDatesPart::Store(CReport& report) const
{
    report.m_preset = Preset();
    // Dates that are not shown as custom dates are kept when they read, as they stand.
    report.m_startDate = FromQDateOrNull(m_start->IsEmpty() ? QDate() : m_start->Date());
    report.m_endDate = FromQDateOrNull(m_end->IsEmpty() ? QDate() : m_end->Date());
}

CTasksPart::CTasksPart(CMainFrame& frame, ReportPartMode mode, QWidget* parent)
    : QWidget(parent), m_mode(mode), m_tree(new CReportTaskTree(frame.Doc(), this)),
      m_billable(new QCheckBox(this)), m_nonBillable(new QCheckBox(this)),
      m_childTasks(new QCheckBox(Tr("Include &Child Tasks"), this))
{
    m_billable->setObjectName(QStringLiteral("includeBillable"));
    m_nonBillable->setObjectName(QStringLiteral("includeNonBillable"));
    m_childTasks->setObjectName(QStringLiteral("includeChildTasks"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_tree, 1);
    QWidget* boxHost = this;
    QBoxLayout* boxes = layout;
    if (mode == ReportPartMode::property)
    {
        auto* group = new QGroupBox(Tr("Include"), this);
        boxes = new QVBoxLayout(group);
        layout->addWidget(group);
        boxHost = group;
    }
    for (QCheckBox* box : {m_billable, m_nonBillable, m_childTasks})
    {
        box->setParent(boxHost);
        boxes->addWidget(box);
    }
    m_billable->setChecked(true);
    m_nonBillable->setChecked(true);
    m_childTasks->setChecked(true);
    SetKind(CReport::timeDetail);
}

void CTasksPart::SetKind(uint32_t kind)
{
    if (kind == CReport::todoDetail)
    {
        m_billable->setText(Tr("Include &Outstanding Entries"));
        m_nonBillable->setText(Tr("Include Co&mpleted Entries"));
    }
    else if (m_mode == ReportPartMode::wizard)
    {
        // Alt+B and Alt+N belong to the wizard's Back and Next.
        m_billable->setText(Tr("Include Bi&llable Tasks"));
        m_nonBillable->setText(Tr("Include N&on-Billable Tasks"));
    }
    else
    {
        m_billable->setText(Tr("Include &Billable Entries"));
        m_nonBillable->setText(Tr("Include &Non-Billable Entries"));
    }
    // Only the detail kinds keep the choice.
    m_childTasks->setEnabled(ReportKindIsDetail(kind));
}

void CTasksPart::Load(const CReport& report)
{
    SetKind(report.m_kind);
    m_loadedTaskFound = m_tree->ItemOf(report.GetFirstSelectedTask()) != nullptr;
    m_tree->SelectTask(report.GetFirstSelectedTask());
    m_selectedAtLoad = m_tree->SelectedTaskId();
    m_billable->setChecked(report.m_includeBillable);
    m_nonBillable->setChecked(report.m_includeNonBillable);
    m_childTasks->setChecked(!report.m_selectedTasksOnly);
}

void CTasksPart::Store(CReport& report) const
{
    // The stored tasks stay as they are unless another task was chosen; a task that no
    // longer exists is not replaced by the root the tree shows in its place.
    const uint32_t id = m_tree->SelectedTaskId();
    const bool unchanged =
        !report.m_selectedTasks.empty() &&
        (id == report.m_selectedTasks.front() || (!m_loadedTaskFound && id == m_selectedAtLoad));
    if (id != 0 && !unchanged)
        report.m_selectedTasks = {id};
    report.m_includeBillable = m_billable->isChecked();
    report.m_includeNonBillable = m_nonBillable->isChecked();
    if (ReportKindIsDetail(report.m_kind))
        report.m_selectedTasksOnly = !m_childTasks->isChecked();
}

CSummarizePart::CSummarizePart(CMainFrame& frame, QWidget* parent)
    : QWidget(parent), m_frame(frame), m_level(new QComboBox(this)),
      m_timeFrame(new QComboBox(this)),
      m_rollup(new QCheckBox(Tr("&Rollup Entries to Parent Tasks"), this)),
      m_totals(new QCheckBox(Tr("Show &Totals"), this)),
      m_emptyRows(new QCheckBox(Tr("Show &Empty Rows"), this))
{
    m_level->setObjectName(QStringLiteral("level"));
    m_timeFrame->setObjectName(QStringLiteral("timeFrame"));
    m_rollup->setObjectName(QStringLiteral("rollup"));
    m_totals->setObjectName(QStringLiteral("totals"));
    m_emptyRows->setObjectName(QStringLiteral("emptyRows"));
    for (const RangeChoice& c : kTimeFrameChoices)
        m_timeFrame->addItem(Tr(c.label), c.preset);
    m_level->setMinimumWidth(160);
    m_timeFrame->setMinimumWidth(160);
    auto* form = new QFormLayout(this);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    form->addRow(Tr("Task &Level:"), m_level);
    form->addRow(Tr("Time &Frame:"), m_timeFrame);
    form->addRow(m_rollup);
    form->addRow(m_totals);
    form->addRow(m_emptyRows);
    connect(m_level, qOverload<int>(&QComboBox::currentIndexChanged), this,
            [this] { emit LevelChanged(Level()); });
    SetKind(CReport::timeSummary);
}

void CSummarizePart::SetKind(uint32_t kind)
{
    m_kind = kind;
    const int32_t chosen = Level();
    QSignalBlocker blocker(m_level);
    m_level->clear();
    {
        CTimeKeeperDoc& doc = m_frame.Doc();
        std::lock_guard lock(doc.GetLock());
        const uint32_t deepest = DeepestLevel(doc);
        for (uint32_t level = 0; level <= deepest; ++level)
            m_level->addItem(ToQ(doc.GetLevelName(level)), int(level));
        for (int32_t code : reports::GroupingsOfKind(kind))
            m_level->addItem(ToQ(reports::SummarizeLabel(code, doc)), int(code));
    }
    m_level->setCurrentIndex(chosen == kNoLevel ? -1 : m_level->findData(int(chosen)));
    // Rollup and totals belong to the summary kinds; the invoice has neither.
    m_rollup->setEnabled(ReportKindIsSummary(kind));
    m_totals->setEnabled(ReportKindIsSummary(kind));
    blocker.unblock();
    emit LevelChanged(Level());
}

void CSummarizePart::Load(const CReport& report)
{
    SetKind(report.m_kind);
    if (!SelectLevel(report.m_summarizeLevel))
    {
        // A level deeper than any task still names its level.
        m_level->addItem(ToQ(reports::SummarizeLabel(report.m_summarizeLevel, m_frame.Doc())),
                         int(report.m_summarizeLevel));
        SelectLevel(report.m_summarizeLevel);
    }
    SelectTimeFrame(report.m_timeFrame);
    m_rollup->setChecked(report.m_rollup);
    m_totals->setChecked(report.m_showTotals);
    m_emptyRows->setChecked(report.m_showEmptyRows);
}

void CSummarizePart::ClearChoices()
{
    m_level->setCurrentIndex(-1);
    m_timeFrame->setCurrentIndex(-1);
}

int32_t CSummarizePart::Level() const
{
    return m_level->currentIndex() < 0 ? kNoLevel : int32_t(m_level->currentData().toInt());
}

bool CSummarizePart::SelectLevel(int32_t level)
{
    const int index = m_level->findData(int(level));
    if (index >= 0)
        m_level->setCurrentIndex(index);
    return index >= 0;
}

bool CSummarizePart::SelectTimeFrame(uint32_t timeFrame)
{
    const int index = m_timeFrame->findData(timeFrame);
    if (index >= 0)
        m_timeFrame->setCurrentIndex(index);
    return index >= 0;
}

bool CSummarizePart::Check()
{
    if (m_level->currentIndex() < 0)
    {
        RefuseReportField(m_frame, 40007, m_level);
        return false;
    }
    if (m_timeFrame->currentIndex() < 0)
    {
        RefuseReportField(m_frame, 40006, m_timeFrame);
        return false;
    }
    return true;
}

void CSummarizePart::Store(CReport& report) const
{
    if (m_level->currentIndex() >= 0)
        report.m_summarizeLevel = Level();
    if (m_timeFrame->currentIndex() >= 0)
        report.m_timeFrame = m_timeFrame->currentData().toUInt();
    if (ReportKindIsSummary(report.m_kind))
    {
        report.m_rollup = m_rollup->isChecked();
        report.m_showTotals = m_totals->isChecked();
    }
    report.m_showEmptyRows = m_emptyRows->isChecked();
}

CFieldsPart::CFieldsPart(CMainFrame& frame, QWidget* parent) : QWidget(parent), m_frame(frame)
{
    // Two columns of fixed places; the first kind-dependent box is always in the first place.
    auto* grid = new QGridLayout(this);
    for (int i = 0; i < kSlots; ++i)
    {
        m_boxes[i] = new QCheckBox(this);
        grid->addWidget(m_boxes[i], i % 4, i / 4);
    }
    grid->setColumnStretch(2, 1);
    grid->setRowStretch(4, 1);
    SetKind(CReport::timeDetail);
}

void CFieldsPart::SetKind(uint32_t kind)
{
    const std::vector<reports::FieldInfo> fields = reports::FieldsOfKind(kind, &m_frame.App());
    const bool changed = int(kind) != m_kind;
    m_kind = int(kind);
    for (int i = 0; i < kSlots; ++i)
    {
        QCheckBox* box = m_boxes[i];
        const bool shown = i < int(fields.size());
        box->setVisible(shown);
        box->setEnabled(true);
        m_masks[i] = shown ? fields[i].mask : 0;
        if (!shown)
        {
            box->setObjectName(QString());
            box->setChecked(false);
            continue;
        }
        box->setText(ToQ(fields[i].label));
        box->setObjectName(QStringLiteral("field-") + ToQ(fields[i].keyword));
        if (changed)
            box->setChecked((m_loadedFlags & m_masks[i]) == m_masks[i]);
    }
}

void CFieldsPart::SetSummarizeLevel(int32_t level)
{
    if (!ReportKindIsSummary(uint32_t(m_kind)))
        return;
    if (QCheckBox* estimates = Box(QStringLiteral("estimates")))
    {
        const bool taskLevel = level >= 0 && level != CSummarizePart::kNoLevel;
        if (!taskLevel)
            estimates->setChecked(false);
        estimates->setEnabled(taskLevel);
    }
}

void CFieldsPart::Load(const CReport& report)
{
    m_loadedFlags = report.m_fieldFlags;
    m_kind = -1;
    SetKind(report.m_kind);
}

void CFieldsPart::Store(CReport& report) const
{
    uint32_t shown = 0;
    uint32_t checked = 0;
    const std::vector<reports::FieldInfo> fields = reports::FieldsOfKind(report.m_kind);
    for (size_t i = 0; i < fields.size() && i < size_t(kSlots); ++i)
    {
        shown |= fields[i].mask;
        if (m_kind == int(report.m_kind) && m_boxes[i]->isChecked())
            checked |= fields[i].mask;
    }
    // Bits the kind does not show are kept as they were.
    report.m_fieldFlags = (report.m_fieldFlags & ~shown) | checked;
}

QCheckBox* CFieldsPart::Box(const QString& keyword) const
{
    const QString name = QStringLiteral("field-") + keyword;
    for (QCheckBox* box : m_boxes)
        if (box->objectName() == name)
            return box;
    return nullptr;
}

CInvoicePart::CInvoicePart(CMainFrame& frame, QWidget* parent)
    : QWidget(parent), m_frame(frame), m_recipient(new QPlainTextEdit(this)),
      m_nextNumber(new QRadioButton(Tr("Use ne&xt number"), this)),
      m_thisNumber(new QRadioButton(Tr("Use t&his number:"), this)), m_number(new QSpinBox(this)),
      m_showTerms(new QCheckBox(Tr("Show Invoice &Terms"), this)), m_terms(new QLineEdit(this)),
      m_addTax(new QCheckBox(Tr("&Add Tax to Billing Total"), this)),
      m_taxRate(new QDoubleSpinBox(this))
{
    m_recipient->setObjectName(QStringLiteral("recipient"));
    m_nextNumber->setObjectName(QStringLiteral("nextNumber"));
    m_thisNumber->setObjectName(QStringLiteral("thisNumber"));
    m_number->setObjectName(QStringLiteral("number"));
    m_showTerms->setObjectName(QStringLiteral("showTerms"));
    m_terms->setObjectName(QStringLiteral("terms"));
    m_addTax->setObjectName(QStringLiteral("addTax"));
    m_taxRate->setObjectName(QStringLiteral("taxRate"));
    m_recipient->setTabChangesFocus(true);
    m_recipient->setMinimumHeight(70);
    m_number->setRange(0, 999999999);
    m_terms->setMaxLength(30);
    m_taxRate->setRange(0.0, 100.0);
    m_taxRate->setDecimals(3);

    auto* layout = new QGridLayout(this);
    auto* recipientLabel = new QLabel(Tr("&Recipient:"), this);
    recipientLabel->setBuddy(m_recipient);
    layout->addWidget(recipientLabel, 0, 0, Qt::AlignTop);
    layout->addWidget(m_recipient, 0, 1, 1, 2);
    auto* numberGroup = new QGroupBox(Tr("Invoice Number"), this);
    auto* numberLayout = new QGridLayout(numberGroup);
    numberLayout->addWidget(m_nextNumber, 0, 0, 1, 2);
    numberLayout->addWidget(m_thisNumber, 1, 0);
    numberLayout->addWidget(m_number, 1, 1);
    numberLayout->setColumnStretch(2, 1);
    layout->addWidget(numberGroup, 1, 0, 1, 3);
    layout->addWidget(m_showTerms, 2, 0, 1, 3);
    auto* termsLabel = new QLabel(Tr("T&erms:"), this);
    termsLabel->setBuddy(m_terms);
    layout->addWidget(termsLabel, 3, 0);
    layout->addWidget(m_terms, 3, 1);
    layout->addWidget(m_addTax, 4, 0, 1, 3);
    auto* rateLabel = new QLabel(Tr("Rate (&%):"), this);
    rateLabel->setBuddy(m_taxRate);
    layout->addWidget(rateLabel, 5, 0);
    layout->addWidget(m_taxRate, 5, 1, Qt::AlignLeft);
    layout->setColumnStretch(2, 1);
    layout->setRowStretch(6, 1);

    m_nextNumber->setChecked(true);
    connect(m_thisNumber, &QRadioButton::toggled, this,
            [this](bool on)
            {
                // Choosing a number of one's own starts from the next one the settings hold.
                if (on && m_number->value() == 0)
                    m_number->setValue(m_frame.App().GetInvoiceNumber());
                UpdateEnabled();
            });
    connect(m_showTerms, &QCheckBox::toggled, this, &CInvoicePart::UpdateEnabled);
    connect(m_addTax, &QCheckBox::toggled, this, &CInvoicePart::UpdateEnabled);
    UpdateEnabled();
}

void CInvoicePart::UpdateEnabled()
{
    m_number->setEnabled(m_thisNumber->isChecked());
    m_terms->setEnabled(m_showTerms->isChecked());
    m_taxRate->setEnabled(m_addTax->isChecked());
}

void CInvoicePart::Load(const CReport& report)
{
    m_recipient->setPlainText(ToQ(report.m_recipient));
    const QSignalBlocker blocker(m_thisNumber);
    (report.m_numberMode == 1 ? m_thisNumber : m_nextNumber)->setChecked(true);
    m_number->setValue(std::max(0, report.m_invoiceNumber));
    m_showTerms->setChecked(report.m_showTerms);
    m_terms->setText(ToQ(report.m_terms));
    m_addTax->setChecked(report.m_addTax);
    m_loadedRate = std::clamp(report.m_taxRate, 0.0, 100.0);
    m_taxRate->setValue(m_loadedRate);
    UpdateEnabled();
}

void CInvoicePart::Store(CReport& report) const
{
    report.m_recipient = FromQ(m_recipient->toPlainText());
    report.m_numberMode = m_thisNumber->isChecked() ? 1 : 0;
    report.m_invoiceNumber = m_number->value();
    report.m_showTerms = m_showTerms->isChecked();
    report.m_terms = FromQ(m_terms->text().left(30));
    report.m_addTax = m_addTax->isChecked();
    // The field shows a few decimals; an untouched field keeps the rate exactly.
    const double shown = m_taxRate->value();
    const double loadedShown = std::round(m_loadedRate * 1000.0) / 1000.0;
    report.m_taxRate = std::abs(shown - loadedShown) < 1e-9 ? m_loadedRate : shown;
}

CPrintOptionsPart::CPrintOptionsPart(CMainFrame& frame, ReportPartMode mode, QWidget* parent)
    : QWidget(parent), m_frame(frame), m_default(new QRadioButton(Tr("Use Printer &Default"))),
      m_portrait(new QRadioButton(Tr("&Portrait"))),
      m_landscape(new QRadioButton(Tr("&Landscape"))),
      m_fontButton(new QPushButton(Tr("&Font..."))), m_fontText(new QLabel)
{
    m_default->setObjectName(QStringLiteral("orientationDefault"));
    m_portrait->setObjectName(QStringLiteral("portrait"));
    m_landscape->setObjectName(QStringLiteral("landscape"));
    m_fontButton->setObjectName(QStringLiteral("font"));
    m_fontText->setObjectName(QStringLiteral("fontText"));
    auto* layout = new QVBoxLayout(this);
    QWidget* host = this;
    QVBoxLayout* radios = layout;
    if (mode == ReportPartMode::property)
    {
        auto* group = new QGroupBox(Tr("Paper Orientation"), this);
        radios = new QVBoxLayout(group);
        layout->addWidget(group);
        host = group;
    }
    for (QRadioButton* r : {m_default, m_portrait, m_landscape})
    {
        r->setParent(host);
        radios->addWidget(r);
    }
    auto* buttons = new QButtonGroup(this);
    buttons->addButton(m_default, 0);
    buttons->addButton(m_portrait, 1);
    buttons->addButton(m_landscape, 2);
    layout->addSpacing(12);
    auto* fontRow = new QHBoxLayout;
    m_fontButton->setParent(this);
    m_fontText->setParent(this);
    fontRow->addWidget(m_fontButton);
    fontRow->addWidget(m_fontText, 1);
    layout->addLayout(fontRow);
    layout->addStretch(1);
    m_default->setChecked(true);
    connect(m_fontButton, &QPushButton::clicked, this, &CPrintOptionsPart::ChooseFont);
    SetFont(ReportFont());
}

QString CPrintOptionsPart::FontText(const ReportFont& font)
{
    QString text = ToQ(font.faceName);
    if (font.weight == 700)
        text += QStringLiteral(" Bold");
    if (font.italic)
        text += QStringLiteral(" Italic");
    return text + QStringLiteral(" %1 pt.").arg(font.PointSize());
}

QFont CPrintOptionsPart::ToQFont(const ReportFont& font)
{
    QFont f(ToQ(font.faceName));
    f.setPointSize(std::max(1, font.PointSize()));
    f.setWeight(QFont::Weight(std::clamp(int(font.weight == 0 ? 400 : font.weight), 100, 900)));
    f.setItalic(font.italic != 0);
    f.setUnderline(font.underline != 0);
    f.setStrikeOut(font.strikeOut != 0);
    return f;
}

ReportFont CPrintOptionsPart::FromQFont(const QFont& font, const ReportFont& base)
{
    ReportFont f = base;
    f.faceName = FromQ(font.family().left(31));
    const double points = font.pointSizeF() > 0 ? font.pointSizeF() : 9.0;
    f.height = -int(std::lround(points * 10.0));
    f.weight = int(font.weight());
    f.italic = font.italic() ? 1 : 0;
    f.underline = font.underline() ? 1 : 0;
    f.strikeOut = font.strikeOut() ? 1 : 0;
    return f;
}

void CPrintOptionsPart::SetFont(const ReportFont& font)
{
    m_font = font;
    m_fontText->setText(FontText(font));
}

bool CPrintOptionsPart::ChooseFont()
{
    bool ok = false;
    const QFont chosen = QFontDialog::getFont(&ok, ToQFont(m_font), this, Tr("Font"));
    if (ok)
        SetFont(FromQFont(chosen, m_font));
    return ok;
}

void CPrintOptionsPart::Load(const CReport& report)
{
    switch (report.m_orientation)
    {
    case 1:
        m_portrait->setChecked(true);
        break;
    case 2:
        m_landscape->setChecked(true);
        break;
    default:
        m_default->setChecked(true);
        break;
    }
    SetFont(report.m_font);
}

void CPrintOptionsPart::Store(CReport& report) const
{
    report.m_orientation = m_portrait->isChecked() ? 1 : m_landscape->isChecked() ? 2 : 0;
    report.m_font = m_font;
}
