#include "torv/platform/worker_thread.h"

#include "torv/platform/afx/win_thread.h"
#include "torv/platform/or_fail.h"

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
    if ((*given)->work)
        (*given)->work();
    return 0;
}

} // namespace

std::shared_ptr<WorkerThread> WorkerThread::Begin(std::function<void()> work, int priority) {
    return OrFail(std::shared_ptr<WorkerThread>(), [&] {
        std::shared_ptr<WorkerThread> worker(new WorkerThread);
        const auto beginning = std::make_shared<Beginning>();
        beginning->work = std::move(work);
        auto given = std::make_unique<std::shared_ptr<Beginning>>(beginning);
        CWinThread* const begun = AfxBeginThread(&Run, given.get(), priority, 0, CREATE_SUSPENDED);
        if (!begun)
            return std::shared_ptr<WorkerThread>();
        static_cast<void>(given.release()); // the thread's
        worker->m_id = begun->m_nThreadID;
        if (!DuplicateHandle(GetCurrentProcess(), begun->m_hThread, GetCurrentProcess(), &worker->m_thread, 0, FALSE,
                             DUPLICATE_SAME_ACCESS)) {
            beginning->work = nullptr; // it cannot be called back, but it does nothing
            worker.reset();
        }
        begun->ResumeThread(); // from here on its object may be gone
        while (worker && !beginning->hasQueue)
            Sleep(0);
        return worker;
    });
}

WorkerThread::~WorkerThread() {
    if (m_thread)
        CloseHandle(m_thread);
}

bool WorkerThread::Wait(DWORD milliseconds) const {
    return IsCurrent() || WaitForSingleObject(m_thread, milliseconds) == WAIT_OBJECT_0;
}

} // namespace torv
