#include "views/projects/qtprojectlinkui.h"

#include "views/projects/projectdialogs.h"
#include "views/qtconvert.h"

#include <QFileDialog>
#include <QStringList>

CQtProjectLinkUi::CQtProjectLinkUi(CTimeKeeperDoc& doc, platform::Prompter& prompter, QWidget* parent,
                                   const QString& folder, const QString& datePicture)
    : m_doc(doc), m_prompter(prompter), m_parent(parent), m_folder(folder), m_datePicture(datePicture)
{
}

CQtProjectLinkUi::~CQtProjectLinkUi() = default;

bool CQtProjectLinkUi::ChooseProjectFile(const std::vector<projectlink::CComponentInfo>& components,
                                         const std::string&, std::string& path, std::string& progId)
{
    // "All plan files" first, then one name filter per component in the order found.
    QStringList filters;
    QStringList allPatterns;
    for (const projectlink::CComponentInfo& c : components)
    {
        QString description = ToQ(c.FilterDescription());
        const QStringList patterns = ToQ(c.FilterPattern()).split(QLatin1Char(';'), Qt::SkipEmptyParts);
        if (!description.contains(QLatin1Char('(')))
            description += QStringLiteral(" (") + patterns.join(QLatin1Char(' ')) + QLatin1Char(')');
        filters << description;
        for (const QString& pattern : patterns)
            if (!allPatterns.contains(pattern))
                allPatterns << pattern;
    }
    filters.prepend(QObject::tr("All plan files (%1)").arg(allPatterns.join(QLatin1Char(' '))));
    QFileDialog dialog(m_parent, QObject::tr("Open Project"), m_folder);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setDefaultSuffix(QStringLiteral("mpp"));
    dialog.setOption(QFileDialog::ReadOnly, false);
    dialog.setNameFilters(filters);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty() || components.empty())
        return false;
    path = FromQ(dialog.selectedFiles().first());
    // The file's type picks the component; the chosen filter only decides between
    // components that read the same type, or names one for a file that none claims.
    const qsizetype chosen = filters.indexOf(dialog.selectedNameFilter()) - 1;
    size_t pick = chosen >= 0 ? size_t(chosen) : 0;
    if (!components[pick].MatchesFile(path))
        for (size_t i = 0; i < components.size(); ++i)
            if (components[i].MatchesFile(path))
            {
                pick = i;
                break;
            }
    progId = components[pick].progId;
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
    CUpdateProjectDlg dialog(options, m_parent, m_datePicture);
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
