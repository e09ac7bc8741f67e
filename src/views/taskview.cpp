#include "views/taskview.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "timekeeping/timer.h"
#include "views/entrysheets.h"
#include "views/icons.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "views/sheetlistview.h"

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>

#include <functional>
#include <mutex>

namespace
{

// The user's name for a level, or empty when the level has none.
QString StoredLevelName(const CTimeKeeperDoc& doc, int level)
{
    auto it = doc.m_levelNames.find(uint32_t(level));
    return it == doc.m_levelNames.end() ? QString() : ToQ(it->second);
}

} // namespace

CTaskView::CTaskView(CMainFrame& frame, QWidget* parent) : QTreeWidget(parent), m_frame(frame)
{
    setObjectName(QStringLiteral("taskView"));
    setHeaderHidden(true);
    setColumnCount(1);
    setRootIsDecorated(true);
    setUniformRowHeights(true);
    setIconSize(QSize(16, 16));
    setSelectionMode(QAbstractItemView::SingleSelection);
    // Renames start from F2 or the Rename command only: a click on the selected task is
    // as often meant to select it again (coming back from the list) as to rename it.
    setEditTriggers(QAbstractItemView::EditKeyPressed);
    setDragEnabled(true);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropOverwriteMode(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setAutoScroll(true);
    setAutoScrollMargin(24);
    // Right-button drags need the raw mouse events; the menu opens on release instead.
    setContextMenuPolicy(Qt::PreventContextMenu);

    connect(this, &QTreeWidget::itemChanged, this, &CTaskView::OnItemChanged);
    connect(this, &QTreeWidget::currentItemChanged, this, [this] {
        if (!m_filling)
            emit SelectedTaskChanged();
    });
    connect(this, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) {
        SortChildItems(item);
        if (!m_treeFilled)
            return;
        std::lock_guard lock(m_frame.Doc().GetLock());
        if (CTask* task = m_frame.Doc().GetTask(item->data(0, kTaskIdRole).toUInt()))
            task->m_expanded = true;
    });
    connect(this, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* item) {
        if (!m_treeFilled)
            return;
        std::lock_guard lock(m_frame.Doc().GetLock());
        if (CTask* task = m_frame.Doc().GetTask(item->data(0, kTaskIdRole).toUInt()))
            task->m_expanded = false;
    });
}

void CTaskView::DecorateItem(QTreeWidgetItem* item, const CTask* task)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    item->setText(0, ToQ(task->m_name));
    item->setIcon(0, icons::LetterIcon(icons::TaskImageIndex(task->m_level, ToQ(doc.GetLevelName(task->m_level)))));
    item->setData(0, kTaskIdRole, task->m_id);
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
    if (!task->IsImported())
        flags |= Qt::ItemIsEditable;
    item->setFlags(flags);
    // Inactive tasks stay visible (unless hidden) but read as set aside.
    const bool inactive = task->IsInactive();
    QFont font = item->font(0);
    font.setItalic(inactive);
    item->setFont(0, font);
    item->setForeground(0, inactive ? palette().brush(QPalette::Disabled, QPalette::Text)
                                    : palette().brush(QPalette::Text));
    QString tip = ToQ(doc.GetLevelName(task->m_level));
    if (task->m_inactive)
        tip += tr(" (inactive)");
    item->setToolTip(0, tip);
}

QTreeWidgetItem* CTaskView::InsertTask(CTask* task, QTreeWidgetItem* parent, bool hideInactive)
{
    if (hideInactive && task->m_inactive)
        return nullptr;
    auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(this);
    DecorateItem(item, task);
    for (CTask* child : task->m_children)
        InsertTask(child, item, hideInactive);
    return item;
}

void CTaskView::ApplyExpansion(QTreeWidgetItem* item)
{
    const CTask* task = m_frame.Doc().GetTask(item->data(0, kTaskIdRole).toUInt());
    if (task == nullptr)
        return;
    item->setExpanded(task->m_expanded);
    for (int i = 0; i < item->childCount(); ++i)
        ApplyExpansion(item->child(i));
}

