#include "widgets/datetimeedit.h"

#include <QCalendarWidget>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QStyle>
#include <QToolButton>
#include <QWidgetAction>

namespace
{

bool IsDigitField(QChar c)
{
    return c == u'd' || c == u'M' || c == u'y' || c == u'h' || c == u'H' || c == u'm' || c == u's';
}

// The numbers and the AM/PM marker of a text, in order; anything else separates them.
struct Tokens
{
    QList<int> numbers;
    QList<int> digitCounts;
    int ampm = -1; // -1 none, 0 AM, 1 PM
};

Tokens Tokenise(const QString& text)
{
    Tokens t;
    QString digits;
    auto flush = [&] {
        if (!digits.isEmpty())
        {
            t.numbers.append(digits.toInt());
            t.digitCounts.append(int(digits.size()));
            digits.clear();
        }
    };
    for (QChar c : text)
    {
        if (c.isDigit())
        {
            digits += c;
            continue;
        }
        flush();
        if (c == u'a' || c == u'A')
            t.ampm = 0;
        else if (c == u'p' || c == u'P')
            t.ampm = 1;
    }
    flush();
    return t;
}

} // namespace

CDateTimeEdit::CDateTimeEdit(Mode mode, QWidget* parent) : QLineEdit(parent), m_mode(mode)
{
    if (mode != Mode::time)
    {
        m_calendarButton = new QToolButton(this);
        m_calendarButton->setText(QStringLiteral("\u25BE"));
        m_calendarButton->setToolTip(tr("Choose from a calendar"));
        m_calendarButton->setCursor(Qt::ArrowCursor);
        m_calendarButton->setFocusPolicy(Qt::NoFocus);
        m_calendarButton->setAutoRaise(true);
        connect(m_calendarButton, &QToolButton::clicked, this, &CDateTimeEdit::ShowCalendar);
        setTextMargins(0, 0, 20, 0);
    }
    BuildFields();
    connect(this, &QLineEdit::textEdited, this, &CDateTimeEdit::ValueEdited);
}

void CDateTimeEdit::SetDatePicture(const QString& picture)
{
    const QDateTime value = DateTime();
    m_datePicture = picture;
    BuildFields();
    if (value.isValid())
        setText(Format(value));
}

void CDateTimeEdit::SetTimePicture(const QString& picture)
{
    const QDateTime value = DateTime();
    m_timePicture = picture;
    BuildFields();
    if (value.isValid())
        setText(Format(value));
}

void CDateTimeEdit::SetRange(const QDate& first, const QDate& last)
{
    m_first = first;
    m_last = last;
}

void CDateTimeEdit::SetFastEntry(bool on)
{
    m_fastEntry = on;
    setPlaceholderText(on ? Picture() : QString());
}

QString CDateTimeEdit::Picture() const
{
    switch (m_mode)
    {
    case Mode::date:
        return m_datePicture;
    case Mode::time:
        return m_timePicture;
    case Mode::dateTime:
        break;
    }
    return m_datePicture + u' ' + m_timePicture;
}

void CDateTimeEdit::BuildFields()
{
    m_fields.clear();
    m_leading.clear();
    const QString picture = Picture();
    QString literal;
    for (qsizetype i = 0; i < picture.size();)
    {
        const QChar c = picture[i];
        const bool ampm = (c == u'A' || c == u'a') && i + 1 < picture.size() &&
                          (picture[i + 1] == u'P' || picture[i + 1] == u'p');
        if (IsDigitField(c) || ampm)
        {
            if (m_fields.isEmpty())
                m_leading = literal;
            else
                m_fields.last().separator = literal;
            literal.clear();
            Field f;
            qsizetype j = i;
            if (ampm)
                j = i + 2;
            else
                while (j < picture.size() && picture[j] == c)
                    ++j;
            f.picture = picture.mid(i, j - i);
            f.ampm = ampm;
            f.maxDigits = (c == u'y' && f.picture.size() >= 4) ? 4 : 2;
            m_fields.append(f);
            i = j;
        }
        else
        {
            if (c == u'\'')
            {
                const qsizetype end = picture.indexOf(u'\'', i + 1);
                literal += picture.mid(i + 1, (end < 0 ? picture.size() : end) - i - 1);
                i = end < 0 ? picture.size() : end + 1;
                continue;
            }
            literal += c;
            ++i;
        }
    }
    if (!m_fields.isEmpty())
        m_fields.last().separator = literal;
    if (m_fastEntry)
        setPlaceholderText(picture);
}

QString CDateTimeEdit::Format(const QDateTime& value) const
{
    switch (m_mode)
    {
    case Mode::date:
        return value.date().toString(m_datePicture);
    case Mode::time:
        return value.time().toString(m_timePicture);
    case Mode::dateTime:
        break;
    }
    return value.toString(Picture());
}

