#include "render/qtcanvas.h"

#include <QPagedPaintDevice>
#include <QPageLayout>
#include <QPen>

#include <algorithm>

namespace render
{

namespace
{
QString FromUtf8(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// The light grey of the shading brush.
const QColor kShading(192, 192, 192);
} // namespace

QtCanvas::QtCanvas(QPagedPaintDevice& device)
    : m_device(device), m_font(MakeFont({})), m_metrics(m_font, &m_device)
{
}

QtCanvas::~QtCanvas() { Finish(); }

QFont QtCanvas::MakeFont(const reports::FontRequest& request)
{
    QFont font(QString::fromStdString(request.face));
    font.setPointSize(request.pointSize > 0 ? request.pointSize : 9);
    // The weights are on the same 100..900 scale as the reports store them.
    font.setWeight(static_cast<QFont::Weight>(std::clamp(request.weight <= 0 ? 400 : request.weight, 1, 1000)));
    font.setItalic(request.italic);
    // Glyph outlines, not hinted bitmaps: the page is laid out once for every device.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

int QtCanvas::DeviceWidth() const { return m_device.width(); }

int QtCanvas::DeviceHeight() const { return m_device.height(); }

int QtCanvas::DpiX() const { return m_device.logicalDpiX(); }

int QtCanvas::DpiY() const { return m_device.logicalDpiY(); }

int QtCanvas::PhysicalOffsetX() const
{
    return m_device.pageLayout().paintRectPixels(DpiX()).left();
}

int QtCanvas::PhysicalOffsetY() const
{
    return m_device.pageLayout().paintRectPixels(DpiY()).top();
}

int QtCanvas::GetOrientation() const
{
    return m_device.pageLayout().orientation() == QPageLayout::Landscape ? reports::orientationLandscape
                                                                         : reports::orientationPortrait;
}

void QtCanvas::SetOrientation(int orientation)
{
    if (orientation != reports::orientationPortrait && orientation != reports::orientationLandscape)
        return;
    if (m_painter.isActive())
        m_pendingOrientation = orientation;
    else
        ApplyOrientation(orientation);
}

void QtCanvas::ApplyOrientation(int orientation)
{
    m_device.setPageOrientation(orientation == reports::orientationLandscape ? QPageLayout::Landscape
                                                                             : QPageLayout::Portrait);
}

void QtCanvas::SelectFont(const reports::FontRequest& font)
{
    m_font = MakeFont(font);
    m_metrics = QFontMetrics(m_font, &m_device);
    if (m_painter.isActive())
        m_painter.setFont(m_font);
}

reports::FontMetrics QtCanvas::GetFontMetrics() const
{
    const QFontMetrics& fm = m_metrics;
    reports::FontMetrics m;
    m.height = fm.ascent() + fm.descent();
    m.externalLeading = std::max(0, fm.leading());
    m.averageCharWidth = fm.averageCharWidth();
    m.maxCharWidth = fm.maxWidth();
    return m;
}

reports::TextSize QtCanvas::GetTextExtent(std::string_view text) const
{
    const QFontMetrics& fm = m_metrics;
    return reports::TextSize{fm.horizontalAdvance(FromUtf8(text)), fm.ascent() + fm.descent()};
}

void QtCanvas::StartPage()
{
    if (m_failed)
        return;
    if (!m_painter.isActive())
    {
        if (m_pages > 0 || !m_painter.begin(&m_device))
        {
            m_failed = true;
            return;
        }
    }
    else if (!m_device.newPage())
    {
        m_failed = true;
        return;
    }
    ++m_pages;
    m_painter.setFont(m_font);
    m_painter.setRenderHint(QPainter::Antialiasing, true);
    m_painter.setRenderHint(QPainter::TextAntialiasing, true);
}

void QtCanvas::DrawText(int x, int y, std::string_view text)
{
    if (!m_painter.isActive() || text.empty())
        return;
    // The canvas places text by its top-left corner; QPainter by its baseline.
    m_painter.setPen(Qt::black);
    m_painter.drawText(QPoint(x, y + m_metrics.ascent()), FromUtf8(text));
}

void QtCanvas::DrawLine(int x1, int y1, int x2, int y2, int penWidth)
{
    if (!m_painter.isActive())
        return;
    QPen pen(Qt::black);
    pen.setWidth(std::max(0, penWidth));
    pen.setStyle(Qt::SolidLine);
    // Square ends, so that heavy rules meet at the corners of a table.
    pen.setCapStyle(Qt::SquareCap);
    m_painter.setPen(pen);
    m_painter.drawLine(x1, y1, x2, y2);
}

void QtCanvas::FillRect(int x, int y, int width, int height)
{
    if (!m_painter.isActive())
        return;
    m_painter.fillRect(QRect(x, y, width, height), kShading);
}

bool QtCanvas::Finish()
{
    if (m_painter.isActive())
        m_painter.end();
    if (m_pendingOrientation)
    {
        ApplyOrientation(*m_pendingOrientation);
        m_pendingOrientation.reset();
    }
    return !m_failed;
}

} // namespace render
