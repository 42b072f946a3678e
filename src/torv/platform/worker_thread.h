#pragma once

#include "torv/platform/export.h"
#include "torv/platform/system.h"

#include <functional>
#include <memory>

namespace torv {

/// A thread that others post to, stop for a moment and wait for. It goes on without its holder; what it works on must
/// outlive it.
class TORV_API WorkerThread {
public:
    /// Begins a thread; its message queue is there when this returns, so that no message to it is lost. Null when no
    /// thread or no memory can be had.
    static std::shared_ptr<WorkerThread> Begin(std::function<void()> work, int priority = THREAD_PRIORITY_NORMAL);
    ~WorkerThread();
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    DWORD Id() const { return m_id; }
    bool IsCurrent() const { return GetCurrentThreadId() == m_id; }
    /// FALSE when the thread is over.
    BOOL Post(UINT message) const { return PostThreadMessageA(m_id, message, 0, 0); }
    void Suspend() const { SuspendThread(m_thread); }
    void Resume() const { ResumeThread(m_thread); }
    /// Waits until the thread is over; at once on the thread itself. False when the time (ms) is over first.
    bool Wait(DWORD milliseconds = INFINITE) const;

private:
    WorkerThread() = default;

    HANDLE m_thread = nullptr;
    DWORD m_id = 0; // not given to another thread while the handle is held
};

} // namespace torv
