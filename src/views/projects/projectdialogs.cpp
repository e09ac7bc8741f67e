#include "views/projects/projectdialogs.h"

#include "model/timekeeperdoc.h"
#include "projectlink/projecttexts.h"
#include "views/qtconvert.h"

#include <QApplication>
#include <QCheckBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <functional>
#include <mutex>

using projectlink::ProjectString;

namespace
{
QDialogButtonBox* OkCancel(QDialog* dialog)
{
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}
} // namespace

CSelectResourceDlg::CSelectResourceDlg(const std::vector<std::string>& names,
                                       platform::Prompter& prompter, QWidget* parent)
    : QDialog(parent), m_list(new QListWidget(this)), m_prompter(prompter)
{
    setWindowTitle(tr("Select Resource"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Select the resource whose work you record:"), this));
    m_list->setObjectName(QStringLiteral("resources"));
    for (const std::string& name : names)
        m_list->addItem(ToQ(name));
    layout->addWidget(m_list, 1);
    layout->addWidget(OkCancel(this));
    connect(m_list, &QListWidget::itemDoubleClicked, this, &CSelectResourceDlg::accept);
    resize(320, 300);
}

void CSelectResourceDlg::accept()
{
    m_chosen = m_list->currentItem() && m_list->currentItem()->isSelected() ? m_list->currentRow() : -1;
    if (m_chosen < 0 && m_prompter.AskYesNo(ProjectString(40023)) != platform::Answer::yes)
        return;
    QDialog::accept();
}

CSelectParentTaskDlg::CSelectParentTaskDlg(CTimeKeeperDoc& doc, platform::Prompter& prompter,
                                           QWidget* parent)
    : QDialog(parent), m_tree(new QTreeWidget(this)), m_prompter(prompter)
{
    setWindowTitle(tr("Select Parent Task for Project"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("The project's tasks are placed under this task:"), this));
    m_tree->setObjectName(QStringLiteral("parentTasks"));
    m_tree->setHeaderHidden(true);
    {
        std::lock_guard lock(doc.GetLock());
        std::function<void(const CTask*, QTreeWidgetItem*)> add = [&](const CTask* task, QTreeWidgetItem* parent) {
            auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(m_tree);
            item->setText(0, ToQ(task->m_name));
            item->setData(0, Qt::UserRole, task->m_id);
            for (const CTask* child : task->m_children)
                add(child, item);
        };
        if (const CTask* root = doc.GetRootTask())
        {
            add(root, nullptr);
            m_tree->topLevelItem(0)->setExpanded(true);
        }
    }
    layout->addWidget(m_tree, 1);
    layout->addWidget(OkCancel(this));
    resize(340, 420);
}

void CSelectParentTaskDlg::accept()
{
    QTreeWidgetItem* item = m_tree->currentItem();
    if (!item || !item->isSelected())
    {
        m_prompter.ShowMessage(ProjectString(40022), platform::Icon::warning);
        return;
    }
    m_chosen = item->data(0, Qt::UserRole).toUInt();
    QDialog::accept();
}

CUpdateProjectDlg::CUpdateProjectDlg(const projectlink::UpdateOptions& options, QWidget* parent,
                                     const QString& datePicture)
    : QDialog(parent), m_options(options),
      m_workEstimates(new QCheckBox(tr("Update Work &Estimates"), this)),
      m_costEstimates(new QCheckBox(tr("Update Cost E&stimates"), this)),
      m_work(new QCheckBox(tr("Update &Work"), this)),
      m_cost(new QCheckBox(tr("Update &Cost"), this)),
      m_billing(new QCheckBox(tr("Include &Billing Amounts"), this)),
      m_expenses(new QCheckBox(tr("Include E&xpense Amounts"), this)),
      m_from(new QDateEdit(this)), m_to(new QDateEdit(this))
{
    setWindowTitle(tr("Update Project"));
    auto* layout = new QVBoxLayout(this);
    const struct
    {
        QCheckBox* box;
        bool can;
        bool value;
        const char* name;
    } boxes[] = {{m_workEstimates, options.canUpdateWorkEstimates, options.updateWorkEstimates, "updateWorkEstimates"},
                 {m_costEstimates, options.canUpdateCostEstimates, options.updateCostEstimates, "updateCostEstimates"},
                 {m_work, options.canUpdateWork, options.updateWork, "updateWork"},
                 {m_cost, options.canUpdateCost, options.updateCost, "updateCost"}};
    for (const auto& b : boxes)
    {
        b.box->setObjectName(QString::fromLatin1(b.name));
        b.box->setEnabled(b.can);
        b.box->setChecked(b.can && b.value);
        layout->addWidget(b.box);
    }
    auto* include = new QVBoxLayout;
    include->setContentsMargins(24, 0, 0, 0);
    m_billing->setObjectName(QStringLiteral("includeBilling"));
    m_expenses->setObjectName(QStringLiteral("includeExpenses"));
    m_billing->setChecked(options.includeBilling);
    m_expenses->setChecked(options.includeExpenses);
    include->addWidget(m_billing);
    include->addWidget(m_expenses);
    layout->addLayout(include);

    auto* form = new QFormLayout;
    QString picture = datePicture;
    if (picture.isEmpty())
    {
        picture = QLocale().dateFormat(QLocale::ShortFormat);
        if (!picture.contains(QStringLiteral("yyyy")))
            picture.replace(QStringLiteral("yy"), QStringLiteral("yyyy"));
    }
    for (QDateEdit* date : {m_from, m_to})
    {
        date->setDisplayFormat(picture);
        date->setCalendarPopup(true);
        date->setEnabled(options.DatesEnabled());
    }
    m_from->setObjectName(QStringLiteral("from"));
    m_to->setObjectName(QStringLiteral("to"));
    m_from->setDate(ToQDate(options.from));
    m_to->setDate(ToQDate(options.to));
    form->addRow(tr("&From:"), m_from);
    form->addRow(tr("&To:"), m_to);
    layout->addLayout(form);
    layout->addWidget(OkCancel(this));
    connect(m_cost, &QCheckBox::toggled, this, &CUpdateProjectDlg::FollowUpdateCost);
    FollowUpdateCost();
}

void CUpdateProjectDlg::FollowUpdateCost()
{
    // The amounts to include only mean something while cost is written.
    const bool on = m_cost->isChecked();
    m_billing->setEnabled(on);
    m_expenses->setEnabled(on);
}

projectlink::UpdateOptions CUpdateProjectDlg::Options() const
{
    projectlink::UpdateOptions o = m_options;
    o.updateWorkEstimates = m_workEstimates->isChecked();
    o.updateCostEstimates = m_costEstimates->isChecked();
    o.updateWork = m_work->isChecked();
    o.updateCost = m_cost->isChecked();
    o.includeBilling = o.updateCost && m_billing->isChecked();
    o.includeExpenses = o.updateCost && m_expenses->isChecked();
    o.from = FromQDate(m_from->date());
    o.to = FromQDate(m_to->date());
    if (o.to < o.from)
        o.to = o.from;
    return o;
}

CWarningsDlg::CWarningsDlg(const std::vector<std::string>& warnings, QWidget* parent)
    : QDialog(parent), m_text(new QPlainTextEdit(this)),
      m_continue(new QPushButton(tr("Continue"), this)), m_cancel(new QPushButton(tr("Cancel"), this))
{
    setWindowTitle(tr("Warnings"));
    QString text;
    for (const std::string& w : warnings)
        text += ToQ(w) + QStringLiteral("\n");
    m_text->setObjectName(QStringLiteral("warnings"));
    m_text->setReadOnly(true);
    m_text->setPlainText(text);
    m_continue->setObjectName(QStringLiteral("continue"));
    m_cancel->setObjectName(QStringLiteral("cancel"));
    m_continue->setDefault(true);
    connect(m_continue, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    setMinimumSize(300, 180);
    resize(460, 260);
}

void CWarningsDlg::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    const int margin = 10;
    const int buttonHeight = m_continue->sizeHint().height();
    const int buttonWidth = std::max(m_continue->sizeHint().width(), m_cancel->sizeHint().width());
    const int buttonTop = height() - margin - buttonHeight;
    m_text->setGeometry(margin, margin, width() - 2 * margin, buttonTop - 2 * margin);
    m_continue->setGeometry(width() / 3 - buttonWidth / 2, buttonTop, buttonWidth, buttonHeight);
    m_cancel->setGeometry(2 * width() / 3 - buttonWidth / 2, buttonTop, buttonWidth, buttonHeight);
}

CProjectProgressDlg::CProjectProgressDlg(QWidget* owner)
    // No parent: the owner is disabled while this shows, which would disable a child too.
    : QDialog(nullptr), m_owner(owner), m_bar(new QProgressBar(this)), m_percent(new QLabel(this)),
      m_status(new QLabel(this))
{
    setModal(false);
    auto* layout = new QGridLayout(this);
    m_bar->setTextVisible(false);
    layout->addWidget(m_bar, 0, 0);
    layout->addWidget(m_percent, 0, 1);
    layout->addWidget(m_status, 1, 0, 1, 2);
    auto* cancel = new QPushButton(tr("Cancel"), this);
    cancel->setObjectName(QStringLiteral("cancel"));
    connect(cancel, &QPushButton::clicked, this, [this] { m_cancel = true; });
    layout->addWidget(cancel, 2, 0, 1, 2, Qt::AlignHCenter);
    resize(360, 120);
}

CProjectProgressDlg::~CProjectProgressDlg()
{
    End();
}

void CProjectProgressDlg::Begin(const std::string& title, const std::string& format, int total)
{
    setWindowTitle(ToQ(title));
    m_format = format;
    m_total = total;
    m_done = 0;
    m_cancel = false;
    m_bar->setRange(0, std::max(total, 1));
    if (m_owner)
        m_owner->setEnabled(false);
    if (m_owner)
        move(m_owner->window()->geometry().center() - rect().center());
    show();
    Refresh();
}

void CProjectProgressDlg::Step()
{
    ++m_done;
    Refresh();
}

bool CProjectProgressDlg::TakeCancelRequest()
{
    // Pending events are handled here, so that a press of Cancel is seen between tasks.
    QApplication::processEvents();
    const bool cancel = m_cancel;
    m_cancel = false;
    return cancel;
}

void CProjectProgressDlg::End()
{
    hide();
    if (m_owner)
        m_owner->setEnabled(true);
}

void CProjectProgressDlg::Refresh()
{
    m_bar->setValue(m_done);
    m_percent->setText(ToQ(projectlink::ProgressPercentText(m_done, 0, std::max(m_total, 1))));
    m_status->setText(ToQ(projectlink::ProgressStatusText(m_format, m_done, m_total)));
    QApplication::processEvents();
}
