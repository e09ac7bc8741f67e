#pragma once

#include "views/options/optionspage.h"

class QCheckBox;
class QComboBox;
class QRadioButton;

// "Time Entries": how elapsed time is shown, the rounding interval of the timer and
// the entry lists, the editor at start and stop, and stopping the timer at midnight.
class COptionsPage3 : public COptionsPage
{
    Q_OBJECT

public:
    COptionsPage3(CMainFrame& frame, QWidget* parent = nullptr);

    void Apply() override;

    QRadioButton* ElapsedAsTimeButton() const { return m_asTime; }
    QRadioButton* ElapsedAsDecimalButton() const { return m_asDecimal; }
    // Items in order of length; each carries its "TimeInterval" index as item data.
    QComboBox* IntervalField() const { return m_interval; }
    QCheckBox* ShowOnStartBox() const { return m_showOnStart; }
    QCheckBox* ShowOnStopBox() const { return m_showOnStop; }
    QCheckBox* StopAtMidnightBox() const { return m_stopAtMidnight; }

private:
    QRadioButton* m_asTime;
    QRadioButton* m_asDecimal;
    QComboBox* m_interval;
    QCheckBox* m_showOnStart;
    QCheckBox* m_showOnStop;
    QCheckBox* m_stopAtMidnight;
};
