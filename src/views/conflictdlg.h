#pragma once

#include <QDialog>

class QRadioButton;

// "Time Entry Conflict": how to resolve an overlap of time entries.
class CTimeEntryConflictDlg : public QDialog
{
    Q_OBJECT

public:
    explicit CTimeEntryConflictDlg(QWidget* parent = nullptr);

    // 0 adjust the other entries, 1 adjust this entry, 2 edit this entry by hand.
    int Choice() const;
    void SetChoice(int choice);

private:
    QRadioButton* m_choices[3];
};
