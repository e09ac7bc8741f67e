#pragma once

#include "reports/canvas.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>

#include <optional>

class QPagedPaintDevice;

namespace render
{

// The reports' canvas on a paged device: a QPrinter for printing and preview, a
// QPdfWriter for PDF. Metrics come from the device (resolution, printable area and
// its offset from the paper's edge) and from the fonts as the device renders them.
//
// The painter begins with the first page, so that the orientation can still be set
// while the report is measured; Finish() ends it. An orientation set while pages are
// being painted takes effect once they are finished (the run restores the printer's
// own after its last page).
class QtCanvas : public reports::Canvas
{
public:
    explicit QtCanvas(QPagedPaintDevice& device);
    ~QtCanvas() override;
    QtCanvas(const QtCanvas&) = delete;
    QtCanvas& operator=(const QtCanvas&) = delete;

    int DeviceWidth() const override;
    int DeviceHeight() const override;
    int DpiX() const override;
    int DpiY() const override;
    int PhysicalOffsetX() const override;
    int PhysicalOffsetY() const override;
    int GetOrientation() const override;
    void SetOrientation(int orientation) override;

    void SelectFont(const reports::FontRequest& font) override;
    reports::FontMetrics GetFontMetrics() const override;
    reports::TextSize GetTextExtent(std::string_view text) const override;

    void StartPage() override;
    void EndPage() override {}
    void DrawText(int x, int y, std::string_view text) override;
    void DrawLine(int x1, int y1, int x2, int y2, int penWidth) override;
    void FillRect(int x, int y, int width, int height) override;

    // Ends the painting (and applies an orientation set after the last page).
    // Returns false when the device could not be painted on at all.
    bool Finish();
    int PagesStarted() const { return m_pages; }
    // False when the painter could not begin on the device (for instance a file
    // that cannot be written).
    bool Failed() const { return m_failed; }

    // The font that a report font request asks for, at the device's resolution.
    static QFont MakeFont(const reports::FontRequest& request);

private:
    void ApplyOrientation(int orientation);

    QPagedPaintDevice& m_device;
    QPainter m_painter;
    QFont m_font;
    // Of m_font on the device; asked for every cell the reports measure.
    QFontMetrics m_metrics;
    int m_pages = 0;
    bool m_failed = false;
    std::optional<int> m_pendingOrientation;
};

} // namespace render
