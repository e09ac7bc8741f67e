#include "views/entrysheets.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "views/catalogorder.h"
#include "views/gotodatedlg.h"
#include "views/icons.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "widgets/datetimeedit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFocusEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <cmath>
#include <mutex>

CurrencyFormat MakeCurrencyFormat(const platform::LocaleInfo& locale)
{
    CurrencyFormat f;
    f.symbol = ToQ(locale.currencySymbol);
    f.symbolFirst = locale.currencySymbolFirst;
    f.spaceSeparated = locale.currencySpaceSeparated;
    f.decimalSeparator = ToQ(locale.monetaryDecimalSeparator.empty() ? locale.decimalSeparator
                                                                     : locale.monetaryDecimalSeparator);
    f.thousandsSeparator = ToQ(locale.monetaryThousandsSeparator);
    f.digits = locale.currencyDigits;
    return f;
}

namespace
{

// Stores a copy of `draft` as a new contact under the document's lock; answers its id.
uint32_t AddContactFrom(CTimeKeeperDoc& doc, CContact draft)
{
    std::lock_guard lock(doc.GetLock());
    CContact* contact = doc.AddContact();
    draft.m_id = contact->m_id;
    *contact = draft;
    doc.SetModifiedFlag(true);
    return contact->m_id;
}

QString LeftTrimmed(const QString& s)
{
    qsizetype i = 0;
    while (i < s.size() && s[i].isSpace())
        ++i;
    return s.mid(i);
}

QLabel* ReadOnlyText(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
}

} // namespace

CPropertySheet::CPropertySheet(CMainFrame& frame, const QString& caption, QWidget* parent)
    : QDialog(parent), m_frame(frame), m_pages(new QTabWidget(this))
{
    setWindowTitle(caption);
    // The sheet is never narrower than its row of tabs: every title shows whole.
    m_pages->setUsesScrollButtons(false);
    m_pages->setElideMode(Qt::ElideNone);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_pages, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

void CPropertySheet::showEvent(QShowEvent* event)
{
    m_frame.Doc().m_editorOpen = true;
    QDialog::showEvent(event);
}

void CPropertySheet::done(int result)
{
    m_frame.Doc().m_editorOpen = false;
    QDialog::done(result);
}

void CPropertySheet::accept()
{
    if (Apply())
        QDialog::accept();
}

void CPropertySheet::Refuse(unsigned message, QWidget* field)
{
    Refuse(ToQ(platform::LoadString(message)), field);
}

void CPropertySheet::Refuse(const QString& text, QWidget* field)
{
    // The page of the field comes to the front with the focus on it.
    for (int i = 0; i < m_pages->count(); ++i)
        if (m_pages->widget(i)->isAncestorOf(field))
            m_pages->setCurrentIndex(i);
    m_frame.Prompter().ShowMessage(FromQ(text), platform::Icon::warning);
    field->setFocus();
}

CTimeEntryPropertySheet::CTimeEntryPropertySheet(CMainFrame& frame, CDay& day, CTimeEntry& entry, QWidget* parent)
    : CPropertySheet(frame, tr("Time Entry Properties"), parent), m_day(day), m_entry(entry),
      m_running(entry.IsRunning())
{
    CTimeKeeperDoc& doc = frame.Doc();
    const CTimeKeeperApp& app = frame.App();
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    m_start = new CDateTimeEdit(CDateTimeEdit::Mode::time, page);
    m_end = new CDateTimeEdit(CDateTimeEdit::Mode::time, page);
    m_activity = new QComboBox(page);
    m_note = new QPlainTextEdit(page);
    m_useDefaults = new QCheckBox(tr("Use Billing &Defaults"), page);
    m_billable = new QCheckBox(tr("&Billable"), page);
    m_rate = new CCurrencyEdit(page);
    m_overtime = new QCheckBox(tr("&Overtime"), page);
    m_multiplier = new QDoubleSpinBox(page);
    m_start->setObjectName(QStringLiteral("start"));
    m_end->setObjectName(QStringLiteral("end"));
    m_activity->setObjectName(QStringLiteral("activity"));
    m_note->setObjectName(QStringLiteral("note"));
    for (CDateTimeEdit* field : {m_start, m_end})
    {
        ConfigureDateField(*field, app);
        field->setMinimumWidth(110);
    }
    m_rate->SetFormat(MakeCurrencyFormat(app.GetLocale()));
    m_multiplier->setRange(0.0, 100.0);
    m_multiplier->setDecimals(2);
    m_multiplier->setSingleStep(0.5);
    m_note->setTabChangesFocus(true);
    m_note->setMinimumHeight(60);
    m_note->installEventFilter(this);

    std::unique_lock lock(doc.GetLock());
    const CTask* task = doc.GetTask(entry.m_taskId);
    form->addRow(tr("Task:"), ReadOnlyText(ToQ(doc.GetTaskPath(task)), page));
    form->addRow(tr("Date:"), ReadOnlyText(ToQ(app.FormatLongDate(day.GetDate())), page));
    form->addRow(tr("&Start Time:"), m_start);
    form->addRow(tr("&End Time:"), m_end);
    form->addRow(tr("&Activity:"), m_activity);
    form->addRow(tr("&Note:"), m_note);
    m_start->SetTime(QTime(entry.m_start.GetHour(), entry.m_start.GetMinute()));
    if (m_running)
    {
        m_end->setEnabled(false);
        m_end->setPlaceholderText(tr("(running)"));
    }
    else
    {
        const int endMinutes = entry.m_end.MinutesOfDay() % 1440;
        m_end->SetTime(QTime(endMinutes / 60, endMinutes % 60));
    }
    m_activity->addItem(QString(), 0u);
    for (const auto& [id, name] : ByName(doc.m_activities))
        m_activity->addItem(name, id);
    m_activity->setCurrentIndex(std::max(0, m_activity->findData(entry.m_activityId)));
    m_note->setPlainText(ToQ(entry.m_note));

    auto* billing = new QGroupBox(tr("Billing"), page);
    auto* billingForm = new QGridLayout(billing);
    billingForm->addWidget(m_useDefaults, 0, 0, 1, 2);
    auto* rateLabel = new QLabel(tr("&Rate:"), billing);
    rateLabel->setBuddy(m_rate);
    auto* multiplierLabel = new QLabel(tr("&Multiplier:"), billing);
    multiplierLabel->setBuddy(m_multiplier);
    billingForm->addWidget(m_billable, 1, 0);
    billingForm->addWidget(rateLabel, 1, 1, Qt::AlignRight);
    billingForm->addWidget(m_rate, 1, 2);
    billingForm->addWidget(m_overtime, 2, 0);
    billingForm->addWidget(multiplierLabel, 2, 1, Qt::AlignRight);
    billingForm->addWidget(m_multiplier, 2, 2);
    form->addRow(billing);
    m_useDefaults->setChecked(!entry.m_customBilling);
    if (task)
    {
        m_billable->setChecked(entry.m_customBilling ? entry.m_billable : task->IsBillableFor(entry.m_activityId));
        m_rate->SetValue(entry.m_customBilling ? entry.m_rate : task->GetRateFor(entry.m_activityId));
        m_multiplier->setValue(entry.m_overtimeMultiplier > 0 ? entry.m_overtimeMultiplier
                                                              : task->GetEffectiveOvertimeMultiplier());
    }
    m_overtime->setChecked(entry.m_overtime);
    lock.unlock();

    connect(m_useDefaults, &QCheckBox::toggled, this, &CTimeEntryPropertySheet::UpdateBilling);
    connect(m_overtime, &QCheckBox::toggled, this, &CTimeEntryPropertySheet::UpdateBilling);
    connect(m_activity, &QComboBox::currentIndexChanged, this, [this] {
        if (!m_useDefaults->isChecked())
            return;
        std::lock_guard guard(m_frame.Doc().GetLock());
        if (const CTask* t = m_frame.Doc().GetTask(m_entry.m_taskId))
        {
            const uint32_t activity = m_activity->currentData().toUInt();
            m_billable->setChecked(t->IsBillableFor(activity));
            m_rate->SetValue(t->GetRateFor(activity));
        }
    });
    UpdateBilling();
    m_pages->addTab(page, tr("General"));
    m_start->setFocus();
    resize(420, sizeHint().height());
}

bool CTimeEntryPropertySheet::eventFilter(QObject* watched, QEvent* event)
{
    // Reached by the keyboard, the note is selected as a line's text would be: a note
    // taken over from the task's last one is replaced by what the person types.
    if (watched == m_note && event->type() == QEvent::FocusIn)
    {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason || reason == Qt::ShortcutFocusReason)
            m_note->selectAll();
    }
    return CPropertySheet::eventFilter(watched, event);
}

