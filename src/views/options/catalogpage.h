#pragma once

#include "views/options/optionspage.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class QListWidget;
class QPushButton;

// A catalog of the document (activities, expense types, payment methods) in a list
// with "New", "Remove" and "Edit". Each button changes the document at once; the
// sheet's OK or Cancel does not undo it.
class CCatalogPage : public COptionsPage
{
    Q_OBJECT

public:
    static constexpr int kIdRole = Qt::UserRole;

    CCatalogPage(CMainFrame& frame, QWidget* parent = nullptr);

    void Apply() override {}

    void NewRecord();
    void RemoveSelected();
    void EditSelected();
    // The id of the selected row, 0 when none is selected.
    uint32_t SelectedId() const;
    void SelectId(uint32_t id);

    QListWidget* List() const { return m_list; }
    QPushButton* NewButton() const { return m_new; }
    QPushButton* RemoveButton() const { return m_remove; }
    QPushButton* EditButton() const { return m_edit; }

protected:
    // Call at the end of the derived constructor: fills the list.
    void Fill();
    // The records of the catalog, as id and name.
    virtual std::vector<std::pair<uint32_t, std::string>> Records() const = 0;
    // Ask for a new record and create it; its id, or 0 when the user cancelled.
    virtual uint32_t CreateRecord() = 0;
    // Ask for the record's new values and write them; false when nothing changed.
    virtual bool EditRecord(uint32_t id) = 0;
    // Ask the question of the catalog and delete the record; true when deleted.
    virtual bool DeleteRecord(uint32_t id) = 0;

private:
    void UpdateButtons();

    QListWidget* m_list;
    QPushButton* m_new;
    QPushButton* m_remove;
    QPushButton* m_edit;
};
