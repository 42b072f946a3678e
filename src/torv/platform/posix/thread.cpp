#include "torv/platform/posix/thread.h"

#include "torv/platform/immortal.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/last_error.h"
#include "torv/platform/posix/thread_state.h"
#include "torv/platform/safe_point.h"

#include <shared_mutex>
#include <thread>
#include <unordered_map>

namespace {

using torv::ThreadState;

struct ThreadTable {
    std::shared_mutex mutex;
    std::unordered_map<HANDLE, std::shared_ptr<ThreadState>> handles;
    ULONG_PTR lastHandle = 0xFFFF; // handles are never used twice
};

ThreadTable& TheThreads() { return torv::Immortal<ThreadTable>(); }

HANDLE NewHandle(std::shared_ptr<ThreadState> thread) {
    ThreadTable& table = TheThreads();
    const std::unique_lock lock(table.mutex);
    const auto handle = reinterpret_cast<HANDLE>(++table.lastHandle);
    table.handles.emplace(handle, std::move(thread));
    return handle;
}

std::shared_ptr<ThreadState> Find(HANDLE handle) {
    if (handle == GetCurrentThread())
        return ThreadState::Find(ThreadState::Current().Id());
    ThreadTable& table = TheThreads();
    const std::shared_lock lock(table.mutex);
    const auto found = table.handles.find(handle);
    return found != table.handles.end() ? found->second : nullptr;
}

template <class Result, class Call>
Result WithThread(HANDLE handle, Result failed, Call call) {
    if (const auto thread = Find(handle))
        return call(*thread);
    SetLastError(ERROR_INVALID_HANDLE);
    return failed;
}

void Run(std::shared_ptr<ThreadState> state, LPTHREAD_START_ROUTINE start, LPVOID parameter) {
    ThreadState& self = *state;
    ThreadState::Adopt(std::move(state));
    self.Begin();
    self.SetExitCode(start(parameter));
}

} // namespace

HANDLE CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD flags,
                    LPDWORD id) {
    if (!start) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    std::shared_ptr<ThreadState> state;
    HANDLE handle = nullptr;
    const bool isBegun = torv::OrFail(false, [&] {
        state = ThreadState::New((flags & CREATE_SUSPENDED) != 0);
        handle = NewHandle(state);
        if (id)
            *id = state->Id();
        std::thread(Run, state, start, parameter).detach(); // last: it cannot be called back
        return true;
    });
    if (isBegun)
        return handle;
    if (state)
        state->Discard();
    if (handle)
        CloseHandle(handle);
    return nullptr;
}

DWORD GetCurrentThreadId() { return ThreadState::Current().Id(); }

BOOL DuplicateHandle(HANDLE, HANDLE source, HANDLE, LPHANDLE target, DWORD, BOOL, DWORD options) {
    const auto thread = Find(source);
    if (options & DUPLICATE_CLOSE_SOURCE)
        CloseHandle(source);
    if (!thread || !target) {
        SetLastError(thread ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return torv::OrFail(FALSE, [&] {
        *target = NewHandle(thread);
        return TRUE;
    });
}

BOOL CloseHandle(HANDLE handle) {
    ThreadTable& table = TheThreads();
    const std::unique_lock lock(table.mutex);
    if (table.handles.erase(handle) > 0 || handle == GetCurrentThread() || handle == GetCurrentProcess())
        return TRUE;
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

DWORD SuspendThread(HANDLE thread) {
    return WithThread(thread, ThreadState::kFailed, [](ThreadState& state) { return state.Suspend(); });
}

DWORD ResumeThread(HANDLE thread) {
    return WithThread(thread, ThreadState::kFailed, [](ThreadState& state) { return state.Resume(); });
}

BOOL SetThreadPriority(HANDLE thread, int priority) {
    return WithThread(thread, FALSE, [&](ThreadState& state) {
        if (priority < THREAD_PRIORITY_LOWEST || priority > THREAD_PRIORITY_HIGHEST) {
            if (priority != THREAD_PRIORITY_IDLE && priority != THREAD_PRIORITY_TIME_CRITICAL) {
                SetLastError(ERROR_INVALID_PARAMETER);
                return FALSE;
            }
        }
        state.SetPriority(priority);
        return TRUE;
    });
}

BOOL GetExitCodeThread(HANDLE thread, LPDWORD code) {
    return WithThread(thread, FALSE, [&](ThreadState& state) {
        if (code)
            *code = state.ExitCode();
        return TRUE;
    });
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    const torv::AtRest rest; // also when there is nothing to wait for
    return WithThread(handle, WAIT_FAILED,
                      [&](ThreadState& state) { return state.AwaitEnd(milliseconds) ? WAIT_OBJECT_0 : WAIT_TIMEOUT; });
}