void CTimeEntryPropertySheet::UpdateBilling()
{
    const bool custom = !m_useDefaults->isChecked();
    m_billable->setEnabled(custom);
    m_rate->setEnabled(custom);
    m_multiplier->setEnabled(m_overtime->isChecked());
}

bool CTimeEntryPropertySheet::Apply()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    const CTimeKeeperApp& app = m_frame.App();
    if (!m_start->IsAcceptable() || m_start->IsEmpty())
    {
        Refuse(40018, m_start);
        return false;
    }
    const QTime startTime = m_start->Time();
    const CDateTime date = m_day.GetDate().DatePart();
    const CDateTime start = date.AddMinutes(startTime.hour() * 60 + startTime.minute());
    CTinyTime end;
    if (m_running)
    {
        if (!(start < app.RoundTime(app.Now())))
        {
            Refuse(40009, m_start);
            return false;
        }
    }
    else
    {
        if (!m_end->IsAcceptable() || m_end->IsEmpty())
        {
            Refuse(40018, m_end);
            return false;
        }
        const QTime endTime = m_end->Time();
        int endMinutes = endTime.hour() * 60 + endTime.minute();
        // 00:00 at the end means midnight at the end of the entry's day.
        if (endMinutes == 0)
            endMinutes = 1440;
        if (endMinutes <= startTime.hour() * 60 + startTime.minute())
        {
            Refuse(40001, m_end);
            return false;
        }
        end = CTinyTime(endMinutes / 60, endMinutes % 60);
    }
    bool rateOk = true;
    const double rate = m_rate->Value(&rateOk);
    if (!m_useDefaults->isChecked() && (!rateOk || rate < 0))
    {
        Refuse(tr("Enter the rate as an amount of money."), m_rate);
        return false;
    }

    std::lock_guard lock(doc.GetLock());
    m_entry.m_start = CTinyTime(startTime.hour(), startTime.minute());
    if (!m_running)
        m_entry.m_end = end;
    m_entry.m_note = FromQ(m_note->toPlainText());
    m_entry.m_activityId = m_activity->currentData().toUInt();
    if (m_useDefaults->isChecked())
    {
        m_entry.m_customBilling = false;
        m_entry.m_billable = false;
        m_entry.m_rate = 0.0;
    }
    else
    {
        m_entry.m_customBilling = true;
        m_entry.m_billable = m_billable->isChecked();
        m_entry.m_rate = rate;
    }
    m_entry.m_overtime = m_overtime->isChecked();
    m_entry.m_overtimeMultiplier = float(m_multiplier->value());
    return true;
}

