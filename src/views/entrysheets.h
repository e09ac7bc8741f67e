#pragma once

#include "widgets/currencyedit.h"

#include <QDialog>

#include <cstdint>
#include <map>

class CContact;
class CDateTimeEdit;
class CDay;
class CExpenseEntry;
class CMainFrame;
class CTask;
class CTimeEntry;
class CToDoEntry;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QTabWidget;
class QTreeWidget;

namespace platform
{
struct LocaleInfo;
}

// Money fields follow the user's locale.
CurrencyFormat MakeCurrencyFormat(const platform::LocaleInfo& locale);

// The base of the property sheets: pages in tabs over OK and Cancel. While a sheet
// is shown the document's editor-open flag is set; OK checks and writes the record
// (a failed check keeps the sheet open with the focus on the field).
class CPropertySheet : public QDialog
{
    Q_OBJECT

public:
    CPropertySheet(CMainFrame& frame, const QString& caption, QWidget* parent);

    void accept() override;
    void done(int result) override;
    QTabWidget* Pages() const { return m_pages; }

protected:
    void showEvent(QShowEvent* event) override;
    // Checks and writes; false keeps the sheet open.
    virtual bool Apply() = 0;
    // Shows a numbered message and puts the focus on `field`.
    void Refuse(unsigned message, QWidget* field);
    void Refuse(const QString& text, QWidget* field);

    CMainFrame& m_frame;
    QTabWidget* m_pages;
};

class CTimeEntryPropertySheet : public CPropertySheet
{
    Q_OBJECT

public:
    // `day` is the day the entry is (or will be) filed in.
    CTimeEntryPropertySheet(CMainFrame& frame, CDay& day, CTimeEntry& entry, QWidget* parent = nullptr);

    CDateTimeEdit* StartField() const { return m_start; }
    CDateTimeEdit* EndField() const { return m_end; }
    QComboBox* ActivityField() const { return m_activity; }
    QPlainTextEdit* NoteField() const { return m_note; }
    QCheckBox* UseDefaultsBox() const { return m_useDefaults; }
    QCheckBox* BillableBox() const { return m_billable; }
    CCurrencyEdit* RateField() const { return m_rate; }
    QCheckBox* OvertimeBox() const { return m_overtime; }
    QDoubleSpinBox* MultiplierField() const { return m_multiplier; }

protected:
    bool Apply() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void UpdateBilling();

    CDay& m_day;
    CTimeEntry& m_entry;
    bool m_running;
    CDateTimeEdit* m_start;
    CDateTimeEdit* m_end;
    QComboBox* m_activity;
    QPlainTextEdit* m_note;
    QCheckBox* m_useDefaults;
    QCheckBox* m_billable;
    CCurrencyEdit* m_rate;
    QCheckBox* m_overtime;
    QDoubleSpinBox* m_multiplier;
};

class CExpenseEntrySheet : public CPropertySheet
{
    Q_OBJECT

public:
    CExpenseEntrySheet(CMainFrame& frame, CExpenseEntry& entry, QWidget* parent = nullptr);

    QComboBox* TypeField() const { return m_type; }
    QSpinBox* DrivenField() const { return m_driven; }
    QDoubleSpinBox* MileageRateField() const { return m_mileageRate; }
    CCurrencyEdit* AmountField() const { return m_amount; }
    QCheckBox* BillableBox() const { return m_billable; }
    QComboBox* PaymentField() const { return m_payment; }
    QPlainTextEdit* NoteField() const { return m_note; }

protected:
    bool Apply() override;

private:
    bool IsMileage() const;
    void OnTypeChosen();
    void UpdateMileageFields();
    void UpdateMileageAmount();

    CExpenseEntry& m_entry;
    QComboBox* m_type;
    QSpinBox* m_driven;
    QDoubleSpinBox* m_mileageRate;
    CCurrencyEdit* m_amount;
    QCheckBox* m_billable;
    QComboBox* m_payment;
    QPlainTextEdit* m_note;
};

class CToDoEntrySheet : public CPropertySheet
{
    Q_OBJECT

public:
    CToDoEntrySheet(CMainFrame& frame, CToDoEntry& entry, QWidget* parent = nullptr);

    QPlainTextEdit* DescriptionField() const { return m_description; }
    QComboBox* PriorityField() const { return m_priority; }
    CDateTimeEdit* DueField() const { return m_due; }
    CDateTimeEdit* CompleteField() const { return m_complete; }
    QPlainTextEdit* NoteField() const { return m_note; }

protected:
    bool Apply() override;

private:
    CToDoEntry& m_entry;
    QPlainTextEdit* m_description;
    QComboBox* m_priority;
    CDateTimeEdit* m_due;
    CDateTimeEdit* m_complete;
    QPlainTextEdit* m_note;
};

