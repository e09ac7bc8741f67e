#include "views/gotodatedlg.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "platform/prompter.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"
#include "widgets/datetimeedit.h"

#include <QDialogButtonBox>
#include <QFormLayout>

void ConfigureDateField(CDateTimeEdit& field, const CTimeKeeperApp& app)
{
    field.SetDatePicture(QtDatePicture(app.GetLocale()));
    field.SetTimePicture(QtTimePicture(app.GetLocale()));
    field.SetRange(QDate(1900, 1, 1), QDate(2300, 12, 31));
    field.SetFastEntry(app.GetFastEntry() != 0);
}

CGoToDateDlg::CGoToDateDlg(CMainFrame& frame, const QDate& start, const QString& caption, QWidget* parent)
    : QDialog(parent), m_frame(frame), m_date(new CDateTimeEdit(CDateTimeEdit::Mode::date, this))
{
    setWindowTitle(caption.isEmpty() ? tr("Go To Date") : caption);
    m_date->setObjectName(QStringLiteral("date"));
    ConfigureDateField(*m_date, frame.App());
    m_date->SetDate(start);
    m_date->setMinimumWidth(150);
    auto* form = new QFormLayout(this);
    form->addRow(tr("&Date:"), m_date);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
    m_date->selectAll();
}

QDate CGoToDateDlg::Date() const
{
    return m_date->Date();
}

void CGoToDateDlg::accept()
{
    if (!m_date->IsAcceptable())
    {
        m_frame.Prompter().ShowMessage(platform::LoadString(40018), platform::Icon::warning);
        m_date->setFocus();
        return;
    }
    QDialog::accept();
}
