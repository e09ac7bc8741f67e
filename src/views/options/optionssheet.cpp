#include "views/options/optionssheet.h"

#include "app/timekeeperapp.h"
#include "platform/prompter.h"
#include "views/mainframe.h"
#include "views/options/optionspage1.h"
#include "views/options/optionspage2.h"
#include "views/options/optionspage3.h"
#include "views/options/optionspage4.h"
#include "views/options/optionspage5.h"
#include "views/options/optionspage6.h"
#include "views/options/optionspage7.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

COptionsSheet::COptionsSheet(CMainFrame& frame, QWidget* parent)
    : QDialog(parent), m_frame(frame), m_pages(new QTabWidget(this)),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply, this)),
      m_page1(new COptionsPage1(frame)), m_page2(new COptionsPage2(frame)), m_page3(new COptionsPage3(frame)),
      m_page4(new COptionsPage4(frame)), m_page5(new COptionsPage5(frame)), m_page6(new COptionsPage6(frame)),
      m_page7(new COptionsPage7(frame))
{
    setObjectName(QStringLiteral("optionsSheet"));
    setWindowTitle(QApplication::applicationDisplayName() + tr(" Options"));
    m_pages->setObjectName(QStringLiteral("pages"));
    m_pages->addTab(m_page1, tr("General"));
    m_pages->addTab(m_page2, tr("Task Levels"));
    m_pages->addTab(m_page3, tr("Time Entries"));
    m_pages->addTab(m_page4, tr("Activities"));
    m_pages->addTab(m_page5, tr("Expense Types"));
    m_pages->addTab(m_page6, tr("Payment Methods"));
    m_pages->addTab(m_page7, tr("Invoice"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_pages, 1);
    layout->addWidget(m_buttons);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this, &COptionsSheet::ApplyAll);
    resize(740, 430);
}

bool COptionsSheet::ApplyAll()
{
    COptionsPage* const pages[] = {m_page1, m_page2, m_page3, m_page4, m_page5, m_page6, m_page7};
    for (COptionsPage* page : pages)
        if (!page->Check())
            return false;
    for (COptionsPage* page : pages)
        page->Apply();
    // Written back: the views show the new settings at once, also after Apply.
    m_frame.ApplyOptionChanges();
    // And to the settings file at once: qvx reads the same file, and a crash must not lose them.
    std::string error;
    if (!m_frame.App().SaveSettings(&error))
        m_frame.Prompter().ShowMessage(error, platform::Icon::warning);
    return true;
}

void COptionsSheet::accept()
{
    if (ApplyAll())
        QDialog::accept();
}
