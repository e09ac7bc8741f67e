#pragma once

#include <QTreeWidget>

#include <cstdint>

class CMainFrame;
class CTask;
class QMenu;

// The task tree: one item per task under the root, with letter pictures by level.
// Tasks are added level by level, renamed in place, marked inactive, deleted, and
// moved by dragging them onto another task; dragged onto the entry list they make
// a new entry there.
class CTaskView : public QTreeWidget
{
    Q_OBJECT

public:
    static constexpr int kTaskIdRole = Qt::UserRole + 1;
    static constexpr const char* kMimeType = "application/x-quorvane-task";

    CTaskView(CMainFrame& frame, QWidget* parent = nullptr);

    // Refills the tree from the document, keeping the selected task selected.
    void Rebuild();
    CTask* SelectedTask() const;
    void SelectTask(uint32_t taskId);
    QTreeWidgetItem* ItemOf(uint32_t taskId) const;

    // Commands on the selected task.
    CTask* AddChildTask(int level);
    void RenameSelected();
    // Sets a task's name as an in-place rename does: leading blanks go, an empty
    // name leaves the task as it was.
    void RenameTask(uint32_t taskId, const QString& text);
    void DeleteSelected();
    void ToggleInactive();
    void StartTimerOnSelected();
    void EditProperties();
    void EditContact();

    // A dragged task dropped on another one: moves it there, or says why not.
    // True when the task moved.
    bool DropTaskOn(uint32_t sourceId, uint32_t targetId);

    // The context menu of the selected task (built fresh each time).
    void FillContextMenu(QMenu& menu);

    // Drag payload: the task and whether the right button started the drag.
    static QByteArray EncodeDrag(uint32_t taskId, bool rightButton);
    static bool DecodeDrag(const QByteArray& data, uint32_t* taskId, bool* rightButton);

signals:
    void SelectedTaskChanged();

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QList<QTreeWidgetItem*>& items) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    QTreeWidgetItem* InsertTask(CTask* task, QTreeWidgetItem* parent, bool hideInactive);
    void ApplyExpansion(QTreeWidgetItem* item);
    void SortChildItems(QTreeWidgetItem* parent);
    void DecorateItem(QTreeWidgetItem* item, const CTask* task);
    void OnItemChanged(QTreeWidgetItem* item, int column);
    void ShowContextMenuAt(const QPoint& globalPos);
    void BeginDrag(bool rightButton);

    CMainFrame& m_frame;
    bool m_filling = false;
    // Expanding and collapsing are recorded into the tasks only once the tree is filled.
    bool m_treeFilled = false;
    bool m_rightDrag = false;
    QPoint m_rightPressPos;
    bool m_rightPressed = false;
    bool m_rebuildAfterEdit = false;
};
