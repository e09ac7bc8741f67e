#include "views/print/printicons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <functional>

namespace print
{

namespace
{
QIcon Drawn(const std::function<void(QPainter&, double)>& draw)
{
    QIcon icon;
    for (int size : {16, 20, 24, 32, 48})
    {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        draw(p, size / 32.0);
        p.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

void Sheet(QPainter& p, const QRectF& r, double s)
{
    p.setPen(QPen(QColor(0x55, 0x5f, 0x6d), 1.4 * s));
    p.setBrush(Qt::white);
    p.drawRect(r);
}

void TextLines(QPainter& p, double x1, double x2, double y, int count, double s)
{
    p.setPen(QPen(QColor(0x8a, 0x96, 0xa8), 1.4 * s));
    for (int i = 0; i < count; ++i)
        p.drawLine(QPointF(x1, y + i * 3.5 * s), QPointF(x2 - (i % 2) * 3 * s, y + i * 3.5 * s));
}
} // namespace

QIcon PrintIcon()
{
    static const QIcon icon = Drawn([](QPainter& p, double s) {
        Sheet(p, QRectF(9 * s, 3 * s, 14 * s, 10 * s), s); // paper going in
        // The body of the printer.
        QPainterPath body;
        body.addRoundedRect(QRectF(3 * s, 11 * s, 26 * s, 12 * s), 2.5 * s, 2.5 * s);
        p.setPen(QPen(QColor(0x3b, 0x45, 0x52), 1.6 * s));
        p.setBrush(QColor(0x9a, 0xa8, 0xba));
        p.drawPath(body);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x4c, 0xaf, 0x50));
        p.drawEllipse(QRectF(23 * s, 14 * s, 3 * s, 3 * s));
        Sheet(p, QRectF(8 * s, 19 * s, 16 * s, 10 * s), s); // the printed page
        TextLines(p, 11 * s, 21 * s, 23 * s, 2, s);
    });
    return icon;
}

QIcon PreviewIcon()
{
    static const QIcon icon = Drawn([](QPainter& p, double s) {
        Sheet(p, QRectF(4 * s, 2 * s, 19 * s, 26 * s), s);
        TextLines(p, 7 * s, 20 * s, 7 * s, 4, s);
        // A magnifier over the page.
        p.setPen(QPen(QColor(0x3b, 0x45, 0x52), 3 * s, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(23 * s, 23 * s), QPointF(29 * s, 29 * s));
        p.setPen(QPen(QColor(0x2f, 0x4f, 0x7f), 2 * s));
        p.setBrush(QColor(0xd8, 0xe6, 0xf7, 0xd0));
        p.drawEllipse(QRectF(12 * s, 12 * s, 13 * s, 13 * s));
    });
    return icon;
}

} // namespace print
