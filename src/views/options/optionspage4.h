#pragma once

#include "views/options/catalogpage.h"

// "Activities": the activities that time entries name.
class COptionsPage4 : public CCatalogPage
{
    Q_OBJECT

public:
    COptionsPage4(CMainFrame& frame, QWidget* parent = nullptr);

protected:
    std::vector<std::pair<uint32_t, std::string>> Records() const override;
    uint32_t CreateRecord() override;
    bool EditRecord(uint32_t id) override;
    bool DeleteRecord(uint32_t id) override;
};
