#pragma once

#include "model/datetime.h"
#include "model/tinytime.h"
#include "platform/locale.h"

#include <QDate>
#include <QDateTime>
#include <QString>
#include <QTime>

#include <string>

// Crossings between the core's texts and values and Qt's.
inline QString ToQ(const std::string& s)
{
    return QString::fromStdString(s);
}

inline std::string FromQ(const QString& s)
{
    return s.toStdString();
}

// An invalid QDate for a null or invalid date.
QDate ToQDate(const CDateTime& d);
QDateTime ToQDateTime(const CDateTime& d);
CDateTime FromQDate(const QDate& d, int hour = 0, int minute = 0);
CDateTime FromQDateTime(const QDateTime& d);
// A null date for an invalid QDate.
CDateTime FromQDateOrNull(const QDate& d);

// The locale's short date picture ("%m/%d/%Y") in Qt's notation ("MM/dd/yyyy").
QString QtDatePicture(const platform::LocaleInfo& locale);
// The locale's time picture without its seconds, in Qt's notation ("h:mm AP", "HH:mm").
QString QtTimePicture(const platform::LocaleInfo& locale);
