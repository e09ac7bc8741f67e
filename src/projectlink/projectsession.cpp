#include "projectlink/projectsession.h"

#include "projectlink/guardedcomponent.h"

#include "platform/messages.h"
#include "projectlink/projecttexts.h"

#include <cerrno>
#include <cstring>
#include <dlfcn.h>

namespace projectlink
{

CProjectSession::CProjectSession(const CProject& link, platform::Prompter& prompter,
                                 std::vector<std::string> componentDirs)
    : m_progId(link.m_progId), m_path(link.m_path), m_prompter(prompter),
      m_dirs(std::move(componentDirs))
{
}

CProjectSession::~CProjectSession()
{
    Close(false);
}

void CProjectSession::ShowFailure(HRESULT hr)
{
    if (hr == E_USERCANCELLED || Succeeded(hr))
        return;
    std::string text = m_component ? m_component->ErrorDescription() : std::string();
    if (text.empty())
        text = "The project component failed with error " + HexCode(hr) + ".";
    m_prompter.ShowMessage(text, platform::Icon::error);
}

HRESULT CProjectSession::Open(bool writable)
{
    if (m_open)
        return S_OK;
    CComponentInfo info;
    if (!FindComponent(m_dirs, m_progId, info))
    {
        m_prompter.ShowMessage(std::strerror(ENOENT), platform::Icon::error);
        const HRESULT hr = ResultFromErrno(ENOENT);
        m_prompter.ShowMessage(platform::FormatMessage(ProjectString(40030), HexCode(hr), m_progId),
                               platform::Icon::error);
        return hr;
    }
    if (info.curVer.empty())
    {
        m_prompter.ShowMessage(std::strerror(ENOENT), platform::Icon::error);
        const HRESULT hr = ResultFromErrno(ENOENT);
        m_prompter.ShowMessage(platform::FormatMessage(ProjectString(40030), HexCode(hr), "CurVer"),
                               platform::Icon::error);
        return hr;
    }

    const std::string classText = info.classId.empty() ? info.curVer : info.classId;
    auto failCreate = [&](const std::string& detail) {
        if (!detail.empty())
            m_prompter.ShowMessage(detail, platform::Icon::error);
        m_prompter.ShowMessage(platform::FormatMessage(ProjectString(40031), classText),
                               platform::Icon::error);
        Release();
        return E_FAIL;
    };
    m_library = dlopen(info.library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!m_library)
    {
        const char* why = dlerror();
        return failCreate(why ? why : info.library);
    }
    auto create = reinterpret_cast<CreateComponentFunction>(dlsym(m_library, kComponentEntryPoint));
    if (!create)
        return failCreate(info.library + ": " + kComponentEntryPoint + " is not exported");
    IProjectComponent* raw = nullptr;
    try
    {
        raw = create(info.curVer.c_str());
    }
    catch (...)
    {
        raw = nullptr;
    }
    if (!raw)
        return failCreate(info.library + " does not serve " + info.curVer);
    m_component = std::make_unique<CGuardedComponent>(std::unique_ptr<IProjectComponent>(raw));

    const HRESULT hr = m_component->Open(m_path, writable);
    if (Failed(hr))
    {
        ShowFailure(hr);
        Release();
        return hr;
    }
    int32_t unused = 0, work = 0, cost = 0, workEstimates = 0, costEstimates = 0;
    const HRESULT caps = m_component->GetCapabilities(unused, work, cost, workEstimates, costEstimates);
    if (Failed(caps))
        ShowFailure(caps);
    else
    {
        m_canWork = work != 0;
        m_canCost = cost != 0;
        m_canWorkEstimates = workEstimates != 0;
        m_canCostEstimates = costEstimates != 0;
    }
    m_writable = writable;
    m_open = true;
    return S_OK;
}

void CProjectSession::Close(bool save)
{
    if (m_open && m_component)
    {
        const HRESULT hr = m_component->Close(save);
        if (Failed(hr))
            ShowFailure(hr);
    }
    Release();
}

void CProjectSession::Release()
{
    // The component's code lives in the library: destroy it first.
    m_component.reset();
    if (m_library)
        dlclose(m_library);
    m_library = nullptr;
    m_open = false;
    m_canWork = m_canCost = m_canWorkEstimates = m_canCostEstimates = false;
}

} // namespace projectlink
