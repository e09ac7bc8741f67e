#pragma once

#include <QDialog>

#include <string>

class QComboBox;
class QLineEdit;
class QTabWidget;

namespace platform
{
class Prompter;
}

// "Payment Method Properties": the name, account number and account type of a new
// or an existing payment method, on one page "General". The caller writes the values
// to the record when the sheet is accepted.
class CPaymentMethodSheet : public QDialog
{
    Q_OBJECT

public:
    // The account types in the order of their stored index.
    static QStringList AccountTypes();

    CPaymentMethodSheet(platform::Prompter& prompter, const QString& name, const QString& accountNumber,
                        int accountType, QWidget* parent = nullptr);

    QString Name() const;
    QString AccountNumber() const;
    int AccountType() const;

    QLineEdit* NameField() const { return m_name; }
    QLineEdit* AccountNumberField() const { return m_accountNumber; }
    QComboBox* AccountTypeField() const { return m_accountType; }

    void accept() override;

private:
    platform::Prompter& m_prompter;
    QTabWidget* m_pages;
    QLineEdit* m_name;
    QLineEdit* m_accountNumber;
    QComboBox* m_accountType;
};
