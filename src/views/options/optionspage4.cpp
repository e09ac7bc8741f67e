#include "views/options/optionspage4.h"

#include "model/timekeeperdoc.h"
#include "views/mainframe.h"
#include "views/options/namedlg.h"
#include "views/qtconvert.h"

#include <QListWidget>

#include <mutex>

COptionsPage4::COptionsPage4(CMainFrame& frame, QWidget* parent) : CCatalogPage(frame, parent)
{
    List()->setObjectName(QStringLiteral("activities"));
    Fill();
}

std::vector<std::pair<uint32_t, std::string>> COptionsPage4::Records() const
{
    std::vector<std::pair<uint32_t, std::string>> records;
    for (const auto& [id, activity] : m_frame.Doc().m_activities)
        records.emplace_back(id, activity->m_name);
    return records;
}

uint32_t COptionsPage4::CreateRecord()
{
    CNameDlg dialog(m_frame.Prompter(), tr("New Activity"), tr("Activity:"), QString(), this);
    if (dialog.exec() != QDialog::Accepted)
        return 0;
    return m_frame.Doc().AddActivity(FromQ(dialog.Name()))->m_id;
}

bool COptionsPage4::EditRecord(uint32_t id)
{
    CTimeKeeperDoc& doc = m_frame.Doc();
    QString name;
    {
        std::lock_guard lock(doc.GetLock());
        const CActivity* activity = doc.GetActivity(id);
        if (activity == nullptr)
            return false;
        name = ToQ(activity->m_name);
    }
    CNameDlg dialog(m_frame.Prompter(), tr("Edit Activity"), tr("Activity:"), name, this);
    if (dialog.exec() != QDialog::Accepted || dialog.Name() == name)
        return false;
    {
        std::lock_guard lock(doc.GetLock());
        CActivity* activity = doc.GetActivity(id);
        if (activity == nullptr)
            return false;
        activity->m_name = FromQ(dialog.Name());
        doc.SetModifiedFlag();
    }
    doc.UpdateAllViews(hintCatalogs);
    return true;
}

bool COptionsPage4::DeleteRecord(uint32_t id)
{
    return m_frame.Doc().DeleteActivity(id, m_frame.Prompter());
}
