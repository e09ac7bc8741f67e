#pragma once

#include <QWidget>

#include <cstdint>
#include <vector>

class CEntry;
class CExpenseEntry;
class CMainFrame;
class CReport;
class CTask;
class CTimeEntry;
class CToDoEntry;
class QListWidget;
class QListWidgetItem;
class QStyledItemDelegate;
class QMenu;
class QStackedWidget;
class QTabBar;
class QTimer;
class QTreeWidget;
class QTreeWidgetItem;

// The entry lists under the calendar: the pages "Time", "Expenses", "To Do" and
// "Reports". The entry pages list the entries of the day selected in the calendar
// (Date view) or of the task selected in the tree (Task view). The view also runs
// the timer's tick and takes tasks dropped from the tree.
class CSheetListView : public QWidget
{
    Q_OBJECT

public:
    enum Page
    {
        pageTime = 0,
        pageExpenses = 1,
        pageToDo = 2,
        pageReports = 3,
    };
    enum class Kind
    {
        time,
        expense,
        todo,
        report,
    };

    static constexpr int kRecordRole = Qt::UserRole + 1;
    static constexpr int kSortRole = Qt::UserRole + 2;

    CSheetListView(CMainFrame& frame, QWidget* parent = nullptr);
    ~CSheetListView() override;

    int CurrentPage() const;
    void SetPage(int page);
    bool IsReportsPage() const { return CurrentPage() == pageReports; }

    // Rebuilds the columns of the current page and view from their stored widths.
    void RebuildColumns();
    // Writes every column width of the current page and view to its key.
    void SaveColumnWidths();
    // Refills the rows from the document, keeping the selected records selected.
    void Refill();
    void OnTaskSelected();

    // The tick of the running timer (every 5 seconds while it runs).
    void StartTick();
    void StopTick();
    bool IsTicking() const;
    // Rewrites the running entry's Elapsed cell when its text changed; true when it did.
    bool UpdateRunningElapsed(bool repaint = true);

    // Rows and selection.
    int RowCount() const;
    int SelectedCount() const;
    QStringList RowTexts(int row) const;
    void SelectRow(int row, bool add = false);
    void SelectAll();
    QTreeWidget* List() const { return m_list; }
    QListWidget* ReportIcons() const { return m_reportIcons; }
    QTabBar* Tabs() const { return m_tabs; }
    // A built-in column width, widened for the list's font.
    int DefaultWidth(int width) const;
    // Sorts by a column as a click on its header does.
    void SortByColumn(int column);

    // Commands on the selection.
    bool CanStartOrAdd() const;
    bool CanRename() const;
    bool HasContact() const;
    bool CanComplete() const;
    bool CanMoveExpense() const;
    void StartTimerOnSelected();
    void StopTimer();
    // New entries for `task`; with nullptr, for the task of the selected row.
    void NewTimeEntry(CTask* task);
    void NewExpenseEntry(CTask* task);
    void NewToDoEntry(CTask* task);
    void DeleteSelected();
    void EditProperties();
    void EditContact();
    void RenameSelected();
    void CompleteSelected();
    void MoveSelectedExpense();
    // Moves an expense to another day; nothing happens for the same day.
    void MoveExpenseTo(CExpenseEntry* expense, const QDate& date);
    void ShowContacts();
    // Exports the selected report; the format follows the file's extension.
    void ExportSelectedReport();
    void SetReportListType(int type);
    // "New Report...": the report wizard; the new report is selected on the Reports page.
    void NewReport();

    // A task dragged from the tree and dropped here.
    void DropTask(uint32_t taskId, bool rightButton, const QPoint& globalPos);
    void FillContextMenu(QMenu& menu);
    // The menu offered by a right-button drop on the Time page.
    void FillDropMenu(QMenu& menu, uint32_t taskId);

    // The records of the selected rows.
    std::vector<CTimeEntry*> SelectedTimeEntries() const;
    std::vector<CExpenseEntry*> SelectedExpenses() const;
    std::vector<CToDoEntry*> SelectedToDos() const;
    std::vector<CReport*> SelectedReports() const;

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Column
    {
        const char* title;
        const char* key;
        int defaultWidth;
    };
    std::vector<Column> Columns() const;
    // The kind of record the current page lists.
    Kind PageKind() const;
    bool IsTaskView() const;
    const char* SortKeyName() const;
    int SortSetting() const;
    void ApplySort();
    void FillTime();
    void FillExpenses();
    void FillToDo();
    void FillReports();
    QTreeWidgetItem* AddRow(const QStringList& texts, const QList<QVariant>& sortValues, void* record);
    // The record behind a row, checked against what the page shows now.
    void* RowRecord(QTreeWidgetItem* item) const;
    std::vector<void*> SelectedRecords() const;
    // The selected records when the page lists records of `kind`, else none.
    template <class T>
    std::vector<T*> SelectedOfKind(Kind kind) const;
    CTask* TaskOfSelection() const;
    // Warns and answers true when entries cannot go to `task` (a project summary).
    bool RefuseSummaryTask(const CTask& task);
    CTask* TaskOfRecord(void* record) const;
    void OnPageChanged(int page);
    void ShowContextMenuAt(const QPoint& globalPos);
    void EditTimeEntry(CTimeEntry* entry);
    void EditExpense(CExpenseEntry* expense);
    void EditToDo(CToDoEntry* todo);
    void OnReportRenamed(uint32_t reportId, const QString& text);
    void UpdateStates();
    // Tells the other views and refills this one at once.
    void Changed(unsigned hint);

    CMainFrame& m_frame;
    QTabBar* m_tabs;
    QStackedWidget* m_stack;
    QTreeWidget* m_list;
    QListWidget* m_reportIcons;
    QTimer* m_tick;
    QStyledItemDelegate* m_pathDelegate = nullptr;
    int m_page = pageTime;
    // The page and view whose columns are built now (their widths are saved on a switch).
    int m_builtPage = -1;
    int m_builtView = -1;
    std::vector<void*> m_shown;
    // Rows made by a fill, added to the list together when it ends.
    QList<QTreeWidgetItem*> m_pendingRows;
    bool m_filling = false;
    bool m_editing = false;
    bool m_refillAfterEdit = false;
};
