#include "torv/platform/posix/window.h"

#include "torv/platform/posix/clock.h"
#include "torv/platform/posix/last_error.h"
#include "torv/platform/posix/resolve_path.h"

#include <deque>
#include <mutex>
#include <thread>
#include <unordered_map>

namespace {

constexpr std::size_t kQueueLimit = 10000;

struct Posted {
    MSG message;
    ULONGLONG order; // among the messages of all windows
};

struct Window {
    std::thread::id owner;
    std::deque<Posted> queue;
};

struct Table {
    std::mutex mutex;
    std::unordered_map<HWND, Window> windows;
    ULONG_PTR lastHandle = 0xFFFF; // window handles are never used twice
    ULONGLONG lastOrder = 0;
};

/// Never destroyed: threads may end, and with them their windows, after static objects are gone.
Table& TheTable() {
    static Table& table = *new Table;
    return table;
}

/// A thread's windows end with it: its identifier may come back with another thread.
struct ThreadWindows {
    ~ThreadWindows() {
        Table& table = TheTable();
        const std::lock_guard lock(table.mutex);
        std::erase_if(table.windows,
                      [](const auto& entry) { return entry.second.owner == std::this_thread::get_id(); });
    }
};

BOOL Refuse(DWORD error) {
    SetLastError(error);
    return FALSE;
}

using Place = std::deque<Posted>::iterator;

Place FirstInRange(Window& window, UINT first, UINT last) {
    Place at = window.queue.begin();
    while (at != window.queue.end() && (first || last) && (at->message.message < first || at->message.message > last))
        ++at;
    return at;
}

} // namespace

HWND CreateWindowExA(DWORD, LPCSTR className, LPCSTR, DWORD, int, int, int, int, HWND parent, HMENU, HINSTANCE,
                     LPVOID) {
    if (!className || !torv::SameName(className, "STATIC") || parent != HWND_MESSAGE) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    thread_local const ThreadWindows cleanUp;
    static_cast<void>(cleanUp);
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    const auto handle = reinterpret_cast<HWND>(++table.lastHandle);
    table.windows.emplace(handle, Window{std::this_thread::get_id(), {}});
    return handle;
}

BOOL DestroyWindow(HWND window) {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    const auto found = table.windows.find(window);
    if (found == table.windows.end())
        return Refuse(ERROR_INVALID_WINDOW_HANDLE);
    if (found->second.owner != std::this_thread::get_id())
        return Refuse(ERROR_ACCESS_DENIED);
    table.windows.erase(found);
    return TRUE;
}

BOOL IsWindow(HWND window) {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    return table.windows.contains(window);
}

BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    const auto found = table.windows.find(window);
    if (found == table.windows.end())
        return Refuse(ERROR_INVALID_WINDOW_HANDLE);
    auto& queue = found->second.queue;
    if (queue.size() >= kQueueLimit)
        return Refuse(ERROR_NOT_ENOUGH_QUOTA);
    queue.push_back({{window, message, wParam, lParam, timeGetTime(), {0, 0}}, ++table.lastOrder});
    return TRUE;
}

BOOL PeekMessageA(LPMSG message, HWND window, UINT first, UINT last, UINT remove) {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    if (window && !table.windows.contains(window))
        return Refuse(ERROR_INVALID_WINDOW_HANDLE);
    Window* source = nullptr;
    Place oldest;
    for (auto& [handle, candidate] : table.windows) {
        if ((window && handle != window) || candidate.owner != std::this_thread::get_id())
            continue;
        const Place at = FirstInRange(candidate, first, last);
        if (at != candidate.queue.end() && (!source || at->order < oldest->order)) {
            source = &candidate;
            oldest = at;
        }
    }
    if (!source || !message)
        return FALSE;
    *message = oldest->message;
    if (remove & PM_REMOVE)
        source->queue.erase(oldest);
    return TRUE;
}
