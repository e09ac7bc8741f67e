#pragma once

#include <QDialog>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class CProject;
class CTimeKeeperDoc;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
namespace platform
{
class Prompter;
}

// The Projects dialog: the document's links with New..., Update..., Delete... and Close.
class CProjectsDlg : public QDialog
{
    Q_OBJECT
public:
    // `shortDate` formats the "Last Updated" cells.
    CProjectsDlg(CTimeKeeperDoc& doc, platform::Prompter& prompter,
                 std::function<std::string(const CProject&)> shortDate, QWidget* parent = nullptr);

    // The folders searched for components (the default ones unless a test sets others).
    std::vector<std::string> m_componentDirs;
    // Where the plan's file dialog starts, and how the Update dialog shows dates.
    QString m_fileFolder;
    QString m_datePicture;

    QTreeWidget* List() const { return m_list; }
    void OnNew();
    void OnUpdate();
    void OnDelete();

private:
    void Fill();
    QTreeWidgetItem* AddRow(const CProject& project);
    void SetRow(QTreeWidgetItem* item, const CProject& project);
    void UpdateButtons();
    CProject* SelectedProject() const;

    CTimeKeeperDoc& m_doc;
    platform::Prompter& m_prompter;
    std::function<std::string(const CProject&)> m_shortDate;
    QTreeWidget* m_list;
    QPushButton* m_new;
    QPushButton* m_update;
    QPushButton* m_delete;
};

class CMainFrame;
class QMenu;

// Adds "&Projects..." (status text "Manage Projects") to `menu`. The tree is rebuilt and
// every view refreshed once the dialog closes.
void AddProjectsMenuItem(CMainFrame& frame, QMenu* menu);
