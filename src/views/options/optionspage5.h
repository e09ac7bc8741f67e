#pragma once

#include "views/options/catalogpage.h"

// "Expense Types": the types that expense entries name. The type with the mileage id
// stays the mileage type whatever it is called, so editing it asks first.
class COptionsPage5 : public CCatalogPage
{
    Q_OBJECT

public:
    COptionsPage5(CMainFrame& frame, QWidget* parent = nullptr);

protected:
    std::vector<std::pair<uint32_t, std::string>> Records() const override;
    uint32_t CreateRecord() override;
    bool EditRecord(uint32_t id) override;
    bool DeleteRecord(uint32_t id) override;
};
