#pragma once

#include "platform/prompter.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

class CTimeKeeperDoc;

// Saves a document on its own a while after the last change: it sleeps until the
// document is marked modified, then waits `steps` steps of `step` with no further
// change (10 seconds by default) and saves the document to its path, provided that
// automatic saving is on, no automatic save has failed since the last successful save,
// and the document is modified, held read-write and not being loaded. A failed save
// stops automatic saving until a save of the document succeeds.
//
// Attach it after the document is constructed and destroy it before the document.
// The save's messages go to `prompter` after the document lock is released; during an
// automatic save that happens on the automatic-save thread.
class CAutoSave
{
public:
    CAutoSave(CTimeKeeperDoc& doc, platform::Prompter& prompter, std::function<bool()> enabled,
              std::chrono::milliseconds step = std::chrono::milliseconds(100), int steps = 100);
    ~CAutoSave();
    CAutoSave(const CAutoSave&) = delete;
    CAutoSave& operator=(const CAutoSave&) = delete;

    bool HasFailed() const { return m_failed; }

    // Before the program would ask whether to save a modified document (closing it,
    // opening another): with automatic saving on and no failure, the document is saved
    // without asking. True when nothing is left to ask (saved, or not modified); false
    // when the ordinary question must be asked (automatic saving off or failed, no path
    // or a read-only file, or this save failed).
    bool SaveOnClose();

private:
    void Changed();
    void Run();
    // Saves under the document lock; the messages are shown after it is released, so
    // that a prompter which waits for the user's thread cannot block the document.
    void SaveIfDue();
    void ShowMessages(const platform::ScriptedPrompter& recorder);

    CTimeKeeperDoc& m_doc;
    platform::Prompter& m_prompter;
    std::function<bool()> m_enabled;
    std::chrono::milliseconds m_wait;

    std::function<void()> m_previousOnModified;
    std::function<void()> m_previousOnSaved;

    std::atomic<bool> m_failed{false};
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_pending = false;
    bool m_stopping = false;
    std::thread m_thread;
};