void CTaskView::Rebuild()
{
    // A rebuild would take away the item being renamed; it waits for the edit to end.
    if (state() == QAbstractItemView::EditingState)
    {
        m_rebuildAfterEdit = true;
        return;
    }
    m_rebuildAfterEdit = false;
    CTimeKeeperDoc& doc = m_frame.Doc();
    const CTask* selected = SelectedTask();
    const uint32_t selectedId = selected ? selected->m_id : 0;

    m_filling = true;
    m_treeFilled = false;
    {
        std::lock_guard lock(doc.GetLock());
        clear();
        if (CTask* root = doc.GetRootTask())
        {
            QTreeWidgetItem* rootItem = InsertTask(root, nullptr, m_frame.App().GetHideInactive() != 0);
            if (rootItem)
                ApplyExpansion(rootItem);
        }
    }
    if (topLevelItemCount() > 0)
    {
        setCurrentItem(topLevelItem(0));
        if (QTreeWidgetItem* item = ItemOf(selectedId))
        {
            setCurrentItem(item);
            scrollToItem(item);
        }
    }
    m_treeFilled = true;
    m_filling = false;
    emit SelectedTaskChanged();
}

QTreeWidgetItem* CTaskView::ItemOf(uint32_t taskId) const
{
    if (taskId == 0)
        return nullptr;
    QTreeWidgetItemIterator it(const_cast<CTaskView*>(this));
    for (; *it; ++it)
        if ((*it)->data(0, kTaskIdRole).toUInt() == taskId)
            return *it;
    return nullptr;
}

CTask* CTaskView::SelectedTask() const
{
    QTreeWidgetItem* item = currentItem();
    if (item == nullptr)
        return nullptr;
    return m_frame.Doc().GetTask(item->data(0, kTaskIdRole).toUInt());
}

void CTaskView::SelectTask(uint32_t taskId)
{
    if (QTreeWidgetItem* item = ItemOf(taskId))
    {
        setCurrentItem(item);
        scrollToItem(item);
    }
}

void CTaskView::SortChildItems(QTreeWidgetItem* parent)
{
    // The document keeps children in display order; the items follow it.
    CTimeKeeperDoc& doc = m_frame.Doc();
    std::lock_guard lock(doc.GetLock());
    const CTask* task = doc.GetTask(parent->data(0, kTaskIdRole).toUInt());
    if (task == nullptr)
        return;
    const bool wasFilling = m_filling;
    m_filling = true;
    QTreeWidgetItem* current = currentItem();
    int next = 0;
    for (const CTask* child : task->m_children)
    {
        for (int i = next; i < parent->childCount(); ++i)
        {
            if (parent->child(i)->data(0, kTaskIdRole).toUInt() != child->m_id)
                continue;
            if (i != next)
            {
                const bool expanded = parent->child(i)->isExpanded();
                QTreeWidgetItem* item = parent->takeChild(i);
                parent->insertChild(next, item);
                item->setExpanded(expanded);
            }
            ++next;
            break;
        }
    }
    if (current)
        setCurrentItem(current);
    m_filling = wasFilling;
}

CTask* CTaskView::AddChildTask(int level)
{
    // A rename still open ends first, as Enter would end it.
    if (QWidget* editor = indexWidget(currentIndex()); editor && state() == EditingState)
    {
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
    CTimeKeeperDoc& doc = m_frame.Doc();
    CTask* parent = SelectedTask();
    if (parent == nullptr || parent->m_level >= level || parent->m_projectId != 0 ||
        StoredLevelName(doc, level).isEmpty())
        return nullptr;
    CTask* task = nullptr;
    {
        std::lock_guard lock(doc.GetLock());
        task = doc.AddTask(parent, uint16_t(level));
        if (task == nullptr)
            return nullptr;
        parent->m_expanded = true;
    }
    const uint32_t id = task->m_id;
    Rebuild();
    SelectTask(id);
    m_frame.RefreshStatus();
    // The level's name is only a placeholder: the person types the real one over it.
    if (QTreeWidgetItem* item = ItemOf(id))
    {
        scrollToItem(item);
        editItem(item, 0);
    }
    return doc.GetTask(id);
}

void CTaskView::RenameSelected()
{
    QTreeWidgetItem* item = currentItem();
    const CTask* task = SelectedTask();
    if (item && task && !task->IsImported())
        editItem(item, 0);
}

void CTaskView::OnItemChanged(QTreeWidgetItem* item, int)
{
    if (m_filling)
        return;
    RenameTask(item->data(0, kTaskIdRole).toUInt(), item->text(0));
}

void CTaskView::RenameTask(uint32_t taskId, const QString& text)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    QString name = text;
    while (!name.isEmpty() && name.front().isSpace())
        name.remove(0, 1);
    QTreeWidgetItem* item = ItemOf(taskId);
    CTask* task = doc.GetTask(taskId);
    if (task == nullptr)
        return;
    if (name.isEmpty() || FromQ(name) == task->m_name)
    {
        m_filling = true;
        if (item)
            item->setText(0, ToQ(task->m_name));
        m_filling = false;
        return;
    }
    {
        std::lock_guard lock(doc.GetLock());
        doc.RenameTask(task, FromQ(name));
        doc.SetModifiedFlag(true);
    }
    m_filling = true;
    if (item)
        item->setText(0, name);
    m_filling = false;
    if (item && item->parent())
        SortChildItems(item->parent());
    m_frame.SheetList()->Refill();
    m_frame.UpdateTitle();
}

