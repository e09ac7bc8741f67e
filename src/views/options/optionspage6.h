#pragma once

#include "views/options/catalogpage.h"

// "Payment Methods": the payment methods that expense entries name, created and
// edited in their own property sheet.
class COptionsPage6 : public CCatalogPage
{
    Q_OBJECT

public:
    COptionsPage6(CMainFrame& frame, QWidget* parent = nullptr);

protected:
    std::vector<std::pair<uint32_t, std::string>> Records() const override;
    uint32_t CreateRecord() override;
    bool EditRecord(uint32_t id) override;
    bool DeleteRecord(uint32_t id) override;
};
