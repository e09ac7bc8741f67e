#include "views/icons.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <functional>
#include <map>

namespace icons
{

namespace
{

// One colour per series, far apart in hue so that neighbouring levels differ at a glance.
const std::array<QColor, 4> kSeriesColours = {
    QColor(0x2f, 0x5f, 0x9e), // blue
    QColor(0x2e, 0x8b, 0x57), // green
    QColor(0xc0, 0x6a, 0x1b), // orange
    QColor(0x7b, 0x3f, 0x9e), // purple
};

QPixmap DrawLetter(int imageIndex, int size)
{
    const int series = (imageIndex / 26) % 4;
    const QChar letter(u'A' + imageIndex % 26);
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF box(0.5, 0.5, size - 1.0, size - 1.0);
    const QColor colour = kSeriesColours[series];
    p.setPen(QPen(colour.darker(140), 1));
    p.setBrush(colour);
    p.drawRoundedRect(box, size * 0.2, size * 0.2);
    QFont font(QStringLiteral("Sans"));
    font.setBold(true);
    font.setPixelSize(int(size * 0.72));
    p.setFont(font);
    p.setPen(Qt::white);
    p.drawText(box, Qt::AlignCenter, QString(letter));
    return pixmap;
}

// A clock face: the frame colour tells the state, the hands or bars what it does.
QPixmap DrawClock(Timer state, int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const double s = size / 32.0;
    QColor rim;
    switch (state)
    {
    case Timer::inactive:
        rim = QColor(0x80, 0x80, 0x80);
        break;
    case Timer::running:
        rim = QColor(0x1f, 0x9d, 0x3f);
        break;
    case Timer::paused:
        rim = QColor(0xe0, 0x9a, 0x10);
        break;
    }
    p.setPen(QPen(rim.darker(130), 1.5 * s));
    p.setBrush(rim);
    p.drawEllipse(QRectF(1.5 * s, 1.5 * s, 29 * s, 29 * s));
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0xfb, 0xfb, 0xf8));
    p.drawEllipse(QRectF(5 * s, 5 * s, 22 * s, 22 * s));

    const QPointF centre(16 * s, 16 * s);
    p.setPen(QPen(QColor(0x55, 0x55, 0x55), 1.2 * s));
    for (int i = 0; i < 12; i += 3)
    {
        p.save();
        p.translate(centre);
        p.rotate(30.0 * i);
        p.drawLine(QPointF(0, -9.5 * s), QPointF(0, -7.5 * s));
        p.restore();
    }
    if (state == Timer::paused)
    {
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x70, 0x4a, 0x00));
        p.drawRoundedRect(QRectF(11.5 * s, 10 * s, 3.5 * s, 12 * s), s, s);
        p.drawRoundedRect(QRectF(17 * s, 10 * s, 3.5 * s, 12 * s), s, s);
        return pixmap;
    }
    const QColor hands = state == Timer::running ? QColor(0x10, 0x50, 0x20) : QColor(0x40, 0x40, 0x40);
    p.setPen(QPen(hands, 2.4 * s, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(centre, centre + QPointF(0, -8 * s));
    p.drawLine(centre, centre + QPointF(6 * s, 3.5 * s));
    p.setPen(Qt::NoPen);
    p.setBrush(hands);
    p.drawEllipse(centre, 1.8 * s, 1.8 * s);
    if (state == Timer::inactive)
    {
        p.setPen(QPen(QColor(0x90, 0x20, 0x20), 2.2 * s, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(7 * s, 25 * s), QPointF(25 * s, 7 * s));
    }
    return pixmap;
}

// A gold coin marked "$" in `box`.
void DrawCoin(QPainter& p, const QRectF& box, double penWidth, double fontPixels)
{
    p.setPen(QPen(QColor(0x8a, 0x6d, 0x00), penWidth));
    p.setBrush(QColor(0xf2, 0xc2, 0x2e));
    p.drawEllipse(box);
    QFont font(QStringLiteral("Sans"));
    font.setBold(true);
    font.setPixelSize(std::max(1, int(fontPixels)));
    p.setFont(font);
    p.setPen(QColor(0x6a, 0x50, 0x00));
    p.drawText(box, Qt::AlignCenter, QStringLiteral("$"));
}

QIcon FromPainter(const std::function<QPixmap(int)>& draw)
{
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48, 64})
        icon.addPixmap(draw(size));
    return icon;
}

} // namespace

int TaskImageIndex(int level, const QString& levelName)
{
    int letter = 0;
    if (!levelName.isEmpty())
    {
        const QChar c = levelName[0].toUpper();
        if (c >= u'A' && c <= u'Z')
            letter = c.unicode() - u'A';
    }
    return (level % 4) * 26 + letter;
}

QPixmap LetterPixmap(int imageIndex, int size)
{
    return DrawLetter(imageIndex, size);
}

