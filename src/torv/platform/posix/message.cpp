#include "torv/platform/posix/message.h"

#include "torv/platform/posix/clock.h"
#include "torv/platform/posix/last_error.h"
#include "torv/platform/posix/window_table.h"

namespace {

using torv::MessageFilter;
using torv::SentMessage;
using torv::ThreadState;

BOOL Result(DWORD error) {
    if (error == NO_ERROR)
        return TRUE;
    SetLastError(error);
    return FALSE;
}

MSG NewMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return {window, message, wParam, lParam, timeGetTime(), {0, 0}};
}

/// Answers also when the procedure ends its thread: a sender is never left behind.
void Serve(SentMessage& sent) {
    struct Answer {
        ~Answer() { ThreadState::Answer(sent); }
        SentMessage& sent;
    } const answer{sent};
    sent.result = torv::CallProcedure(sent.message);
}

/// 1 with a message, 0 without, -1 when the window is not the calling thread's.
int Receive(LPMSG message, const MessageFilter& filter, bool remove, bool wait) {
    if (!message) {
        SetLastError(ERROR_NOACCESS);
        return -1;
    }
    ThreadState& self = ThreadState::Current();
    for (;;) {
        if (filter.window && !filter.IsForThread()) {
            const auto window = torv::FindWindow(filter.window);
            if (!window || window->owner.get() != &self) {
                SetLastError(window ? ERROR_ACCESS_DENIED : ERROR_INVALID_WINDOW_HANDLE);
                return -1;
            }
        }
        SentMessage* sent = nullptr;
        switch (self.NextMessage(filter, remove, wait, *message, sent)) {
        case ThreadState::Next::Posted:
            return 1;
        case ThreadState::Next::Sent:
            Serve(*sent);
            break;
        case ThreadState::Next::None:
            return 0;
        }
    }
}

} // namespace

BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const MSG posted = NewMessage(window, message, wParam, lParam);
    if (window)
        return Result(torv::PostToWindow(posted));
    ThreadState& self = ThreadState::Current();
    self.MakeQueue();
    return Result(self.Post(posted));
}

BOOL PostThreadMessageA(DWORD thread, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto found = ThreadState::Find(thread);
    return Result(found ? found->Post(NewMessage(nullptr, message, wParam, lParam)) : ERROR_INVALID_THREAD_ID);
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    ThreadState& self = ThreadState::Current();
    self.SafePoint();
    SentMessage sent{.message = NewMessage(window, message, wParam, lParam), .sender = self};
    const auto found = torv::FindWindow(window);
    if (found && found->owner.get() == &self)
        return torv::CallProcedure(sent.message);
    if (const DWORD error = torv::SendToWindow(sent); error != NO_ERROR)
        return Result(error);
    while (SentMessage* other = self.AwaitAnswer(sent))
        Serve(*other);
    return sent.result;
}

BOOL PeekMessageA(LPMSG message, HWND window, UINT first, UINT last, UINT remove) {
    return Receive(message, {window, first, last}, (remove & PM_REMOVE) != 0, false) == 1;
}

BOOL GetMessageA(LPMSG message, HWND window, UINT first, UINT last) {
    const int received = Receive(message, {window, first, last}, true, true);
    if (received == 1)
        return message->message != WM_QUIT;
    return -1; // a thread that is over does not wait
}

LRESULT DispatchMessageA(const MSG* message) { return message ? torv::CallProcedure(*message) : 0; }
