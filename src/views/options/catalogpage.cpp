#include "views/options/catalogpage.h"

#include "model/timekeeperdoc.h"
#include "views/catalogorder.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

CCatalogPage::CCatalogPage(CMainFrame& frame, QWidget* parent)
    : COptionsPage(frame, parent), m_list(new QListWidget), m_new(new QPushButton(tr("&New"))),
      m_remove(new QPushButton(tr("&Remove"))), m_edit(new QPushButton(tr("&Edit")))
{
    m_list->setObjectName(QStringLiteral("catalog"));
    m_new->setObjectName(QStringLiteral("new"));
    m_remove->setObjectName(QStringLiteral("remove"));
    m_edit->setObjectName(QStringLiteral("edit"));
    for (QPushButton* b : {m_new, m_remove, m_edit})
        b->setAutoDefault(false);

    auto* buttons = new QVBoxLayout;
    buttons->addWidget(m_new);
    buttons->addWidget(m_remove);
    buttons->addWidget(m_edit);
    buttons->addStretch(1);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);

    // Catalogs belong to the document: without one the page only shows.
    m_new->setEnabled(frame.Doc().GetRootTask() != nullptr);
    connect(m_new, &QPushButton::clicked, this, &CCatalogPage::NewRecord);
    connect(m_remove, &QPushButton::clicked, this, &CCatalogPage::RemoveSelected);
    connect(m_edit, &QPushButton::clicked, this, &CCatalogPage::EditSelected);
    connect(m_list, &QListWidget::itemSelectionChanged, this, &CCatalogPage::UpdateButtons);
    connect(m_list, &QListWidget::itemActivated, this, &CCatalogPage::EditSelected);
    UpdateButtons();
}

void CCatalogPage::Fill()
{
    const uint32_t selected = SelectedId();
    m_list->clear();
    {
        std::lock_guard lock(m_frame.Doc().GetLock());
        NamedIds records;
        for (const auto& [id, name] : Records())
            records.emplace_back(id, ToQ(name));
        SortByName(records);
        for (const auto& [id, name] : records)
        {
            auto* item = new QListWidgetItem(name, m_list);
            item->setData(kIdRole, id);
        }
    }
    SelectId(selected);
    UpdateButtons();
}

uint32_t CCatalogPage::SelectedId() const
{
    const QList<QListWidgetItem*> items = m_list->selectedItems();
    return items.isEmpty() ? 0 : items.front()->data(kIdRole).toUInt();
}

void CCatalogPage::SelectId(uint32_t id)
{
    for (int row = 0; row < m_list->count(); ++row)
        if (id != 0 && m_list->item(row)->data(kIdRole).toUInt() == id)
        {
            m_list->setCurrentRow(row);
            return;
        }
    m_list->clearSelection();
}

void CCatalogPage::UpdateButtons()
{
    const bool selected = SelectedId() != 0;
    m_remove->setEnabled(selected);
    m_edit->setEnabled(selected);
}

void CCatalogPage::NewRecord()
{
    if (m_frame.Doc().GetRootTask() == nullptr)
        return;
    const uint32_t id = CreateRecord();
    if (id == 0)
        return;
    Fill();
    SelectId(id);
    m_list->setFocus();
}

void CCatalogPage::EditSelected()
{
    const uint32_t id = SelectedId();
    if (id == 0)
        return;
    if (EditRecord(id))
        Fill();
    m_list->setFocus();
}

void CCatalogPage::RemoveSelected()
{
    const uint32_t id = SelectedId();
    if (id == 0)
        return;
    if (DeleteRecord(id))
        Fill();
    m_list->setFocus();
}