CExpenseEntrySheet::CExpenseEntrySheet(CMainFrame& frame, CExpenseEntry& entry, QWidget* parent)
    : CPropertySheet(frame, tr("Expense Entry Properties"), parent), m_entry(entry)
{
    CTimeKeeperDoc& doc = frame.Doc();
    const CTimeKeeperApp& app = frame.App();
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    m_type = new QComboBox(page);
    m_driven = new QSpinBox(page);
    m_mileageRate = new QDoubleSpinBox(page);
    m_amount = new CCurrencyEdit(page);
    m_billable = new QCheckBox(tr("&Billable"), page);
    m_payment = new QComboBox(page);
    m_note = new QPlainTextEdit(page);
    m_type->setObjectName(QStringLiteral("type"));
    m_driven->setObjectName(QStringLiteral("driven"));
    m_mileageRate->setObjectName(QStringLiteral("mileageRate"));
    m_amount->setObjectName(QStringLiteral("amount"));
    m_driven->setRange(0, 1000000);
    m_driven->setSuffix(u' ' + ToQ(app.GetDistanceUnit()));
    m_mileageRate->setRange(0.0, 1000.0);
    m_mileageRate->setDecimals(3);
    m_mileageRate->setSingleStep(0.01);
    m_amount->SetFormat(MakeCurrencyFormat(app.GetLocale()));
    m_note->setTabChangesFocus(true);
    m_note->setMinimumHeight(60);

    std::lock_guard lock(doc.GetLock());
    form->addRow(tr("Task:"), ReadOnlyText(ToQ(doc.GetTaskPath(doc.GetTask(entry.m_taskId))), page));
    form->addRow(tr("Date:"), ReadOnlyText(ToQ(app.FormatLongDate(entry.m_date)), page));
    form->addRow(tr("Expense &Type:"), m_type);
    form->addRow(tr("&Driven:"), m_driven);
    form->addRow(tr("&Rate:"), m_mileageRate);
    form->addRow(tr("Expense &Amount:"), m_amount);
    form->addRow(QString(), m_billable);
    form->addRow(tr("&Payment Method:"), m_payment);
    form->addRow(tr("&Note:"), m_note);
    for (const auto& [id, name] : ByName(doc.m_expenseTypes))
        m_type->addItem(name, id);
    m_type->setCurrentIndex(m_type->findData(entry.m_expenseTypeId));
    m_payment->addItem(QString(), uint32_t(-1));
    for (const auto& [id, name] : ByName(doc.m_paymentMethods))
        m_payment->addItem(name, id);
    m_payment->setCurrentIndex(std::max(0, m_payment->findData(entry.m_paymentMethodId)));
    m_billable->setChecked(entry.m_billable);
    m_note->setPlainText(ToQ(entry.m_note));
    m_amount->SetValue(entry.m_amount);
    m_driven->setValue(int(entry.m_distance));
    // The entry keeps the distance and the amount; the rate is what made one from the other.
    m_mileageRate->setValue(entry.m_distance > 0 ? entry.m_amount / entry.m_distance : doc.m_defaultMileageRate);
    UpdateMileageFields();
    connect(m_type, &QComboBox::currentIndexChanged, this, &CExpenseEntrySheet::OnTypeChosen);
    connect(m_driven, &QSpinBox::valueChanged, this, &CExpenseEntrySheet::UpdateMileageAmount);
    connect(m_mileageRate, &QDoubleSpinBox::valueChanged, this, &CExpenseEntrySheet::UpdateMileageAmount);
    m_pages->addTab(page, tr("General"));
    resize(420, sizeHint().height());
}

bool CExpenseEntrySheet::IsMileage() const
{
    return m_type->currentIndex() >= 0 && m_type->currentData().toUInt() == CExpenseType::kMileageId;
}

void CExpenseEntrySheet::UpdateMileageFields()
{
    const bool mileage = IsMileage();
    m_driven->setEnabled(mileage);
    m_mileageRate->setEnabled(mileage);
    m_amount->setEnabled(!mileage);
}

void CExpenseEntrySheet::OnTypeChosen()
{
    if (IsMileage())
        m_mileageRate->setValue(m_frame.Doc().m_defaultMileageRate);
    UpdateMileageFields();
    UpdateMileageAmount();
}

void CExpenseEntrySheet::UpdateMileageAmount()
{
    // The amount shown is the one OK will store.
    if (IsMileage())
        m_amount->SetValue(CExpenseEntry::MileageAmount(m_driven->value(), float(m_mileageRate->value())));
}

