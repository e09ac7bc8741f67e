#pragma once

#include "model/archive.h"

#include <cstdint>
#include <string>

// A link from the document to a project plan served by a project-plan component.
class CProject : public CObject
{
public:
    const char* GetClassName() const override { return "CProject"; }
    void Serialize(CArchive& ar) override; // versions 9 to 11

    uint32_t m_id = 0;
    std::string m_progId;
    std::string m_name;
    uint32_t m_fileIdentity = 0;
    std::string m_path;
    uint32_t m_parentTaskId = 0;
    uint32_t m_resourceId = uint32_t(-1);
    std::string m_resourceName;
    CDateTime m_lastUpdated; // null until the first update
};
