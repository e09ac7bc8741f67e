#include "views/options/optionspage3.h"

#include "app/timekeeperapp.h"
#include "views/mainframe.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>

COptionsPage3::COptionsPage3(CMainFrame& frame, QWidget* parent)
    : COptionsPage(frame, parent), m_asTime(new QRadioButton(tr("Show Elapsed as &Time"))),
      m_asDecimal(new QRadioButton(tr("Show Elapsed as &Decimal"))), m_interval(new QComboBox),
      m_showOnStart(new QCheckBox(tr("Display Properties When &Starting"))),
      m_showOnStop(new QCheckBox(tr("Display Properties When Sto&pping"))),
      m_stopAtMidnight(new QCheckBox(tr("Stop Timer at &Midnight")))
{
    CTimeKeeperApp& app = frame.App();
    m_asTime->setObjectName(QStringLiteral("elapsedAsTime"));
    m_asDecimal->setObjectName(QStringLiteral("elapsedAsDecimal"));
    m_interval->setObjectName(QStringLiteral("interval"));
    m_showOnStart->setObjectName(QStringLiteral("showOnStart"));
    m_showOnStop->setObjectName(QStringLiteral("showOnStop"));
    m_stopAtMidnight->setObjectName(QStringLiteral("stopAtMidnight"));

    auto* format = new QGroupBox(tr("Time Format"));
    auto* formatLayout = new QVBoxLayout(format);
    formatLayout->addWidget(m_asTime);
    formatLayout->addWidget(m_asDecimal);

    // The six-minute interval came last to the setting, so its index is 7 although it
    // is listed between five and ten minutes.
    const std::pair<QString, int> intervals[] = {
        {tr("1 Minute"), 0},   {tr("3 Minutes"), 1},  {tr("5 Minutes"), 2},  {tr("6 Minutes"), 7},
        {tr("10 Minutes"), 3}, {tr("15 Minutes"), 4}, {tr("30 Minutes"), 5}, {tr("1 Hour"), 6},
    };
    for (const auto& [text, index] : intervals)
        m_interval->addItem(text, index);
    auto* rounding = new QFormLayout;
    rounding->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    rounding->addRow(tr("&Round To Nearest:"), m_interval);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(format);
    layout->addLayout(rounding);
    layout->addWidget(m_showOnStart);
    layout->addWidget(m_showOnStop);
    layout->addWidget(m_stopAtMidnight);
    layout->addStretch(1);

    (app.GetElapsedTimeFormat() == 0 ? m_asTime : m_asDecimal)->setChecked(true);
    m_interval->setCurrentIndex(std::max(0, m_interval->findData(app.GetTimeInterval())));
    m_showOnStart->setChecked(app.GetShowTimeEntryOnStart() != 0);
    m_showOnStop->setChecked(app.GetShowTimeEntryOnStop() != 0);
    m_stopAtMidnight->setChecked(app.GetStopAtMidnight() != 0);
}

void COptionsPage3::Apply()
{
    CTimeKeeperApp& app = m_frame.App();
    app.SetElapsedTimeFormat(m_asDecimal->isChecked() ? 1 : 0);
    app.SetTimeInterval(m_interval->currentData().toInt());
    app.SetShowTimeEntryOnStart(m_showOnStart->isChecked() ? 1 : 0);
    app.SetShowTimeEntryOnStop(m_showOnStop->isChecked() ? 1 : 0);
    const int stop = m_stopAtMidnight->isChecked() ? 1 : 0;
    if (app.GetStopAtMidnight() != stop)
        app.SetStopAtMidnight(stop);
}