QIcon LetterIcon(int imageIndex)
{
    static std::map<int, QIcon> cache;
    auto it = cache.find(imageIndex);
    if (it != cache.end())
        return it->second;
    QIcon icon = FromPainter([imageIndex](int size) { return DrawLetter(imageIndex, size); });
    cache.emplace(imageIndex, icon);
    return icon;
}

QIcon TimerIcon(Timer state)
{
    return FromPainter([state](int size) { return DrawClock(state, size); });
}

QIcon AppIcon()
{
    return FromPainter([](int size) {
        QPixmap clock = DrawClock(Timer::running, size);
        QPainter p(&clock);
        p.setRenderHint(QPainter::Antialiasing);
        const double s = size / 32.0;
        // A coin at the lower right: time and expenses.
        DrawCoin(p, QRectF(19 * s, 19 * s, 12 * s, 12 * s), 1.2 * s, 9 * s);
        return clock;
    });
}

QIcon TimeEntryIcon(bool running)
{
    static const QIcon runningIcon = TimerIcon(Timer::running);
    static const QIcon closedIcon = FromPainter([](int size) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        const double s = size / 32.0;
        p.setPen(QPen(QColor(0x4a, 0x6a, 0x9a), 2 * s));
        p.setBrush(QColor(0xee, 0xf3, 0xfa));
        p.drawEllipse(QRectF(3 * s, 3 * s, 26 * s, 26 * s));
        p.setPen(QPen(QColor(0x2f, 0x4f, 0x7f), 2.4 * s, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(16 * s, 16 * s), QPointF(16 * s, 8 * s));
        p.drawLine(QPointF(16 * s, 16 * s), QPointF(22 * s, 19 * s));
        return pixmap;
    });
    return running ? runningIcon : closedIcon;
}

QIcon ExpenseIcon()
{
    static const QIcon icon = FromPainter([](int size) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        const double s = size / 32.0;
        DrawCoin(p, QRectF(3 * s, 3 * s, 26 * s, 26 * s), 1.5 * s, 18 * s);
        return pixmap;
    });
    return icon;
}

QIcon ToDoIcon(int state)
{
    static std::map<int, QIcon> cache;
    auto it = cache.find(state);
    if (it != cache.end())
        return it->second;
    QIcon icon = FromPainter([state](int size) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        const double s = size / 32.0;
        const QColor edge = state == 1 ? QColor(0xb0, 0x30, 0x30) : QColor(0x50, 0x60, 0x70);
        p.setPen(QPen(edge, 2 * s));
        p.setBrush(Qt::white);
        p.drawRoundedRect(QRectF(4 * s, 4 * s, 24 * s, 24 * s), 3 * s, 3 * s);
        if (state == 2)
        {
            p.setPen(QPen(QColor(0x1f, 0x8d, 0x3f), 3.5 * s, Qt::SolidLine, Qt::RoundCap,
                          Qt::RoundJoin));
            QPainterPath tick;
            tick.moveTo(9 * s, 16 * s);
            tick.lineTo(14 * s, 22 * s);
            tick.lineTo(24 * s, 9 * s);
            p.setBrush(Qt::NoBrush);
            p.drawPath(tick);
        }
        else if (state == 1)
        {
            p.setPen(QPen(edge, 3.5 * s, Qt::SolidLine, Qt::RoundCap));
            p.drawLine(QPointF(16 * s, 9 * s), QPointF(16 * s, 18 * s));
            p.drawPoint(QPointF(16 * s, 23 * s));
        }
        return pixmap;
    });
    cache.emplace(state, icon);
    return icon;
}

QIcon ReportIcon(int kind, int size)
{
    static const std::array<QColor, 8> colours = {
        QColor(0x2f, 0x5f, 0x9e), QColor(0x2f, 0x7f, 0xbe), QColor(0xb0, 0x80, 0x10),
        QColor(0xd0, 0xa0, 0x30), QColor(0x50, 0x60, 0x70), QColor(0x2e, 0x8b, 0x57),
        QColor(0x7b, 0x3f, 0x9e), QColor(0xa0, 0x40, 0x40),
    };
    const QColor colour = colours[size_t(kind) % colours.size()];
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const double s = size / 32.0;
    p.setPen(QPen(QColor(0x70, 0x70, 0x70), s));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(6 * s, 2.5 * s, 20 * s, 27 * s));
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawRect(QRectF(6.5 * s, 3 * s, 19 * s, 5 * s));
    p.setPen(QPen(QColor(0x9a, 0x9a, 0x9a), 1.2 * s));
    for (int i = 0; i < 5; ++i)
        p.drawLine(QPointF(9 * s, (12 + 3.5 * i) * s), QPointF((i % 2 ? 19 : 23) * s, (12 + 3.5 * i) * s));
    return QIcon(pixmap);
}

} // namespace icons