QDateTime CDateTimeEdit::Parse(const QString& text) const
{
    const Tokens t = Tokenise(text);
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    bool haveYear = false, haveMonth = false, haveDay = false, haveHour = false;
    bool twelveHour = false;
    int n = 0;
    for (const Field& f : m_fields)
    {
        if (f.ampm)
        {
            twelveHour = true;
            continue;
        }
        if (n >= t.numbers.size())
            break;
        const int v = t.numbers[n];
        const int count = t.digitCounts[n];
        ++n;
        switch (f.picture[0].unicode())
        {
        case 'y':
            year = v;
            // A two-digit year in a four-digit field: the nearest century of the range.
            if (count <= 2)
                year += v < 50 ? 2000 : 1900;
            haveYear = true;
            break;
        case 'M':
            month = v;
            haveMonth = true;
            break;
        case 'd':
            day = v;
            haveDay = true;
            break;
        case 'h':
            twelveHour = true;
            hour = v;
            haveHour = true;
            break;
        case 'H':
            hour = v;
            haveHour = true;
            break;
        case 'm':
            minute = v;
            break;
        case 's':
            second = v;
            break;
        default:
            break;
        }
    }
    if (n < t.numbers.size())
        return {};

    QDate date(2000, 1, 1);
    if (m_mode != Mode::time)
    {
        if (!haveYear || !haveMonth || !haveDay)
            return {};
        date = QDate(year, month, day);
        if (!date.isValid())
            return {};
    }
    QTime time(0, 0);
    if (m_mode != Mode::date)
    {
        if (!haveHour)
            return {};
        if (twelveHour)
        {
            if (hour < 1 || hour > 12)
                return {};
            hour %= 12;
            if (t.ampm == 1)
                hour += 12;
        }
        time = QTime(hour, minute, second);
        if (!time.isValid())
            return {};
    }
    return QDateTime(date, time);
}

bool CDateTimeEdit::IsAcceptable() const
{
    if (IsEmpty())
        return m_allowEmpty;
    const QDateTime value = Parse(text());
    if (!value.isValid())
        return false;
    return m_mode == Mode::time || (value.date() >= m_first && value.date() <= m_last);
}

QDate CDateTimeEdit::Date() const
{
    const QDateTime value = Parse(text());
    return value.isValid() ? value.date() : QDate();
}

QTime CDateTimeEdit::Time() const
{
    const QDateTime value = Parse(text());
    return value.isValid() ? value.time() : QTime();
}

QDateTime CDateTimeEdit::DateTime() const
{
    return Parse(text());
}

void CDateTimeEdit::SetDate(const QDate& date)
{
    if (!date.isValid())
    {
        Clear();
        return;
    }
    setText(Format(QDateTime(date, QTime(0, 0))));
}

void CDateTimeEdit::SetTime(const QTime& time)
{
    if (!time.isValid())
    {
        Clear();
        return;
    }
    setText(Format(QDateTime(QDate(2000, 1, 1), time)));
}

void CDateTimeEdit::SetDateTime(const QDateTime& dateTime)
{
    if (!dateTime.isValid())
    {
        Clear();
        return;
    }
    setText(Format(dateTime));
}

void CDateTimeEdit::Normalise()
{
    const QDateTime value = Parse(text());
    if (value.isValid())
        setText(Format(value));
}

void CDateTimeEdit::focusOutEvent(QFocusEvent* event)
{
    Normalise();
    QLineEdit::focusOutEvent(event);
}

void CDateTimeEdit::resizeEvent(QResizeEvent* event)
{
    QLineEdit::resizeEvent(event);
    if (m_calendarButton)
    {
        const int h = height() - 4;
        m_calendarButton->setGeometry(width() - h - 2, 2, h, h);
    }
}

int CDateTimeEdit::FieldAt(int pos, int* start) const
{
    // Walks the text field by field, each field ending where its separator begins.
    const QString t = text();
    int p = int(m_leading.size());
    for (int i = 0; i < m_fields.size(); ++i)
    {
        const int fieldStart = p;
        const QString& sep = m_fields[i].separator;
        int end = sep.isEmpty() ? int(t.size()) : int(t.indexOf(sep, p));
        if (end < 0)
            end = int(t.size());
        if (pos <= end || i == m_fields.size() - 1)
        {
            if (start)
                *start = fieldStart;
            return i;
        }
        p = end + int(sep.size());
    }
    if (start)
        *start = p;
    return int(m_fields.size()) - 1;
}