bool CExpenseEntrySheet::Apply()
{
    const bool mileage = IsMileage();
    double amount = 0.0;
    int distance = 0;
    float rate = 0.0f;
    if (mileage)
    {
        distance = m_driven->value();
        rate = float(m_mileageRate->value());
        amount = CExpenseEntry::MileageAmount(distance, rate);
    }
    else
    {
        bool ok = true;
        amount = m_amount->Value(&ok);
        if (!ok)
        {
            Refuse(tr("Enter the expense amount as an amount of money."), m_amount);
            return false;
        }
    }
    CTimeKeeperDoc& doc = m_frame.Doc();
    std::lock_guard lock(doc.GetLock());
    m_entry.m_note = FromQ(m_note->toPlainText());
    m_entry.m_amount = amount;
    m_entry.m_distance = float(distance);
    m_entry.m_expenseTypeId = m_type->currentIndex() >= 0 ? m_type->currentData().toUInt() : uint32_t(-1);
    m_entry.m_paymentMethodId = m_payment->currentData().toUInt();
    m_entry.m_billable = m_billable->isChecked();
    return true;
}

CToDoEntrySheet::CToDoEntrySheet(CMainFrame& frame, CToDoEntry& entry, QWidget* parent)
    : CPropertySheet(frame, tr("To Do Entry Properties"), parent), m_entry(entry)
{
    CTimeKeeperDoc& doc = frame.Doc();
    auto* page = new QWidget(this);
    auto* form = new QFormLayout(page);
    m_description = new QPlainTextEdit(page);
    m_priority = new QComboBox(page);
    m_due = new CDateTimeEdit(CDateTimeEdit::Mode::date, page);
    m_complete = new CDateTimeEdit(CDateTimeEdit::Mode::date, page);
    m_note = new QPlainTextEdit(page);
    m_description->setObjectName(QStringLiteral("description"));
    m_priority->setObjectName(QStringLiteral("priority"));
    m_due->setObjectName(QStringLiteral("due"));
    m_complete->setObjectName(QStringLiteral("complete"));
    for (CDateTimeEdit* field : {m_due, m_complete})
    {
        ConfigureDateField(*field, frame.App());
        field->SetAllowEmpty(true);
    }
    m_description->setTabChangesFocus(true);
    m_description->setMinimumHeight(50);
    m_note->setTabChangesFocus(true);
    m_note->setMinimumHeight(50);
    for (char c = '1'; c <= '9'; ++c)
        m_priority->addItem(QString(QChar(c)));
    for (char c = 'A'; c <= 'Z'; ++c)
        m_priority->addItem(QString(QChar(c)));

    std::lock_guard lock(doc.GetLock());
    form->addRow(tr("Task:"), ReadOnlyText(ToQ(doc.GetTaskPath(doc.GetTask(entry.m_taskId))), page));
    form->addRow(tr("&Description:"), m_description);
    form->addRow(tr("&Priority:"), m_priority);
    form->addRow(tr("D&ue Date:"), m_due);
    form->addRow(tr("&Complete Date:"), m_complete);
    form->addRow(tr("&Note:"), m_note);
    m_description->setPlainText(ToQ(entry.m_description));
    m_priority->setCurrentIndex(std::max(0, m_priority->findText(ToQ(entry.m_priority))));
    m_due->SetDate(ToQDate(entry.m_dueDate));
    m_complete->SetDate(ToQDate(entry.m_completeDate));
    m_note->setPlainText(ToQ(entry.m_note));
    m_pages->addTab(page, tr("General"));
    m_description->setFocus();
    resize(420, sizeHint().height());
}

bool CToDoEntrySheet::Apply()
{
    const QString description = LeftTrimmed(m_description->toPlainText());
    if (description.isEmpty())
    {
        Refuse(40014, m_description);
        return false;
    }
    for (CDateTimeEdit* field : {m_due, m_complete})
        if (!field->IsAcceptable())
        {
            Refuse(40018, field);
            return false;
        }
    std::lock_guard lock(m_frame.Doc().GetLock());
    m_entry.m_description = FromQ(description);
    m_entry.m_priority = FromQ(m_priority->currentText());
    m_entry.m_dueDate = FromQDateOrNull(m_due->Date());
    m_entry.m_completeDate = FromQDateOrNull(m_complete->Date());
    m_entry.m_note = FromQ(m_note->toPlainText());
    return true;
}

