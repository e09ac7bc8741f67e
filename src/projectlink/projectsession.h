#pragma once

#include "model/project.h"
#include "platform/prompter.h"
#include "projectlink/componentregistry.h"
#include "projectlink/projectinterface.h"

#include <memory>
#include <string>
#include <vector>

namespace projectlink
{

// One open session of a component on a link's file: the library loaded, the component
// created and opened. Every failure is shown through the prompter where it happens; the
// session is always closed by the time it is destroyed.
class CProjectSession
{
public:
    CProjectSession(const CProject& link, platform::Prompter& prompter,
                    std::vector<std::string> componentDirs);
    ~CProjectSession();
    CProjectSession(const CProjectSession&) = delete;
    CProjectSession& operator=(const CProjectSession&) = delete;

    // Finds the component, loads its library, creates it and opens the file. Does nothing
    // when already open.
    HRESULT Open(bool writable);
    // Calls close with `save`, then releases the component and its library.
    void Close(bool save);

    bool IsOpen() const { return m_open; }
    bool IsWritable() const { return m_writable; }
    IProjectComponent& Component() { return *m_component; }

    // Capabilities read when the session opened (all 0 when that failed).
    bool CanUpdateWork() const { return m_canWork; }
    bool CanUpdateCost() const { return m_canCost; }
    bool CanUpdateWorkEstimates() const { return m_canWorkEstimates; }
    bool CanUpdateCostEstimates() const { return m_canCostEstimates; }

    // Shows the component's description of a failure (nothing for a cancellation).
    void ShowFailure(HRESULT hr);

private:
    void Release();

    std::string m_progId;
    std::string m_path;
    platform::Prompter& m_prompter;
    std::vector<std::string> m_dirs;
    void* m_library = nullptr;
    std::unique_ptr<IProjectComponent> m_component;
    bool m_open = false;
    bool m_writable = false;
    bool m_canWork = false;
    bool m_canCost = false;
    bool m_canWorkEstimates = false;
    bool m_canCostEstimates = false;
};

} // namespace projectlink
