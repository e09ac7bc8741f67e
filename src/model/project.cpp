#include "model/project.h"

void CProject::Serialize(CArchive& ar)
{
    constexpr uint32_t kVersion = 11;
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_id);
        ar.WriteString(m_progId);
        ar.WriteString(m_name);
        ar.WriteU32(m_fileIdentity);
        ar.WriteString(m_path);
        ar.WriteU32(m_parentTaskId);
        ar.WriteU32(m_resourceId);
        ar.WriteString(m_resourceName);
        ar.WriteDate(m_lastUpdated);
        return;
    }
    ar.ReadVersion("CProject", 9, kVersion);
    m_id = ar.ReadU32();
    m_progId = ar.ReadString();
    m_name = ar.ReadString();
    m_fileIdentity = ar.ReadU32();
    m_path = ar.ReadString();
    m_parentTaskId = ar.ReadU32();
    m_resourceId = ar.ReadU32();
    m_resourceName = ar.ReadString();
    m_lastUpdated = ar.ReadDate();
}
