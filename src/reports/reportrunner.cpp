#include "reports/reportrunner.h"

#include "model/timekeeperdoc.h"
#include "reports/billingsummaryoutput.h"
#include "reports/expensedetailoutput.h"
#include "reports/expensesummaryoutput.h"
#include "reports/invoiceoutput.h"
#include "reports/timedetailoutput.h"
#include "reports/timeexpensesummaryoutput.h"
#include "reports/timesummaryoutput.h"
#include "reports/tododetailoutput.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace reports
{

std::unique_ptr<CReportOutput> CreateReportOutput(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app)
{
    switch (report.m_kind)
    {
    case CReport::timeDetail: return std::make_unique<CTimeDetailOutput>(report, doc, app);
    case CReport::expenseDetail: return std::make_unique<CExpenseDetailOutput>(report, doc, app);
    case CReport::todoDetail: return std::make_unique<CToDoDetailOutput>(report, doc, app);
    case CReport::timeSummary: return std::make_unique<CTimeSummaryOutput>(report, doc, app);
    case CReport::expenseSummary: return std::make_unique<CExpenseSummaryOutput>(report, doc, app);
    case CReport::timeExpenseSummary: return std::make_unique<CTimeExpenseSummaryOutput>(report, doc, app);
    case CReport::billingSummary: return std::make_unique<CBillingSummaryOutput>(report, doc, app);
    case CReport::invoice: return std::make_unique<CInvoiceOutput>(report, doc, app);
    default: return std::make_unique<CReportOutput>(report, doc, app);
    }
}

std::optional<int> ParseExportFormat(std::string_view text)
{
    if (text == "csv")
        return formatCsv;
    if (text == "html" || text == "htm")
        return formatHtml;
    if (text == "tab")
        return formatTab;
    return std::nullopt;
}

std::string ExportExtension(int format)
{
    switch (format)
    {
    case formatHtml: return "htm";
    case formatTab: return "tab";
    default: return "csv";
    }
}

std::string DefaultExportFileName(const CReport& report)
{
    const size_t slash = report.m_name.find('/');
    return slash == std::string::npos ? report.m_name : report.m_name.substr(0, slash);
}

std::string ExportReport(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, int format,
                         platform::Prompter* prompter)
{
    std::unique_ptr<CReportOutput> output = CreateReportOutput(report, doc, app);
    output->SetPrompter(prompter);
    std::string text;
    output->Export(format, text);
    return text;
}

namespace
{
std::string FileError(const std::string& path, int error)
{
    return "Cannot write \"" + path + "\": " + std::strerror(error);
}

bool WriteAll(int fd, std::string_view data)
{
    size_t done = 0;
    while (done < data.size())
    {
        const ssize_t n = ::write(fd, data.data() + done, data.size() - done);
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}
} // namespace

bool ExportReportToFile(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, int format,
                        const std::string& path, std::string* error, platform::Prompter* prompter)
{
    // The text goes to a temporary file beside the target, which then replaces it:
    // a failure leaves the old file (or none) and never a part of the new one.
    std::string temp = path + ".XXXXXX";
    const int fd = ::mkstemp(temp.data());
    if (fd < 0)
    {
        if (error)
            *error = FileError(path, errno);
        return false;
    }
    int savedErrno = 0;
    CExportFile file([&](std::string_view piece) {
        if (WriteAll(fd, piece))
            return true;
        savedErrno = errno;
        return false;
    });
    std::unique_ptr<CReportOutput> output = CreateReportOutput(report, doc, app);
    output->SetPrompter(prompter);
    output->Export(format, file);

    bool ok = !file.Failed();
    // A temporary file is private; the export gets the replaced file's mode, or the usual one.
    struct stat existing{};
    ::fchmod(fd, ::stat(path.c_str(), &existing) == 0 ? (existing.st_mode & 07777) : 0644);
    if (::close(fd) != 0 && ok)
    {
        ok = false;
        savedErrno = errno;
    }
    if (ok && std::rename(temp.c_str(), path.c_str()) != 0)
    {
        ok = false;
        savedErrno = errno;
    }
    if (!ok)
    {
        ::unlink(temp.c_str());
        if (error)
            *error = FileError(path, savedErrno);
    }
    return ok;
}

int PrintReport(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, Canvas& canvas)
{
    std::unique_ptr<CReportOutput> output = CreateReportOutput(report, doc, app);
    return output->Print(canvas);
}

std::vector<std::vector<std::string>> RenderTextPages(CReport& report, CTimeKeeperDoc& doc,
                                                      CTimeKeeperApp& app,
                                                      const FixedMetricsCanvas::Options& options)
{
    FixedMetricsCanvas canvas(options);
    PrintReport(report, doc, app, canvas);
    std::vector<std::vector<std::string>> pages;
    for (size_t i = 0; i < canvas.Pages().size(); ++i)
        pages.push_back(canvas.PageText(i));
    return pages;
}

} // namespace reports
