#include "views/options/paymentmethodsheet.h"

#include "platform/prompter.h"
#include "views/qtconvert.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>

QStringList CPaymentMethodSheet::AccountTypes()
{
    return {tr("Company Credit Card"), tr("Personal Credit Card"), tr("Cash"),
            tr("Direct Bill"),         tr("Company Check"),        tr("Personal Check")};
}

CPaymentMethodSheet::CPaymentMethodSheet(platform::Prompter& prompter, const QString& name,
                                         const QString& accountNumber, int accountType, QWidget* parent)
    : QDialog(parent), m_prompter(prompter), m_pages(new QTabWidget(this)), m_name(new QLineEdit(name)),
      m_accountNumber(new QLineEdit(accountNumber)), m_accountType(new QComboBox)
{
    setWindowTitle(tr("Payment Method Properties"));
    m_name->setObjectName(QStringLiteral("name"));
    m_accountNumber->setObjectName(QStringLiteral("accountNumber"));
    m_accountType->setObjectName(QStringLiteral("accountType"));
    m_name->setMaxLength(255);
    m_accountNumber->setMaxLength(255);
    m_accountType->addItems(AccountTypes());
    // An index from an old or foreign file that names no type shows the first one.
    m_accountType->setCurrentIndex(accountType >= 0 && accountType < m_accountType->count() ? accountType : 0);

    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    form->addRow(tr("&Name:"), m_name);
    form->addRow(tr("Account N&umber:"), m_accountNumber);
    form->addRow(tr("Account &Type:"), m_accountType);
    m_pages->addTab(page, tr("General"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_pages, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    m_name->setFocus();
    resize(360, sizeHint().height());
}

QString CPaymentMethodSheet::Name() const
{
    return m_name->text().trimmed();
}

QString CPaymentMethodSheet::AccountNumber() const
{
    return m_accountNumber->text().trimmed();
}

int CPaymentMethodSheet::AccountType() const
{
    return std::max(0, m_accountType->currentIndex());
}

void CPaymentMethodSheet::accept()
{
    if (Name().isEmpty())
    {
        m_prompter.ShowMessage(FromQ(tr("Please enter a name.")), platform::Icon::warning);
        m_name->setFocus();
        return;
    }
    QDialog::accept();
}