CActivityRateDlg::CActivityRateDlg(const QString& activity, State state, double rate, const CurrencyFormat& format,
                                   QWidget* parent)
    : QDialog(parent), m_default(new QRadioButton(tr("&Default: the task's regular rate"), this)),
      m_notBillable(new QRadioButton(tr("&Not billable"), this)), m_withRate(new QRadioButton(tr("&Rate:"), this)),
      m_rate(new CCurrencyEdit(this))
{
    setWindowTitle(tr("Activity Rate"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Activity: %1").arg(activity), this));
    layout->addWidget(m_default);
    layout->addWidget(m_notBillable);
    auto* row = new QHBoxLayout;
    row->addWidget(m_withRate);
    row->addWidget(m_rate, 1);
    layout->addLayout(row);
    m_rate->SetFormat(format);
    m_rate->SetValue(rate);
    (state == State::useDefault ? m_default : state == State::notBillable ? m_notBillable : m_withRate)->setChecked(true);
    m_rate->setEnabled(m_withRate->isChecked());
    connect(m_withRate, &QRadioButton::toggled, m_rate, &QWidget::setEnabled);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

CActivityRateDlg::State CActivityRateDlg::GetState() const
{
    if (m_default->isChecked())
        return State::useDefault;
    return m_notBillable->isChecked() ? State::notBillable : State::rate;
}

double CActivityRateDlg::Rate() const
{
    return m_rate->Value();
}

CTaskProperties::CTaskProperties(CMainFrame& frame, CTask& task, QWidget* parent)
    : CPropertySheet(frame, tr("Task Properties"), parent), m_task(task),
      m_currency(MakeCurrencyFormat(frame.App().GetLocale()))
{
    CTimeKeeperDoc& doc = frame.Doc();
    std::lock_guard lock(doc.GetLock());
    const bool root = task.m_id == CTimeKeeperDoc::kRootTaskId;

    auto* general = new QWidget(this);
    auto* form = new QFormLayout(general);
    m_name = new QLineEdit(ToQ(task.m_name), general);
    m_name->setObjectName(QStringLiteral("name"));
    m_picture = new QLabel(general);
    m_picture->setPixmap(icons::LetterPixmap(icons::TaskImageIndex(task.m_level, ToQ(doc.GetLevelName(task.m_level))), 32));
    auto* nameRow = new QHBoxLayout;
    nameRow->addWidget(m_picture);
    nameRow->addWidget(m_name, 1);
    form->addRow(nameRow);
    m_abbreviation = new QLineEdit(ToQ(task.m_abbreviation), general);
    form->addRow(tr("A&bbreviation:"), m_abbreviation);
    m_level = new QComboBox(general);
    m_level->setObjectName(QStringLiteral("level"));
    // A task stays below its parent's level and above its children's.
    int lowest = root ? 0 : (task.m_parent ? task.m_parent->m_level + 1 : 1);
    int highest = root ? 0 : 19;
    for (const CTask* child : task.m_children)
        highest = std::min(highest, int(child->m_level) - 1);
    for (int level = lowest; level <= highest; ++level)
        m_level->addItem(icons::LetterIcon(icons::TaskImageIndex(level, ToQ(doc.GetLevelName(level)))),
                         ToQ(doc.GetLevelName(level)), level);
    m_level->setCurrentIndex(std::max(0, m_level->findData(int(task.m_level))));
    m_level->setEnabled(!root && m_level->count() > 1 && !task.IsImported());
    form->addRow(tr("Task &Level:"), m_level);
    m_hours = new QDoubleSpinBox(general);
    m_hours->setRange(0.0, 1e7);
    m_hours->setDecimals(2);
    m_hours->setValue(task.m_hoursEstimate / 60.0);
    form->addRow(tr("&Hours Estimate:"), m_hours);
    m_cost = new CCurrencyEdit(general);
    m_cost->SetFormat(m_currency);
    m_cost->SetValue(task.m_costEstimate);
    form->addRow(tr("C&ost Estimate:"), m_cost);
    m_useParentTaskId = new QCheckBox(tr("Use Parent Task &ID"), general);
    m_useParentTaskId->setChecked(!root && task.m_useParentTaskId);
    m_useParentTaskId->setEnabled(!root);
    m_taskId = new QLineEdit(ToQ(task.GetEffectiveTaskId()), general);
    form->addRow(m_useParentTaskId);
    form->addRow(tr("&Task ID:"), m_taskId);
    m_useParentContact = new QCheckBox(tr("Use Parent &Contact"), general);
    m_useParentContact->setChecked(!root && task.m_useParentContact);
    m_useParentContact->setEnabled(!root);
    m_contact = new QComboBox(general);
    m_contact->setObjectName(QStringLiteral("contact"));
    m_editContact = new QPushButton(QStringLiteral("..."), general);
    m_editContact->setFixedWidth(32);
    m_newContact = new QPushButton(tr("Ne&w Contact..."), general);
    auto* contactRow = new QHBoxLayout;
    contactRow->addWidget(m_contact, 1);
    contactRow->addWidget(m_editContact);
    contactRow->addWidget(m_newContact);
    form->addRow(m_useParentContact);
    auto* contactLabel = new QLabel(tr("Contact &ID:"), general);
    contactLabel->setBuddy(m_contact);
    form->addRow(contactLabel, contactRow);
    FillContacts(task.GetEffectiveContactId());
    m_pages->addTab(general, tr("General"));

    auto* billing = new QWidget(this);
    auto* billingForm = new QFormLayout(billing);
    m_useParentBilling = new QCheckBox(tr("Use &Parent Billing Information"), billing);
    m_useParentBilling->setChecked(!root && task.m_useParentBilling);
    m_useParentBilling->setEnabled(!root);
    billingForm->addRow(m_useParentBilling);
    const CTask* billingTask = task.GetBillingTask();
    m_billable = new QCheckBox(tr("&Billable Task"), billing);
    m_billable->setChecked(billingTask->m_billable);
    billingForm->addRow(m_billable);
    m_rate = new CCurrencyEdit(billing);
    m_rate->SetFormat(m_currency);
    m_rate->SetValue(billingTask->m_regularRate);
    billingForm->addRow(tr("&Regular Rate:"), m_rate);
    m_multiplier = new QDoubleSpinBox(billing);
    m_multiplier->setRange(0.0, 100.0);
    m_multiplier->setDecimals(2);
    m_multiplier->setSingleStep(0.5);
    m_multiplier->setValue(billingTask->m_overtimeMultiplier);
    billingForm->addRow(tr("&Overtime Multiplier:"), m_multiplier);
    m_useActivityRates = new QCheckBox(tr("Use &Activity Rates"), billing);
    m_useActivityRates->setChecked(billingTask->m_useActivityRates);
    billingForm->addRow(m_useActivityRates);
    m_activityRates = new QTreeWidget(billing);
    m_activityRates->setObjectName(QStringLiteral("activityRates"));
    m_activityRates->setRootIsDecorated(false);
    m_activityRates->setHeaderLabels({tr("Activity"), tr("Rate")});
    m_activityRates->setColumnWidth(0, 185);
    m_activityRates->setColumnWidth(1, 92);
    m_activityRates->setMinimumHeight(110);
    billingForm->addRow(m_activityRates);
    m_editRate = new QPushButton(tr("&Edit..."), billing);
    m_clearRate = new QPushButton(tr("C&lear"), billing);
    auto* rateButtons = new QHBoxLayout;
    rateButtons->addStretch(1);
    rateButtons->addWidget(m_editRate);
    rateButtons->addWidget(m_clearRate);
    billingForm->addRow(rateButtons);
    for (const auto& [id, rate] : billingTask->m_activityRates)
        m_rates[id] = Rate{rate->m_billable, rate->m_rate};
    FillActivityRates();
    m_pages->addTab(billing, tr("Billing"));

    auto* notesPage = new QWidget(this);
    auto* notesLayout = new QVBoxLayout(notesPage);
    m_notes = new QPlainTextEdit(ToQ(task.m_notes), notesPage);
    m_notes->setObjectName(QStringLiteral("notes"));
    notesLayout->addWidget(m_notes);
    m_pages->addTab(notesPage, tr("Notes"));

    // Imported tasks keep the names and levels of their project.
    m_name->setReadOnly(task.IsImported());

    for (QCheckBox* box : {m_useParentTaskId, m_useParentContact, m_useParentBilling, m_useActivityRates})
        connect(box, &QCheckBox::toggled, this, &CTaskProperties::UpdateEnabled);
    connect(m_activityRates, &QTreeWidget::itemSelectionChanged, this, &CTaskProperties::UpdateEnabled);
    connect(m_activityRates, &QTreeWidget::itemDoubleClicked, this, &CTaskProperties::EditActivityRate);
    connect(m_editRate, &QPushButton::clicked, this, &CTaskProperties::EditActivityRate);
    connect(m_clearRate, &QPushButton::clicked, this, [this] {
        if (QTreeWidgetItem* item = m_activityRates->currentItem())
            SetActivityRate(m_activityRates->indexOfTopLevelItem(item), CActivityRateDlg::State::useDefault, 0.0);
    });
    connect(m_contact, &QComboBox::currentIndexChanged, this, &CTaskProperties::UpdateEnabled);
    connect(m_editContact, &QPushButton::clicked, this, &CTaskProperties::EditChosenContact);
    connect(m_newContact, &QPushButton::clicked, this, &CTaskProperties::NewContact);
    UpdateEnabled();
    resize(460, 470);
}

void CTaskProperties::FillContacts(uint32_t select)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    m_contact->clear();
    m_contact->addItem(QString(), 0u);
    for (const auto& [id, name] : ByName(doc.m_contacts))
        m_contact->addItem(name, id);
    m_contact->setCurrentIndex(std::max(0, m_contact->findData(select)));
}

void CTaskProperties::FillActivityRates()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    const int current = m_activityRates->currentItem() ? m_activityRates->indexOfTopLevelItem(m_activityRates->currentItem()) : -1;
    m_activityRates->clear();
    for (const auto& [id, name] : ByName(doc.m_activities))
    {
        QString text = tr("<default>");
        auto it = m_rates.find(id);
        if (it != m_rates.end())
            text = it->second.billable ? m_currency.Format(it->second.rate) : tr("Not billable");
        auto* item = new QTreeWidgetItem(m_activityRates, {name, text});
        item->setData(0, Qt::UserRole, id);
        item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
    }
    if (current >= 0 && current < m_activityRates->topLevelItemCount())
        m_activityRates->setCurrentItem(m_activityRates->topLevelItem(current));
}

void CTaskProperties::UpdateEnabled()
{
    const bool ownBilling = !m_useParentBilling->isChecked();
    m_billable->setEnabled(ownBilling);
    m_rate->setEnabled(ownBilling);
    m_multiplier->setEnabled(ownBilling);
    m_useActivityRates->setEnabled(ownBilling);
    const bool rates = ownBilling && m_useActivityRates->isChecked();
    m_activityRates->setEnabled(rates);
    m_editRate->setEnabled(rates && m_activityRates->currentItem() != nullptr);
    m_clearRate->setEnabled(rates && m_activityRates->currentItem() != nullptr);
    m_taskId->setEnabled(!m_useParentTaskId->isChecked());
    const bool ownContact = !m_useParentContact->isChecked();
    m_contact->setEnabled(ownContact);
    m_newContact->setEnabled(ownContact);
    m_editContact->setEnabled(ownContact && m_contact->currentData().toUInt() != 0);
}

void CTaskProperties::SetActivityRate(int row, CActivityRateDlg::State state, double rate)
{
    QTreeWidgetItem* item = m_activityRates->topLevelItem(row);
    if (item == nullptr)
        return;
    const uint32_t id = item->data(0, Qt::UserRole).toUInt();
    switch (state)
    {
    case CActivityRateDlg::State::useDefault:
        m_rates.erase(id);
        break;
    case CActivityRateDlg::State::notBillable:
        m_rates[id] = Rate{false, 0.0};
        break;
    case CActivityRateDlg::State::rate:
        m_rates[id] = Rate{true, rate};
        break;
    }
    m_activityRates->setCurrentItem(item);
    FillActivityRates();
}

void CTaskProperties::EditActivityRate()
{
    QTreeWidgetItem* item = m_activityRates->currentItem();
    if (item == nullptr || !m_activityRates->isEnabled())
        return;
    const uint32_t id = item->data(0, Qt::UserRole).toUInt();
    CActivityRateDlg::State state = CActivityRateDlg::State::useDefault;
    double rate = 0.0;
    if (auto it = m_rates.find(id); it != m_rates.end())
    {
        state = it->second.billable ? CActivityRateDlg::State::rate : CActivityRateDlg::State::notBillable;
        rate = it->second.rate;
    }
    CActivityRateDlg dialog(item->text(0), state, rate, m_currency, this);
    if (dialog.exec() == QDialog::Accepted)
        SetActivityRate(m_activityRates->indexOfTopLevelItem(item), dialog.GetState(), dialog.Rate());
}

void CTaskProperties::EditChosenContact()
{
    CContact* contact = m_frame.Doc().GetContact(m_contact->currentData().toUInt());
    if (contact == nullptr)
        return;
    CContactSheet sheet(m_frame, *contact, this);
    if (sheet.exec() == QDialog::Accepted)
        FillContacts(contact->m_id);
    m_frame.Doc().m_editorOpen = true;
}

void CTaskProperties::NewContact()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    CContact draft;
    CContactSheet sheet(m_frame, draft, this);
    const bool accepted = sheet.exec() == QDialog::Accepted;
    doc.m_editorOpen = true;
    if (!accepted)
        return;
    const uint32_t id = AddContactFrom(doc, draft);
    FillContacts(id);
}