void CTaskView::DeleteSelected()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    CTask* task = SelectedTask();
    if (task == nullptr || task->m_id == CTimeKeeperDoc::kRootTaskId || task->IsImported())
        return;
    const uint32_t parentId = task->m_parentId;
    doc.m_editorOpen = true;
    const bool deleted = doc.DeleteTask(task, m_frame.Prompter());
    doc.m_editorOpen = false;
    if (!deleted)
        return;
    doc.SetModifiedFlag(true);
    Rebuild();
    SelectTask(parentId);
    m_frame.ShowTimerState();
    m_frame.SheetList()->Refill();
    m_frame.RefreshStatus();
}

void CTaskView::ToggleInactive()
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    CTask* task = SelectedTask();
    if (task == nullptr || task->m_id == CTimeKeeperDoc::kRootTaskId)
        return;
    const uint32_t id = task->m_id;
    const uint32_t parentId = task->m_parentId;
    {
        std::lock_guard lock(doc.GetLock());
        doc.SetTaskInactive(task, !task->m_inactive);
        doc.SetModifiedFlag(true);
    }
    if (m_frame.App().GetHideInactive())
    {
        SelectTask(parentId);
        Rebuild();
    }
    else
    {
        // Redraw the task and everything below it: inactive is inherited.
        std::function<void(QTreeWidgetItem*)> redraw = [&](QTreeWidgetItem* item) {
            if (const CTask* t = doc.GetTask(item->data(0, kTaskIdRole).toUInt()))
                DecorateItem(item, t);
            for (int i = 0; i < item->childCount(); ++i)
                redraw(item->child(i));
        };
        m_filling = true;
        if (QTreeWidgetItem* item = ItemOf(id))
            redraw(item);
        m_filling = false;
    }
    m_frame.UpdateCommandStates();
}

void CTaskView::StartTimerOnSelected()
{
    CTask* task = SelectedTask();
    if (task == nullptr || task->IsProjectSummary())
        return;
    m_frame.StartTimer(task);
}

void CTaskView::EditProperties()
{
    CTask* task = SelectedTask();
    if (task == nullptr)
        return;
    const uint32_t id = task->m_id;
    CTaskProperties sheet(m_frame, *task, this);
    if (sheet.exec() == QDialog::Accepted)
    {
        Rebuild();
        SelectTask(id);
        m_frame.SheetList()->Refill();
    }
}

void CTaskView::EditContact()
{
    CTask* task = SelectedTask();
    if (task == nullptr)
        return;
    CContact* contact = m_frame.Doc().GetContact(task->GetEffectiveContactId());
    if (contact == nullptr)
        return;
    CContactSheet sheet(m_frame, *contact, this);
    sheet.exec();
}

bool CTaskView::DropTaskOn(uint32_t sourceId, uint32_t targetId)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    int refusal = 0;
    {
        std::lock_guard lock(doc.GetLock());
        CTask* source = doc.GetTask(sourceId);
        CTask* target = doc.GetTask(targetId);
        if (source == nullptr || target == nullptr || source == target)
            return false;
        refusal = doc.MoveTask(source, target);
        if (refusal == 0)
        {
            target->m_expanded = true;
            doc.SetModifiedFlag(true);
        }
    }
    if (refusal != 0)
    {
        m_frame.Prompter().ShowMessage(platform::LoadString(unsigned(refusal)), platform::Icon::warning);
        return false;
    }
    setUpdatesEnabled(false);
    Rebuild();
    SelectTask(sourceId);
    setUpdatesEnabled(true);
    doc.UpdateAllViews(hintTasks);
    return true;
}

