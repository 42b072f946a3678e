#include "torv/platform/worker_thread.h"

#include "torv/platform/afx/win_thread.h"

#include <atomic>

namespace torv {
namespace {

struct Beginning {
    std::function<void()> work;
    std::atomic<bool> hasQueue = false;
};

UINT Run(LPVOID parameter) {
    const std::unique_ptr<std::shared_ptr<Beginning>> given(static_cast<std::shared_ptr<Beginning>*>(parameter));
    MSG message;
    PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE); // makes the queue
    (*given)->hasQueue = true;
    (*given)->work();
    return 0;
}

} // namespace

std::shared_ptr<WorkerThread> WorkerThread::Begin(std::function<void()> work, int priority) {
    const auto beginning = std::make_shared<Beginning>();
    beginning->work = std::move(work);
    auto given = std::make_unique<std::shared_ptr<Beginning>>(beginning);
    CWinThread* const begun = AfxBeginThread(&Run, given.get(), priority, 0, CREATE_SUSPENDED);
    if (!begun)
        return nullptr;
    static_cast<void>(given.release()); // the thread's
    HANDLE thread = nullptr;
    DuplicateHandle(GetCurrentProcess(), begun->m_hThread, GetCurrentProcess(), &thread, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    std::shared_ptr<WorkerThread> worker(new WorkerThread(thread, begun->m_nThreadID));
    begun->ResumeThread(); // from here on its object may be gone
    while (!beginning->hasQueue)
        Sleep(0);
    return worker;
}

WorkerThread::~WorkerThread() { CloseHandle(m_thread); }

bool WorkerThread::Wait(DWORD milliseconds) const {
    return IsCurrent() || WaitForSingleObject(m_thread, milliseconds) == WAIT_OBJECT_0;
}

} // namespace torv
