#pragma once

#include "app/timekeeperapp.h"
#include "model/reportdef.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/scratchdir.h"
#include "platform/settingsstore.h"

#include <QByteArray>

#include <memory>
#include <string>
#include <vector>

// The demo document (four weeks of work up to 20 March 2024) with one report of each
// of the eight kinds, and a U.S. or metric application over an in-memory store.
class RenderFixture
{
public:
    explicit RenderFixture(const platform::LocaleInfo& locale = platform::LocaleInfo::UnitedStates());

    CReport* ReportOfKind(CReport::Kind kind) const;

    platform::SettingsStore m_store;
    platform::FixedClock m_clock;
    std::unique_ptr<CTimeKeeperApp> m_app;
    CTimeKeeperDoc m_doc;
};

// Runs a program and returns what it writes on standard output.
std::string RunAndRead(const std::string& command);

void WriteBytes(const std::string& path, const QByteArray& bytes);
// pdftotext of a PDF file, with its layout kept.
std::string PdfText(const std::string& path);
// One page of it (1-based).
std::string PdfPageText(const std::string& path, int page);
// "Pages:" and "Page size:" of pdfinfo, in points.
struct PdfInfo
{
    int pages = 0;
    double width = 0;
    double height = 0;
};
PdfInfo ReadPdfInfo(const std::string& path);
