#pragma once

#include "views/options/optionspage.h"

class QDoubleSpinBox;
class QLineEdit;
class QPlainTextEdit;

// "Invoice": the sender's address, the tax rate and terms a new invoice starts with,
// and the number the next invoice takes.
class COptionsPage7 : public COptionsPage
{
    Q_OBJECT

public:
    static constexpr int kMaxTerms = 30;

    COptionsPage7(CMainFrame& frame, QWidget* parent = nullptr);

    bool Check() override;
    void Apply() override;

    QPlainTextEdit* AddressField() const { return m_address; }
    QDoubleSpinBox* TaxRateField() const { return m_taxRate; }
    QLineEdit* TermsField() const { return m_terms; }
    QLineEdit* NextNumberField() const { return m_nextNumber; }

private:
    QPlainTextEdit* m_address;
    QDoubleSpinBox* m_taxRate;
    QLineEdit* m_terms;
    QLineEdit* m_nextNumber;
};
