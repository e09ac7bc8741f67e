#pragma once

#include "views/options/optionspage.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QRadioButton;
class QToolButton;

// "General": the length and order of the recent-task list, the first day of the
// working week, the document's default mileage rate, automatic saving and hiding the
// window when it is minimised.
class COptionsPage1 : public COptionsPage
{
    Q_OBJECT

public:
    static constexpr int kMinRecentTasks = 1;
    static constexpr int kMaxRecentTasks = 25;

    COptionsPage1(CMainFrame& frame, QWidget* parent = nullptr);

    bool Check() override;
    void Apply() override;

    // The spin buttons beside the count: one step up or down, never past 1 or 25.
    void StepRecentCount(int steps);

    QLineEdit* RecentCountField() const { return m_recentCount; }
    QToolButton* RecentCountUp() const { return m_up; }
    QToolButton* RecentCountDown() const { return m_down; }
    QRadioButton* AlphabeticallyButton() const { return m_alphabetically; }
    QRadioButton* OrderUsedButton() const { return m_orderUsed; }
    QComboBox* WeekStartField() const { return m_weekStart; }
    QDoubleSpinBox* MileageRateField() const { return m_mileageRate; }
    QCheckBox* AutoSaveBox() const { return m_autoSave; }
    QCheckBox* HideWhenMinimizedBox() const { return m_hideWhenMinimized; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The typed count, or 0 when it is not a number.
    int TypedCount() const;

    QLineEdit* m_recentCount;
    QToolButton* m_up;
    QToolButton* m_down;
    QRadioButton* m_alphabetically;
    QRadioButton* m_orderUsed;
    QComboBox* m_weekStart;
    QDoubleSpinBox* m_mileageRate;
    QCheckBox* m_autoSave;
    QCheckBox* m_hideWhenMinimized;
};
