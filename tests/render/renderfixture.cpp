#include "renderfixture.h"

#include "cli/demodocument.h"

#include <QFile>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <stdexcept>

RenderFixture::RenderFixture(const platform::LocaleInfo& locale)
    : m_clock(platform::LocalTime{2024, 3, 20, 12, 0, 0})
{
    m_app = std::make_unique<CTimeKeeperApp>(m_store, m_clock, locale);
    cli::MakeDemoDocument(m_doc, CDateTime::FromDate(2024, 3, 20));
    m_doc.m_roundedNow = [this] { return m_app->RoundTime(m_app->Now()); };
    // The demo has five kinds; the summaries it lacks cover all its dates.
    const std::pair<CReport::Kind, const char*> more[] = {
        {CReport::expenseSummary, "Expenses by Client"},
        {CReport::timeExpenseSummary, "Time and Expenses by Client"},
        {CReport::billingSummary, "Billing by Client"},
    };
    for (const auto& [kind, name] : more)
    {
        CReport* report = m_doc.AddReport(kind);
        report->m_name = name;
        report->m_preset = CReport::allDates;
        report->m_selectedTasks = {m_doc.GetRootTask()->m_id};
    }
}

CReport* RenderFixture::ReportOfKind(CReport::Kind kind) const
{
    for (const auto& report : m_doc.m_reports)
        if (report->m_kind == kind)
            return report.get();
    throw std::runtime_error("no report of kind " + std::to_string(kind));
}

std::string RunAndRead(const std::string& command)
{
    std::string out;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        throw std::runtime_error("cannot run " + command);
    std::array<char, 4096> buffer;
    size_t n = 0;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        out.append(buffer.data(), n);
    ::pclose(pipe);
    return out;
}

void WriteBytes(const std::string& path, const QByteArray& bytes)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write " + path);
}

std::string PdfText(const std::string& path) { return RunAndRead("pdftotext -layout '" + path + "' -"); }

std::string PdfPageText(const std::string& path, int page)
{
    const std::string p = std::to_string(page);
    return RunAndRead("pdftotext -layout -f " + p + " -l " + p + " '" + path + "' -");
}

PdfInfo ReadPdfInfo(const std::string& path)
{
    const std::string text = RunAndRead("pdfinfo '" + path + "'");
    PdfInfo info;
    std::smatch m;
    if (std::regex_search(text, m, std::regex(R"(Pages:\s+(\d+))")))
        info.pages = std::stoi(m[1]);
    if (std::regex_search(text, m, std::regex(R"(Page size:\s+([\d.]+) x ([\d.]+))")))
    {
        info.width = std::stod(m[1]);
        info.height = std::stod(m[2]);
    }
    return info;
}
