#include "views/reports/wizardpicture.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

QPixmap ReportWizardPicture(int width, int height)
{
    QPixmap pixmap(width, height);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);

    // A deep teal panel, lighter towards the top.
    QLinearGradient background(0, 0, 0, height);
    background.setColorAt(0.0, QColor(0x2f, 0x7d, 0x86));
    background.setColorAt(1.0, QColor(0x12, 0x3d, 0x4a));
    p.fillRect(pixmap.rect(), background);

    // The sheet of paper, slightly turned, with a folded corner.
    const qreal sheetW = width * 0.62;
    const qreal sheetH = sheetW * 1.32;
    p.save();
    p.translate(width * 0.5, height * 0.42);
    p.rotate(-6);
    const QRectF sheet(-sheetW / 2, -sheetH / 2, sheetW, sheetH);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0, 0, 0, 60));
    p.drawRect(sheet.translated(4, 5));
    const qreal fold = sheetW * 0.2;
    QPainterPath page;
    page.moveTo(sheet.topLeft());
    page.lineTo(sheet.right() - fold, sheet.top());
    page.lineTo(sheet.right(), sheet.top() + fold);
    page.lineTo(sheet.bottomRight());
    page.lineTo(sheet.bottomLeft());
    page.closeSubpath();
    p.setBrush(QColor(0xfb, 0xfa, 0xf5));
    p.drawPath(page);
    QPainterPath corner;
    corner.moveTo(sheet.right() - fold, sheet.top());
    corner.lineTo(sheet.right() - fold, sheet.top() + fold);
    corner.lineTo(sheet.right(), sheet.top() + fold);
    corner.closeSubpath();
    p.setBrush(QColor(0xd9, 0xd6, 0xca));
    p.drawPath(corner);

    // Title and text lines.
    const qreal margin = sheetW * 0.12;
    p.setBrush(QColor(0x2f, 0x7d, 0x86));
    p.drawRect(QRectF(sheet.left() + margin, sheet.top() + margin, sheetW * 0.45, sheetH * 0.045));
    p.setBrush(QColor(0xb8, 0xb8, 0xb0));
    for (int i = 0; i < 3; ++i)
        p.drawRect(QRectF(sheet.left() + margin, sheet.top() + margin + sheetH * (0.1 + 0.06 * i),
                          sheetW * (i == 2 ? 0.4 : 0.7), sheetH * 0.022));

    // A small bar chart on the lower half.
    const qreal base = sheet.bottom() - margin;
    const qreal barW = (sheetW - 2 * margin) / 9.0;
    const qreal heights[] = {0.18, 0.3, 0.22, 0.38};
    const QColor bars[] = {QColor(0xe0, 0x8a, 0x2c), QColor(0x2f, 0x7d, 0x86),
                           QColor(0xe0, 0x8a, 0x2c), QColor(0x2f, 0x7d, 0x86)};
    for (int i = 0; i < 4; ++i)
    {
        const qreal h = sheetH * heights[i];
        p.setBrush(bars[i]);
        p.drawRect(QRectF(sheet.left() + margin + barW * (0.5 + 2 * i), base - h, barW, h));
    }
    p.setPen(QPen(QColor(0x60, 0x60, 0x58), 1.2));
    p.drawLine(QPointF(sheet.left() + margin, base), QPointF(sheet.right() - margin, base));
    p.restore();

    // A clock in front of the sheet's lower corner.
    const QPointF centre(width * 0.7, height * 0.72);
    const qreal r = width * 0.17;
    p.setPen(QPen(QColor(0x12, 0x3d, 0x4a), 3));
    p.setBrush(QColor(0xff, 0xf6, 0xe0));
    p.drawEllipse(centre, r, r);
    p.setPen(QPen(QColor(0x12, 0x3d, 0x4a), 1.5));
    for (int i = 0; i < 12; ++i)
    {
        p.save();
        p.translate(centre);
        p.rotate(i * 30);
        p.drawLine(QPointF(0, -r * 0.78), QPointF(0, -r * 0.9));
        p.restore();
    }
    p.setPen(QPen(QColor(0x12, 0x3d, 0x4a), 2.5, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(centre, centre + QPointF(0, -r * 0.62));
    p.drawLine(centre, centre + QPointF(r * 0.45, r * 0.2));
    p.setBrush(QColor(0xe0, 0x8a, 0x2c));
    p.setPen(Qt::NoPen);
    p.drawEllipse(centre, r * 0.1, r * 0.1);
    return pixmap;
}