// "Activity Rate": a task's own billing for one activity.
class CActivityRateDlg : public QDialog
{
    Q_OBJECT

public:
    enum class State
    {
        useDefault,
        notBillable,
        rate,
    };
    CActivityRateDlg(const QString& activity, State state, double rate, const CurrencyFormat& format,
                     QWidget* parent = nullptr);
    State GetState() const;
    double Rate() const;

private:
    QRadioButton* m_default;
    QRadioButton* m_notBillable;
    QRadioButton* m_withRate;
    CCurrencyEdit* m_rate;
};

class CTaskProperties : public CPropertySheet
{
    Q_OBJECT

public:
    CTaskProperties(CMainFrame& frame, CTask& task, QWidget* parent = nullptr);

    QLineEdit* NameField() const { return m_name; }
    QLineEdit* AbbreviationField() const { return m_abbreviation; }
    QComboBox* LevelField() const { return m_level; }
    QDoubleSpinBox* HoursField() const { return m_hours; }
    CCurrencyEdit* CostField() const { return m_cost; }
    QCheckBox* UseParentTaskIdBox() const { return m_useParentTaskId; }
    QLineEdit* TaskIdField() const { return m_taskId; }
    QCheckBox* UseParentContactBox() const { return m_useParentContact; }
    QComboBox* ContactField() const { return m_contact; }
    QCheckBox* UseParentBillingBox() const { return m_useParentBilling; }
    QCheckBox* BillableBox() const { return m_billable; }
    CCurrencyEdit* RateField() const { return m_rate; }
    QDoubleSpinBox* MultiplierField() const { return m_multiplier; }
    QCheckBox* UseActivityRatesBox() const { return m_useActivityRates; }
    QTreeWidget* ActivityRates() const { return m_activityRates; }
    QPlainTextEdit* NotesField() const { return m_notes; }
    // Sets the rate of the activity on row `row` as the "Activity Rate" dialog does.
    void SetActivityRate(int row, CActivityRateDlg::State state, double rate);

protected:
    bool Apply() override;

private:
    struct Rate
    {
        bool billable = true;
        double rate = 0.0;
    };
    void FillContacts(uint32_t select);
    void FillActivityRates();
    void UpdateEnabled();
    void EditActivityRate();
    void EditChosenContact();
    void NewContact();

    CTask& m_task;
    std::map<uint32_t, Rate> m_rates;
    CurrencyFormat m_currency;
    QLineEdit* m_name;
    QLabel* m_picture;
    QLineEdit* m_abbreviation;
    QComboBox* m_level;
    QDoubleSpinBox* m_hours;
    CCurrencyEdit* m_cost;
    QCheckBox* m_useParentTaskId;
    QLineEdit* m_taskId;
    QCheckBox* m_useParentContact;
    QComboBox* m_contact;
    QPushButton* m_editContact;
    QPushButton* m_newContact;
    QCheckBox* m_useParentBilling;
    QCheckBox* m_billable;
    CCurrencyEdit* m_rate;
    QDoubleSpinBox* m_multiplier;
    QCheckBox* m_useActivityRates;
    QTreeWidget* m_activityRates;
    QPushButton* m_editRate;
    QPushButton* m_clearRate;
    QPlainTextEdit* m_notes;
};

class CContactSheet : public CPropertySheet
{
    Q_OBJECT

public:
    CContactSheet(CMainFrame& frame, CContact& contact, QWidget* parent = nullptr);

    QLineEdit* FirstField() const { return m_first; }
    QLineEdit* MiddleField() const { return m_middle; }
    QLineEdit* LastField() const { return m_last; }

protected:
    bool Apply() override;

private:
    CContact& m_contact;
    QLineEdit* m_first;
    QLineEdit* m_middle;
    QLineEdit* m_last;
    QPlainTextEdit* m_address;
    QLineEdit* m_phone;
    QLineEdit* m_fax;
    QLineEdit* m_email;
    QPlainTextEdit* m_notes;
};

// "Contacts": the document's contacts with New, Edit, Delete and New Copy.
class CContactsDlg : public QDialog
{
    Q_OBJECT

public:
    CContactsDlg(CMainFrame& frame, QWidget* parent = nullptr);

    QListWidget* List() const { return m_list; }
    void Fill(uint32_t select = 0);
    void NewContact(bool copySelected);
    void EditSelected();
    void DeleteSelected();

private:
    uint32_t SelectedId() const;
    void UpdateButtons();

    CMainFrame& m_frame;
    QListWidget* m_list;
    QPushButton* m_edit;
    QPushButton* m_delete;
    QPushButton* m_copy;
};
