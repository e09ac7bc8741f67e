#include "views/projects/qtprojectlinkui.h"

#include "views/projects/projectdialogs.h"
#include "views/qtconvert.h"

#include <QFileDialog>
#include <QStringList>

CQtProjectLinkUi::CQtProjectLinkUi(CTimeKeeperDoc& doc, platform::Prompter& prompter, QWidget* parent)
    : m_doc(doc), m_prompter(prompter), m_parent(parent)
{
}

CQtProjectLinkUi::~CQtProjectLinkUi() = default;

bool CQtProjectLinkUi::ChooseProjectFile(const std::vector<projectlink::CComponentInfo>& components,
                                         const std::string&, std::string& path, std::string& progId)
{
    // One name filter per component, in the order found; the chosen one names the ProgID.
    QStringList filters;
    for (const projectlink::CComponentInfo& c : components)
    {
        QString description = ToQ(c.FilterDescription());
        const QString patterns = ToQ(c.FilterPattern()).replace(QLatin1Char(';'), QLatin1Char(' '));
        if (!description.contains(QLatin1Char('(')))
            description += QStringLiteral(" (") + patterns + QLatin1Char(')');
        filters << description;
    }
    QFileDialog dialog(m_parent, QObject::tr("Open Project"));
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setDefaultSuffix(QStringLiteral("mpp"));
    dialog.setOption(QFileDialog::ReadOnly, false);
    if (!filters.isEmpty())
        dialog.setNameFilters(filters);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty() || components.empty())
        return false;
    const qsizetype index = std::max<qsizetype>(filters.indexOf(dialog.selectedNameFilter()), 0);
    path = FromQ(dialog.selectedFiles().first());
    progId = components[size_t(index)].progId;
    return true;
}

bool CQtProjectLinkUi::SelectResource(const std::vector<std::string>& names,
                                      const std::vector<int32_t>&, int& chosen)
{
    CSelectResourceDlg dialog(names, m_prompter, m_parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    chosen = dialog.Chosen();
    return true;
}

bool CQtProjectLinkUi::SelectParentTask(uint32_t& taskId)
{
    CSelectParentTaskDlg dialog(m_doc, m_prompter, m_parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    taskId = dialog.ChosenTaskId();
    return true;
}

bool CQtProjectLinkUi::EditUpdateOptions(projectlink::UpdateOptions& options)
{
    CUpdateProjectDlg dialog(options, m_parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    options = dialog.Options();
    return true;
}

bool CQtProjectLinkUi::ShowWarnings(const std::vector<std::string>& warnings)
{
    CWarningsDlg dialog(warnings, m_parent);
    return dialog.exec() == QDialog::Accepted;
}

void CQtProjectLinkUi::BeginProgress(const std::string& title, const std::string& format, int total)
{
    if (!m_progress)
        m_progress = std::make_unique<CProjectProgressDlg>(m_parent);
    m_progress->Begin(title, format, total);
}

void CQtProjectLinkUi::StepProgress()
{
    if (m_progress)
        m_progress->Step();
}

bool CQtProjectLinkUi::TakeCancelRequest()
{
    return m_progress && m_progress->TakeCancelRequest();
}

void CQtProjectLinkUi::EndProgress()
{
    if (m_progress)
        m_progress->End();
}
