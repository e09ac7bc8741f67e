#include "views/options/namedlg.h"

#include "platform/prompter.h"
#include "views/qtconvert.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

CNameDlg::CNameDlg(platform::Prompter& prompter, const QString& caption, const QString& label,
                   const QString& name, QWidget* parent)
    : QDialog(parent), m_prompter(prompter), m_label(new QLabel(label, this)), m_name(new QLineEdit(name, this))
{
    setWindowTitle(caption);
    m_name->setObjectName(QStringLiteral("name"));
    // The records keep their names in a file field of limited use beyond a line.
    m_name->setMaxLength(255);
    m_label->setBuddy(m_name);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    layout->addWidget(m_name);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    m_name->selectAll();
    m_name->setFocus();
    resize(320, sizeHint().height());
}

QString CNameDlg::Name() const
{
    return m_name->text().trimmed();
}

void CNameDlg::accept()
{
    if (Name().isEmpty())
    {
        m_prompter.ShowMessage(FromQ(tr("Please enter a name.")), platform::Icon::warning);
        m_name->setFocus();
        return;
    }
    QDialog::accept();
}
