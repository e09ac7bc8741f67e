#include "views/projects/projectsdlg.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "projectlink/componentregistry.h"
#include "projectlink/projectoperations.h"
#include "views/mainframe.h"
#include "views/projects/qtprojectlinkui.h"
#include "views/qtconvert.h"
#include "views/taskview.h"

#include <QAction>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <mutex>

CProjectsDlg::CProjectsDlg(CTimeKeeperDoc& doc, platform::Prompter& prompter,
                           std::function<std::string(const CProject&)> shortDate, QWidget* parent)
    : QDialog(parent), m_componentDirs(projectlink::ComponentDirs()), m_doc(doc),
      m_prompter(prompter), m_shortDate(std::move(shortDate)), m_list(new QTreeWidget(this)),
      m_new(new QPushButton(tr("&New..."), this)), m_update(new QPushButton(tr("&Update..."), this)),
      m_delete(new QPushButton(tr("&Delete..."), this))
{
    setWindowTitle(tr("Projects"));
    m_list->setObjectName(QStringLiteral("projects"));
    m_list->setRootIsDecorated(false);
    m_list->setHeaderLabels({tr("Project Name"), tr("Last Updated"), tr("Path")});
    m_list->setColumnWidth(0, 150);
    m_list->setColumnWidth(1, 100);
    m_list->setColumnWidth(2, 225);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);

    auto* close = new QPushButton(tr("Close"), this);
    m_new->setObjectName(QStringLiteral("new"));
    m_update->setObjectName(QStringLiteral("update"));
    m_delete->setObjectName(QStringLiteral("delete"));
    close->setObjectName(QStringLiteral("close"));
    auto* buttons = new QVBoxLayout;
    for (QPushButton* b : {m_new, m_update, m_delete})
        buttons->addWidget(b);
    buttons->addStretch(1);
    buttons->addWidget(close);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);

    connect(m_new, &QPushButton::clicked, this, &CProjectsDlg::OnNew);
    connect(m_update, &QPushButton::clicked, this, &CProjectsDlg::OnUpdate);
    connect(m_delete, &QPushButton::clicked, this, &CProjectsDlg::OnDelete);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &CProjectsDlg::UpdateButtons);
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &CProjectsDlg::OnUpdate);
    Fill();
    resize(620, 300);
}

void CProjectsDlg::Fill()
{
    m_list->clear();
    std::lock_guard lock(m_doc.GetLock());
    for (const auto& [id, project] : m_doc.m_projects)
        AddRow(*project);
    UpdateButtons();
}

QTreeWidgetItem* CProjectsDlg::AddRow(const CProject& project)
{
    auto* item = new QTreeWidgetItem(m_list);
    item->setData(0, Qt::UserRole, project.m_id);
    SetRow(item, project);
    return item;
}

void CProjectsDlg::SetRow(QTreeWidgetItem* item, const CProject& project)
{
    item->setText(0, ToQ(project.m_name));
    item->setText(1, ToQ(m_shortDate(project)));
    item->setText(2, ToQ(project.m_path));
}

void CProjectsDlg::UpdateButtons()
{
    const bool selected = !m_list->selectedItems().isEmpty();
    m_update->setEnabled(selected);
    m_delete->setEnabled(selected);
}

CProject* CProjectsDlg::SelectedProject() const
{
    const QList<QTreeWidgetItem*> items = m_list->selectedItems();
    return items.isEmpty() ? nullptr : m_doc.GetProject(items.first()->data(0, Qt::UserRole).toUInt());
}

void CProjectsDlg::OnNew()
{
    CQtProjectLinkUi ui(m_doc, m_prompter, this, m_fileFolder, m_datePicture);
    projectlink::LinkOutcome outcome = projectlink::LinkNewProject(m_doc, ui, m_componentDirs);
    if (outcome.status != projectlink::LinkOutcome::done || !outcome.project)
        return;
    QTreeWidgetItem* item = AddRow(*outcome.project);
    m_list->clearSelection();
    item->setSelected(true);
    m_list->setCurrentItem(item);
    UpdateButtons();
}

void CProjectsDlg::OnUpdate()
{
    CProject* project = SelectedProject();
    if (!project)
        return;
    CQtProjectLinkUi ui(m_doc, m_prompter, this, m_fileFolder, m_datePicture);
    projectlink::LinkOutcome outcome = projectlink::UpdateLink(m_doc, *project, ui, m_componentDirs);
    if (outcome.documentChanged || outcome.status == projectlink::LinkOutcome::done)
        m_doc.SetModifiedFlag();
    if (!m_list->selectedItems().isEmpty())
        SetRow(m_list->selectedItems().first(), *project);
}

void CProjectsDlg::OnDelete()
{
    CProject* project = SelectedProject();
    if (!project)
        return;
    if (projectlink::DeleteProjectLink(m_doc, project->m_id, m_prompter) && !m_list->selectedItems().isEmpty())
        delete m_list->selectedItems().first();
    UpdateButtons();
}

void AddProjectsMenuItem(CMainFrame& frame, QMenu* menu)
{
    auto* action = new QAction(QObject::tr("&Projects..."), &frame);
    action->setObjectName(QStringLiteral("toolsProjects"));
    action->setStatusTip(QObject::tr("Manage Projects"));
    QObject::connect(action, &QAction::triggered, &frame, [&frame] {
        CTimeKeeperApp& app = frame.App();
        CProjectsDlg dialog(frame.Doc(), frame.Prompter(),
                            [&app](const CProject& p) {
                                return p.m_lastUpdated.IsValid() ? app.FormatShortDate(p.m_lastUpdated)
                                                                 : std::string();
                            },
                            &frame);
        dialog.m_fileFolder = frame.FileDialogFolder();
        dialog.m_datePicture = QtDatePicture(app.GetLocale());
        dialog.exec();
        // Imported, moved and dropped tasks show once the tree is rebuilt.
        frame.TaskView()->setUpdatesEnabled(false);
        frame.Doc().UpdateAllViews(hintAll);
        frame.TaskView()->setUpdatesEnabled(true);
    });
    menu->addAction(action);
}