void CTaskView::FillContextMenu(QMenu& menu)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    std::unique_lock lock(doc.GetLock());
    const CTask* task = SelectedTask();
    if (task == nullptr)
        return;
    const bool root = task->m_id == CTimeKeeperDoc::kRootTaskId;
    const bool linked = task->m_projectId != 0;
    const bool summary = task->IsProjectSummary();
    const uint32_t taskId = task->m_id;

    if (!linked)
    {
        for (int level = task->m_level + 1; level < 20; ++level)
        {
            const QString name = StoredLevelName(doc, level);
            if (name.isEmpty())
                continue;
            QAction* add = menu.addAction(icons::LetterIcon(icons::TaskImageIndex(level, name)),
                                          tr("Add %1").arg(name));
            add->setObjectName(QStringLiteral("addLevel%1").arg(level));
            connect(add, &QAction::triggered, this, [this, level] { AddChildTask(level); });
        }
    }
    if (!summary)
    {
        if (!menu.isEmpty())
            menu.addSeparator();
        connect(menu.addAction(tr("New Ti&me Entry")), &QAction::triggered, this,
                [this, taskId] { m_frame.SheetList()->NewTimeEntry(m_frame.Doc().GetTask(taskId)); });
        connect(menu.addAction(tr("New &Expense Entry")), &QAction::triggered, this,
                [this, taskId] { m_frame.SheetList()->NewExpenseEntry(m_frame.Doc().GetTask(taskId)); });
        connect(menu.addAction(tr("New To D&o Entry")), &QAction::triggered, this,
                [this, taskId] { m_frame.SheetList()->NewToDoEntry(m_frame.Doc().GetTask(taskId)); });
        menu.addSeparator();
        QAction* start = menu.addAction(icons::TimerIcon(icons::Timer::running), tr("&Start Timer"));
        start->setObjectName(QStringLiteral("startTimer"));
        connect(start, &QAction::triggered, this, &CTaskView::StartTimerOnSelected);
    }
    if (m_frame.Timer().IsRunning())
    {
        QAction* stop = menu.addAction(icons::TimerIcon(icons::Timer::inactive), tr("S&top Timer"));
        stop->setObjectName(QStringLiteral("stopTimer"));
        connect(stop, &QAction::triggered, this, [this] { m_frame.StopTimer(); });
    }
    if (!linked)
    {
        menu.addSeparator();
        QAction* rename = menu.addAction(tr("&Rename"));
        rename->setObjectName(QStringLiteral("rename"));
        connect(rename, &QAction::triggered, this, &CTaskView::RenameSelected);
        if (!root)
        {
            QAction* del = menu.addAction(tr("&Delete"));
            del->setObjectName(QStringLiteral("delete"));
            connect(del, &QAction::triggered, this, &CTaskView::DeleteSelected);
        }
    }
    if (!root)
    {
        menu.addSeparator();
        QAction* inactive = menu.addAction(tr("&Inactive"));
        inactive->setObjectName(QStringLiteral("inactive"));
        inactive->setCheckable(true);
        inactive->setChecked(task->m_inactive);
        connect(inactive, &QAction::triggered, this, &CTaskView::ToggleInactive);
    }
    menu.addSeparator();
    if (doc.GetContact(task->GetEffectiveContactId()) != nullptr)
    {
        QAction* contact = menu.addAction(tr("Co&ntact..."));
        contact->setObjectName(QStringLiteral("contact"));
        connect(contact, &QAction::triggered, this, &CTaskView::EditContact);
    }
    QAction* properties = menu.addAction(tr("&Properties..."));
    properties->setObjectName(QStringLiteral("properties"));
    connect(properties, &QAction::triggered, this, &CTaskView::EditProperties);
}

void CTaskView::ShowContextMenuAt(const QPoint& globalPos)
{
    QMenu menu(this);
    FillContextMenu(menu);
    if (!menu.isEmpty())
        menu.exec(globalPos);
}

QByteArray CTaskView::EncodeDrag(uint32_t taskId, bool rightButton)
{
    return QByteArray::number(taskId) + (rightButton ? ";right" : ";left");
}

bool CTaskView::DecodeDrag(const QByteArray& data, uint32_t* taskId, bool* rightButton)
{
    const QList<QByteArray> parts = data.split(';');
    bool ok = false;
    const uint32_t id = parts.value(0).toUInt(&ok);
    if (!ok || id == 0)
        return false;
    if (taskId)
        *taskId = id;
    if (rightButton)
        *rightButton = parts.value(1) == "right";
    return true;
}

QStringList CTaskView::mimeTypes() const
{
    return {QString::fromLatin1(kMimeType)};
}

QMimeData* CTaskView::mimeData(const QList<QTreeWidgetItem*>& items) const
{
    if (items.isEmpty())
        return nullptr;
    auto* data = new QMimeData;
    data->setData(QString::fromLatin1(kMimeType),
                  EncodeDrag(items.first()->data(0, kTaskIdRole).toUInt(), m_rightDrag));
    return data;
}

