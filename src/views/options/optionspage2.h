#pragma once

#include "views/options/optionspage.h"

class QLineEdit;
class QListWidget;
class QRadioButton;

// "Task Levels": whether tasks are known by their full names or abbreviations, the
// names of the twenty levels, and which levels shortened task paths include.
class COptionsPage2 : public COptionsPage
{
    Q_OBJECT

public:
    static constexpr int kLevels = 20;

    COptionsPage2(CMainFrame& frame, QWidget* parent = nullptr);

    void Apply() override;

    QRadioButton* FullNameButton() const { return m_fullName; }
    QRadioButton* AbbreviationButton() const { return m_abbreviation; }
    // One row per level, 0 to 19: the level's name, checked when shortened paths show it.
    QListWidget* LevelList() const { return m_levels; }
    QLineEdit* LevelNameField() const { return m_levelName; }

private:
    void OnLevelSelected();

    QRadioButton* m_fullName;
    QRadioButton* m_abbreviation;
    QListWidget* m_levels;
    QLineEdit* m_levelName;
};
