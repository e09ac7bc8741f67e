#pragma once

#include "projectlink/projectlinkui.h"

#include <QDialog>

#include <cstdint>
#include <string>
#include <vector>

class CTimeKeeperDoc;
class QCheckBox;
class QDateEdit;
class QLabel;
class QListWidget;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QTreeWidget;

// Select Resource: one of the plan's resources, or none after message 40023.
class CSelectResourceDlg : public QDialog
{
    Q_OBJECT
public:
    CSelectResourceDlg(const std::vector<std::string>& names, platform::Prompter& prompter,
                       QWidget* parent = nullptr);
    int Chosen() const { return m_chosen; }
    void accept() override;

private:
    QListWidget* m_list;
    platform::Prompter& m_prompter;
    int m_chosen = -1;
};

// Select Parent Task for Project: a tree of the document's tasks; message 40022 asks for one.
class CSelectParentTaskDlg : public QDialog
{
    Q_OBJECT
public:
    CSelectParentTaskDlg(CTimeKeeperDoc& doc, platform::Prompter& prompter, QWidget* parent = nullptr);
    uint32_t ChosenTaskId() const { return m_chosen; }
    void accept() override;

private:
    QTreeWidget* m_tree;
    platform::Prompter& m_prompter;
    uint32_t m_chosen = 0;
};

// Update Project: what to write back and for which days.
class CUpdateProjectDlg : public QDialog
{
    Q_OBJECT
public:
    // `datePicture` shows the dates as the rest of the program does; without one, the
    // locale's short date with a four-digit year.
    CUpdateProjectDlg(const projectlink::UpdateOptions& options, QWidget* parent = nullptr,
                      const QString& datePicture = QString());
    projectlink::UpdateOptions Options() const;

private:
    void FollowUpdateCost();

    projectlink::UpdateOptions m_options;
    QCheckBox* m_workEstimates;
    QCheckBox* m_costEstimates;
    QCheckBox* m_work;
    QCheckBox* m_cost;
    QCheckBox* m_billing;
    QCheckBox* m_expenses;
    QDateEdit* m_from;
    QDateEdit* m_to;
};

// Warnings: every warning in one text box; "Continue" and "Cancel" stay at one third and
// two thirds of the width, at the bottom.
class CWarningsDlg : public QDialog
{
    Q_OBJECT
public:
    CWarningsDlg(const std::vector<std::string>& warnings, QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QPlainTextEdit* m_text;
    QPushButton* m_continue;
    QPushButton* m_cancel;
};

// The progress window: modeless, its owner disabled while it shows.
class CProjectProgressDlg : public QDialog
{
    Q_OBJECT
public:
    explicit CProjectProgressDlg(QWidget* owner);
    ~CProjectProgressDlg() override;
    void Begin(const std::string& title, const std::string& format, int total);
    void Step();
    bool TakeCancelRequest();
    void End();

private:
    void Refresh();

    QWidget* m_owner;
    QProgressBar* m_bar;
    QLabel* m_percent;
    QLabel* m_status;
    std::string m_format;
    int m_total = 0;
    int m_done = 0;
    bool m_cancel = false;
};
