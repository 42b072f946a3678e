#pragma once

#include "torv/platform/afx/object.h"
#include "torv/platform/export.h"
#include "torv/platform/system.h"

/// What a thread runs; what it returns is its exit code.
using AFX_THREADPROC = UINT (*)(LPVOID parameter);

/// A worker thread. While m_bAutoDelete is TRUE, as it is at first, the object goes with its thread and its handle with
/// it: whoever began the thread must not touch it then. To wait for a thread's end, either begin it suspended, make
/// m_bAutoDelete FALSE, resume it, wait for m_hThread and delete the object, or duplicate m_hThread while it is
/// suspended and wait for that. A wait that has begun outlives object and handle.
class TORV_API CWinThread : public CObject {
public:
    /// Not begun yet; see CreateThread.
    CWinThread(AFX_THREADPROC proc, LPVOID parameter);
    CWinThread(const CWinThread&) = delete;
    CWinThread& operator=(const CWinThread&) = delete;
    /// Closes the handle. The thread must be over, or be the one that calls.
    ~CWinThread() override;

    /// Begins the thread, once. FALSE when no thread can be had.
    BOOL CreateThread(DWORD createFlags = 0, UINT stackSize = 0, LPSECURITY_ATTRIBUTES attributes = nullptr);
    /// The count before, or -1.
    DWORD SuspendThread() { return ::SuspendThread(m_hThread); }
    /// As the system's calls of these names.
    /// @{
    DWORD ResumeThread() { return ::ResumeThread(m_hThread); }
    BOOL SetThreadPriority(int priority) { return ::SetThreadPriority(m_hThread, priority); }
    /// @}
    /// FALSE until the thread has looked for messages for the first time.
    BOOL PostThreadMessage(UINT message, WPARAM wParam, LPARAM lParam) {
        return ::PostThreadMessageA(m_nThreadID, message, wParam, lParam);
    }
    /// m_hThread.
    operator HANDLE() const { return m_hThread; }

    /// At the thread's end, on the thread itself: deletes the object if m_bAutoDelete says so.
    virtual void Delete();

    BOOL m_bAutoDelete = TRUE;  ///< whether the object goes with its thread
    HANDLE m_hThread = nullptr; ///< null before CreateThread
    DWORD m_nThreadID = 0;      ///< 0 before CreateThread

private:
    static DWORD WINAPI Run(LPVOID self);

    const AFX_THREADPROC m_proc;
    const LPVOID m_parameter;
};

/// Begins a worker thread, whose exit code is the function's result. With CREATE_SUSPENDED it waits to be resumed.
/// Null when no thread can be had.
TORV_API CWinThread* AfxBeginThread(AFX_THREADPROC proc, LPVOID parameter, int priority = THREAD_PRIORITY_NORMAL,
                                    UINT stackSize = 0, DWORD createFlags = 0,
                                    LPSECURITY_ATTRIBUTES attributes = nullptr);
/// Ends the calling thread by unwinding its stack, so that its objects are destroyed; `catch (...)` on the way must
/// throw again. With `remove` FALSE the object stays, whatever m_bAutoDelete says. On a thread that is no CWinThread's
/// it does nothing.
TORV_API void AfxEndThread(UINT exitCode, BOOL remove = TRUE);
