#pragma once

#include <QDate>
#include <QDateTime>
#include <QLineEdit>
#include <QString>
#include <QTime>

class QToolButton;

// An edit field for a date, a time of day, or both, in the user's pictures.
//
// Two ways of typing:
// - normal: free text, read with the picture when the field is left or queried;
// - fast entry: only digits are typed; each field of the picture is filled in
//   turn and the separators appear by themselves. A separator key closes a field
//   early, "a"/"p" pick AM or PM in a 12-hour picture, Backspace steps back over
//   separators, and Up/Down move the field under the cursor by one.
//
// The field may be left empty when allowed (an open end, no due date).
class CDateTimeEdit : public QLineEdit
{
    Q_OBJECT

public:
    enum class Mode
    {
        date,
        time,
        dateTime,
    };

    explicit CDateTimeEdit(Mode mode, QWidget* parent = nullptr);

    // Qt pictures ("MM/dd/yyyy", "h:mm AP", "HH:mm").
    void SetDatePicture(const QString& picture);
    void SetTimePicture(const QString& picture);
    void SetRange(const QDate& first, const QDate& last);
    void SetAllowEmpty(bool allow) { m_allowEmpty = allow; }
    void SetFastEntry(bool on);
    bool IsFastEntry() const { return m_fastEntry; }

    void SetDate(const QDate& date);
    void SetTime(const QTime& time);
    void SetDateTime(const QDateTime& dateTime);
    void Clear() { setText(QString()); }

    bool IsEmpty() const { return text().trimmed().isEmpty(); }
    // True when the text is empty (and that is allowed) or reads as a value in range.
    bool IsAcceptable() const;
    // Invalid when the text does not read as a value.
    QDate Date() const;
    QTime Time() const;
    QDateTime DateTime() const;

    QDate First() const { return m_first; }
    QDate Last() const { return m_last; }

signals:
    void ValueEdited();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // One field of the combined picture: digits ("yyyy", "MM", "d", "h", "mm") or
    // the AM/PM marker, with the literal text that follows it.
    struct Field
    {
        QString picture;
        bool ampm = false;
        int maxDigits = 2;
        QString separator;
    };

    QString Picture() const;
    void BuildFields();
    QString Format(const QDateTime& value) const;
    QDateTime Parse(const QString& text) const;
    void FastKey(QKeyEvent* event);
    void FastStep(int delta);
    // Index of the field that holds text position `pos`, and where that field starts.
    int FieldAt(int pos, int* start = nullptr) const;
    void ShowCalendar();
    void Normalise();

    Mode m_mode;
    QString m_datePicture = QStringLiteral("MM/dd/yyyy");
    QString m_timePicture = QStringLiteral("h:mm AP");
    QDate m_first{1900, 1, 1};
    QDate m_last{2300, 12, 31};
    bool m_allowEmpty = false;
    bool m_fastEntry = false;
    QList<Field> m_fields;
    QString m_leading; // literal text before the first field
    QToolButton* m_calendarButton = nullptr;
};