void CTaskView::BeginDrag(bool rightButton)
{
    QTreeWidgetItem* item = currentItem();
    CTask* task = SelectedTask();
    if (item == nullptr || task == nullptr)
        return;
    m_rightDrag = rightButton;
    auto* drag = new QDrag(this);
    drag->setMimeData(mimeData({item}));
    // The letter picture alone, held at its middle.
    const int image = icons::TaskImageIndex(task->m_level, ToQ(m_frame.Doc().GetLevelName(task->m_level)));
    drag->setPixmap(icons::LetterPixmap(image % 26 + (image / 26) * 26, 16));
    drag->setHotSpot(QPoint(8, 8));
    drag->exec(Qt::MoveAction | Qt::CopyAction, Qt::MoveAction);
    m_rightDrag = false;
    m_rightPressed = false;
}

void CTaskView::startDrag(Qt::DropActions)
{
    BeginDrag(false);
}

void CTaskView::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->source() == this && event->mimeData()->hasFormat(QString::fromLatin1(kMimeType)))
    {
        QTreeWidget::dragEnterEvent(event);
        event->acceptProposedAction();
    }
    else
        event->ignore();
}

void CTaskView::dragMoveEvent(QDragMoveEvent* event)
{
    if (event->source() != this || !event->mimeData()->hasFormat(QString::fromLatin1(kMimeType)))
    {
        event->ignore();
        return;
    }
    // The base class highlights the item under the pointer and scrolls near the edges.
    QTreeWidget::dragMoveEvent(event);
    if (itemAt(event->position().toPoint()) != nullptr)
        event->acceptProposedAction();
    else
        event->ignore();
}

void CTaskView::dropEvent(QDropEvent* event)
{
    uint32_t sourceId = 0;
    const bool valid = DecodeDrag(event->mimeData()->data(QString::fromLatin1(kMimeType)), &sourceId, nullptr);
    QTreeWidgetItem* target = itemAt(event->position().toPoint());
    stopAutoScroll();
    setState(QAbstractItemView::NoState);
    viewport()->update();
    // Nothing is removed by the drag itself: the tree is rebuilt from the document.
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
    if (!valid || target == nullptr)
        return;
    const uint32_t targetId = target->data(0, kTaskIdRole).toUInt();
    QMetaObject::invokeMethod(
        this, [this, sourceId, targetId] { DropTaskOn(sourceId, targetId); }, Qt::QueuedConnection);
}

void CTaskView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::RightButton)
    {
        // The right button selects the item under it, then may drag it or open the menu.
        if (QTreeWidgetItem* item = itemAt(event->position().toPoint()))
            setCurrentItem(item);
        m_rightPressed = true;
        m_rightPressPos = event->position().toPoint();
        event->accept();
        return;
    }
    QTreeWidget::mousePressEvent(event);
}

void CTaskView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_rightPressed && (event->buttons() & Qt::RightButton))
    {
        if ((event->position().toPoint() - m_rightPressPos).manhattanLength() >= QApplication::startDragDistance())
            BeginDrag(true);
        return;
    }
    QTreeWidget::mouseMoveEvent(event);
}

void CTaskView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::RightButton)
    {
        const bool wasPressed = m_rightPressed;
        m_rightPressed = false;
        if (wasPressed && currentItem())
            ShowContextMenuAt(event->globalPosition().toPoint());
        return;
    }
    QTreeWidget::mouseReleaseEvent(event);
}

void CTaskView::keyPressEvent(QKeyEvent* event)
{
    if (state() != QAbstractItemView::EditingState)
    {
        if (event->key() == Qt::Key_Delete)
        {
            DeleteSelected();
            return;
        }
        if (event->key() == Qt::Key_Menu || (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier))
        {
            if (QTreeWidgetItem* item = currentItem())
                ShowContextMenuAt(viewport()->mapToGlobal(visualItemRect(item).center()));
            return;
        }
    }
    QTreeWidget::keyPressEvent(event);
}

void CTaskView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint)
{
    QTreeWidget::closeEditor(editor, hint);
    if (m_rebuildAfterEdit)
        QMetaObject::invokeMethod(this, &CTaskView::Rebuild, Qt::QueuedConnection);
}

void CTaskView::focusInEvent(QFocusEvent* event)
{
    m_frame.SetActiveView(CMainFrame::ActiveView::tree);
    QTreeWidget::focusInEvent(event);
    m_frame.UpdateCommandStates();
}
