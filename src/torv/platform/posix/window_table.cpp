#include "torv/platform/posix/window_table.h"

#include "torv/platform/immortal.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/last_error.h"

#include <shared_mutex>
#include <unordered_map>
#include <utility>

namespace torv {
namespace {

struct Table {
    std::shared_mutex mutex; // taken before a thread's
    std::unordered_map<HWND, Window> windows;
    ULONG_PTR lastHandle = 0xFFFF; // window handles are never used twice
};

Table& TheTable() { return Immortal<Table>(); }

} // namespace

HWND AddWindow(ThreadState& owner) {
    Table& table = TheTable();
    const std::unique_lock lock(table.mutex);
    return OrFail(HWND(), [&] {
        const auto handle = reinterpret_cast<HWND>(++table.lastHandle);
        table.windows.emplace(handle, Window{.owner = owner.shared_from_this()});
        return handle;
    });
}

std::optional<Window> FindWindow(HWND window) {
    Table& table = TheTable();
    const std::shared_lock lock(table.mutex);
    const auto found = table.windows.find(window);
    return found != table.windows.end() ? std::optional(found->second) : std::nullopt;
}

std::optional<LONG_PTR> ExchangeValue(HWND window, LONG_PTR Window::*member, LONG_PTR value) {
    Table& table = TheTable();
    const std::unique_lock lock(table.mutex);
    const auto found = table.windows.find(window);
    if (found == table.windows.end())
        return std::nullopt;
    return std::exchange(found->second.*member, value);
}

LRESULT CallProcedure(const MSG& message) {
    const auto window = FindWindow(message.hwnd);
    if (!window || window->owner.get() != &ThreadState::Current() || !window->procedure)
        return 0;
    return reinterpret_cast<WNDPROC>(window->procedure)(message.hwnd, message.message, message.wParam, message.lParam);
}

DWORD PostToWindow(const MSG& message) {
    Table& table = TheTable();
    const std::shared_lock lock(table.mutex);
    const auto found = table.windows.find(message.hwnd);
    return found != table.windows.end() ? found->second.owner->Post(message) : ERROR_INVALID_WINDOW_HANDLE;
}

DWORD SendToWindow(SentMessage& sent) {
    Table& table = TheTable();
    const std::shared_lock lock(table.mutex);
    const auto found = table.windows.find(sent.message.hwnd);
    return found != table.windows.end() ? found->second.owner->Send(sent) : ERROR_INVALID_WINDOW_HANDLE;
}

void RemoveWindow(HWND window) {
    Table& table = TheTable();
    std::shared_ptr<ThreadState> owner;
    {
        const std::unique_lock lock(table.mutex);
        const auto found = table.windows.find(window);
        if (found == table.windows.end())
            return;
        owner = std::move(found->second.owner);
        table.windows.erase(found);
    }
    owner->RemoveMessagesOf(window); // nothing more comes
}

void CloseWindows(const ThreadState& owner) {
    Table& table = TheTable();
    const std::unique_lock lock(table.mutex);
    std::erase_if(table.windows, [&](const auto& entry) { return entry.second.owner.get() == &owner; });
}

} // namespace torv
