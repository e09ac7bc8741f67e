#include "views/options/optionspage6.h"

#include "model/timekeeperdoc.h"
#include "views/mainframe.h"
#include "views/options/paymentmethodsheet.h"
#include "views/qtconvert.h"

#include <QListWidget>

#include <mutex>

COptionsPage6::COptionsPage6(CMainFrame& frame, QWidget* parent) : CCatalogPage(frame, parent)
{
    List()->setObjectName(QStringLiteral("paymentMethods"));
    Fill();
}

std::vector<std::pair<uint32_t, std::string>> COptionsPage6::Records() const
{
    std::vector<std::pair<uint32_t, std::string>> records;
    for (const auto& [id, method] : m_frame.Doc().m_paymentMethods)
        records.emplace_back(id, method->m_name);
    return records;
}

uint32_t COptionsPage6::CreateRecord()
{
    CPaymentMethodSheet sheet(m_frame.Prompter(), QString(), QString(), 0, this);
    if (sheet.exec() != QDialog::Accepted)
        return 0;
    CTimeKeeperDoc& doc = m_frame.Doc();
    uint32_t id = 0;
    {
        std::lock_guard lock(doc.GetLock());
        CPaymentMethod* method = doc.AddPaymentMethod(FromQ(sheet.Name()));
        method->m_accountNumber = FromQ(sheet.AccountNumber());
        method->m_accountType = uint32_t(sheet.AccountType());
        id = method->m_id;
    }
    doc.UpdateAllViews(hintCatalogs);
    return id;
}

bool COptionsPage6::EditRecord(uint32_t id)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    QString name;
    QString accountNumber;
    int accountType = 0;
    {
        std::lock_guard lock(doc.GetLock());
        const CPaymentMethod* method = doc.GetPaymentMethod(id);
        if (method == nullptr)
            return false;
        name = ToQ(method->m_name);
        accountNumber = ToQ(method->m_accountNumber);
        accountType = int(method->m_accountType);
    }
    CPaymentMethodSheet sheet(m_frame.Prompter(), name, accountNumber, accountType, this);
    if (sheet.exec() != QDialog::Accepted)
        return false;
    if (sheet.Name() == name && sheet.AccountNumber() == accountNumber && sheet.AccountType() == accountType)
        return false;
    {
        std::lock_guard lock(doc.GetLock());
        CPaymentMethod* method = doc.GetPaymentMethod(id);
        if (method == nullptr)
            return false;
        method->m_name = FromQ(sheet.Name());
        method->m_accountNumber = FromQ(sheet.AccountNumber());
        method->m_accountType = uint32_t(sheet.AccountType());
        doc.SetModifiedFlag();
    }
    doc.UpdateAllViews(hintCatalogs);
    return true;
}

bool COptionsPage6::DeleteRecord(uint32_t id)
{
    return m_frame.Doc().DeletePaymentMethod(id, m_frame.Prompter());
}
