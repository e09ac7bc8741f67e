#pragma once

#include "projectlink/projectlinkui.h"

#include <QString>

#include <memory>

class CTimeKeeperDoc;
class CProjectProgressDlg;
class QWidget;

// The link's dialogs as windows over `parent`.
class CQtProjectLinkUi : public projectlink::ProjectLinkUi
{
public:
    // The file dialog starts in `folder`; the Update dialog shows dates in `datePicture`.
    CQtProjectLinkUi(CTimeKeeperDoc& doc, platform::Prompter& prompter, QWidget* parent,
                     const QString& folder = QString(), const QString& datePicture = QString());
    ~CQtProjectLinkUi() override;

    platform::Prompter& Prompter() override { return m_prompter; }
    bool ChooseProjectFile(const std::vector<projectlink::CComponentInfo>& components,
                           const std::string& combinedFilter, std::string& path,
                           std::string& progId) override;
    bool SelectResource(const std::vector<std::string>& names, const std::vector<int32_t>& ids,
                        int& chosen) override;
    bool SelectParentTask(uint32_t& taskId) override;
    bool EditUpdateOptions(projectlink::UpdateOptions& options) override;
    bool ShowWarnings(const std::vector<std::string>& warnings) override;
    void BeginProgress(const std::string& title, const std::string& format, int total) override;
    void StepProgress() override;
    bool TakeCancelRequest() override;
    void EndProgress() override;

private:
    CTimeKeeperDoc& m_doc;
    platform::Prompter& m_prompter;
    QWidget* m_parent;
    QString m_folder;
    QString m_datePicture;
    std::unique_ptr<CProjectProgressDlg> m_progress;
};
