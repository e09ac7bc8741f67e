#include "views/print/pagesetupdlg.h"

#include "app/timekeeperapp.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QVBoxLayout>

#include <cmath>

namespace print
{

namespace
{
// The settings' unit per unit shown: thousandths of an inch, hundredths of a millimetre.
int Scale(bool inches) { return inches ? 1000 : 100; }

const QPageSize::PageSizeId kPapers[] = {QPageSize::A4,     QPageSize::Letter, QPageSize::Legal,
                                         QPageSize::A3,     QPageSize::A5,     QPageSize::B5,
                                         QPageSize::Executive, QPageSize::Tabloid};
} // namespace

CPageSetupDlg::CPageSetupDlg(const CTimeKeeperApp& app, const QPageSize& paper, QWidget* parent)
    : QDialog(parent), m_inches(app.GetMeasurementSystem() == 1), m_paper(new QComboBox(this))
{
    setObjectName(QStringLiteral("pageSetup"));
    setWindowTitle(tr("Page Setup"));
    m_paper->setObjectName(QStringLiteral("paper"));
    for (QPageSize::PageSizeId id : kPapers)
        m_paper->addItem(QPageSize::name(id), static_cast<int>(id));
    int current = m_paper->findData(static_cast<int>(paper.id()));
    if (current < 0 && paper.isValid())
    {
        // A paper of the printer's own that is not in the short list.
        m_paper->addItem(paper.name(), static_cast<int>(paper.id()));
        current = m_paper->count() - 1;
    }
    m_paper->setCurrentIndex(std::max(0, current));

    int values[4] = {};
    app.GetPageMargins(values[0], values[1], values[2], values[3]);
    auto* form = new QFormLayout;
    const QString names[4] = {tr("&Left:"), tr("&Top:"), tr("&Right:"), tr("&Bottom:")};
    const char* objectNames[4] = {"marginLeft", "marginTop", "marginRight", "marginBottom"};
    for (int side = 0; side < 4; ++side)
    {
        auto* box = new QDoubleSpinBox(this);
        box->setObjectName(QString::fromLatin1(objectNames[side]));
        box->setDecimals(m_inches ? 3 : 2);
        box->setRange(0.0, m_inches ? 5.0 : 127.0);
        box->setSingleStep(m_inches ? 0.125 : 1.0);
        box->setSuffix(m_inches ? tr(" in") : tr(" mm"));
        box->setValue(static_cast<double>(values[side]) / Scale(m_inches));
        m_margins[side] = box;
        form->addRow(names[side], box);
    }
    auto* marginGroup = new QGroupBox(m_inches ? tr("Margins (inches)") : tr("Margins (millimeters)"), this);
    marginGroup->setLayout(form);

    auto* paperForm = new QFormLayout;
    paperForm->addRow(tr("&Size:"), m_paper);
    auto* paperGroup = new QGroupBox(tr("Paper"), this);
    paperGroup->setLayout(paperForm);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(paperGroup);
    layout->addWidget(marginGroup);
    layout->addWidget(buttons);
}

QPageSize CPageSetupDlg::Paper() const
{
    return QPageSize(static_cast<QPageSize::PageSizeId>(m_paper->currentData().toInt()));
}

void CPageSetupDlg::Margins(int& left, int& top, int& right, int& bottom) const
{
    int* out[4] = {&left, &top, &right, &bottom};
    for (int side = 0; side < 4; ++side)
        *out[side] = static_cast<int>(std::lround(m_margins[side]->value() * Scale(m_inches)));
}

void CPageSetupDlg::Apply(CTimeKeeperApp& app) const
{
    int left = 0, top = 0, right = 0, bottom = 0;
    Margins(left, top, right, bottom);
    app.SetPageMargins(left, top, right, bottom);
}

} // namespace print
