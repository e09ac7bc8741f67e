#include "views/conflictdlg.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

CTimeEntryConflictDlg::CTimeEntryConflictDlg(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(tr("Time Entry Conflict"));
    auto* layout = new QVBoxLayout(this);
    auto* text = new QLabel(tr("The Time Entry conflicts with another Time Entry.  How would you "
                               "like to resolve the conflict?"),
                            this);
    text->setWordWrap(true);
    layout->addWidget(text);
    const QString labels[3] = {
        tr("Automatically adjust other Time Entries to fit around this Time Entry."),
        tr("Automatically adjust this Time Entry to fit around other Time Entries."),
        tr("Manually edit this Time Entry."),
    };
    for (int i = 0; i < 3; ++i)
    {
        m_choices[i] = new QRadioButton(labels[i], this);
        layout->addWidget(m_choices[i]);
    }
    m_choices[0]->setChecked(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

int CTimeEntryConflictDlg::Choice() const
{
    for (int i = 0; i < 3; ++i)
        if (m_choices[i]->isChecked())
            return i;
    return 2;
}

void CTimeEntryConflictDlg::SetChoice(int choice)
{
    if (choice >= 0 && choice < 3)
        m_choices[choice]->setChecked(true);
}
