#include "widgets/currencyedit.h"

#include <QFocusEvent>
#include <QRegularExpression>

#include <cmath>

QString CurrencyFormat::Format(double amount) const
{
    const bool negative = amount < 0;
    const QString plain = QString::number(std::fabs(amount), 'f', digits);
    QString whole = plain.section(u'.', 0, 0);
    const QString fraction = digits > 0 ? plain.section(u'.', 1, 1) : QString();
    for (qsizetype i = whole.size() - 3; i > 0; i -= 3)
        whole.insert(i, thousandsSeparator);
    QString number = fraction.isEmpty() ? whole : whole + decimalSeparator + fraction;
    const QString space = spaceSeparated ? QStringLiteral(" ") : QString();
    QString text = symbolFirst ? symbol + space + number : number + space + symbol;
    return negative ? u'-' + text : text;
}

double CurrencyFormat::Parse(const QString& text, bool* ok) const
{
    QString t = text.trimmed();
    bool negative = false;
    if (t.startsWith(u'(') && t.endsWith(u')'))
    {
        negative = true;
        t = t.mid(1, t.size() - 2);
    }
    if (!symbol.isEmpty())
        t.remove(symbol);
    t = t.trimmed();
    if (t.startsWith(u'-'))
    {
        negative = !negative;
        t = t.mid(1).trimmed();
    }
    if (!thousandsSeparator.isEmpty() && thousandsSeparator != decimalSeparator)
        t.remove(thousandsSeparator);
    t.remove(QChar(0x00A0));
    t.remove(QChar(0x202F));
    t.replace(decimalSeparator, QStringLiteral("."));
    // Decimal notation only, as qvx takes it: no exponent, infinity or not-a-number, and
    // below one trillion, the most the file and the reports can show.
    static const QRegularExpression kDecimal(QStringLiteral("^(\\d+\\.?\\d*|\\.\\d+)$"));
    bool good = false;
    double value = t.isEmpty() || !kDecimal.match(t).hasMatch() ? 0.0 : t.toDouble(&good);
    if (good && !(value < 1e12))
        good = false;
    if (t.isEmpty())
        good = true;
    if (ok)
        *ok = good;
    if (!good)
        return 0.0;
    return negative ? -value : value;
}

CCurrencyEdit::CCurrencyEdit(QWidget* parent) : QLineEdit(parent)
{
    setAlignment(Qt::AlignRight);
}

void CCurrencyEdit::SetFormat(const CurrencyFormat& format)
{
    bool ok = false;
    const double v = Value(&ok);
    m_format = format;
    if (ok)
        SetValue(v);
}

void CCurrencyEdit::SetValue(double amount)
{
    setText(m_format.Format(amount));
}

double CCurrencyEdit::Value(bool* ok) const
{
    return m_format.Parse(text(), ok);
}

void CCurrencyEdit::focusOutEvent(QFocusEvent* event)
{
    bool ok = false;
    const double v = Value(&ok);
    if (ok)
        SetValue(v);
    QLineEdit::focusOutEvent(event);
}
