#include "torv/platform/afx/win_thread.h"

#include <memory>
#include <new>

namespace {

struct EndOfThread {
    UINT exitCode;
    BOOL remove;
};

thread_local bool t_isWinThread = false;

} // namespace

CWinThread::CWinThread(AFX_THREADPROC proc, LPVOID parameter) : m_proc(proc), m_parameter(parameter) {}

CWinThread::~CWinThread() {
    if (m_hThread)
        CloseHandle(m_hThread);
}

BOOL CWinThread::CreateThread(DWORD createFlags, UINT stackSize, LPSECURITY_ATTRIBUTES attributes) {
    if (m_hThread || !m_proc)
        return FALSE;
    // Suspended, so that the thread finds its object complete; the object may be gone once it runs.
    m_hThread = ::CreateThread(attributes, stackSize, &Run, this, createFlags | CREATE_SUSPENDED, &m_nThreadID);
    if (!m_hThread)
        return FALSE;
    if (!(createFlags & CREATE_SUSPENDED))
        ResumeThread();
    return TRUE;
}

void CWinThread::Delete() {
    if (m_bAutoDelete)
        delete this;
}

DWORD WINAPI CWinThread::Run(LPVOID self) {
    CWinThread& thread = *static_cast<CWinThread*>(self);
    t_isWinThread = true;
    EndOfThread end{0, TRUE};
    try {
        end.exitCode = thread.m_proc(thread.m_parameter);
    } catch (const EndOfThread& asked) {
        end = asked;
    }
    t_isWinThread = false;
    if (end.remove)
        thread.Delete();
    return end.exitCode;
}

CWinThread* AfxBeginThread(AFX_THREADPROC proc, LPVOID parameter, int priority, UINT stackSize, DWORD createFlags,
                           LPSECURITY_ATTRIBUTES attributes) {
    std::unique_ptr<CWinThread> thread(new (std::nothrow) CWinThread(proc, parameter));
    if (!thread || !thread->CreateThread(createFlags | CREATE_SUSPENDED, stackSize, attributes))
        return nullptr;
    thread->SetThreadPriority(priority);
    CWinThread* begun = thread.release();
    if (!(createFlags & CREATE_SUSPENDED))
        begun->ResumeThread();
    return begun;
}

void AfxEndThread(UINT exitCode, BOOL remove) {
    if (t_isWinThread)
        throw EndOfThread{exitCode, remove};
}