bool CTaskProperties::Apply()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    bool ok = true;
    const double cost = m_cost->Value(&ok);
    if (!ok || cost < 0)
    {
        Refuse(tr("Enter the cost estimate as an amount of money."), m_cost);
        return false;
    }
    const double rate = m_rate->Value(&ok);
    if ((!ok || rate < 0) && !m_useParentBilling->isChecked())
    {
        Refuse(tr("Enter the regular rate as an amount of money."), m_rate);
        return false;
    }
    const QString name = LeftTrimmed(m_name->text());
    {
        std::lock_guard lock(doc.GetLock());
        if (!name.isEmpty() && FromQ(name) != m_task.m_name)
            doc.RenameTask(&m_task, FromQ(name));
        m_task.m_abbreviation = FromQ(m_abbreviation->text().trimmed());
        if (m_level->isEnabled())
            m_task.m_level = uint16_t(m_level->currentData().toInt());
        m_task.m_hoursEstimate = std::trunc(m_hours->value() * 60.0);
        m_task.m_costEstimate = cost;
        const bool root = m_task.m_id == CTimeKeeperDoc::kRootTaskId;
        m_task.m_useParentTaskId = !root && m_useParentTaskId->isChecked();
        if (!m_task.m_useParentTaskId)
            m_task.m_taskId = FromQ(m_taskId->text().trimmed());
        m_task.m_useParentContact = !root && m_useParentContact->isChecked();
        if (!m_task.m_useParentContact)
            m_task.m_contactId = m_contact->currentData().toUInt();
        m_task.m_useParentBilling = !root && m_useParentBilling->isChecked();
        if (!m_task.m_useParentBilling)
        {
            m_task.m_billable = m_billable->isChecked();
            m_task.m_regularRate = rate;
            m_task.m_overtimeMultiplier = float(m_multiplier->value());
            m_task.m_useActivityRates = m_useActivityRates->isChecked();
            m_task.m_activityRates.clear();
            for (const auto& [id, r] : m_rates)
            {
                auto own = std::make_unique<CActivityRate>();
                own->m_activityId = id;
                own->m_taskId = m_task.m_id;
                own->m_billable = r.billable;
                own->m_rate = r.rate;
                m_task.m_activityRates.emplace(id, std::move(own));
            }
        }
        m_task.m_notes = FromQ(m_notes->toPlainText());
        doc.SetModifiedFlag(true);
    }
    return true;
}