void CDateTimeEdit::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)
    {
        FastStep(event->key() == Qt::Key_Up ? 1 : -1);
        return;
    }
    if (event->key() == Qt::Key_F4 && m_calendarButton)
    {
        ShowCalendar();
        return;
    }
    if (m_fastEntry && !m_fields.isEmpty())
    {
        FastKey(event);
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void CDateTimeEdit::FastKey(QKeyEvent* event)
{
    const QString typed = event->text();
    const bool modifier = event->modifiers() & (Qt::ControlModifier | Qt::AltModifier);
    if (modifier || event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab ||
        event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
        event->key() == Qt::Key_Escape || event->key() == Qt::Key_Left ||
        event->key() == Qt::Key_Right || event->key() == Qt::Key_Home ||
        event->key() == Qt::Key_End || event->key() == Qt::Key_Delete)
    {
        QLineEdit::keyPressEvent(event);
        return;
    }

    // Typing always continues from the cursor: whatever follows it is replaced.
    QString t = text().left(hasSelectedText() ? selectionStart() : cursorPosition());

    if (event->key() == Qt::Key_Backspace)
    {
        if (!t.isEmpty())
        {
            t.chop(1);
            // Step back over a separator that was filled in, and over a whole AM/PM marker.
            while (!t.isEmpty() && !t.back().isDigit())
                t.chop(1);
        }
        setText(t);
        emit ValueEdited();
        return;
    }
    if (typed.isEmpty())
    {
        QLineEdit::keyPressEvent(event);
        return;
    }

    if (t.isEmpty())
        t = m_leading;
    int fieldStart = 0;
    setText(t);
    int field = FieldAt(int(t.size()), &fieldStart);
    QString content = t.mid(fieldStart);
    const QChar c = typed[0];
    const Field& f = m_fields[field];

    auto closeField = [&] {
        if (field + 1 < m_fields.size() || !f.separator.isEmpty())
            t += f.separator;
    };

    if (c.isDigit())
    {
        if (f.ampm)
            return;
        // A field is complete when full, or when no further digit could keep it valid.
        auto complete = [this](int index, const QString& digits) {
            const Field& field = m_fields[index];
            if (digits.isEmpty())
                return false;
            int limit = 9999;
            switch (field.picture[0].unicode())
            {
            case 'M':
            case 'h':
                limit = 12;
                break;
            case 'd':
                limit = 31;
                break;
            case 'H':
                limit = 23;
                break;
            case 'm':
            case 's':
                limit = 59;
                break;
            default:
                break;
            }
            return digits.size() >= field.maxDigits || digits.toInt() * 10 > limit;
        };
        if (complete(field, content))
        {
            if (field + 1 >= m_fields.size())
                return;
            // The field is done: the digit starts the next one.
            t += f.separator;
            ++field;
            if (m_fields[field].ampm)
            {
                setText(t);
                return;
            }
            content.clear();
        }
        t += c;
        content += c;
        if (complete(field, content) && field + 1 < m_fields.size())
            t += m_fields[field].separator;
    }
    else if ((c == u'a' || c == u'A' || c == u'p' || c == u'P'))
    {
        // Jump to the AM/PM field, closing the fields before it.
        int target = -1;
        for (int i = field; i < m_fields.size(); ++i)
            if (m_fields[i].ampm)
                target = i;
        if (target < 0)
            return;
        if (!content.isEmpty() || field < target)
            for (int i = field; i < target; ++i)
                t += m_fields[i].separator;
        const bool lower = m_fields[target].picture == QStringLiteral("ap");
        QString marker = (c == u'a' || c == u'A') ? QStringLiteral("AM") : QStringLiteral("PM");
        t += lower ? marker.toLower() : marker;
    }
    else if (!content.isEmpty() && field + 1 < m_fields.size())
    {
        // A separator key closes a field early.
        closeField();
    }
    setText(t);
    emit ValueEdited();
}

void CDateTimeEdit::FastStep(int delta)
{
    QDateTime value = Parse(text());
    if (!value.isValid())
    {
        value = QDateTime::currentDateTime();
        value.setTime(QTime(value.time().hour(), value.time().minute()));
        setText(Format(value));
        emit ValueEdited();
        return;
    }
    const int pos = cursorPosition();
    const Field& f = m_fields[FieldAt(pos)];
    switch (f.ampm ? 'A' : f.picture[0].unicode())
    {
    case 'y':
        value = value.addYears(delta);
        break;
    case 'M':
        value = value.addMonths(delta);
        break;
    case 'd':
        value = value.addDays(delta);
        break;
    case 'h':
    case 'H':
        value = QDateTime(value.date(), value.time().addSecs(3600 * delta));
        break;
    case 'A':
        value = QDateTime(value.date(), value.time().addSecs(12 * 3600));
        break;
    default:
        value = QDateTime(value.date(), value.time().addSecs(60 * delta));
        break;
    }
    if (m_mode != Mode::time && (value.date() < m_first || value.date() > m_last))
        return;
    setText(Format(value));
    setCursorPosition(pos);
    emit ValueEdited();
}

void CDateTimeEdit::ShowCalendar()
{
    QMenu menu(this);
    auto* calendar = new QCalendarWidget(&menu);
    calendar->setDateRange(m_first, m_last);
    calendar->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    const QDate current = Date();
    calendar->setSelectedDate(current.isValid() ? current : QDate::currentDate());
    auto* action = new QWidgetAction(&menu);
    action->setDefaultWidget(calendar);
    menu.addAction(action);
    connect(calendar, &QCalendarWidget::clicked, &menu, [&](const QDate& date) {
        const QDateTime old = DateTime();
        SetDateTime(QDateTime(date, old.isValid() ? old.time() : QTime(0, 0)));
        emit ValueEdited();
        menu.close();
    });
    menu.exec(mapToGlobal(QPoint(0, height())));
}
