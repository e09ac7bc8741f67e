#include "app/autosave.h"

#include "model/timekeeperdoc.h"

#include <string>
#include <vector>

CAutoSave::CAutoSave(CTimeKeeperDoc& doc, platform::Prompter& prompter, std::function<bool()> enabled,
                     std::chrono::milliseconds step, int steps)
    : m_doc(doc), m_prompter(prompter), m_enabled(std::move(enabled)), m_wait(step * steps)
{
    std::lock_guard<std::recursive_mutex> docLock(m_doc.GetLock());
    m_previousOnModified = m_doc.m_onModified;
    m_previousOnSaved = m_doc.m_onSaved;
    m_doc.m_onModified = [this] {
        if (m_previousOnModified)
            m_previousOnModified();
        Changed();
    };
    // Any successful save, the user's included, lets automatic saving resume.
    m_doc.m_onSaved = [this] {
        if (m_previousOnSaved)
            m_previousOnSaved();
        m_failed = false;
    };
    m_thread = std::thread(&CAutoSave::Run, this);
}

CAutoSave::~CAutoSave()
{
    {
        std::lock_guard<std::recursive_mutex> docLock(m_doc.GetLock());
        m_doc.m_onModified = m_previousOnModified;
        m_doc.m_onSaved = m_previousOnSaved;
    }
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void CAutoSave::Changed()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_pending = true;
    }
    m_wake.notify_all();
}

void CAutoSave::Run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;)
    {
        m_wake.wait(lock, [this] { return m_pending || m_stopping; });
        // Each new change restarts the wait, so a burst of changes ends in one save.
        while (m_pending && !m_stopping)
        {
            m_pending = false;
            m_wake.wait_for(lock, m_wait, [this] { return m_pending || m_stopping; });
        }
        if (m_stopping)
            return;
        lock.unlock();
        SaveIfDue();
        lock.lock();
    }
}

void CAutoSave::SaveIfDue()
{
    platform::ScriptedPrompter recorder;
    {
        // The checks and the save under one hold of the lock: nothing changes in between.
        std::lock_guard<std::recursive_mutex> docLock(m_doc.GetLock());
        if (!m_enabled() || m_failed)
            return;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            if (m_pending || m_stopping)
                return; // a newer change: the wait starts over
        }
        if (!m_doc.IsModified() || m_doc.IsReadOnly() || m_doc.IsLoading() || m_doc.GetPathName().empty())
            return;
        if (!m_doc.OnSaveDocument(std::string(m_doc.GetPathName()), recorder))
            m_failed = true;
    }
    ShowMessages(recorder);
}

void CAutoSave::ShowMessages(const platform::ScriptedPrompter& recorder)
{
    for (const std::string& message : recorder.Messages())
        m_prompter.ShowMessage(message, platform::Icon::error);
}

bool CAutoSave::SaveOnClose()
{
    platform::ScriptedPrompter recorder;
    bool saved = false;
    {
        std::lock_guard<std::recursive_mutex> docLock(m_doc.GetLock());
        if (!m_doc.IsModified())
            return true;
        if (!m_enabled() || m_failed || m_doc.IsReadOnly() || m_doc.GetPathName().empty())
            return false;
        saved = m_doc.OnSaveDocument(std::string(m_doc.GetPathName()), recorder);
        if (!saved)
            m_failed = true;
    }
    ShowMessages(recorder);
    return saved;
}
