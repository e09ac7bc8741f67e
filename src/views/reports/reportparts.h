#pragma once

#include "model/reportdef.h"

#include <QTreeWidget>
#include <QWidget>

#include <cstdint>
#include <vector>

class CDateTimeEdit;
class CMainFrame;
class CTimeKeeperDoc;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;

// The controls that edit a report definition, grouped by what they edit. The wizard
// pages and the property pages show the same groups; some labels differ by where
// they are shown. Each group loads from a definition, checks what it holds and
// stores into a definition; storing depends only on the definition's kind, so a
// page that was never shown still stores what it holds.
enum class ReportPartMode
{
    wizard,
    property,
};

// Shows a numbered message, brings the tab of `field` to the front (in a property
// sheet) and puts the focus on the field.
void RefuseReportField(CMainFrame& frame, unsigned message, QWidget* field);

// Every task of the document, the top level expanded; one task is selected.
class CReportTaskTree : public QTreeWidget
{
    Q_OBJECT

public:
    explicit CReportTaskTree(CTimeKeeperDoc& doc, QWidget* parent = nullptr);

    // Selects the task and opens its ancestors; an unknown id selects the root.
    void SelectTask(uint32_t taskId);
    // 0 when nothing is selected.
    uint32_t SelectedTaskId() const;
    QTreeWidgetItem* ItemOf(uint32_t taskId) const;

private:
    void Fill();

    CTimeKeeperDoc& m_doc;
};

// "All" or "Selected" records of one catalog, with the list of its records (sorted
// by name) to check. "All" is stored as the single id 0.
class CFilterList : public QWidget
{
    Q_OBJECT

public:
    enum class Catalog
    {
        activities,
        expenseTypes,
        paymentMethods,
    };

    // With a group title the controls stand in a group box of that title.
    CFilterList(CTimeKeeperDoc& doc, Catalog catalog, const QString& groupTitle,
                QWidget* parent = nullptr);

    void SetIds(const std::vector<uint32_t>& ids);
    std::vector<uint32_t> Ids() const;
    Catalog GetCatalog() const { return m_catalog; }

    QRadioButton* AllButton() const { return m_all; }
    QRadioButton* SelectedButton() const { return m_selected; }
    QListWidget* List() const { return m_list; }
    // Checks or clears the record of that name; false when the list has none.
    bool CheckName(const QString& name, bool checked = true);

private:
    void UpdateEnabled();

    Catalog m_catalog;
    QRadioButton* m_all;
    QRadioButton* m_selected;
    QListWidget* m_list;
};

// The date range: the preset list and the custom start and end dates.
class CDatesPart : public QWidget
{
    Q_OBJECT

public:
    CDatesPart(CMainFrame& frame, ReportPartMode mode, QWidget* parent = nullptr);

    void Load(const CReport& report);
    // Custom dates only: shows the message of the first failing check (40018, 40015,
    // 40016, 40017) with the focus on the field and answers false.
    bool Check();
    void Store(CReport& report) const;

    QComboBox* RangeField() const { return m_range; }
    CDateTimeEdit* StartField() const { return m_start; }
    CDateTimeEdit* EndField() const { return m_end; }
    uint32_t Preset() const;
    void SetPreset(uint32_t preset);

private:
    void UpdateEnabled();

    CMainFrame& m_frame;
    QComboBox* m_range;
    CDateTimeEdit* m_start;
    CDateTimeEdit* m_end;
};

// The task tree and which entries of the tasks count.
class CTasksPart : public QWidget
{
    Q_OBJECT

public:
    CTasksPart(CMainFrame& frame, ReportPartMode mode, QWidget* parent = nullptr);

    // Labels of the check boxes and whether "Include Child Tasks" applies.
    void SetKind(uint32_t kind);
    void Load(const CReport& report);
    void Store(CReport& report) const;

    CReportTaskTree* Tree() const { return m_tree; }
    QCheckBox* BillableBox() const { return m_billable; }
    QCheckBox* NonBillableBox() const { return m_nonBillable; }
    QCheckBox* ChildTasksBox() const { return m_childTasks; }

private:
    ReportPartMode m_mode;
    bool m_loadedTaskFound = true;
    uint32_t m_selectedAtLoad = 0;
    CReportTaskTree* m_tree;
    QCheckBox* m_billable;
    QCheckBox* m_nonBillable;
    QCheckBox* m_childTasks;
};

// What the rows and columns of a summary or an invoice are.
class CSummarizePart : public QWidget
{
    Q_OBJECT

public:
    static constexpr int32_t kNoLevel = INT32_MIN;

    CSummarizePart(CMainFrame& frame, QWidget* parent = nullptr);

    // Refills the level list with the document's levels and the kind's groupings,
    // keeping the chosen value when the kind offers it.
    void SetKind(uint32_t kind);
    void Load(const CReport& report);
    // Neither level nor time frame chosen (a new wizard).
    void ClearChoices();
    // 40007 without a level, 40006 without a time frame.
    bool Check();
    void Store(CReport& report) const;

