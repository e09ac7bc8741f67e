#include "views/options/optionspage5.h"

#include "model/timekeeperdoc.h"
#include "platform/messages.h"
#include "views/mainframe.h"
#include "views/options/namedlg.h"
#include "views/qtconvert.h"

#include <QListWidget>

#include <mutex>

COptionsPage5::COptionsPage5(CMainFrame& frame, QWidget* parent) : CCatalogPage(frame, parent)
{
    List()->setObjectName(QStringLiteral("expenseTypes"));
    Fill();
}

std::vector<std::pair<uint32_t, std::string>> COptionsPage5::Records() const
{
    std::vector<std::pair<uint32_t, std::string>> records;
    for (const auto& [id, type] : m_frame.Doc().m_expenseTypes)
        records.emplace_back(id, type->m_name);
    return records;
}

uint32_t COptionsPage5::CreateRecord()
{
    CNameDlg dialog(m_frame.Prompter(), tr("New Expense Type"), tr("Expense Type:"), QString(), this);
    if (dialog.exec() != QDialog::Accepted)
        return 0;
    return m_frame.Doc().AddExpenseType(FromQ(dialog.Name()))->m_id;
}

bool COptionsPage5::EditRecord(uint32_t id)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    if (id == CExpenseType::kMileageId &&
        m_frame.Prompter().AskYesNo(platform::LoadString(41024)) != platform::Answer::yes)
        return false;
    QString name;
    {
        std::lock_guard lock(doc.GetLock());
        const CExpenseType* type = doc.GetExpenseType(id);
        if (type == nullptr)
            return false;
        name = ToQ(type->m_name);
    }
    CNameDlg dialog(m_frame.Prompter(), tr("Edit Expense Type"), tr("Expense Type:"), name, this);
    if (dialog.exec() != QDialog::Accepted || dialog.Name() == name)
        return false;
    {
        std::lock_guard lock(doc.GetLock());
        CExpenseType* type = doc.GetExpenseType(id);
        if (type == nullptr)
            return false;
        type->m_name = FromQ(dialog.Name());
        doc.SetModifiedFlag();
    }
    doc.UpdateAllViews(hintCatalogs);
    return true;
}

bool COptionsPage5::DeleteRecord(uint32_t id)
{
    return m_frame.Doc().DeleteExpenseType(id, m_frame.Prompter());
}
