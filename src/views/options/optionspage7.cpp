#include "views/options/optionspage7.h"

#include "app/timekeeperapp.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRegularExpressionValidator>

#include <cmath>
#include <limits>

COptionsPage7::COptionsPage7(CMainFrame& frame, QWidget* parent)
    : COptionsPage(frame, parent), m_address(new QPlainTextEdit), m_taxRate(new QDoubleSpinBox),
      m_terms(new QLineEdit), m_nextNumber(new QLineEdit)
{
    CTimeKeeperApp& app = frame.App();
    m_address->setObjectName(QStringLiteral("address"));
    m_taxRate->setObjectName(QStringLiteral("taxRate"));
    m_terms->setObjectName(QStringLiteral("terms"));
    m_nextNumber->setObjectName(QStringLiteral("nextNumber"));
    // Tab moves on to the next field rather than into the address.
    m_address->setTabChangesFocus(true);
    m_taxRate->setRange(0.0, 100.0);
    m_taxRate->setDecimals(3);
    m_terms->setMaxLength(kMaxTerms);
    m_nextNumber->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,9}")), this));

    const int numberWidth = fontMetrics().horizontalAdvance(QStringLiteral("0000000000")) + 40;
    m_taxRate->setMaximumWidth(numberWidth);
    m_nextNumber->setMaximumWidth(numberWidth);
    auto* form = new QFormLayout(this);
    form->addRow(tr("A&ddress:"), m_address);
    form->addRow(tr("Default Tax &Rate (%):"), m_taxRate);
    form->addRow(tr("Default &Terms:"), m_terms);
    form->addRow(tr("&Next Number:"), m_nextNumber);

    m_address->setPlainText(ToQ(app.GetInvoiceAddress()));
    m_taxRate->setValue(app.GetDefaultTaxRate());
    m_terms->setText(ToQ(app.GetDefaultTerms()).left(kMaxTerms));
    m_nextNumber->setText(QString::number(app.GetInvoiceNumber()));
}

bool COptionsPage7::Check()
{
    bool ok = false;
    const qlonglong number = m_nextNumber->text().toLongLong(&ok);
    if (!ok || number < 1 || number > std::numeric_limits<int>::max())
        return Refuse(tr("The next invoice number must be a whole number from 1 to %1.")
                          .arg(std::numeric_limits<int>::max()),
                      m_nextNumber);
    return true;
}

void COptionsPage7::Apply()
{
    CTimeKeeperApp& app = m_frame.App();
    // Each key is written at once; unchanged ones are left as they are stored.
    const std::string address = FromQ(m_address->toPlainText());
    if (address != app.GetInvoiceAddress())
        app.SetInvoiceAddress(address);
    // The field shows three decimals; a rate it had to round stays as stored.
    if (std::fabs(m_taxRate->value() - app.GetDefaultTaxRate()) >= 0.0005)
        app.SetDefaultTaxRate(m_taxRate->value());
    const std::string terms = FromQ(m_terms->text());
    if (terms != app.GetDefaultTerms())
        app.SetDefaultTerms(terms);
    const int number = m_nextNumber->text().toInt();
    if (number != app.GetInvoiceNumber())
        app.SetInvoiceNumber(number);
}
