#include "views/newfiledlg.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

CNewFileDlg::CNewFileDlg(QWidget* parent) : QDialog(parent), m_name(new QLineEdit(this))
{
    setWindowTitle(tr("New File"));
    auto* layout = new QVBoxLayout(this);
    auto* prompt = new QLabel(
        tr("Type the employee name you would like to use in this Quorvane Time & Expense file:"), this);
    prompt->setWordWrap(true);
    prompt->setTextFormat(Qt::PlainText);
    layout->addWidget(prompt);
    auto* form = new QFormLayout;
    m_name->setObjectName(QStringLiteral("employeeName"));
    m_name->setMaxLength(255);
    form->addRow(tr("&User:"), m_name);
    layout->addLayout(form);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* ok = buttons->button(QDialogButtonBox::Ok);
    ok->setEnabled(false);
    connect(m_name, &QLineEdit::textChanged, ok,
            [ok](const QString& text) { ok->setEnabled(!text.trimmed().isEmpty()); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    const QString user = qEnvironmentVariable("USER");
    if (!user.isEmpty())
    {
        m_name->setText(user);
        m_name->selectAll();
    }
    setMinimumWidth(360);
}

QString CNewFileDlg::EmployeeName() const
{
    return m_name->text().trimmed();
}
