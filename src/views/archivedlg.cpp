#include "views/archivedlg.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "views/gotodatedlg.h"
#include "views/icons.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "views/taskview.h"
#include "widgets/datetimeedit.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <functional>
#include <mutex>

CArchiveDlg::CArchiveDlg(CMainFrame& frame, QWidget* parent)
    : QDialog(parent), m_frame(frame), m_tree(new QTreeWidget(this)),
      m_from(new CDateTimeEdit(CDateTimeEdit::Mode::date, this)),
      m_to(new CDateTimeEdit(CDateTimeEdit::Mode::date, this)),
      m_delete(new QCheckBox(tr("&Delete Archived Entries"), this))
{
    setWindowTitle(tr("Archive"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Archive the entries of this task and the tasks below it:"), this));
    m_tree->setObjectName(QStringLiteral("archiveTree"));
    m_tree->setHeaderHidden(true);
    m_tree->setIconSize(QSize(16, 16));
    layout->addWidget(m_tree, 1);

    CTimeKeeperDoc& doc = frame.Doc();
    {
        std::lock_guard lock(doc.GetLock());
        std::function<void(const CTask*, QTreeWidgetItem*)> add = [&](const CTask* task, QTreeWidgetItem* parent) {
            auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(m_tree);
            item->setText(0, ToQ(task->m_name));
            item->setIcon(0, icons::LetterIcon(icons::TaskImageIndex(task->m_level, ToQ(doc.GetLevelName(task->m_level)))));
            item->setData(0, CTaskView::kTaskIdRole, task->m_id);
            for (const CTask* child : task->m_children)
                add(child, item);
        };
        if (const CTask* root = doc.GetRootTask())
        {
            add(root, nullptr);
            // The root and the first level below it start open.
            m_tree->topLevelItem(0)->setExpanded(true);
            m_tree->setCurrentItem(m_tree->topLevelItem(0));
        }
    }
    if (const CTask* selected = frame.TaskView()->SelectedTask())
    {
        QTreeWidgetItemIterator it(m_tree);
        for (; *it; ++it)
            if ((*it)->data(0, CTaskView::kTaskIdRole).toUInt() == selected->m_id)
            {
                m_tree->setCurrentItem(*it);
                m_tree->scrollToItem(*it);
                break;
            }
    }

    auto* form = new QFormLayout;
    for (CDateTimeEdit* field : {m_from, m_to})
    {
        ConfigureDateField(*field, frame.App());
        field->SetAllowEmpty(true);
        field->setPlaceholderText(tr("(open)"));
    }
    m_from->setObjectName(QStringLiteral("from"));
    m_to->setObjectName(QStringLiteral("to"));
    form->addRow(tr("&From:"), m_from);
    form->addRow(tr("&To:"), m_to);
    layout->addLayout(form);
    m_delete->setObjectName(QStringLiteral("deleteArchived"));
    layout->addWidget(m_delete);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    resize(380, 440);
}

uint32_t CArchiveDlg::SelectedTaskId() const
{
    QTreeWidgetItem* item = m_tree->currentItem();
    return item ? item->data(0, CTaskView::kTaskIdRole).toUInt() : CTimeKeeperDoc::kRootTaskId;
}

CDateTime CArchiveDlg::From() const
{
    return FromQDateOrNull(m_from->Date());
}

CDateTime CArchiveDlg::To() const
{
    return FromQDateOrNull(m_to->Date());
}

bool CArchiveDlg::DeleteArchived() const
{
    return m_delete->isChecked();
}

void CArchiveDlg::accept()
{
    for (CDateTimeEdit* field : {m_from, m_to})
        if (!field->IsAcceptable())
        {
            m_frame.Prompter().ShowMessage(platform::LoadString(40018), platform::Icon::warning);
            field->setFocus();
            return;
        }
    const QDate from = m_from->Date();
    const QDate to = m_to->Date();
    if (from.isValid() && to.isValid() && from > to)
    {
        m_frame.Prompter().ShowMessage(platform::LoadString(40017), platform::Icon::warning);
        m_to->setFocus();
        return;
    }
    QDialog::accept();
}