    // The chosen level value, kNoLevel when none.
    int32_t Level() const;
    bool SelectLevel(int32_t level);
    bool SelectTimeFrame(uint32_t timeFrame);

    QComboBox* LevelField() const { return m_level; }
    QComboBox* TimeFrameField() const { return m_timeFrame; }
    QCheckBox* RollupBox() const { return m_rollup; }
    QCheckBox* TotalsBox() const { return m_totals; }
    QCheckBox* EmptyRowsBox() const { return m_emptyRows; }

signals:
    void LevelChanged(int32_t level);

private:
    CMainFrame& m_frame;
    uint32_t m_kind = CReport::timeSummary;
    QComboBox* m_level;
    QComboBox* m_timeFrame;
    QCheckBox* m_rollup;
    QCheckBox* m_totals;
    QCheckBox* m_emptyRows;
};

// The optional columns ("Additional Fields"): only the boxes of the kind are shown,
// each in its fixed place.
class CFieldsPart : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kSlots = 7;

    CFieldsPart(CMainFrame& frame, QWidget* parent = nullptr);

    // Shows the kind's boxes; a change of kind sets them from the loaded flags.
    void SetKind(uint32_t kind);
    // The summary kinds offer "Estimates" only for a task level (0 and up).
    void SetSummarizeLevel(int32_t level);
    void Load(const CReport& report);
    void Store(CReport& report) const;

    // The box of a field keyword ("task-id", "estimates", ...) of the current kind.
    QCheckBox* Box(const QString& keyword) const;
    QCheckBox* Slot(int index) const { return m_boxes[index]; }

private:
    CMainFrame& m_frame;
    int m_kind = -1;
    uint32_t m_loadedFlags = 0;
    QCheckBox* m_boxes[kSlots];
    uint32_t m_masks[kSlots] = {};
};

// The invoice's recipient, number, terms and tax.
class CInvoicePart : public QWidget
{
    Q_OBJECT

public:
    CInvoicePart(CMainFrame& frame, QWidget* parent = nullptr);

    void Load(const CReport& report);
    void Store(CReport& report) const;

    QPlainTextEdit* RecipientField() const { return m_recipient; }
    QRadioButton* NextNumberButton() const { return m_nextNumber; }
    QRadioButton* ThisNumberButton() const { return m_thisNumber; }
    QSpinBox* NumberField() const { return m_number; }
    QCheckBox* ShowTermsBox() const { return m_showTerms; }
    QLineEdit* TermsField() const { return m_terms; }
    QCheckBox* AddTaxBox() const { return m_addTax; }
    QDoubleSpinBox* TaxRateField() const { return m_taxRate; }

private:
    void UpdateEnabled();

    CMainFrame& m_frame;
    QPlainTextEdit* m_recipient;
    QRadioButton* m_nextNumber;
    QRadioButton* m_thisNumber;
    QSpinBox* m_number;
    QCheckBox* m_showTerms;
    QLineEdit* m_terms;
    QCheckBox* m_addTax;
    QDoubleSpinBox* m_taxRate;
    // The loaded rate, kept to the last digit unless the user changes the field.
    double m_loadedRate = 0.0;
};

// Paper orientation and the report font.
class CPrintOptionsPart : public QWidget
{
    Q_OBJECT

public:
    CPrintOptionsPart(CMainFrame& frame, ReportPartMode mode, QWidget* parent = nullptr);

    void Load(const CReport& report);
    void Store(CReport& report) const;
    // Opens the font dialog on the current font; true when a font was chosen.
    bool ChooseFont();
    void SetFont(const ReportFont& font);
    const ReportFont& Font() const { return m_font; }

    // "Arial Bold Italic 12 pt.": the face, " Bold" for weight 700, " Italic", the size.
    static QString FontText(const ReportFont& font);
    static QFont ToQFont(const ReportFont& font);
    // Keeps the members a QFont does not describe from `base`.
    static ReportFont FromQFont(const QFont& font, const ReportFont& base);

    QRadioButton* DefaultButton() const { return m_default; }
    QRadioButton* PortraitButton() const { return m_portrait; }
    QRadioButton* LandscapeButton() const { return m_landscape; }
    QPushButton* FontButton() const { return m_fontButton; }
    QLabel* FontLabel() const { return m_fontText; }

private:
    CMainFrame& m_frame;
    QRadioButton* m_default;
    QRadioButton* m_portrait;
    QRadioButton* m_landscape;
    QPushButton* m_fontButton;
    QLabel* m_fontText;
    ReportFont m_font;
};

// Which pages a kind uses.
bool ReportKindHasActivities(uint32_t kind);
bool ReportKindHasExpenseFilters(uint32_t kind);
bool ReportKindIsSummary(uint32_t kind);
bool ReportKindIsDetail(uint32_t kind);
// Summaries and the invoice.
bool ReportKindHasSummarize(uint32_t kind);
