#pragma once

#include <QLineEdit>
#include <QString>

// How the user's locale writes money.
struct CurrencyFormat
{
    QString symbol = QStringLiteral("$");
    bool symbolFirst = true;
    bool spaceSeparated = false;
    QString decimalSeparator = QStringLiteral(".");
    QString thousandsSeparator = QStringLiteral(",");
    int digits = 2;

    QString Format(double amount) const;
    // Reads an amount with or without the symbol and grouping; a leading minus or
    // parentheses make it negative. `ok` tells whether the text was a number.
    double Parse(const QString& text, bool* ok) const;
};

// An amount of money shown in the locale's currency format and read back from it.
class CCurrencyEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit CCurrencyEdit(QWidget* parent = nullptr);

    void SetFormat(const CurrencyFormat& format);
    void SetValue(double amount);
    // The amount typed; `ok` is false when the text is not an amount.
    double Value(bool* ok = nullptr) const;

protected:
    void focusOutEvent(QFocusEvent* event) override;

private:
    CurrencyFormat m_format;
};
