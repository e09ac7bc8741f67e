#pragma once

#include "reports/timeexpensesummaryoutput.h"

#include "model/datetime.h"
#include "model/tinytime.h"

#include <cstdint>
#include <string>
#include <vector>

namespace platform
{
class Prompter;
}

namespace reports
{

// One line of an invoice.
struct CInvoiceItem
{
    CDateTime date;
    uint32_t task = 0;  // 0 on the total line
    int32_t group = 0;  // the negative key of a grouping row, else 0
    double expenses = 0.0;
    double rate = 0.0;  // negative: the line's time had different rates
    double billing = 0.0;
    CTinyElapsedTime time;

    bool IsTotal() const { return task == 0 && group == 0; }
};

// An amount rounded to cents, an exact half away from zero.
double RoundToCents(double amount);

// Numbers an invoice before it is printed: with "use next number", the next number
// of the "InvoiceNumber" setting (asking 41037 first when the invoice already has a
// number) and the setting moves on; the document is marked modified. With "use
// this number" nothing changes. Returns the number's text.
std::string NumberInvoice(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app,
                          platform::Prompter& prompter);

// Invoice: the time and expenses of the Time and Expense Summary's grid as one line
// per task and period, with ancestor heading lines, an optional tax line and the
// total, under a header block with the addresses, number, date, due amount and terms.
class CInvoiceOutput : public CTimeExpenseSummaryOutput
{
public:
    using CTimeExpenseSummaryOutput::CTimeExpenseSummaryOutput;

    bool PrepareReportData() override;
    void ReleaseReportData() override;
    void BeginPrinting(Canvas& canvas) override;
    void Layout(Canvas& canvas) override;
    int PageCount(Canvas& canvas) override;
    void PageHeader(Canvas& canvas, int page) override;
    void PageBody(Canvas& canvas, int page) override;
    void ExportHead(CExportFile& file, int format) override;
    void ExportRows(CExportFile& file, int format) override;
    void HtmlHead(CExportFile& file) override;
    void HtmlTable(CExportFile& file) override;

    const std::vector<CInvoiceItem>& Items() const { return m_items; }
    double GetTaxAmount() const { return m_taxAmount; }
    double GetAmountDue() const;
    std::string GetNumberText() const { return m_numberText; }

protected:
    // An invoice neither rolls entries up nor adds a total column or row: its
    // total is a line of its own.
    bool Rollup() const override { return false; }
    bool ShowTotals() const override { return false; }
    bool ShowEmptyRows() const override { return true; }

private:
    enum class Use
    {
        exportText,
        html,
        print,
    };
    void BuildItems();
    const CInvoiceItem& TotalItem() const { return m_items.back(); }
    std::string ItemTaskIdText(const CInvoiceItem& item) const;
    std::string ItemDescription(const CInvoiceItem& item) const;
    std::string ItemRate(const CInvoiceItem& item, Use use) const;
    std::string ItemMoney(const CInvoiceItem& item, double amount, Use use) const;
    std::string TaxRateText() const;
    std::string FirstColumnTitle() const;
    std::vector<std::string> AddressLines() const;
    std::vector<std::string> RecipientLines() const;
    struct PrintRow
    {
        std::vector<std::string> cells;
        int indentSteps = 0;
        bool total = false;
    };
    // The printed rows: the lines, with the tax line before the total.
    std::vector<PrintRow> PrintRows() const;
    std::vector<std::string> PrintTitles() const;
    int IndentSteps(const CInvoiceItem& item) const;

    std::vector<CInvoiceItem> m_items;
    double m_taxAmount = 0.0;
    std::string m_numberText;

    FontRequest m_headerFont;
    FontRequest m_headerBoldFont;
    int m_headerLineHeight = 0;
    int m_headerBlockHeight = 0;
    std::vector<PrintRow> m_printRows;
    std::vector<int> m_columnWidths;
    size_t m_descriptionColumn = 0;
};

} // namespace reports