CContactSheet::CContactSheet(CMainFrame& frame, CContact& contact, QWidget* parent)
    : CPropertySheet(frame, tr("Contact Properties"), parent), m_contact(contact)
{
    std::lock_guard lock(frame.Doc().GetLock());
    auto* details = new QWidget(this);
    auto* form = new QFormLayout(details);
    m_first = new QLineEdit(ToQ(contact.m_first), details);
    m_middle = new QLineEdit(ToQ(contact.m_middle), details);
    m_last = new QLineEdit(ToQ(contact.m_last), details);
    m_address = new QPlainTextEdit(ToQ(contact.m_address), details);
    m_phone = new QLineEdit(ToQ(contact.m_phone), details);
    m_fax = new QLineEdit(ToQ(contact.m_fax), details);
    m_email = new QLineEdit(ToQ(contact.m_email), details);
    m_first->setObjectName(QStringLiteral("first"));
    m_middle->setObjectName(QStringLiteral("middle"));
    m_last->setObjectName(QStringLiteral("last"));
    m_address->setTabChangesFocus(true);
    m_address->setMinimumHeight(70);
    form->addRow(tr("&First:"), m_first);
    form->addRow(tr("&Middle:"), m_middle);
    form->addRow(tr("&Last:"), m_last);
    form->addRow(tr("&Address:"), m_address);
    form->addRow(tr("&Phone:"), m_phone);
    form->addRow(tr("Fa&x:"), m_fax);
    form->addRow(tr("&E-Mail"), m_email);
    m_pages->addTab(details, tr("Details"));
    auto* notesPage = new QWidget(this);
    auto* notesLayout = new QVBoxLayout(notesPage);
    m_notes = new QPlainTextEdit(ToQ(contact.m_notes), notesPage);
    notesLayout->addWidget(m_notes);
    m_pages->addTab(notesPage, tr("Notes"));
    m_first->setFocus();
    resize(400, sizeHint().height());
}

