#include "torv/platform/worker_thread.h"

#include "torv/platform/or_fail.h"

#include <atomic>

namespace torv {
namespace {

struct Beginning {
    std::function<void()> work;
    std::atomic<bool> hasQueue = false;
};

DWORD WINAPI Run(LPVOID parameter) {
    const std::unique_ptr<std::shared_ptr<Beginning>> given(static_cast<std::shared_ptr<Beginning>*>(parameter));
    MSG message;
    PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE); // makes the queue
    (*given)->hasQueue = true;
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
        // Suspended, so that its priority is there from the beginning.
        worker->m_thread = CreateThread(nullptr, 0, &Run, given.get(), CREATE_SUSPENDED, &worker->m_id);
        if (!worker->m_thread)
            return std::shared_ptr<WorkerThread>();
        static_cast<void>(given.release()); // the thread's
        SetThreadPriority(worker->m_thread, priority);
        ResumeThread(worker->m_thread);
        while (!beginning->hasQueue)
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
