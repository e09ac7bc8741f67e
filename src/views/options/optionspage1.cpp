#include "views/options/optionspage1.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <mutex>

COptionsPage1::COptionsPage1(CMainFrame& frame, QWidget* parent)
    : COptionsPage(frame, parent), m_recentCount(new QLineEdit), m_up(new QToolButton), m_down(new QToolButton),
      m_alphabetically(new QRadioButton(tr("Al&phabetically"))), m_orderUsed(new QRadioButton(tr("Order &Used"))),
      m_weekStart(new QComboBox), m_mileageRate(new QDoubleSpinBox),
      m_autoSave(new QCheckBox(tr("Automatic Sa&ve"))), m_hideWhenMinimized(new QCheckBox(tr("&Hide when Minimized")))
{
    CTimeKeeperApp& app = frame.App();
    m_recentCount->setObjectName(QStringLiteral("recentCount"));
    m_up->setObjectName(QStringLiteral("recentCountUp"));
    m_down->setObjectName(QStringLiteral("recentCountDown"));
    m_alphabetically->setObjectName(QStringLiteral("alphabetically"));
    m_orderUsed->setObjectName(QStringLiteral("orderUsed"));
    m_weekStart->setObjectName(QStringLiteral("weekStart"));
    m_mileageRate->setObjectName(QStringLiteral("mileageRate"));
    m_autoSave->setObjectName(QStringLiteral("autoSave"));
    m_hideWhenMinimized->setObjectName(QStringLiteral("hideWhenMinimized"));

    // Digits only; the range is checked when the page is applied, so that a typed
    // count outside it is answered with a message rather than silently changed.
    m_recentCount->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,3}")), this));
    m_recentCount->setMaximumWidth(fontMetrics().horizontalAdvance(QStringLiteral("0000")) + 12);
    m_recentCount->installEventFilter(this);
    m_up->setArrowType(Qt::UpArrow);
    m_down->setArrowType(Qt::DownArrow);
    for (QToolButton* b : {m_up, m_down})
    {
        b->setAutoRepeat(true);
        // The arrow keys in the field step the count; the buttons stay out of the tab chain.
        b->setFocusPolicy(Qt::NoFocus);
        b->setFixedSize(16, 12);
    }
    connect(m_up, &QToolButton::clicked, this, [this] { StepRecentCount(1); });
    connect(m_down, &QToolButton::clicked, this, [this] { StepRecentCount(-1); });

    auto* spin = new QVBoxLayout;
    spin->setSpacing(0);
    spin->addWidget(m_up);
    spin->addWidget(m_down);
    auto* countRow = new QHBoxLayout;
    countRow->setSpacing(2);
    countRow->addWidget(m_recentCount);
    countRow->addLayout(spin);
    countRow->addStretch(1);
    auto* countLabel = new QLabel(tr("&Number of Tasks on List:"));
    countLabel->setBuddy(m_recentCount);

    auto* recent = new QGroupBox(tr("Recent Tasks"));
    auto* recentLayout = new QFormLayout(recent);
    recentLayout->addRow(countLabel, countRow);
    auto* order = new QGroupBox(tr("Recent Task Order"));
    auto* orderLayout = new QVBoxLayout(order);
    orderLayout->addWidget(m_alphabetically);
    orderLayout->addWidget(m_orderUsed);

    const platform::LocaleInfo& locale = app.GetLocale();
    for (const std::string& day : locale.dayNames)
        m_weekStart->addItem(ToQ(day));
    auto* week = new QGroupBox(tr("Work Week"));
    auto* weekLayout = new QFormLayout(week);
    weekLayout->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    weekLayout->addRow(tr("&Starts on:"), m_weekStart);

    m_mileageRate->setDecimals(3);
    m_mileageRate->setRange(0.0, 999.999);
    m_mileageRate->setSingleStep(0.01);
    auto* general = new QFormLayout;
    general->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    general->addRow(tr("Default &Mileage Rate:"), m_mileageRate);

    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    top->addWidget(recent, 1);
    top->addWidget(order, 1);
    layout->addLayout(top);
    layout->addWidget(week);
    layout->addLayout(general);
    layout->addWidget(m_autoSave);
    layout->addWidget(m_hideWhenMinimized);
    layout->addStretch(1);

    m_recentCount->setText(QString::number(app.GetRecentTaskCount()));
    (app.GetRecentTaskSortOrder() == 1 ? m_orderUsed : m_alphabetically)->setChecked(true);
    m_weekStart->setCurrentIndex(std::clamp(app.GetWeekStart(), 1, 7) - 1);
    {
        std::lock_guard lock(frame.Doc().GetLock());
        m_mileageRate->setValue(frame.Doc().m_defaultMileageRate);
        // The rate belongs to the document.
        m_mileageRate->setEnabled(frame.Doc().GetRootTask() != nullptr);
    }
    m_autoSave->setChecked(app.GetAutoSave() != 0);
    m_hideWhenMinimized->setChecked(app.GetHideWhenMinimized() != 0);
}

int COptionsPage1::TypedCount() const
{
    bool ok = false;
    const int value = m_recentCount->text().toInt(&ok);
    return ok ? value : 0;
}

void COptionsPage1::StepRecentCount(int steps)
{
    const int value = std::clamp(TypedCount() + steps, kMinRecentTasks, kMaxRecentTasks);
    m_recentCount->setText(QString::number(value));
    m_recentCount->selectAll();
}

bool COptionsPage1::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_recentCount && event->type() == QEvent::KeyPress)
    {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down)
        {
            StepRecentCount(key == Qt::Key_Up ? 1 : -1);
            return true;
        }
    }
    return COptionsPage::eventFilter(watched, event);
}

bool COptionsPage1::Check()
{
    const int count = TypedCount();
    if (count < kMinRecentTasks || count > kMaxRecentTasks)
        return Refuse(tr("The number of tasks on the list must be a whole number from %1 to %2.")
                          .arg(kMinRecentTasks)
                          .arg(kMaxRecentTasks),
                      m_recentCount);
    return true;
}

void COptionsPage1::Apply()
{
    CTimeKeeperApp& app = m_frame.App();
    app.SetRecentTaskCount(TypedCount());
    app.SetRecentTaskSortOrder(m_orderUsed->isChecked() ? 1 : 0);
    CTimeKeeperDoc& doc = m_frame.Doc();
    {
        std::lock_guard lock(doc.GetLock());
        const float rate = float(m_mileageRate->value());
        // The spin box shows three decimals; an untouched rate keeps its exact value.
        if (doc.GetRootTask() != nullptr && std::fabs(rate - doc.m_defaultMileageRate) >= 0.0005f)
        {
            doc.m_defaultMileageRate = rate;
            doc.SetModifiedFlag();
        }
    }
    app.SetAutoSave(m_autoSave->isChecked() ? 1 : 0);
    app.SetWeekStart(m_weekStart->currentIndex() + 1);
    app.SetHideWhenMinimized(m_hideWhenMinimized->isChecked() ? 1 : 0);
}