bool CContactSheet::Apply()
{
    if (m_first->text().trimmed().isEmpty() && m_last->text().trimmed().isEmpty() &&
        m_middle->text().trimmed().isEmpty())
    {
        Refuse(40019, m_first);
        return false;
    }
    std::lock_guard lock(m_frame.Doc().GetLock());
    m_contact.m_first = FromQ(m_first->text().trimmed());
    m_contact.m_middle = FromQ(m_middle->text().trimmed());
    m_contact.m_last = FromQ(m_last->text().trimmed());
    m_contact.m_address = FromQ(m_address->toPlainText());
    m_contact.m_phone = FromQ(m_phone->text().trimmed());
    m_contact.m_fax = FromQ(m_fax->text().trimmed());
    m_contact.m_email = FromQ(m_email->text().trimmed());
    m_contact.m_notes = FromQ(m_notes->toPlainText());
    // Every caller (task tree, entry list, task sheet, Contacts manager) gets the change saved.
    m_frame.Doc().SetModifiedFlag(true);
    return true;
}

CContactsDlg::CContactsDlg(CMainFrame& frame, QWidget* parent)
    : QDialog(parent), m_frame(frame), m_list(new QListWidget(this))
{
    setWindowTitle(tr("Contacts"));
    auto* layout = new QHBoxLayout(this);
    m_list->setObjectName(QStringLiteral("contacts"));
    layout->addWidget(m_list, 1);
    auto* column = new QVBoxLayout;
    auto* add = new QPushButton(tr("&New..."), this);
    m_edit = new QPushButton(tr("&Edit..."), this);
    m_delete = new QPushButton(tr("&Delete..."), this);
    m_copy = new QPushButton(tr("New &Copy..."), this);
    auto* close = new QPushButton(tr("Close"), this);
    for (QPushButton* b : {add, m_edit, m_delete, m_copy})
        column->addWidget(b);
    column->addStretch(1);
    column->addWidget(close);
    layout->addLayout(column);
    connect(add, &QPushButton::clicked, this, [this] { NewContact(false); });
    connect(m_copy, &QPushButton::clicked, this, [this] { NewContact(true); });
    connect(m_edit, &QPushButton::clicked, this, &CContactsDlg::EditSelected);
    connect(m_delete, &QPushButton::clicked, this, &CContactsDlg::DeleteSelected);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_list, &QListWidget::itemSelectionChanged, this, &CContactsDlg::UpdateButtons);
    connect(m_list, &QListWidget::itemDoubleClicked, this, &CContactsDlg::EditSelected);
    Fill();
    resize(420, 300);
}

void CContactsDlg::Fill(uint32_t select)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    std::lock_guard lock(doc.GetLock());
    m_list->clear();
    for (const auto& [id, name] : ByName(doc.m_contacts))
    {
        auto* item = new QListWidgetItem(name, m_list);
        item->setData(Qt::UserRole, id);
        if (id == select)
            m_list->setCurrentItem(item);
    }
    UpdateButtons();
}

uint32_t CContactsDlg::SelectedId() const
{
    QListWidgetItem* item = m_list->currentItem();
    return item && item->isSelected() ? item->data(Qt::UserRole).toUInt() : 0;
}

void CContactsDlg::UpdateButtons()
{
    const bool selected = SelectedId() != 0;
    m_edit->setEnabled(selected);
    m_delete->setEnabled(selected);
    m_copy->setEnabled(selected);
}

void CContactsDlg::NewContact(bool copySelected)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    CContact draft;
    if (copySelected)
    {
        const CContact* source = doc.GetContact(SelectedId());
        if (source == nullptr)
            return;
        draft = *source;
    }
    CContactSheet sheet(m_frame, draft, this);
    if (sheet.exec() != QDialog::Accepted)
        return;
    const uint32_t id = AddContactFrom(doc, draft);
    Fill(id);
}

void CContactsDlg::EditSelected()
{
    CContact* contact = m_frame.Doc().GetContact(SelectedId());
    if (contact == nullptr)
        return;
    CContactSheet sheet(m_frame, *contact, this);
    if (sheet.exec() == QDialog::Accepted)
        Fill(contact->m_id);
}

void CContactsDlg::DeleteSelected()
{
    const uint32_t id = SelectedId();
    if (id == 0)
        return;
    if (m_frame.Doc().DeleteContact(id, m_frame.Prompter()))
        Fill();
}
