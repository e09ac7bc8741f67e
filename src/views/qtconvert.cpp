#include "views/qtconvert.h"

#include <cctype>

QDate ToQDate(const CDateTime& d)
{
    if (!d.IsValid())
        return {};
    return QDate(d.GetYear(), d.GetMonth(), d.GetDay());
}

QDateTime ToQDateTime(const CDateTime& d)
{
    if (!d.IsValid())
        return {};
    return QDateTime(ToQDate(d), QTime(d.GetHour(), d.GetMinute(), d.GetSecond()));
}

CDateTime FromQDate(const QDate& d, int hour, int minute)
{
    return CDateTime::FromDate(d.year(), d.month(), d.day(), hour, minute);
}

CDateTime FromQDateTime(const QDateTime& d)
{
    const QTime t = d.time();
    return CDateTime::FromDate(d.date().year(), d.date().month(), d.date().day(), t.hour(),
                               t.minute(), t.second());
}

CDateTime FromQDateOrNull(const QDate& d)
{
    return d.isValid() ? FromQDate(d) : CDateTime::Null();
}

QString QtDatePicture(const platform::LocaleInfo& locale)
{
    const std::string& p = locale.shortDatePicture;
    QString out;
    for (size_t i = 0; i < p.size(); ++i)
    {
        if (p[i] != '%' || i + 1 >= p.size())
        {
            // Letters outside the conversions are literal text in Qt's notation.
            if (std::isalpha(static_cast<unsigned char>(p[i])))
                out += u'\'' + QString(QChar(p[i])) + u'\'';
            else
                out += QChar(p[i]);
            continue;
        }
        switch (p[++i])
        {
        case 'd':
            out += QStringLiteral("dd");
            break;
        case 'e':
            out += u'd';
            break;
        case 'm':
            out += QStringLiteral("MM");
            break;
        case 'Y':
            out += QStringLiteral("yyyy");
            break;
        case 'y':
            out += QStringLiteral("yy");
            break;
        case 'b':
            out += QStringLiteral("MMM");
            break;
        case 'B':
            out += QStringLiteral("MMMM");
            break;
        case '%':
            out += u'%';
            break;
        default:
            break;
        }
    }
    return out.isEmpty() ? QStringLiteral("MM/dd/yyyy") : out;
}

QString QtTimePicture(const platform::LocaleInfo& locale)
{
    QString p = ToQ(locale.timeFormat);
    const QString sep = ToQ(locale.timeSeparator);
    p.remove(sep + QStringLiteral("ss"));
    p.remove(sep + QStringLiteral("s"));
    const bool noMarkers = locale.amSymbol.empty() && locale.pmSymbol.empty();
    if (locale.clock24 && noMarkers)
    {
        p.replace(u'h', u'H');
        while (!p.isEmpty() && (p.back() == u't' || p.back() == u' '))
            p.chop(1);
    }
    p.replace(QStringLiteral("tt"), QStringLiteral("AP"));
    p.replace(QStringLiteral("t"), QStringLiteral("AP"));
    return p.trimmed().isEmpty() ? QStringLiteral("h:mm AP") : p.trimmed();
}
