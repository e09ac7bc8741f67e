#include "render/pdfexport.h"

#include "render/printrun.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace render
{

namespace
{
// Painting text needs a QGuiApplication. qvx has none: it gets one on the offscreen
// platform, kept until the program exits. The desktop program (running a command for
// qvx) already has one.
void DropRuntimeDirWarning(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (message.startsWith(QLatin1String("QStandardPaths:")))
        return;
    std::fputs(qPrintable(qFormatLogMessage(type, QMessageLogContext(), message) + QLatin1Char('\n')), stderr);
}

bool EnsureGuiApplication(std::string& error)
{
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return true;
    if (QCoreApplication::instance())
    {
        error = "PDF needs a graphical Qt application, and this program runs without one";
        return false;
    }
    static int argc = 1;
    static char name[] = "qvx";
    static char* argv[] = {name, nullptr};
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // The offscreen platform wants a runtime folder it never uses for PDF; without
    // one it would only warn about the default it takes.
    if (!std::getenv("XDG_RUNTIME_DIR"))
        qInstallMessageHandler(DropRuntimeDirWarning);
    static std::unique_ptr<QGuiApplication> app = std::make_unique<QGuiApplication>(argc, argv);
    return true;
}
} // namespace

bool PdfAvailable() { return true; }

bool ExportPdf(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app, std::string& pdf, int& pages,
               std::string& error)
{
    if (!EnsureGuiApplication(error))
        return false;
    const PdfResult result = RenderPdf(report, doc, app);
    if (!result.error.isEmpty())
    {
        error = result.error.toStdString();
        return false;
    }
    pdf.assign(result.bytes.constData(), static_cast<size_t>(result.bytes.size()));
    pages = result.pages;
    return true;
}

} // namespace render
